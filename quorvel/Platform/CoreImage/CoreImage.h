// CoreImage: the Gaussian blur on pixels of four bytes.
// Not here: the faster blur by boxes (Accelerate/vImage.h).
#pragma once

#include <quorvel/Platform/Accelerate/vImage.h>

namespace quorvel::CoreImage {

/// Standard deviation of the blur, in pixels.
inline constexpr int kGaussianRadius = 30;

/// "CIAffineClamp" and "CIGaussianBlur" with the radius 30, cropped to the source: each channel's mean, weighted by the
/// Gaussian bell cut off at four times its standard deviation, the pixels of the border repeated without end. Within 1
/// of the exact value, the same bytes on every processor. The buffers have one size and share no memory; false
/// otherwise, and when stopped.
[[nodiscard]] bool clampedGaussianBlur(const vImage_Buffer& source, const vImage_Buffer& destination,
                                       const ImageWork& work = {});

}  // namespace quorvel::CoreImage
