#include <algorithm>
#include <cstring>
#include <vector>

#include <quorvel/Platform/Accelerate/BoxRun.h>
#include <quorvel/Platform/Accelerate/PixelBlend.h>
#include <quorvel/Platform/Accelerate/PixelColors.h>
#include <quorvel/Platform/Accelerate/vImage.h>
#include <quorvel/Platform/CoreGraphics/CGImage.h>
#include <quorvel/Platform/Foundation/WideKernels.h>

namespace quorvel {
namespace {

constexpr std::size_t kPixel = 4;

const std::uint8_t* bytesOf(const vImage_Buffer& buffer) { return static_cast<const std::uint8_t*>(buffer.data); }
std::uint8_t* writableBytesOf(const vImage_Buffer& buffer) { return static_cast<std::uint8_t*>(buffer.data); }

bool haveOneSize(const vImage_Buffer& a, const vImage_Buffer& b) {
  return a.isValid() && b.isValid() && a.width == b.width && a.height == b.height;
}

bool runBoxes(const pixels::BoxRun& run, std::uint32_t side, const ImageWork& work) {
  if (!pixels::boxFitsWord(side)) return pixels::runLongBoxes(run, work);
#if defined(__x86_64__)
  if (wide::isAvailable()) return pixels::runBoxesWide(run, work);
#endif
  return pixels::runBoxes(run, work);
}

void copy(const vImage_Buffer& from, const vImage_Buffer& to) {
  for (std::size_t y = 0; y < from.height; ++y) {
    std::memcpy(writableBytesOf(to) + y * to.rowBytes, bytesOf(from) + y * from.rowBytes, from.width * kPixel);
  }
}

/// Means of boxes around the pixels of a row: sums of the columns that move down, and a sum along them.
class BoxMean {
 public:
  BoxMean(const vImage_Buffer& source, std::size_t row, std::uint32_t boxHeight, std::uint32_t boxWidth)
      : source_(source), row_(row), radiusY_(boxHeight / 2), radiusX_(boxWidth / 2), sums_(source.width * kPixel) {
    area_ = std::uint64_t{boxHeight} * boxWidth;
    const std::size_t last = source.height - 1;
    // Rows beyond the border count as often as the box reaches over it.
    const std::size_t above = row < radiusY_ ? radiusY_ - row : 0;
    const std::size_t below = last - row < radiusY_ ? radiusY_ - (last - row) : 0;
    add(0, above);
    add(last, below);
    for (std::size_t y = row - (radiusY_ - above); y <= row + (radiusY_ - below); ++y) add(y, 1);
  }

  void moveDown() {
    const std::size_t last = source_.height - 1;
    const std::uint8_t* const enters = bytesOf(source_) + std::min(row_ + radiusY_ + 1, last) * source_.rowBytes;
    const std::uint8_t* const leaves = bytesOf(source_) + (row_ > radiusY_ ? row_ - radiusY_ : 0) * source_.rowBytes;
    for (std::size_t i = 0; i < sums_.size(); ++i) {
      sums_[i] += static_cast<std::uint32_t>(enters[i]) - static_cast<std::uint32_t>(leaves[i]);
    }
    ++row_;
  }

  /// Means at `x` and on.
  void writeRow(std::size_t x, std::uint8_t* to, std::size_t count) const {
    const std::size_t last = source_.width - 1;
    for (std::size_t channel = 0; channel < kPixel; ++channel) {
      const auto column = [this, channel](std::size_t place) -> std::uint64_t {
        return sums_[place * kPixel + channel];
      };
      const std::size_t before = x < radiusX_ ? radiusX_ - x : 0;
      const std::size_t behind = last - x < radiusX_ ? radiusX_ - (last - x) : 0;
      std::uint64_t sum = column(0) * before + column(last) * behind;
      for (std::size_t place = x - (radiusX_ - before); place <= x + (radiusX_ - behind); ++place) {
        sum += column(place);
      }
      for (std::size_t i = 0; i < count; ++i) {
        to[i * kPixel + channel] = static_cast<std::uint8_t>((sum + area_ / 2) / area_);
        const std::size_t place = x + i;
        sum += column(std::min(place + radiusX_ + 1, last)) - column(place > radiusX_ ? place - radiusX_ : 0);
      }
    }
  }

