#include <algorithm>
#include <cstring>

#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/ImageIO/GIFFrame.h>
#include <quorvel/Platform/ImageIO/GIFReader.h>
#include <quorvel/Platform/ImageIO/Inflater.h>
#include <quorvel/Platform/ImageIO/PixelRows.h>

namespace quorvel {
namespace {

constexpr std::size_t kPixel = 4;
constexpr std::uint32_t kBand = 64;

/// Blue, green, red, alpha for each index; beyond the colours black, the transparent one nothing.
class Colors {
 public:
  explicit Colors(const GIFFrame& frame) {
    for (std::size_t i = 0; i < 256; ++i) {
      std::uint8_t* const color = bytes_.data() + kPixel * i;
      color[3] = 255;
      if (3 * i + 3 <= frame.colors.size()) std::reverse_copy(&frame.colors[3 * i], &frame.colors[3 * i] + 3, color);
    }
    if (frame.transparent) std::memset(bytes_.data() + kPixel * *frame.transparent, 0, kPixel);
  }
  void paint(const std::uint8_t* indexes, std::size_t count, std::uint8_t* to) const {
    for (std::size_t i = 0; i < count; ++i) std::memcpy(to + kPixel * i, bytes_.data() + kPixel * indexes[i], kPixel);
  }

 private:
  std::array<std::uint8_t, kPixel * 256> bytes_{};
};

/// The frame's rows from the top.
class FrameRows {
 public:
  explicit FrameRows(const GIFFrame& frame)
      : frame_(frame), indexes_(frame), plane_(std::size_t{frame.width} * (frame.isInterlaced ? frame.height : 1)) {
    if (plane_.get() && frame.isInterlaced) readPasses();
  }
  [[nodiscard]] bool hasMemory() const { return plane_.get(); }

  /// The next row and how many of its indexes there are, fewer only before the end.
  std::pair<const std::uint8_t*, std::size_t> next() {
    if (!frame_.isInterlaced) return {plane_.get(), indexes_.read(plane_.get(), frame_.width)};
    const bool isKnown = row_ < knownRows_;
    return {plane_.get() + std::size_t{frame_.width} * row_++, isKnown ? frame_.width : 0};
  }

 private:
  /// A row stands for those below it until they come.
  void readPasses() {
    constexpr std::uint32_t kPasses[][2] = {{0, 8}, {4, 8}, {2, 4}, {1, 2}};
    for (const auto& [first, step] : kPasses) {
      const std::uint32_t high = first == 0 ? step : step - first;
      for (std::uint32_t y = first; y < frame_.height; y += step) {
        std::uint8_t* const row = plane_.get() + std::size_t{frame_.width} * y;
        if (indexes_.read(row, frame_.width) < frame_.width) return;
        const std::uint32_t bottom = std::min(y + high, frame_.height);
        for (std::uint32_t each = 1; each < bottom - y; ++each) {
          std::memcpy(row + std::size_t{frame_.width} * each, row, frame_.width);
        }
        knownRows_ = std::max(knownRows_, bottom);
      }
    }
  }

  const GIFFrame& frame_;
  GIFIndexes indexes_;
  RawBytes plane_;
  std::uint32_t row_ = 0;
  std::uint32_t knownRows_ = 0;
};

/// Rows of the canvas from the top, as long as the frame's are there.
class Canvas {
 public:
  Canvas(const GIFFrame& frame, PixelRows& result, const ImageWork& work)
      : frame_(frame), result_(result), work_(work), colors_(frame) {
    const std::uint32_t room = frame.left < frame.canvasWidth ? frame.canvasWidth - frame.left : 0;
    width_ = std::min(frame.width, room);
  }

  /// False when not a single pixel of the frame came, or the work was stopped.
  bool paint(FrameRows& rows) {
    bool isAny = false;
    for (std::uint32_t y = 0; y < frame_.canvasHeight; ++y) {
      std::uint8_t* const row = result_.room();
      std::memset(row, 0, frame_.canvasWidth * kPixel);
      if (y >= frame_.top && y - frame_.top < frame_.height) {
        const auto [indexes, count] = rows.next();
        if (count == 0) return isAny;
        isAny = true;
        if (width_ != 0) colors_.paint(indexes, std::min<std::size_t>(count, width_), row + frame_.left * kPixel);
      }
      result_.add();
      if (y % kBand == kBand - 1 && !work_.goesOn((y + 1.0) / frame_.canvasHeight)) return false;
    }
    // A frame beside the canvas leaves it empty.
    return isAny || frame_.top >= frame_.canvasHeight;
  }

 private:
  const GIFFrame& frame_;
  PixelRows& result_;
  const ImageWork& work_;
  Colors colors_;
  std::size_t width_ = 0;
};

}  // namespace

std::shared_ptr<CGBitmap> readGIF(ImageBytes file, const ImageFacts& facts, PixelSize wanted, const ImageWork& work) {
  const auto frame = parseGIF(file);
  if (!frame || frame->canvasWidth != facts.width || frame->canvasHeight != facts.height) return nullptr;
  if (std::uint64_t{frame->width} * frame->height > static_cast<std::uint64_t>(limits::kImagePixels)) return nullptr;
  auto result = PixelRows::make({facts.width, facts.height}, wanted);
  if (!result) return nullptr;
  FrameRows rows(*frame);
  if (!rows.hasMemory() || !Canvas(*frame, *result, work).paint(rows)) return nullptr;
  return result->take();
}

}  // namespace quorvel
