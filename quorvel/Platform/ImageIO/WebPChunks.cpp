#include <quorvel/Platform/ImageIO/TIFFDirectory.h>
#include <quorvel/Platform/ImageIO/WebPChunks.h>

namespace quorvel {
namespace {

constexpr std::uint8_t kAlphaFlag = 0x10;
constexpr std::uint8_t kAnimationFlag = 0x02;
constexpr std::uint32_t kSideMask = 0x3FFF;
constexpr std::uint64_t kFrameHeader = 16;

struct Chunk {
  std::uint32_t type = 0;
  std::uint64_t location = 0;
  std::uint64_t length = 0;
};

class WebPWalk {
 public:
  ImageFacts& facts;
  ByteView file;
  bool isExtended = false;
  bool hasFrames = false;

  void read(const Chunk& chunk) {
    switch (chunk.type) {
      case fourCharacters("VP8X"):
        return readExtended(chunk);
      case fourCharacters("VP8 "):
        return readLossy(chunk);
      case fourCharacters("VP8L"):
        return readLossless(chunk);
      case fourCharacters("ANMF"):
        if (hasFrames && file.has(chunk.location, kFrameHeader) && chunk.length >= kFrameHeader) ++facts.frameCount;
        return;
      case fourCharacters("EXIF"):
        return readExif(chunk);
      case fourCharacters("ICCP"):
        if (file.has(chunk.location, chunk.length)) facts.profile = {chunk.location, chunk.length};
        return;
      default:
        return;
    }
  }

 private:
  void setSize(std::uint32_t width, std::uint32_t height) {
    if (isExtended || facts.width) return;
    facts.width = width;
    facts.height = height;
  }

  void readExtended(const Chunk& chunk) {
    if (chunk.length < 10 || !file.has(chunk.location, 10) || facts.frameCount) return;
    const std::uint8_t flags = file.u8(chunk.location);
    setSize(static_cast<std::uint32_t>(file.little(chunk.location + 4, 3)) + 1,
            static_cast<std::uint32_t>(file.little(chunk.location + 7, 3)) + 1);
    isExtended = true;
    hasFrames = flags & kAnimationFlag;
    facts.hasAlpha = flags & kAlphaFlag;
  }

  void readLossy(const Chunk& chunk) {
    const bool isKeyFrame = (file.u8(chunk.location) & 1) == 0;
    if (!file.has(chunk.location, 10) || !isKeyFrame || !file.is(chunk.location + 3, "\x9D\x01\x2A")) return;
    setSize(file.little16(chunk.location + 6) & kSideMask, file.little16(chunk.location + 8) & kSideMask);
    if (!hasFrames) facts.frameCount = 1;
  }

  void readLossless(const Chunk& chunk) {
    if (!file.has(chunk.location, 5) || file.u8(chunk.location) != 0x2F) return;
    const std::uint32_t bits = file.little32(chunk.location + 1);
    setSize((bits & kSideMask) + 1, (bits >> 14 & kSideMask) + 1);
    if (!isExtended) facts.hasAlpha = bits >> 28 & 1;
    if (!hasFrames) facts.frameCount = 1;
  }

  void readExif(const Chunk& chunk) {
    if (facts.exif.length || !file.has(chunk.location, chunk.length)) return;
    // Some writers put the mark of JPEG before it.
    const std::uint64_t skipped = chunk.length > 6 && file.is(chunk.location, std::string_view("Exif\0\0", 6)) ? 6 : 0;
    facts.exif = {chunk.location + skipped, chunk.length - skipped};
  }
};

}  // namespace

bool isWebPFile(ByteView file) { return file.is(0, "RIFF") && file.is(8, "WEBP"); }

void readWebPFacts(ByteView file, ImageFacts& facts) {
  facts.format = ImageFormat::WebP;
  facts.bitsPerComponent = 8;
  facts.colorModel = ImageColorModel::RGB;
  const std::uint64_t end = std::uint64_t{8} + file.little32(4);
  WebPWalk walk{facts, file};
  std::uint64_t at = 12;
  while (at + 8 <= end && file.has(at, 8)) {
    const Chunk chunk{file.big32(at), at + 8, file.little32(at + 4)};
    walk.read(chunk);
    at = chunk.location + chunk.length + (chunk.length & 1);
  }
  facts.isAnimated = facts.frameCount > 1;
  facts.isComplete = at <= file.size() && at + 8 > end;
  facts.exifOrientation = orientationOfTIFFBlock(file.part(facts.exif.location, facts.exif.length));
}

}  // namespace quorvel
