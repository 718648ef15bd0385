#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include <sys/mman.h>

#include <quorvel/Platform/CoreGraphics/CGImage.h>
#include <quorvel/Platform/Foundation/Limits.h>

namespace quorvel {
namespace {

constexpr std::size_t kAlignment = 64;
/// From here on memory is asked for in pages of two megabytes: to be handed thousands of small ones takes longer than
/// to write them.
constexpr std::size_t kLarge = std::size_t{4} * 1024 * 1024;
constexpr std::size_t kPixel = 4;

/// Both ends of a side in whole pixels, outwards but for what arithmetic alone adds, within 0 to `limit`.
struct Span {
  std::size_t start = 0;
  std::size_t end = 0;

  Span(double origin, double length, std::size_t limit) {
    constexpr double kRounding = 1e-6;
    const double low = std::floor(std::min(origin, origin + length) + kRounding);
    const double high = std::ceil(std::max(origin, origin + length) - kRounding);
    // A comparison with NaN fails, and leaves nothing; of a length that is none, nothing is left either.
    if (std::isnan(length) || !(low < static_cast<double>(limit)) || !(high > 0)) return;
    start = low > 0 ? static_cast<std::size_t>(low) : 0;
    end = high < static_cast<double>(limit) ? static_cast<std::size_t>(high) : limit;
  }
};

/// nullptr without memory. Large memory is zero: the kernel gives such pages.
void* makePixels(std::size_t size) {
  if (size < kLarge) return std::aligned_alloc(kAlignment, size);
  void* const data = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (data == MAP_FAILED) return nullptr;
  ::madvise(data, size, MADV_HUGEPAGE);
  return data;
}

void freePixels(void* data, std::size_t size) {
  if (size < kLarge) {
    std::free(data);
  } else {
    ::munmap(data, size);
  }
}

}  // namespace

std::shared_ptr<CGBitmap> CGBitmap::make(std::int64_t width, std::int64_t height) {
  auto bitmap = makeUnset(width, height);
  if (!bitmap) return nullptr;
  const std::size_t size = bitmap->bytesPerRow_ * bitmap->height_;
  if (size < kLarge) std::memset(bitmap->data_, 0, size);
  return bitmap;
}

std::shared_ptr<CGBitmap> CGBitmap::makeUnset(std::int64_t width, std::int64_t height) {
  if (width <= 0 || height <= 0 || width > limits::kImageSide || height > limits::kImageSide) return nullptr;
  if (width * height > limits::kImagePixels) return nullptr;
  const auto columns = static_cast<std::size_t>(width);
  const auto rows = static_cast<std::size_t>(height);
  const std::size_t bytesPerRow = (columns * kPixel + kAlignment - 1) / kAlignment * kAlignment;
  void* const data = makePixels(bytesPerRow * rows);
  if (!data) return nullptr;
  return std::shared_ptr<CGBitmap>(new CGBitmap(columns, rows, bytesPerRow, static_cast<std::uint8_t*>(data)));
}

CGBitmap::~CGBitmap() { freePixels(data_, bytesPerRow_ * height_); }

std::shared_ptr<CGBitmap> CGBitmap::copy() const {
  auto result = makeUnset(static_cast<std::int64_t>(width_), static_cast<std::int64_t>(height_));
  if (result) std::memcpy(result->data_, data_, bytesPerRow_ * height_);
  return result;
}

CGImage CGImage::inRect(const CGRect& rectangle) const {
  const Span columns(rectangle.x, rectangle.width, width());
  const Span rows(rectangle.y, rectangle.height, height());
  if (columns.start >= columns.end || rows.start >= rows.end) return {};
  auto part = CGBitmap::make(static_cast<std::int64_t>(columns.end - columns.start),
                             static_cast<std::int64_t>(rows.end - rows.start));
  if (!part) return {};
  for (std::size_t y = rows.start; y < rows.end; ++y) {
    std::memcpy(part->row(y - rows.start), bitmap_->row(y) + columns.start * kPixel, part->width() * kPixel);
  }
  return CGImage(std::move(part));
}

bool CGImage::isOpaque() const {
  for (std::size_t y = 0; y < height(); ++y) {
    const std::uint8_t* const row = bitmap_->row(y);
    std::uint32_t all = UINT32_MAX;
    for (std::size_t x = 0; x < width(); ++x) {
      std::uint32_t pixel;
      std::memcpy(&pixel, row + x * kPixel, sizeof pixel);
      all &= pixel;
    }
    if (all >> 24 != 0xFF) return false;
  }
  return true;
}

}  // namespace quorvel
