#include <quorvel/Platform/ImageIO/GIFBlocks.h>

namespace quorvel {
namespace {

constexpr std::uint8_t kExtension = 0x21;
constexpr std::uint8_t kImage = 0x2C;
constexpr std::uint8_t kControl = 0xF9;
constexpr std::uint8_t kApplication = 0xFF;
constexpr std::uint8_t kTableFlag = 0x80;
constexpr std::uint8_t kInterlaceFlag = 0x40;
constexpr std::uint64_t kScreenEnd = 13;

class BlockWalk {
 public:
  explicit BlockWalk(ByteView file) : file_(file), at_(kScreenEnd + tableSize(file.u8(10))) {}

  /// False where no further frame begins.
  bool nextFrame() {
    while (file_.u8(at_) == kExtension) readExtension();
    if (file_.u8(at_) != kImage || !file_.has(at_, 10)) return false;
    frame = at_ + 1;
    // The smallest code's width, and the length of the first piece of pixels.
    const std::uint64_t pixels = frame + 9 + tableSize(file_.u8(frame + 8)) + 1;
    if (!file_.has(pixels, 1)) return false;
    at_ = endOfPieces(pixels);
    return true;
  }
  /// What is left is no block: the trailer, or damage; not what a cut file lacks.
  [[nodiscard]] bool isAtEnd() const { return at_ < file_.size() && file_.u8(at_) != kImage; }

  std::uint64_t frame = 0;  // after its mark: left, top, width, height, flags
  std::uint16_t delay = 0;
  bool isTransparent = false;
  std::optional<std::uint16_t> loopCount;

 private:
  static std::uint64_t tableSize(std::uint8_t flags) { return flags & kTableFlag ? 3U << ((flags & 7) + 1) : 0; }

  std::uint64_t endOfPieces(std::uint64_t at) const {
    while (file_.u8(at)) at += std::uint64_t{file_.u8(at)} + 1;
    return at + 1;
  }

  void readExtension() {
    const std::uint8_t label = file_.u8(at_ + 1);
    const std::uint64_t body = at_ + 2;
    if (label == kControl && file_.u8(body) >= 4) {
      isTransparent = file_.u8(body + 1) & 1;
      delay = file_.little16(body + 2);
    }
    const bool isLooping = file_.is(body, "\x0BNETSCAPE2.0") || file_.is(body,
                                                                         "\x0B"
                                                                         "ANIMEXTS1.0");
    if (label == kApplication && isLooping && file_.u8(body + 12) >= 3 && (file_.u8(body + 13) & 7) == 1) {
      loopCount = file_.little16(body + 14);
    }
    at_ = endOfPieces(body);
  }

  ByteView file_;
  std::uint64_t at_;
};

}  // namespace

bool isGIFFile(ByteView file) { return file.is(0, "GIF87a") || file.is(0, "GIF89a"); }

void readGIFFacts(ByteView file, ImageFacts& facts) {
  facts.format = ImageFormat::GIF;
  facts.width = file.little16(6);
  facts.height = file.little16(8);
  facts.bitsPerComponent = 8;
  facts.colorModel = ImageColorModel::RGB;
  BlockWalk walk(file);
  while (walk.nextFrame()) {
    if (facts.frameCount++ == 0) {
      facts.hasAlpha = walk.isTransparent;
      facts.isProgressive = file.u8(walk.frame + 8) & kInterlaceFlag;
      if (!facts.width) facts.width = file.little16(walk.frame + 4);
      if (!facts.height) facts.height = file.little16(walk.frame + 6);
    }
  }
  facts.isAnimated = facts.frameCount > 1;
  facts.isComplete = walk.isAtEnd();
}

GIFTiming gifTiming(ByteView file) {
  GIFTiming timing;
  BlockWalk walk(file);
  if (walk.nextFrame()) timing.firstDelay = walk.delay;
  while (!walk.loopCount && walk.nextFrame()) continue;
  timing.loopCount = walk.loopCount;
  return timing;
}

}  // namespace quorvel
