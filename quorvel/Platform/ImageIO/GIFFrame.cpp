#include <algorithm>

#include <quorvel/Platform/ImageIO/GIFFrame.h>

namespace quorvel {
namespace {

constexpr std::size_t kScreen = 13;
constexpr std::size_t kDescriptor = 9;

unsigned number(ImageBytes bytes, std::size_t at) { return bytes[at] + 256U * bytes[at + 1]; }

/// Takes `count` bytes off the front; nullopt when there are fewer.
std::optional<ImageBytes> take(ImageBytes& from, std::size_t count) {
  if (from.size() < count) return std::nullopt;
  const ImageBytes taken = from.first(count);
  from = from.subspan(count);
  return taken;
}

/// The colours that the flags announce.
std::optional<ImageBytes> takeColors(ImageBytes& from, unsigned flags) {
  return take(from, flags & 0x80 ? std::size_t{3} << ((flags & 7) + 1) : 0);
}

/// Past the blocks of an extension; of the one that tells how a frame is shown, the transparent index is kept.
bool skipExtension(ImageBytes& rest, GIFFrame& frame) {
  const auto label = take(rest, 1);
  if (!label) return false;
  while (const auto size = take(rest, 1)) {
    if (size->front() == 0) return true;
    const auto block = take(rest, size->front());
    if (!block) return false;
    if (label->front() != 0xF9 || block->size() < 4) continue;
    frame.transparent = (*block)[0] & 1 ? std::optional((*block)[3]) : std::nullopt;
  }
  return false;
}

bool readFrame(ImageBytes rest, GIFFrame& frame) {
  const auto descriptor = take(rest, kDescriptor);
  if (!descriptor) return false;
  frame.left = number(*descriptor, 0);
  frame.top = number(*descriptor, 2);
  frame.width = number(*descriptor, 4);
  frame.height = number(*descriptor, 6);
  frame.isInterlaced = (*descriptor)[8] & 0x40;
  const auto colors = takeColors(rest, (*descriptor)[8]);
  const auto codeBits = take(rest, colors ? 1 : SIZE_MAX);
  if (!codeBits) return false;
  if (!colors->empty()) frame.colors = *colors;
  frame.codeBits = codeBits->front();
  frame.blocks = rest;
  if (frame.canvasWidth == 0) frame.canvasWidth = frame.width;
  if (frame.canvasHeight == 0) frame.canvasHeight = frame.height;
  return frame.width != 0 && frame.height != 0 && frame.codeBits >= 1 && frame.codeBits <= 8;
}

}  // namespace

std::optional<GIFFrame> parseGIF(ImageBytes file) {
  const auto screen = take(file, kScreen);
  if (!screen || !std::equal(screen->begin(), screen->begin() + 3, "GIF")) return std::nullopt;
  GIFFrame frame;
  frame.canvasWidth = number(*screen, 6);
  frame.canvasHeight = number(*screen, 8);
  const auto colors = takeColors(file, (*screen)[10]);
  if (!colors) return std::nullopt;
  frame.colors = *colors;
  while (const auto kind = take(file, 1)) {
    if (kind->front() == 0x2C) return readFrame(file, frame) ? std::optional(frame) : std::nullopt;
    if (kind->front() != 0x21 || !skipExtension(file, frame)) return std::nullopt;
  }
  return std::nullopt;
}

GIFIndexes::GIFIndexes(const GIFFrame& frame) : blocks_(frame.blocks), clear_(1U << frame.codeBits) {
  for (unsigned code = 0; code < clear_; ++code) suffixes_[code] = static_cast<std::uint8_t>(code);
  reset();
}

void GIFIndexes::reset() {
  next_ = clear_ + 2;
  width_ = 1;
  while (1U << width_ < next_) ++width_;
  last_ = kNone;
}

bool GIFIndexes::refill() {
  while (block_.empty()) {
    if (blocks_.empty() || blocks_.front() == 0) return false;
    const std::size_t size = std::min<std::size_t>(blocks_.front(), blocks_.size() - 1);
    block_ = blocks_.subspan(1, size);
    blocks_ = blocks_.subspan(1 + size);
  }
  bits_ |= std::uint32_t{block_.front()} << bitCount_;
  bitCount_ += 8;
  block_ = block_.subspan(1);
  return true;
}

unsigned GIFIndexes::nextCode() {
  while (bitCount_ < width_) {
    if (!refill()) return kNone;
  }
  const unsigned code = bits_ & ((1U << width_) - 1);
  bits_ >>= width_;
  bitCount_ -= width_;
  return code;
}

std::uint8_t GIFIndexes::spell(unsigned code) {
  for (; code > clear_; code = prefixes_[code]) ready_[readyCount_++] = suffixes_[code];
  ready_[readyCount_++] = suffixes_[code];
  return suffixes_[code];
}

bool GIFIndexes::unpack() {
  const unsigned code = nextCode();
  if (code == clear_) {
    reset();
    return true;
  }
  // A code may be the one that it defines itself, but none further on.
  if (code == kNone || code == clear_ + 1 || code > next_ || (last_ == kNone && code >= clear_)) return false;
  const bool isNew = code == next_;
  if (isNew) ++readyCount_;
  const std::uint8_t first = spell(isNew ? last_ : code);
  if (isNew) ready_[0] = first;
  if (last_ != kNone && next_ < kCodes) {
    prefixes_[next_] = static_cast<std::uint16_t>(last_);
    suffixes_[next_] = first;
    ++next_;
  }
  if (next_ >= 1U << width_ && width_ < kMostBits) ++width_;
  last_ = code;
  return true;
}

std::size_t GIFIndexes::read(std::uint8_t* to, std::size_t count) {
  std::size_t done = 0;
  while (done < count) {
    while (readyCount_ == 0 && !ended_) ended_ = !unpack();
    if (readyCount_ == 0) break;
    const std::size_t part = std::min(count - done, readyCount_);
    for (std::size_t i = 0; i < part; ++i) to[done++] = ready_[--readyCount_];
  }
  return done;
}

}  // namespace quorvel
