// Image files written byte by byte for tests: headers, chunks and directories as wanted, right or wrong. Pixels are
// missing or few.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <quorvel/Platform/ImageIO/ImageFacts.h>

namespace quorvel::test {

using FileBytes = std::vector<std::uint8_t>;

/// Numbers one after the other in a byte order.
class ByteWriter {
 public:
  explicit ByteWriter(bool isLittle = false) : isLittle_(isLittle) {}

  ByteWriter& number(std::uint64_t value, unsigned bytes) {
    for (unsigned i = 0; i < bytes; ++i) {
      file.push_back(static_cast<std::uint8_t>(value >> 8 * (isLittle_ ? i : bytes - 1 - i)));
    }
    return *this;
  }
  ByteWriter& u8(std::uint64_t value) { return number(value, 1); }
  ByteWriter& u16(std::uint64_t value) { return number(value, 2); }
  ByteWriter& u24(std::uint64_t value) { return number(value, 3); }
  ByteWriter& u32(std::uint64_t value) { return number(value, 4); }
  ByteWriter& u64(std::uint64_t value) { return number(value, 8); }
  ByteWriter& text(std::string_view characters) {
    file.insert(file.end(), characters.begin(), characters.end());
    return *this;
  }
  ByteWriter& add(const FileBytes& bytes) {
    file.insert(file.end(), bytes.begin(), bytes.end());
    return *this;
  }
  ByteWriter& zeros(std::size_t count) {
    file.resize(file.size() + count);
    return *this;
  }

  FileBytes file;

 private:
  bool isLittle_;
};

[[nodiscard]] inline FileBytes joined(std::initializer_list<FileBytes> pieces) {
  ByteWriter writer;
  for (const FileBytes& piece : pieces) writer.add(piece);
  return writer.file;
}
/// The first `size` bytes.
[[nodiscard]] inline FileBytes beginning(const FileBytes& file, std::size_t size) {
  return {file.begin(), file.begin() + static_cast<std::ptrdiff_t>(size)};
}
[[nodiscard]] inline FileBytes textBytes(std::string_view characters) { return ByteWriter().text(characters).file; }

/// A TIFF or an EXIF block. Directories that others name are added before them; the first one's place goes to `file`.
class TIFFWriter {
 public:
  struct Field {
    std::uint16_t tag;
    std::uint16_t type;
    std::uint64_t count;
    FileBytes values;
  };

  explicit TIFFWriter(bool isLittle = false, bool isBig = false)
      : isLittle_(isLittle), isBig_(isBig), block_(isLittle) {
    block_.text(isLittle ? "II" : "MM").u16(isBig ? 43 : 42);
    if (isBig) block_.u16(8).u16(0);
    block_.number(0, width());
  }

  [[nodiscard]] Field shorts(std::uint16_t tag, std::initializer_list<std::uint64_t> numbers) const {
    return numbersOf(tag, 3, 2, numbers);
  }
  [[nodiscard]] Field longs(std::uint16_t tag, std::initializer_list<std::uint64_t> numbers) const {
    return numbersOf(tag, 4, 4, numbers);
  }
  /// Two numbers for each rational.
  [[nodiscard]] Field rationals(std::uint16_t tag, std::initializer_list<std::uint64_t> numbers) const {
    Field field = numbersOf(tag, 5, 4, numbers);
    field.count /= 2;
    return field;
  }
  /// With a NUL at its end.
  [[nodiscard]] static Field text(std::uint16_t tag, std::string_view characters) {
    return {tag, 2, characters.size() + 1, ByteWriter().text(characters).u8(0).file};
  }
  [[nodiscard]] static Field bytes(std::uint16_t tag, std::string_view characters) {
    return {tag, 7, characters.size(), textBytes(characters)};
  }

