#include <bitset>
#include <optional>

#include <quorvel/Platform/ImageIO/ISOBoxes.h>
#include <quorvel/Platform/ImageIO/TIFFDirectory.h>

namespace quorvel {
namespace {

struct Box {
  std::uint32_t type = 0;
  std::uint64_t body = 0;
  std::uint64_t end = 0;
  [[nodiscard]] std::uint64_t size() const { return end - body; }
};

/// Boxes between two places, one after the other; one that would end beyond them is the last and not given.
class BoxWalk {
 public:
  BoxWalk(ByteView file, std::uint64_t begin, std::uint64_t end) : file_(file), at_(begin), end_(end) {}
  BoxWalk(ByteView file, const Box& parent, std::uint64_t skipped = 0)
      : BoxWalk(file, parent.body + std::min(skipped, parent.size()), parent.end) {}

  bool next(Box& box) {
    if (end_ - at_ < 8) return false;
    std::uint64_t size = file_.big32(at_);
    std::uint64_t head = 8;
    if (size == 1) {
      size = file_.big(at_ + 8, 8);
      head = 16;
    } else if (size == 0) {
      size = end_ - at_;
    }
    if (size < head || size > end_ - at_) return false;
    box = {file_.big32(at_ + 4), at_ + head, at_ + size};
    at_ += size;
    return true;
  }

 private:
  ByteView file_;
  std::uint64_t at_;
  std::uint64_t end_;
};

std::optional<Box> findBox(BoxWalk walk, std::uint32_t type) {
  Box box;
  while (walk.next(box)) {
    if (box.type == type) return box;
  }
  return std::nullopt;
}

enum class Brand : std::uint8_t { Foreign, Generic, HEIC, AVIF };

struct KnownBrand {
  std::uint32_t mark;
  Brand brand;
};
// Images of HEVC alone and in sequences, plain, extended, scalable and of several views; the profile of HEVC; AV1 with
// its sequences, the brand of intra pictures and its two profiles; what leaves the codec open.
constexpr KnownBrand kBrands[] = {
    {fourCharacters("heic"), Brand::HEIC},    {fourCharacters("heix"), Brand::HEIC},
    {fourCharacters("heim"), Brand::HEIC},    {fourCharacters("heis"), Brand::HEIC},
    {fourCharacters("hevc"), Brand::HEIC},    {fourCharacters("hevx"), Brand::HEIC},
    {fourCharacters("hevm"), Brand::HEIC},    {fourCharacters("hevs"), Brand::HEIC},
    {fourCharacters("MiHB"), Brand::HEIC},    {fourCharacters("MiHE"), Brand::HEIC},
    {fourCharacters("avif"), Brand::AVIF},    {fourCharacters("avis"), Brand::AVIF},
    {fourCharacters("avio"), Brand::AVIF},    {fourCharacters("MA1A"), Brand::AVIF},
    {fourCharacters("MA1B"), Brand::AVIF},    {fourCharacters("mif1"), Brand::Generic},
    {fourCharacters("mif2"), Brand::Generic}, {fourCharacters("msf1"), Brand::Generic},
    {fourCharacters("miaf"), Brand::Generic},
};

Brand brandOf(std::uint32_t mark) {
  for (const KnownBrand& known : kBrands) {
    if (known.mark == mark) return known.brand;
  }
  return Brand::Foreign;
}

struct Brands {
  Brand major = Brand::Foreign;
  Brand firstCodec = Brand::Foreign;  // of the compatible ones
  bool isImage = false;
};

Brands readBrands(ByteView file, const Box& box) {
  Brands brands;
  brands.major = brandOf(file.big32(box.body));
  brands.isImage = brands.major != Brand::Foreign;
  for (std::uint64_t at = box.body + 8; at + 4 <= box.end; at += 4) {
    const Brand brand = brandOf(file.big32(at));
    brands.isImage = brands.isImage || brand != Brand::Foreign;
    if (brands.firstCodec == Brand::Foreign && brand >= Brand::HEIC) brands.firstCodec = brand;
  }
  return brands;
}

ImageFormat formatOf(Brand brand) {
  if (brand == Brand::HEIC) return ImageFormat::HEIC;
  return brand == Brand::AVIF ? ImageFormat::AVIF : ImageFormat::Unknown;
}

ImageFormat formatOfCodec(std::uint32_t type) {
  switch (type) {
    case fourCharacters("hvc1"):
    case fourCharacters("hev1"):
    case fourCharacters("lhv1"):
      return ImageFormat::HEIC;
    case fourCharacters("av01"):
      return ImageFormat::AVIF;
    default:
      return ImageFormat::Unknown;
  }
}

/// The box "meta" of an image: items, their properties and places.
class Items {
 public:
  Items(ByteView file, const Box& meta) : file_(file), meta_(meta) {}

