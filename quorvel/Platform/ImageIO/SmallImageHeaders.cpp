#include <quorvel/Platform/ImageIO/PNGChunks.h>
#include <quorvel/Platform/ImageIO/SmallImageHeaders.h>

namespace quorvel {
namespace {

constexpr std::uint64_t kInfoHeader = 14;
constexpr std::uint32_t kOldHeaderSize = 12;

bool isHeaderSize(std::uint32_t size) {
  return size == kOldHeaderSize || (size >= 16 && size <= 64 && size % 4 == 0) || size == 108 || size == 124;
}

/// Of a signed number; 0 for the one that has none.
std::uint32_t magnitude(std::uint32_t bits) {
  const auto number = static_cast<std::int32_t>(bits);
  if (number >= 0) return bits;
  return number == INT32_MIN ? 0 : static_cast<std::uint32_t>(-number);
}

constexpr std::uint64_t kEntries = 6;
constexpr std::uint64_t kEntrySize = 16;

struct IconEntry {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint64_t location = 0;
  std::uint64_t length = 0;
  [[nodiscard]] std::uint64_t area() const { return std::uint64_t{width} * height; }
};

std::uint32_t iconSide(std::uint8_t byte) { return byte ? byte : 256; }

IconEntry readIconEntry(ByteView file, std::uint64_t at) {
  IconEntry entry{iconSide(file.u8(at)), iconSide(file.u8(at + 1)), file.little32(at + 12), file.little32(at + 8)};
  const ByteView picture(file.part(entry.location, entry.length));
  if (isPNGFile(picture) && picture.is(12, "IHDR") && picture.has(16, 8)) {
    entry.width = picture.big32(16);
    entry.height = picture.big32(20);
  }
  return entry;
}

}  // namespace

bool isBMPFile(ByteView file) { return file.is(0, "BM") && isHeaderSize(file.little32(kInfoHeader)); }

void readBMPFacts(ByteView file, ImageFacts& facts) {
  facts.format = ImageFormat::BMP;
  const std::uint32_t headerSize = file.little32(kInfoHeader);
  const bool isOld = headerSize == kOldHeaderSize;
  facts.isComplete = file.has(kInfoHeader, std::min(headerSize, 56U));
  if (!file.has(kInfoHeader, isOld ? 12 : 16)) return;
  facts.frameCount = 1;
  facts.bitsPerComponent = 8;
  facts.colorModel = ImageColorModel::RGB;
  facts.width = isOld ? file.little16(18) : file.little32(18);
  facts.height = isOld ? file.little16(20) : magnitude(file.little32(22));
  if (facts.width > INT32_MAX) facts.width = 0;
  const std::uint32_t compression = headerSize >= 40 ? file.little32(30) : 0;
  const bool hasMasks = (compression == 3 && headerSize >= 56) || compression == 6;
  facts.hasAlpha = hasMasks && file.little32(66) != 0;
}

bool isICOFile(ByteView file) {
  const std::uint16_t kind = file.little16(2);
  const std::uint64_t count = file.little16(4);
  const bool isEmptyAhead = file.is(0, std::string_view("\0\0", 2)) && (file.u8(9) == 0 || file.u8(9) == 255);
  const bool hasPicture = file.little32(14) > 0 && file.little32(18) >= kEntries + kEntrySize * count;
  return isEmptyAhead && (kind == 1 || kind == 2) && count > 0 && hasPicture;
}

void readICOFacts(ByteView file, ImageFacts& facts) {
  facts.format = ImageFormat::ICO;
  facts.bitsPerComponent = 8;
  facts.colorModel = ImageColorModel::RGB;
  facts.hasAlpha = true;
  IconEntry largest;
  const std::uint64_t count = file.little16(4);
  for (; facts.frameCount < count; ++facts.frameCount) {
    const std::uint64_t at = kEntries + kEntrySize * facts.frameCount;
    if (!file.has(at, kEntrySize)) break;
    const IconEntry entry = readIconEntry(file, at);
    facts.isComplete = file.has(entry.location, 24) && (facts.isComplete || facts.frameCount == 0);
    if (entry.area() > largest.area()) largest = entry;
  }
  facts.isComplete = facts.isComplete && facts.frameCount == count;
  facts.isSizeProvisional = !facts.isComplete;
  facts.width = largest.width;
  facts.height = largest.height;
}

bool isPDFFile(ByteView file) {
  constexpr std::uint64_t kBegin = 1024;
  const ByteView begin(file.part(0, kBegin));
  for (std::uint64_t at = begin.find(0, '%'); at < begin.size(); at = begin.find(at + 1, '%')) {
    if (begin.is(at, "%PDF-")) return true;
  }
  return false;
}

void readPDFFacts(ByteView file, ImageFacts& facts) {
  facts.format = ImageFormat::PDF;
  // What stands in front of the mark may yet turn out to be an SVG that speaks of it.
  facts.isComplete = file.is(0, "%PDF-");
}

}  // namespace quorvel