  /// Pixels; their place.
  std::uint64_t append(const FileBytes& bytes) {
    block_.add(bytes);
    return block_.file.size() - bytes.size();
  }
  /// Its place.
  std::uint64_t add(const std::vector<Field>& fields, std::uint64_t next = 0) {
    std::vector<std::uint64_t> places;
    for (const Field& field : fields) {
      places.push_back(block_.file.size());
      if (field.values.size() > width()) block_.add(field.values);
    }
    const std::uint64_t place = block_.file.size();
    block_.number(fields.size(), isBig_ ? 8 : 2);
    for (std::size_t i = 0; i < fields.size(); ++i) {
      const Field& field = fields[i];
      block_.u16(field.tag).u16(field.type).number(field.count, width());
      const bool isInside = field.values.size() <= width();
      if (isInside) block_.add(field.values).zeros(width() - field.values.size());
      if (!isInside) block_.number(places[i], width());
    }
    nextPlace_ = block_.file.size();
    block_.number(next, width());
    return place;
  }
  /// What the last directory that was added names as the next.
  void setNext(std::uint64_t next) { put(nextPlace_, next); }

  [[nodiscard]] FileBytes file(std::uint64_t first) {
    put(isBig_ ? 8 : 4, first);
    return block_.file;
  }

 private:
  [[nodiscard]] unsigned width() const { return isBig_ ? 8 : 4; }
  [[nodiscard]] Field numbersOf(std::uint16_t tag, std::uint16_t type, unsigned bytes,
                                std::initializer_list<std::uint64_t> numbers) const {
    ByteWriter values(isLittle_);
    for (const std::uint64_t number : numbers) values.number(number, bytes);
    return {tag, type, numbers.size(), values.file};
  }
  void put(std::uint64_t at, std::uint64_t value) {
    const FileBytes bytes = ByteWriter(isLittle_).number(value, width()).file;
    std::copy(bytes.begin(), bytes.end(), block_.file.begin() + static_cast<std::ptrdiff_t>(at));
  }