  void read(ImageFacts& facts) const {
    const auto primary = primaryItem();
    if (!primary) return;
    facts.frameCount = 1;
    if (facts.format == ImageFormat::Unknown) facts.format = codecOf(*primary);
    readProperties(*primary, facts);
    if (const auto exif = firstItem(fourCharacters("Exif"))) facts.exif = exifPlace(*exif);
  }

 private:
  struct Item {
    std::uint32_t number = 0;
    std::uint32_t type = 0;
  };

  [[nodiscard]] std::optional<Box> child(std::uint32_t type) const { return findBox(BoxWalk(file_, meta_, 4), type); }
  [[nodiscard]] std::uint32_t number(std::uint64_t at, bool isLong) const {
    return static_cast<std::uint32_t>(file_.big(at, isLong ? 4 : 2));
  }

  [[nodiscard]] std::optional<std::uint32_t> primaryItem() const {
    const auto box = child(fourCharacters("pitm"));
    if (!box || box->size() < 6) return std::nullopt;
    return number(box->body + 4, file_.u8(box->body) != 0);
  }

  /// The first item that `isWanted`.
  template <class Wanted>
  [[nodiscard]] std::optional<Item> findItem(Wanted isWanted) const {
    const auto list = child(fourCharacters("iinf"));
    if (!list) return std::nullopt;
    BoxWalk walk(file_, *list, file_.u8(list->body) == 0 ? 6 : 8);
    Box entry;
    while (walk.next(entry)) {
      const std::uint8_t version = file_.u8(entry.body);
      if (entry.type != fourCharacters("infe") || version < 2) continue;
      const bool isLong = version > 2;
      const Item item{number(entry.body + 4, isLong), file_.big32(entry.body + (isLong ? 10 : 8))};
      if (isWanted(item)) return item;
    }
    return std::nullopt;
  }
  [[nodiscard]] std::optional<std::uint32_t> firstItem(std::uint32_t type) const {
    const auto item = findItem([type](const Item& one) { return one.type == type; });
    return item ? std::optional(item->number) : std::nullopt;
  }
  [[nodiscard]] std::uint32_t typeOf(std::uint32_t item) const {
    const auto found = findItem([item](const Item& one) { return one.number == item; });
    return found ? found->type : 0;
  }

  /// The first item that this one is made of.
  [[nodiscard]] std::optional<std::uint32_t> firstPart(std::uint32_t item) const {
    const auto list = child(fourCharacters("iref"));
    if (!list) return std::nullopt;
    const bool isLong = file_.u8(list->body) != 0;
    const unsigned width = isLong ? 4 : 2;
    BoxWalk walk(file_, *list, 4);
    Box reference;
    while (walk.next(reference)) {
      const bool isOfItem = reference.type == fourCharacters("dimg") && number(reference.body, isLong) == item;
      if (isOfItem && file_.big16(reference.body + width)) return number(reference.body + width + 2, isLong);
    }
    return std::nullopt;
  }

  /// A grid, an overlay or a view is looked through; a few of them may be nested.
  [[nodiscard]] ImageFormat codecOf(std::uint32_t item) const {
    constexpr int kNesting = 4;
    for (int i = 0; i < kNesting; ++i) {
      const ImageFormat format = formatOfCodec(typeOf(item));
      const auto part = format == ImageFormat::Unknown ? firstPart(item) : std::nullopt;
      if (!part) return format;
      item = *part;
    }
    return ImageFormat::Unknown;
  }

  static constexpr std::size_t kProperties = 32'768;  // what an association can name
  using Numbers = std::bitset<kProperties>;

  /// Which of the properties are the item's, by their place in "ipco", the first 1.
  [[nodiscard]] Numbers associations(const Box& properties, std::uint32_t item) const {
    Numbers numbers;
    BoxWalk walk(file_, properties);
    Box box;
    while (walk.next(box)) {
      if (box.type == fourCharacters("ipma")) addAssociations(box, item, numbers);
    }
    return numbers;
  }
  void addAssociations(const Box& box, std::uint32_t item, Numbers& numbers) const {
    const bool isLong = file_.u8(box.body) != 0;
    const unsigned width = file_.u8(box.body + 3) & 1 ? 2 : 1;
    const std::uint32_t mask = width == 2 ? 0x7FFF : 0x7F;
    std::uint64_t at = box.body + 8;
    for (std::uint32_t left = file_.big32(box.body + 4); left > 0 && at < box.end; --left) {
      const bool isOfItem = number(at, isLong) == item;
      at += isLong ? 4 : 2;
      const std::uint64_t end = at + 1 + std::uint64_t{file_.u8(at)} * width;
      for (++at; at < end; at += width) {
        if (isOfItem && end <= box.end) numbers.set(file_.big(at, width) & mask);
      }
    }
  }

