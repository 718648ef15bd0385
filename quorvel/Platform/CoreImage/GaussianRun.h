// The Gaussian blur as the kernels take it. Included by sources only.
#pragma once

#include <array>

#include <quorvel/Platform/Accelerate/PixelView.h>
#include <quorvel/Platform/CoreImage/CoreImage.h>

namespace quorvel::pixels {

inline constexpr std::size_t kGaussianReach = 4 * CoreImage::kGaussianRadius;
/// Results that are summed at once: their windows together have an even number of places.
inline constexpr std::size_t kGaussianSteps = 4;
inline constexpr std::size_t kGaussianPairs = (2 * kGaussianReach + kGaussianSteps) / 2;

/// For each pair of neighbouring places from the first window's begin on, the factors for each of the results.
using GaussianFactors = std::array<std::array<Factors, kGaussianSteps>, kGaussianPairs>;

struct GaussianRun {
  PixelView view;
  GaussianFactors down;
  GaussianFactors along;
};

/// From bytes the weights sum up to 2^21, the most that 16 bits hold; 14 bits of the mean go on, rounded to the
/// nearest. With those the weights sum up to 2^17, so that the sums stay below 2^31.
inline constexpr int kGaussianDownBits = 21;
inline constexpr int kGaussianAlongBits = 17;
inline constexpr int kGaussianFractionBits = 6;

[[nodiscard]] bool runGaussian(const GaussianRun& run, const ImageWork& work);
#if defined(__x86_64__)
[[nodiscard]] bool runGaussianWide(const GaussianRun& run, const ImageWork& work);
#endif

}  // namespace quorvel::pixels
