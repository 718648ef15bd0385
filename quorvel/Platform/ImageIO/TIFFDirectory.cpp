#include <bit>

#include <quorvel/Platform/ImageIO/TIFFDirectory.h>

namespace quorvel {
namespace {

// Tags.
constexpr std::uint16_t kWidth = 256;
constexpr std::uint16_t kHeight = 257;
constexpr std::uint16_t kBitsPerSample = 258;
constexpr std::uint16_t kPhotometric = 262;
constexpr std::uint16_t kOrientation = 274;
constexpr std::uint16_t kExtraSamples = 338;
constexpr std::uint16_t kProfile = 34675;

// Types of values.
constexpr std::uint16_t kByte = 1;
constexpr std::uint16_t kShort = 3;
constexpr std::uint16_t kLong = 4;
constexpr std::uint16_t kRational = 5;
constexpr std::uint16_t kSignedByte = 6;
constexpr std::uint16_t kSignedShort = 8;
constexpr std::uint16_t kSignedLong = 9;
constexpr std::uint16_t kSignedRational = 10;
constexpr std::uint16_t kFloat = 11;
constexpr std::uint16_t kDouble = 12;
constexpr std::uint16_t kDirectory = 13;
constexpr std::uint16_t kLong8 = 16;
constexpr std::uint16_t kSignedLong8 = 17;
constexpr std::uint16_t kDirectory8 = 18;

/// Bytes of one value of a type; 0 for a type that is none.
constexpr std::uint8_t kSizes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4, 0, 0, 8, 8, 8};

unsigned sizeOfType(std::uint16_t type) { return type < std::size(kSizes) ? kSizes[type] : 0; }

constexpr std::size_t kTextBytes = 65'536;

ImageColorModel modelOf(std::uint64_t photometric) {
  constexpr ImageColorModel kModels[] = {ImageColorModel::Gray, ImageColorModel::Gray,    ImageColorModel::RGB,
                                         ImageColorModel::RGB,  ImageColorModel::Gray,    ImageColorModel::CMYK,
                                         ImageColorModel::RGB,  ImageColorModel::Unknown, ImageColorModel::Lab};
  return photometric < std::size(kModels) ? kModels[photometric] : ImageColorModel::Unknown;
}

std::uint32_t side(std::optional<std::uint64_t> pixels) {
  return pixels && *pixels <= UINT32_MAX ? static_cast<std::uint32_t>(*pixels) : 0;
}

}  // namespace

std::optional<TIFFBlock> TIFFBlock::open(ImageBytes bytes) {
  const ByteView view(bytes);
  const bool isLittle = view.is(0, "II");
  if (!isLittle && !view.is(0, "MM")) return std::nullopt;
  const std::uint64_t version = isLittle ? view.little(2, 2) : view.big(2, 2);
  if (version == 42) return TIFFBlock(view, isLittle, false);
  const std::uint64_t offsetBytes = isLittle ? view.little(4, 2) : view.big(4, 2);
  if (version == 43 && offsetBytes == 8) return TIFFBlock(view, isLittle, true);
  return std::nullopt;
}

std::uint64_t TIFFBlock::entryCount(std::uint64_t directory) const {
  const unsigned head = isBig_ ? 8 : 2;
  if (directory == 0 || !view_.has(directory, head)) return 0;
  const std::uint64_t room = (view_.size() - directory - head) / (isBig_ ? 20 : 12);
  return std::min(offset(directory, head), room);
}

TIFFField TIFFBlock::entry(std::uint64_t directory, std::uint64_t index) const {
  const std::uint64_t at = directory + (isBig_ ? 8 + 20 * index : 2 + 12 * index);
  TIFFField field{static_cast<std::uint16_t>(offset(at, 2)), static_cast<std::uint16_t>(offset(at + 2, 2))};
  const unsigned width = isBig_ ? 8 : 4;
  const std::uint64_t count = offset(at + 4, width);
  const unsigned size = sizeOfType(field.type);
  if (size == 0 || count > view_.size() / size) return field;
  const std::uint64_t place = at + 4 + width;
  field.location = count * size <= width ? place : offset(place, width);
  if (!view_.has(field.location, count * size)) return field;
  field.count = count;
  field.length = count * size;
  return field;
}

std::optional<TIFFField> TIFFBlock::find(std::uint64_t directory, std::uint16_t tag) const {
  const std::uint64_t count = entryCount(directory);
  for (std::uint64_t i = 0; i < count; ++i) {
    const TIFFField field = entry(directory, i);
    if (field.tag == tag) return field;
  }
  return std::nullopt;
}