 private:
  void add(std::size_t row, std::size_t times) {
    if (times == 0) return;
    const std::uint8_t* const from = bytesOf(source_) + row * source_.rowBytes;
    for (std::size_t i = 0; i < sums_.size(); ++i) sums_[i] += static_cast<std::uint32_t>(from[i] * times);
  }

  const vImage_Buffer& source_;
  std::size_t row_;
  std::size_t radiusY_;
  std::size_t radiusX_;
  std::uint64_t area_;
  std::vector<std::uint32_t> sums_;
};

}  // namespace

vImage_Buffer vImage_Buffer::of(CGBitmap& bitmap) {
  return {bitmap.data(), bitmap.height(), bitmap.width(), bitmap.bytesPerRow()};
}

vImage_Buffer vImage_Buffer::reading(const CGBitmap& bitmap) { return of(const_cast<CGBitmap&>(bitmap)); }

bool vImage_Buffer::isValid() const {
  return data != nullptr && height > 0 && width > 0 && width <= SIZE_MAX / kPixel && rowBytes >= width * kPixel;
}

bool vImageBoxConvolve_ARGB8888(const vImage_Buffer& source, const vImage_Buffer& destination, std::size_t roiX,
                                std::size_t roiY, std::uint32_t kernelHeight, std::uint32_t kernelWidth,
                                std::uint32_t flags, const ImageWork& work) {
  if (!source.isValid() || !destination.isValid() || flags != kvImageEdgeExtend) return false;
  if (kernelHeight % 2 == 0 || kernelWidth % 2 == 0) return false;
  if (roiX > source.width || destination.width > source.width - roiX) return false;
  if (roiY > source.height || destination.height > source.height - roiY) return false;
  BoxMean mean(source, roiY, std::min(kernelHeight, kLargestBoxSide), std::min(kernelWidth, kLargestBoxSide));
  for (std::size_t y = 0; y < destination.height; ++y) {
    mean.writeRow(roiX, writableBytesOf(destination) + y * destination.rowBytes, destination.width);
    if (!work.goesOn(static_cast<double>(y + 1) / static_cast<double>(destination.height))) return false;
    mean.moveDown();
  }
  return true;
}

bool boxBlurThrice(const vImage_Buffer& source, const vImage_Buffer& result, std::uint32_t side,
                   const ImageWork& work) {
  if (!haveOneSize(source, result) || side % 2 == 0) return false;
  if (side == 1) {
    copy(source, result);
    return work.goesOn(1);
  }
  side = std::min(side, kLargestBoxSide);
  const int steps = pixels::boxSteps(side);
  std::vector<std::uint8_t> narrow;
  const pixels::BoxRun run{pixels::viewOf(source, result, narrow), pixels::firstBoxPlan(source.height, side, steps),
                           pixels::secondBoxPlan(source.width, side, steps)};
  return runBoxes(run, side, work);
}

bool vImageMatrixMultiply_ARGB8888(const vImage_Buffer& source, const vImage_Buffer& destination,
                                   std::span<const std::int16_t, 16> matrix, std::int32_t divisor) {
  if (!haveOneSize(source, destination) || divisor < 1) return false;
  for (std::size_t y = 0; y < source.height; ++y) {
    pixels::matrixRow(bytesOf(source) + y * source.rowBytes, writableBytesOf(destination) + y * destination.rowBytes,
                      source.width, matrix, divisor);
  }
  return true;
}

bool convertToGray(const vImage_Buffer& source, const vImage_Buffer& destination) {
  if (!haveOneSize(source, destination)) return false;
  for (std::size_t y = 0; y < source.height; ++y) {
    pixels::grayRow(bytesOf(source) + y * source.rowBytes, writableBytesOf(destination) + y * destination.rowBytes,
                    source.width);
  }
  return true;
}

bool layUnder(const vImage_Buffer& under, const vImage_Buffer& picture) {
  if (!haveOneSize(under, picture)) return false;
  for (std::size_t y = 0; y < picture.height; ++y) {
    pixels::layUnder(bytesOf(under) + y * under.rowBytes, writableBytesOf(picture) + y * picture.rowBytes,
                     picture.width);
  }
  return true;
}

void layOver(std::uint32_t pixel, const vImage_Buffer& picture) {
  if (!picture.isValid()) return;
  for (std::size_t y = 0; y < picture.height; ++y) {
    pixels::layOver(pixel, writableBytesOf(picture) + y * picture.rowBytes, picture.width);
  }
}

}  // namespace quorvel