  void readProperties(std::uint32_t item, ImageFacts& facts) const {
    const auto properties = child(fourCharacters("iprp"));
    const auto container = properties ? findBox(BoxWalk(file_, *properties), fourCharacters("ipco")) : std::nullopt;
    if (!container) return;
    const Numbers numbers = associations(*properties, item);
    std::optional<Box> aperture;
    BoxWalk walk(file_, *container);
    Box box;
    for (std::size_t index = 1; walk.next(box); ++index) {
      if (box.type == fourCharacters("auxC")) facts.hasAlpha = facts.hasAlpha || isAlpha(box);
      if (index >= kProperties || !numbers[index]) continue;
      if (box.type == fourCharacters("clap")) aperture = box;
      readProperty(box, facts);
    }
    if (aperture) crop(*aperture, facts);
  }

  void readProperty(const Box& box, ImageFacts& facts) const {
    switch (box.type) {
      case fourCharacters("ispe"):
        if (box.size() < 12) return;
        facts.width = file_.big32(box.body + 4);
        facts.height = file_.big32(box.body + 8);
        return;
      case fourCharacters("irot"):
        facts.decoderSwapsSides = file_.u8(box.body) & 1;
        return;
      case fourCharacters("pixi"):
        facts.colorModel = file_.u8(box.body + 4) == 1 ? ImageColorModel::Gray : ImageColorModel::RGB;
        facts.bitsPerComponent = file_.u8(box.body + 5);
        return;
      case fourCharacters("colr"):
        if (box.size() < 4) return;
        if (file_.is(box.body, "prof") || file_.is(box.body, "rICC")) facts.profile = {box.body + 4, box.size() - 4};
        return;
      default:
        return;
    }
  }

  [[nodiscard]] bool isAlpha(const Box& box) const {
    constexpr std::string_view kNames[] = {"urn:mpeg:mpegB:cicp:systems:auxiliary:alpha", "urn:mpeg:hevc:2015:auxid:1"};
    return std::ranges::any_of(kNames, [&](std::string_view name) {
      return box.size() > 4 + name.size() && file_.is(box.body + 4, name) && file_.u8(box.body + 4 + name.size()) == 0;
    });
  }

  /// To the sides of the clean aperture, each a fraction, where it is smaller.
  void crop(const Box& box, ImageFacts& facts) const {
    const auto side = [&](std::uint64_t at, std::uint32_t whole) {
      const std::uint32_t parts = file_.big32(at);
      const std::uint32_t unit = file_.big32(at + 4);
      const std::uint32_t part = unit ? parts / unit : 0;
      return part > 0 && part < whole ? part : whole;
    };
    if (box.size() < 32) return;
    facts.width = side(box.body, facts.width);
    facts.height = side(box.body + 8, facts.height);
  }

  /// Where the bytes of an item are that lie in one piece.
  [[nodiscard]] ImageFacts::Place placeOf(std::uint32_t item) const {
    const auto list = child(fourCharacters("iloc"));
    if (!list) return {};
    const std::uint8_t version = file_.u8(list->body);
    const auto nibble = [&](std::uint64_t at, unsigned shift) { return unsigned{file_.u8(at)} >> shift & 15U; };
    const unsigned offsetWidth = nibble(list->body + 4, 4);
    const unsigned lengthWidth = nibble(list->body + 4, 0);
    const unsigned baseWidth = nibble(list->body + 5, 4);
    const unsigned indexWidth = version ? nibble(list->body + 5, 0) : 0;
    if (offsetWidth > 8 || lengthWidth > 8 || baseWidth > 8 || indexWidth > 8 || version > 2) return {};
    const bool isLong = version == 2;
    std::uint64_t at = list->body + (isLong ? 10 : 8);
    for (std::uint32_t left = number(list->body + 6, isLong); left > 0 && at < list->end; --left) {
      const bool isWanted = number(at, isLong) == item;
      at += isLong ? 4 : 2;
      const unsigned method = version ? file_.big16(at) & 15U : 0;
      at += version ? 4 : 2;
      const std::uint64_t base = file_.big(at, baseWidth);
      at += baseWidth;
      const std::uint16_t pieces = file_.big16(at);
      at += 2;
      if (isWanted && pieces != 1) return {};
      if (isWanted) {
        at += indexWidth;
        return pieceAt(method, base + file_.big(at, offsetWidth), file_.big(at + offsetWidth, lengthWidth));
      }
      at += std::uint64_t{pieces} * (indexWidth + offsetWidth + lengthWidth);
    }
    return {};
  }
  [[nodiscard]] ImageFacts::Place pieceAt(unsigned method, std::uint64_t location, std::uint64_t length) const {
    if (method == 0) return file_.has(location, length) ? ImageFacts::Place{location, length} : ImageFacts::Place{};
    const auto data = method == 1 ? child(fourCharacters("idat")) : std::nullopt;
    if (!data || location > data->size() || length > data->size() - location) return {};
    return {data->body + location, length};
  }

