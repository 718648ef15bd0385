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

/// Where the pixels of a transposed result come from.
class Transposition {
 public:
  Transposition(const CGBitmap& from, CGBitmap& to, const Turn& turn) : from_(from), to_(to), turn_(turn) {}

  /// Rows `begin` to `end` of the result, block by block.
  void moveRows(std::size_t begin, std::size_t end) {
    for (std::size_t left = 0; left < to_.width(); left += kBlock) {
      const std::size_t right = std::min(left + kBlock, to_.width());
      std::size_t y = begin;
      for (; y + kTile <= end; y += kTile) moveTiles(left, right, y);
      for (; y < end; ++y) movePixels(left, right, y);
    }
  }

 private:
  /// Pixels of a side of what is turned in registers.
  static constexpr std::size_t kTile = 4;
  using Four = std::uint32_t __attribute__((vector_size(16)));

  [[nodiscard]] const std::uint8_t* sourceRow(std::size_t x) const {
    return from_.row(turn_.isMirrored ? to_.width() - 1 - x : x);
  }

  void movePixels(std::size_t left, std::size_t right, std::size_t y) {
    const std::size_t column = turn_.isUpsideDown ? to_.height() - 1 - y : y;
    for (std::size_t x = left; x < right; ++x) setPixel(to_.row(y), x, pixelAt(sourceRow(x), column));
  }

  void moveTiles(std::size_t left, std::size_t right, std::size_t y) {
    std::size_t x = left;
    for (; x + kTile <= right; x += kTile) moveTile(x, y);
    for (std::size_t row = y; row < y + kTile; ++row) movePixels(x, right, row);
  }

  void moveTile(std::size_t x, std::size_t y) {
    const std::size_t column = turn_.isUpsideDown ? to_.height() - kTile - y : y;
    Four rows[kTile];
    for (std::size_t i = 0; i < kTile; ++i) std::memcpy(&rows[i], sourceRow(x + i) + 4 * column, sizeof(Four));
    const Four low01 = __builtin_shufflevector(rows[0], rows[1], 0, 4, 1, 5);
    const Four high01 = __builtin_shufflevector(rows[0], rows[1], 2, 6, 3, 7);
    const Four low23 = __builtin_shufflevector(rows[2], rows[3], 0, 4, 1, 5);
    const Four high23 = __builtin_shufflevector(rows[2], rows[3], 2, 6, 3, 7);
    const Four columns[kTile] = {
        __builtin_shufflevector(low01, low23, 0, 1, 4, 5), __builtin_shufflevector(low01, low23, 2, 3, 6, 7),
        __builtin_shufflevector(high01, high23, 0, 1, 4, 5), __builtin_shufflevector(high01, high23, 2, 3, 6, 7)};
    for (std::size_t i = 0; i < kTile; ++i) {
      std::memcpy(to_.row(turn_.isUpsideDown ? y + kTile - 1 - i : y + i) + 4 * x, &columns[i], sizeof(Four));
    }
  }

  const CGBitmap& from_;
  CGBitmap& to_;
  Turn turn_;
};

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
    if (turn.isTransposed) {
      Transposition(*bitmap, *result, turn).moveRows(y, end);
    } else {
      moveRows(*bitmap, *result, turn, y, end);
    }
    if (!work.goesOn(static_cast<double>(end) / static_cast<double>(result->height()))) return nullptr;
  }
  return result;
}

}  // namespace quorvel