std::optional<double> TIFFBlock::number(const TIFFField& field, std::uint64_t index) const {
  if (index >= field.count) return std::nullopt;
  const unsigned size = sizeOfType(field.type);
  const std::uint64_t at = field.location + index * size;
  const std::uint64_t bits = offset(at, size);
  const auto ratio = [](double part, double whole) { return whole == 0 ? std::nullopt : std::optional(part / whole); };
  switch (field.type) {
    case kByte:
    case kShort:
    case kLong:
    case kDirectory:
    case kLong8:
    case kDirectory8:
      return static_cast<double>(bits);
    case kSignedByte:
    case kSignedShort:
    case kSignedLong:
    case kSignedLong8:
      return static_cast<double>(static_cast<std::int64_t>(bits << (64 - 8 * size)) >> (64 - 8 * size));
    case kRational:
      return ratio(static_cast<double>(offset(at, 4)), static_cast<double>(offset(at + 4, 4)));
    case kSignedRational:
      return ratio(static_cast<std::int32_t>(offset(at, 4)), static_cast<std::int32_t>(offset(at + 4, 4)));
    case kFloat:
      return static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(bits)));
    case kDouble:
      return std::bit_cast<double>(bits);
    default:
      return std::nullopt;
  }
}

std::optional<std::uint64_t> TIFFBlock::integer(const TIFFField& field) const {
  constexpr std::uint32_t kWhole =
      1U << kByte | 1U << kShort | 1U << kLong | 1U << kDirectory | 1U << kLong8 | 1U << kDirectory8;
  if (field.count == 0 || !(kWhole >> field.type & 1)) return std::nullopt;
  return offset(field.location, sizeOfType(field.type));
}

std::optional<std::uint64_t> TIFFBlock::integer(std::uint64_t directory, std::uint16_t tag) const {
  const auto field = find(directory, tag);
  return field ? integer(*field) : std::nullopt;
}

std::uint64_t TIFFBlock::nextDirectory(std::uint64_t directory) const {
  const unsigned head = isBig_ ? 8 : 2;
  if (!view_.has(directory, head)) return UINT64_MAX;
  const std::uint64_t count = offset(directory, head);
  if (count > view_.size()) return UINT64_MAX;
  const std::uint64_t at = directory + head + count * (isBig_ ? 20 : 12);
  return view_.has(at, isBig_ ? 8 : 4) ? offset(at, isBig_ ? 8 : 4) : UINT64_MAX;
}

std::size_t TIFFBlock::pagesBeforeRepeating(std::size_t length) const {
  std::uint64_t ahead = firstDirectory();
  for (std::size_t i = 0; i < length; ++i) ahead = nextDirectory(ahead);
  std::size_t before = 0;
  for (std::uint64_t behind = firstDirectory(); behind != ahead; ++before) {
    behind = nextDirectory(behind);
    ahead = nextDirectory(ahead);
  }
  return before + length;
}

std::size_t TIFFBlock::pageCount() const {
  // Brent's way to find a cycle without remembering all: `anchor` waits at ever longer distances until the walk comes
  // by it again, which takes at most three times as many steps as there are pages.
  constexpr std::size_t kSteps = 4 * kPages;
  std::uint64_t anchor = 0;
  std::size_t sinceAnchor = 0;
  std::size_t patience = 1;
  std::size_t pages = 0;
  for (std::uint64_t at = firstDirectory(); pages < kSteps && entryCount(at) > 0; ++pages, ++sinceAnchor) {
    if (at == anchor) return std::min(kPages, pagesBeforeRepeating(sinceAnchor));
    if (sinceAnchor == patience || pages == 0) {
      anchor = at;
      patience *= 2;
      sinceAnchor = 0;
    }
    at = nextDirectory(at);
  }
  return std::min(kPages, pages);
}

bool isTIFFFile(ByteView file) { return TIFFBlock::open(file.part(0)).has_value(); }

void readTIFFFacts(ByteView file, ImageFacts& facts) {
  const auto block = TIFFBlock::open(file.part(0));
  if (!block) return;
  facts.format = ImageFormat::TIFF;
  const std::uint64_t first = block->firstDirectory();
  facts.frameCount = block->pageCount();
  facts.width = side(block->integer(first, kWidth));
  facts.height = side(block->integer(first, kHeight));
  facts.colorModel = modelOf(block->integer(first, kPhotometric).value_or(UINT64_MAX));
  const std::uint64_t bits = block->integer(first, kBitsPerSample).value_or(1);
  facts.bitsPerComponent = static_cast<std::uint8_t>(std::min<std::uint64_t>(bits, UINT8_MAX));
  const std::uint64_t extra = block->integer(first, kExtraSamples).value_or(0);
  facts.hasAlpha = extra == 1 || extra == 2;
  facts.exifOrientation = orientationOfTIFFBlock(file.part(0));
  if (const auto profile = block->find(first, kProfile)) facts.profile = {profile->location, profile->length};
  if (facts.profile.length == 0) facts.profile = {};
}

std::uint8_t orientationOfTIFFBlock(ImageBytes bytes) {
  const auto block = TIFFBlock::open(bytes);
  const std::uint64_t number = block ? block->integer(block->firstDirectory(), kOrientation).value_or(1) : 1;
  return number >= 1 && number <= 8 ? static_cast<std::uint8_t>(number) : std::uint8_t{1};
}

String textOfBytes(ImageBytes bytes) {
  bytes = bytes.first(std::min(bytes.size(), kTextBytes));
  std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  text = text.substr(0, text.find('\0'));
  text = text.substr(0, text.find_last_not_of(' ') + 1);
  if (auto utf8 = String::fromUTF8(text)) return std::move(*utf8);
  StringBuilder latin;
  latin.appendASCII(text);
  return latin.finish();
}

}  // namespace quorvel
