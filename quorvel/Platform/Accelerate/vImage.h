// vImage: filters on pixels of four bytes, in buffers that belong to the caller.
// Not here: images and contexts (CoreGraphics), the Gaussian blur (CoreImage/CoreImage.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include <quorvel/Platform/CoreGraphics/ImageWork.h>

namespace quorvel {

class CGBitmap;

/// Pixels of four bytes each, rows `rowBytes` apart from the top down. Not owned.
struct vImage_Buffer {
  void* data = nullptr;
  std::size_t height = 0;
  std::size_t width = 0;
  std::size_t rowBytes = 0;

  [[nodiscard]] static vImage_Buffer of(CGBitmap& bitmap);
  /// To be only a source.
  [[nodiscard]] static vImage_Buffer reading(const CGBitmap& bitmap);
  /// At least a pixel each way, and rows that hold their pixels and do not overlap.
  [[nodiscard]] bool isValid() const;
};

/// Pixels beyond the border repeat the nearest one.
inline constexpr std::uint32_t kvImageEdgeExtend = 8;
/// A box side counts as no more than this.
inline constexpr std::uint32_t kLargestBoxSide = 131'071;

/// `vImageBoxConvolve_ARGB8888`: each destination pixel is the mean, rounded to the nearest, of the box around the
/// source pixel at its place plus (`roiX`, `roiY`). Both sides must be odd, the flags `kvImageEdgeExtend`, and the
/// destination must lie within the source and share no memory with it; otherwise false, with nothing done.
[[nodiscard]] bool vImageBoxConvolve_ARGB8888(const vImage_Buffer& source, const vImage_Buffer& destination,
                                              std::size_t roiX, std::size_t roiY, std::uint32_t kernelHeight,
                                              std::uint32_t kernelWidth, std::uint32_t flags,
                                              const ImageWork& work = {});

/// Three box filters of `side` by `side`, each extending its own result at the edges, in one: `result` is within 0.72
/// of a level of their exact mean, flat areas are kept, and the time does not depend on the side. `source` is only
/// read, but must not share memory with `result`, and has its size. The same bytes on every processor. False for an
/// even side and for buffers that do not fit, with nothing done, and when stopped.
[[nodiscard]] bool boxBlurThrice(const vImage_Buffer& source, const vImage_Buffer& result, std::uint32_t side,
                                 const ImageWork& work = {});

/// `vImageMatrixMultiply_ARGB8888`: destination channel j of a pixel is the sum over i of source channel i times
/// `matrix[4 * i + j]`, divided by `divisor`, rounded to the nearest with halves upwards, and clamped to 0 to 255. The
/// destination may be the source. False for a divisor below 1 and for buffers of different sizes.
[[nodiscard]] bool vImageMatrixMultiply_ARGB8888(const vImage_Buffer& source, const vImage_Buffer& destination,
                                                 std::span<const std::int16_t, 16> matrix, std::int32_t divisor);

/// Makes blue, green and red of every pixel, in this order in memory before alpha, 0.3 red + 0.59 green + 0.11 blue as
/// 64-bit floating point numbers give it, truncated. The destination may be the source. False for buffers of different
/// sizes.
[[nodiscard]] bool convertToGray(const vImage_Buffer& source, const vImage_Buffer& destination);

/// Puts `under` beneath the premultiplied pixels of `picture`: each channel is its own plus what is under it times 255
/// less the alpha, through 255, rounded to the nearest, no more than 255. False for buffers of different sizes.
[[nodiscard]] bool layUnder(const vImage_Buffer& under, const vImage_Buffer& picture);

/// Puts one premultiplied pixel, alpha in its highest byte and blue in its lowest, over each of `picture` by the same
/// rule.
void layOver(std::uint32_t pixel, const vImage_Buffer& picture);

}  // namespace quorvel