  /// In front of the block stands how far off it is.
  [[nodiscard]] ImageFacts::Place exifPlace(std::uint32_t item) const {
    const ImageFacts::Place place = placeOf(item);
    if (place.length < 4) return {};
    const std::uint64_t skipped = 4 + std::uint64_t{file_.big32(place.location)};
    if (skipped >= place.length) return {};
    return {place.location + skipped, place.length - skipped};
  }

  ByteView file_;
  Box meta_;
};

/// The first track of pictures in a film's box "moov".
class Sequence {
 public:
  Sequence(ByteView file, const Box& movie) : file_(file), movie_(movie) {}

  /// The frames, the format where it is open still, and the size.
  ImageFacts read(ImageFacts facts) const {
    BoxWalk walk(file_, movie_);
    Box track;
    while (walk.next(track)) {
      if (track.type == fourCharacters("trak") && readTrack(track, facts)) break;
    }
    return facts;
  }

 private:
  [[nodiscard]] std::optional<Box> inside(const std::optional<Box>& box, std::uint32_t type) const {
    return box ? findBox(BoxWalk(file_, *box), type) : std::nullopt;
  }

  bool readTrack(const Box& track, ImageFacts& facts) const {
    const auto media = inside(track, fourCharacters("mdia"));
    const auto handler = inside(media, fourCharacters("hdlr"));
    if (!handler || !file_.is(handler->body + 8, "pict")) return false;
    const auto table = inside(inside(media, fourCharacters("minf")), fourCharacters("stbl"));
    const auto sizes = inside(table, fourCharacters("stsz"));
    if (sizes) facts.frameCount = std::max<std::uint64_t>(facts.frameCount, sampleCount(*sizes));
    const auto entries = inside(table, fourCharacters("stsd"));
    if (entries && facts.format == ImageFormat::Unknown) {
      facts.format = formatOfCodec(file_.big32(entries->body + 12));
    }
    const auto header = inside(track, fourCharacters("tkhd"));
    if (header && header->size() >= 84) {
      facts.width = file_.big16(header->end - 8);
      facts.height = file_.big16(header->end - 4);
    }
    return true;
  }

  /// No more than there is room for in the table, or in the file when all have one size.
  [[nodiscard]] std::uint64_t sampleCount(const Box& sizes) const {
    if (sizes.size() < 12) return 0;
    const std::uint32_t size = file_.big32(sizes.body + 4);
    const std::uint64_t room = size ? file_.size() / size : (sizes.size() - 12) / 4;
    return std::min<std::uint64_t>(file_.big32(sizes.body + 8), room);
  }

  ByteView file_;
  Box movie_;
};

}  // namespace

bool isISOFile(ByteView file) { return file.is(4, "ftyp"); }

void readISOFacts(ByteView file, ImageFacts& facts) {
  BoxWalk walk(file, 0, file.size());
  Box box;
  if (!walk.next(box)) return;
  const Brands brands = readBrands(file, box);
  facts.isComplete = !brands.isImage;
  if (!brands.isImage) return;
  facts.format = formatOf(brands.major);
  std::optional<Box> meta;
  std::optional<Box> movie;
  while (!(meta && movie) && walk.next(box)) {
    if (box.type == fourCharacters("meta") && !meta) meta = box;
    if (box.type == fourCharacters("moov") && !movie) movie = box;
  }
  facts.isComplete = meta && movie;  // nothing tells the end of a file
  if (meta) Items(file, *meta).read(facts);
  if (movie) {
    const ImageFacts track = Sequence(file, *movie).read(facts);
    facts.format = track.format;
    facts.frameCount = track.frameCount;
    if (!facts.width) {
      facts.width = track.width;
      facts.height = track.height;
      facts.isSizeProvisional = !meta;
    }
  }
  if (facts.format == ImageFormat::Unknown && (meta || movie)) facts.format = formatOf(brands.firstCodec);
  facts.isAnimated = facts.frameCount > 1;
}

}  // namespace quorvel