  bool isLittle_;
  bool isBig_;
  ByteWriter block_;
  std::uint64_t nextPlace_ = 0;
};

/// An EXIF block that says only this.
[[nodiscard]] inline FileBytes exifWithOrientation(std::uint16_t orientation, bool isLittle = false) {
  TIFFWriter writer(isLittle);
  return writer.file(writer.add({writer.shorts(274, {orientation})}));
}

[[nodiscard]] inline FileBytes jpegSegment(std::uint8_t marker, const FileBytes& body) {
  return ByteWriter().u8(0xFF).u8(marker).u16(body.size() + 2).add(body).file;
}
[[nodiscard]] inline FileBytes jpegExif(const FileBytes& block) {
  return jpegSegment(0xE1, joined({textBytes(std::string_view("Exif\0\0", 6)), block}));
}
struct JPEGLayout {
  FileBytes segments{};       // in front of the frame
  std::uint8_t frame = 0xC0;  // its marker
  std::uint8_t components = 3;
  std::uint8_t scanned = 3;  // components of the first scan
};
/// As far as the first bytes of its scan.
[[nodiscard]] inline FileBytes jpegFile(std::uint16_t width, std::uint16_t height, const JPEGLayout& layout = {}) {
  ByteWriter frame;
  frame.u8(8).u16(height).u16(width).u8(layout.components);
  for (unsigned i = 1; i <= layout.components; ++i) frame.u8(i).u8(0x11).u8(0);
  ByteWriter scan;
  scan.u8(layout.scanned);
  for (unsigned i = 1; i <= layout.scanned; ++i) scan.u8(i).u8(0);
  scan.u8(0).u8(63).u8(0);
  return ByteWriter()
      .u16(0xFFD8)
      .add(layout.segments)
      .add(jpegSegment(layout.frame, frame.file))
      .add(jpegSegment(0xDA, scan.file))
      .u32(0x12FF0034)
      .u16(0xFFD9)
      .file;
}

[[nodiscard]] inline FileBytes pngChunk(std::string_view type, const FileBytes& data) {
  const FileBytes checked = joined({textBytes(type), data});
  std::uint32_t sum = UINT32_MAX;
  for (const std::uint8_t byte : checked) {
    sum ^= byte;
    for (int i = 0; i < 8; ++i) sum = sum >> 1 ^ (sum & 1 ? 0xEDB88320 : 0);
  }
  return ByteWriter().u32(data.size()).add(checked).u32(~sum).file;
}
struct PNGLayout {
  FileBytes before{};  // chunks in front of the pixels
  FileBytes after{};
  std::uint8_t depth = 8;
  std::uint8_t color = 2;
  bool isInterlaced = false;
};
[[nodiscard]] inline FileBytes pngFile(std::uint32_t width, std::uint32_t height, const PNGLayout& layout = {}) {
  const FileBytes header =
      ByteWriter().u32(width).u32(height).u8(layout.depth).u8(layout.color).u16(0).u8(layout.isInterlaced).file;
  return joined({textBytes("\x89PNG\r\n\x1A\n"), pngChunk("IHDR", header), layout.before,
                 pngChunk("IDAT", {0x78, 0x9C}), layout.after, pngChunk("IEND", {})});
}
[[nodiscard]] inline FileBytes pngAnimation(std::uint32_t frames) {
  return pngChunk("acTL", ByteWriter().u32(frames).u32(0).file);
}
[[nodiscard]] inline FileBytes pngFrame(std::uint32_t number) {
  return pngChunk("fcTL", ByteWriter().u32(number).zeros(22).file);
}

/// The descriptor of a frame over the whole canvas and a code for a pixel.
[[nodiscard]] inline FileBytes gifFrame(std::uint16_t width, std::uint16_t height, std::uint8_t flags = 0) {
  ByteWriter writer(true);
  writer.u8(0x2C).u32(0).u16(width).u16(height).u8(flags);
  if (flags & 0x80) writer.zeros(std::size_t{3} << ((flags & 7) + 1));
  return writer.u8(2).u8(2).u8(0x44).u8(1).u8(0).file;
}
[[nodiscard]] inline FileBytes gifControl(std::uint16_t delay, bool isTransparent = false) {
  return ByteWriter(true).u8(0x21).u8(0xF9).u8(4).u8(isTransparent).u16(delay).u8(0).u8(0).file;
}
[[nodiscard]] inline FileBytes gifLoop(std::uint16_t count) {
  return ByteWriter(true).u8(0x21).u8(0xFF).u8(11).text("NETSCAPE2.0").u8(3).u8(1).u16(count).u8(0).file;
}
/// `blocks` between the screen, with a table of two colours, and the trailer.
[[nodiscard]] inline FileBytes gifFile(std::uint16_t width, std::uint16_t height, const FileBytes& blocks) {
  return ByteWriter(true).text("GIF89a").u16(width).u16(height).u8(0x80).u16(0).zeros(6).add(blocks).u8(0x3B).file;
}

[[nodiscard]] inline FileBytes webpChunk(std::string_view type, const FileBytes& data) {
  return ByteWriter(true).text(type).u32(data.size()).add(data).zeros(data.size() % 2).file;
}
[[nodiscard]] inline FileBytes webpFile(const FileBytes& chunks) {
  return ByteWriter(true).text("RIFF").u32(chunks.size() + 4).text("WEBP").add(chunks).file;
}
[[nodiscard]] inline FileBytes webpLossy(std::uint16_t width, std::uint16_t height) {
  return webpChunk("VP8 ", ByteWriter(true).u24(0).u24(0x2A019D).u16(width).u16(height).u16(0).file);
}
[[nodiscard]] inline FileBytes webpLossless(std::uint32_t width, std::uint32_t height, bool hasAlpha) {
  const std::uint32_t bits = (width - 1) | (height - 1) << 14 | (hasAlpha ? 1U << 28 : 0);
  return webpChunk("VP8L", ByteWriter(true).u8(0x2F).u32(bits).zeros(3).file);
}
[[nodiscard]] inline FileBytes webpExtended(std::uint32_t width, std::uint32_t height, std::uint8_t flags) {
  return webpChunk("VP8X", ByteWriter(true).u32(flags).u24(width - 1).u24(height - 1).file);
}
[[nodiscard]] inline FileBytes webpFrame() { return webpChunk("ANMF", FileBytes(16)); }

[[nodiscard]] inline FileBytes isoBox(std::string_view type, const FileBytes& body) {
  return ByteWriter().u32(body.size() + 8).text(type).add(body).file;
}
/// With a version and no flags.
[[nodiscard]] inline FileBytes isoFullBox(std::string_view type, const FileBytes& body, std::uint8_t version = 0) {
  return isoBox(type, ByteWriter().u8(version).u24(0).add(body).file);
}
[[nodiscard]] inline FileBytes isoType(std::string_view major, std::string_view compatible = "") {
  return isoBox("ftyp", ByteWriter().text(major).u32(0).text(compatible).file);
}
[[nodiscard]] inline FileBytes isoSize(std::uint32_t width, std::uint32_t height) {
  return isoFullBox("ispe", ByteWriter().u32(width).u32(height).file);
}
struct ISOItem {
  std::uint16_t number;
  std::string_view type;
  std::vector<std::uint8_t> properties;  // by their place, the first 1
};
/// The box of meta data; the first item is the primary one. `more` stands at its end.
[[nodiscard]] inline FileBytes isoMeta(const std::vector<ISOItem>& items, const FileBytes& properties,
                                       const FileBytes& more = {}) {
  ByteWriter list;
  list.u16(items.size());
  ByteWriter associations;
  associations.u32(items.size());
  for (const ISOItem& item : items) {
    list.add(isoFullBox("infe", ByteWriter().u16(item.number).u16(0).text(item.type).u8(0).file, 2));
    associations.u16(item.number).u8(item.properties.size());
    for (const std::uint8_t index : item.properties) associations.u8(index | 0x80);
  }
  return isoFullBox(
      "meta",
      joined({isoFullBox("hdlr", ByteWriter().u32(0).text("pict").zeros(13).file),
              isoFullBox("pitm", ByteWriter().u16(items.front().number).file), isoFullBox("iinf", list.file),
              isoBox("iprp", joined({isoBox("ipco", properties), isoFullBox("ipma", associations.file)})), more}));
}

/// The headers of a bitmap with an info header of `headerSize` bytes.
[[nodiscard]] inline FileBytes bmpFile(std::int32_t width, std::int32_t height, std::uint32_t headerSize = 40,
                                       std::uint32_t compression = 0, std::uint32_t alphaMask = 0) {
  ByteWriter writer(true);
  writer.text("BM").zeros(12).u32(headerSize);
  const auto w = static_cast<std::uint32_t>(width);
  const auto h = static_cast<std::uint32_t>(height);
  if (headerSize == 12) return writer.u16(w).u16(h).u16(1).u16(24).file;
  writer.u32(w).u32(h).u16(1).u16(32).u32(compression).zeros(32).u32(alphaMask);
  writer.file.resize(14 + std::max<std::size_t>(headerSize, 16));
  return writer.file;
}

struct IconPicture {
  std::uint8_t width;  // 0 for 256
  std::uint8_t height;
  FileBytes file;
};
[[nodiscard]] inline FileBytes icoFile(const std::vector<IconPicture>& pictures, std::uint16_t kind = 1) {
  ByteWriter writer(true);
  writer.u16(0).u16(kind).u16(pictures.size());
  std::size_t place = 6 + 16 * pictures.size();
  for (const auto& [width, height, file] : pictures) {
    writer.u8(width).u8(height).u16(0).u16(1).u16(32).u32(file.size()).u32(place);
    place += file.size();
  }
  for (const IconPicture& picture : pictures) writer.add(picture.file);
  return writer.file;
}

/// A profile with this name in the form of version 2 or 4.
[[nodiscard]] inline FileBytes iccProfile(std::string_view name, bool isVersion4 = false) {
  ByteWriter tag;
  tag.text(isVersion4 ? "mluc" : "desc").u32(0);
  if (isVersion4) {
    tag.u32(2).u32(12).text("deDE").u32(2).u32(40).text("enUS").u32(2 * name.size()).u32(42).u16('x');
    for (const char unit : name) tag.u16(static_cast<std::uint8_t>(unit));
  } else {
    tag.u32(name.size() + 1).text(name).u8(0);
  }
  return ByteWriter()
      .zeros(36)
      .text("acsp")
      .zeros(88)
      .u32(1)
      .text("desc")
      .u32(144)
      .u32(tag.file.size())
      .add(tag.file)
      .file;
}

}  // namespace quorvel::test
