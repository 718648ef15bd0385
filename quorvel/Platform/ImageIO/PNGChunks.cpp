#include <quorvel/Platform/ImageIO/PNGChunks.h>
#include <quorvel/Platform/ImageIO/TIFFDirectory.h>

namespace quorvel {
namespace {

constexpr std::uint32_t kHeader = fourCharacters("IHDR");
constexpr std::uint32_t kPixels = fourCharacters("IDAT");
constexpr std::uint32_t kEnd = fourCharacters("IEND");
constexpr std::uint32_t kAnimation = fourCharacters("acTL");
constexpr std::uint32_t kFrame = fourCharacters("fcTL");
constexpr std::uint32_t kExif = fourCharacters("eXIf");
constexpr std::uint32_t kTransparency = fourCharacters("tRNS");

constexpr std::uint32_t kLargestNumber = INT32_MAX;
constexpr std::uint8_t kPaletteFlag = 1;
constexpr std::uint8_t kColorFlag = 2;
constexpr std::uint8_t kAlphaFlag = 4;

void readHeader(ByteView file, const PNGChunk& chunk, ImageFacts& facts) {
  const std::uint32_t width = file.big32(chunk.location);
  const std::uint32_t height = file.big32(chunk.location + 4);
  if (chunk.length < 13 || width > kLargestNumber || height > kLargestNumber) return;
  const std::uint8_t color = file.u8(chunk.location + 9);
  facts.frameCount = 1;
  facts.width = width;
  facts.height = height;
  facts.bitsPerComponent = color & kPaletteFlag ? 8 : file.u8(chunk.location + 8);
  facts.colorModel = color & kColorFlag ? ImageColorModel::RGB : ImageColorModel::Gray;
  facts.hasAlpha = (color & kAlphaFlag) != 0;
  facts.isProgressive = file.u8(chunk.location + 12) == 1;
}

}  // namespace

bool PNGChunkWalk::nextOrCut(PNGChunk& chunk) {
  if (isAtEnd_ || !file_.has(at_, 8)) return false;
  chunk = {file_.big32(at_ + 4), at_ + 8, file_.big32(at_)};
  if (chunk.length > kLargestNumber) return false;
  at_ = chunk.location + chunk.length + 4;
  isAtEnd_ = chunk.type == kEnd && file_.has(chunk.location, chunk.length);
  return true;
}

bool isPNGFile(ByteView file) { return file.is(0, "\x89PNG\r\n\x1A\n"); }

void readPNGFacts(ByteView file, ImageFacts& facts) {
  facts.format = ImageFormat::PNG;
  std::uint64_t framesDeclared = 0;
  std::uint64_t frames = 0;
  bool hasPixels = false;
  PNGChunk chunk;
  PNGChunkWalk walk(file);
  while (walk.next(chunk)) {
    if (chunk.type == kHeader && !facts.frameCount) readHeader(file, chunk, facts);
    if (chunk.type == kAnimation && !hasPixels && chunk.length >= 8) framesDeclared = file.big32(chunk.location);
    if (chunk.type == kFrame && chunk.length >= 26) ++frames;
    if (chunk.type == kTransparency && !hasPixels) facts.hasAlpha = true;
    if (chunk.type == kExif && !facts.exif.length) facts.exif = {chunk.location, chunk.length};
    hasPixels = hasPixels || chunk.type == kPixels;
  }
  if (facts.frameCount && framesDeclared) {
    facts.format = ImageFormat::APNG;
    facts.frameCount = std::max<std::uint64_t>(1, std::min(frames, framesDeclared));
    facts.isAnimated = facts.frameCount > 1;
  }
  facts.isComplete = walk.isAtEnd();
  facts.exifOrientation = orientationOfTIFFBlock(file.part(facts.exif.location, facts.exif.length));
}

ImageBytes pngChunkBeforePixels(ByteView file, std::uint32_t type) {
  PNGChunk chunk;
  PNGChunkWalk walk(file);
  while (walk.next(chunk) && chunk.type != kPixels) {
    if (chunk.type == type) return file.part(chunk.location, chunk.length);
  }
  return {};
}

}  // namespace quorvel
