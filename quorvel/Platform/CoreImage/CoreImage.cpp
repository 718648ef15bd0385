#include <cmath>

#include <quorvel/Platform/CoreImage/CoreImage.h>
#include <quorvel/Platform/CoreImage/GaussianKernel.h>
#include <quorvel/Platform/Foundation/WideKernels.h>

namespace quorvel::pixels {
namespace {

/// One side of the bell, the centre first, in integers that sum up over both sides to 2^`bits`.
using Bell = std::array<std::int16_t, kGaussianReach + 1>;

Bell bellOf(int bits) {
  // exp(-1 / (2 * 30^2)); products of it alone, whose last bits do not depend on a mathematical library.
  constexpr double kFirstRatio = 0.99944459873685811;
  std::array<double, kGaussianReach + 1> heights{1};
  double ratio = kFirstRatio;
  double area = 1;
  for (std::size_t i = 1; i < heights.size(); ++i) {
    heights[i] = heights[i - 1] * ratio;
    ratio *= kFirstRatio * kFirstRatio;
    area += 2 * heights[i];
  }
  const double unit = static_cast<double>(1 << bits) / area;
  Bell bell{};
  // Rounded sums of the tail, so that roundings do not add up; the centre takes what both sides leave.
  double tail = 0;
  std::int32_t taken = 0;
  for (std::size_t i = heights.size() - 1; i > 0; --i) {
    tail += heights[i] * unit;
    const auto rounded = static_cast<std::int32_t>(std::lround(tail));
    bell[i] = static_cast<std::int16_t>(rounded - taken);
    taken = rounded;
  }
  bell[0] = static_cast<std::int16_t>((1 << bits) - 2 * taken);
  return bell;
}

GaussianFactors factorsOf(int bits) {
  const Bell bell = bellOf(bits);
  const auto weight = [&bell](std::size_t place, std::size_t step) -> std::int16_t {
    if (place < step || place - step > 2 * kGaussianReach) return 0;
    const std::size_t inside = place - step;
    return bell[inside < kGaussianReach ? kGaussianReach - inside : inside - kGaussianReach];
  };
  GaussianFactors factors{};
  for (std::size_t pair = 0; pair < kGaussianPairs; ++pair) {
    for (std::size_t step = 0; step < kGaussianSteps; ++step) {
      factors[pair][step] = {weight(2 * pair, step), weight(2 * pair + 1, step)};
    }
  }
  return factors;
}

}  // namespace

bool runGaussian(const GaussianRun& run, const ImageWork& work) { return GaussianBands<Lanes>(run).run(work); }

}  // namespace quorvel::pixels

namespace quorvel::CoreImage {

bool clampedGaussianBlur(const vImage_Buffer& source, const vImage_Buffer& destination, const ImageWork& work) {
  if (!source.isValid() || !destination.isValid()) return false;
  if (source.width != destination.width || source.height != destination.height) return false;
  std::vector<std::uint8_t> narrow;
  const pixels::GaussianRun run{pixels::viewOf(source, destination, narrow),
                                pixels::factorsOf(pixels::kGaussianDownBits),
                                pixels::factorsOf(pixels::kGaussianAlongBits)};
#if defined(__x86_64__)
  if (wide::isAvailable()) return pixels::runGaussianWide(run, work);
#endif
  return pixels::runGaussian(run, work);
}

}  // namespace quorvel::CoreImage
