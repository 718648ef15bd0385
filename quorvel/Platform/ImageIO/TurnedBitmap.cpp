#include <algorithm>
#include <cstring>

#include <quorvel/Platform/ImageIO/TurnedBitmap.h>

namespace quorvel {
namespace {

/// How a stored picture comes to be shown: first its rows and columns change places, then the shown picture is
/// mirrored.
struct Turn {
  bool isTransposed;
  bool isMirrored;
  bool isUpsideDown;
};

constexpr Turn turnOf(UIImageOrientation orientation) {
  switch (orientation) {
    case UIImageOrientation::Up:
      return {false, false, false};
    case UIImageOrientation::Down:
      return {false, true, true};
    case UIImageOrientation::Left:
      return {true, false, true};
    case UIImageOrientation::Right:
      return {true, true, false};
    case UIImageOrientation::UpMirrored:
      return {false, true, false};
    case UIImageOrientation::DownMirrored:
      return {false, false, true};
    case UIImageOrientation::LeftMirrored:
      return {true, false, false};
    case UIImageOrientation::RightMirrored:
      return {true, true, true};
  }
  return {false, false, false};
}

/// Pixels of a side of what is moved together: as many as fill a line of the cache.
constexpr std::size_t kBlock = 16;

std::uint32_t pixelAt(const std::uint8_t* row, std::size_t x) {
  std::uint32_t pixel;
  std::memcpy(&pixel, row + 4 * x, sizeof pixel);
  return pixel;
}

void setPixel(std::uint8_t* row, std::size_t x, std::uint32_t pixel) { std::memcpy(row + 4 * x, &pixel, sizeof pixel); }

/// Rows `begin` to `end` of the result.
void moveRows(const CGBitmap& from, CGBitmap& to, const Turn& turn, std::size_t begin, std::size_t end) {
  const std::size_t width = to.width();
  for (std::size_t y = begin; y < end; ++y) {
    const std::uint8_t* const source = from.row(turn.isUpsideDown ? to.height() - 1 - y : y);
    std::uint8_t* const row = to.row(y);
    if (!turn.isMirrored) {
      std::memcpy(row, source, 4 * width);
    } else {
      for (std::size_t x = 0; x < width; ++x) setPixel(row, x, pixelAt(source, width - 1 - x));
    }
  }
}

void moveTransposedRows(const CGBitmap& from, CGBitmap& to, const Turn& turn, std::size_t begin, std::size_t end) {
  const std::size_t width = to.width();
  for (std::size_t left = 0; left < width; left += kBlock) {
    const std::size_t right = std::min(left + kBlock, width);
    for (std::size_t y = begin; y < end; ++y) {
      const std::size_t column = turn.isUpsideDown ? to.height() - 1 - y : y;
      std::uint8_t* const row = to.row(y);
      for (std::size_t x = left; x < right; ++x) {
        setPixel(row, x, pixelAt(from.row(turn.isMirrored ? width - 1 - x : x), column));
      }
    }
  }
}

}  // namespace

std::shared_ptr<const CGBitmap> turnedBitmap(std::shared_ptr<const CGBitmap> bitmap, UIImageOrientation orientation,
                                             const ImageWork& work) {
  if (!bitmap || orientation == UIImageOrientation::Up) return bitmap;
  const Turn turn = turnOf(orientation);
  const auto width = static_cast<std::int64_t>(turn.isTransposed ? bitmap->height() : bitmap->width());
  const auto height = static_cast<std::int64_t>(turn.isTransposed ? bitmap->width() : bitmap->height());
  auto result = CGBitmap::make(width, height);
  if (!result) return nullptr;
  for (std::size_t y = 0; y < result->height(); y += kBlock) {
    const std::size_t end = std::min(y + kBlock, result->height());
    (turn.isTransposed ? moveTransposedRows : moveRows)(*bitmap, *result, turn, y, end);
    if (!work.goesOn(static_cast<double>(end) / static_cast<double>(result->height()))) return nullptr;
  }
  return result;
}

}  // namespace quorvel
