// The loops of the Gaussian blur over bands of rows, for one width of lanes. Included once by each source that makes
// them, as the loops of the boxes are.
#pragma once

#include <algorithm>
#include <vector>

#include <quorvel/Platform/CoreImage/GaussianRun.h>

#if !defined(QUORVEL_KERNEL)
#define QUORVEL_KERNEL
#endif

namespace quorvel::pixels {
namespace {

template <class L>
class GaussianBands {
 public:
  QUORVEL_KERNEL explicit GaussianBands(const GaussianRun& run)
      : run_(run),
        view_(run.view),
        // The border's columns are repeated on both sides, so that windows along the band need no decisions.
        band_((view_.paddedWidth + 2 * kGaussianReach + kGaussianSteps) * kBandChannels),
        bytes_((view_.width + kGaussianSteps) * kBandChannels),
        places_(2 * kGaussianPairs) {}

  QUORVEL_KERNEL bool run(const ImageWork& work) {
    for (std::size_t row = 0; row < view_.height; row += kBandRows) {
      for (std::size_t half = 0; half < kBandRows; half += kGaussianSteps) down(row, half);
      repeatBorders();
      for (std::size_t group = 0; group < kBandChannels; group += L::kChannels) along(group);
      const std::size_t end = std::min(view_.height, row + kBandRows);
      storeBand(bytes_.data(), view_.width, end - row, view_.destination + row * view_.destinationRowBytes,
                view_.destinationRowBytes);
      if (!work.goesOn(static_cast<double>(end) / static_cast<double>(view_.height))) return false;
    }
    return true;
  }

 private:
  using Sums = typename L::Sums;

  /// Four means; `at(i)` loads what stands at the window's place i.
  template <int kShift, class At>
  QUORVEL_KERNEL static void means(const GaussianFactors& factors, const At& at,
                                   typename L::Units (&results)[kGaussianSteps]) {
    const Sums half = L::splatSum(std::uint64_t{1} << (kShift - 1));
    Sums sums[kGaussianSteps] = {half, half, half, half};
    for (std::size_t pair = 0; pair < kGaussianPairs; ++pair) {
      const typename L::Units first = at(2 * pair);
      const typename L::Units second = at(2 * pair + 1);
      for (std::size_t step = 0; step < kGaussianSteps; ++step) {
        sums[step] = L::plus(sums[step], L::products(first, second, L::factor(factors[pair][step])));
      }
    }
    for (std::size_t step = 0; step < kGaussianSteps; ++step) results[step] = L::narrowed(sums[step], kShift);
  }

  struct AtRows {
    const std::size_t* places;
    const std::uint8_t* from;
    QUORVEL_KERNEL typename L::Units operator()(std::size_t i) const { return L::load(from + places[i]); }
  };
  struct AtColumns {
    const std::uint16_t* from;
    QUORVEL_KERNEL typename L::Units operator()(std::size_t i) const { return L::load(from + i * kBandChannels); }
  };

  QUORVEL_KERNEL void down(std::size_t row, std::size_t half) {
    for (std::size_t i = 0; i < places_.size(); ++i) {
      const std::size_t place = row + half + i;
      const std::size_t inside = place > kGaussianReach ? place - kGaussianReach : 0;
      places_[i] = std::min(inside, view_.height - 1) * view_.sourceRowBytes;
    }
    const std::size_t channels = view_.paddedWidth * 4;
    for (std::size_t i = 0; i < channels; i += L::kChannels) {
      const std::size_t channel = std::min(i, channels - L::kChannels);
      typename L::Units results[kGaussianSteps];
      means<kGaussianDownBits - kGaussianFractionBits>(run_.down, AtRows{places_.data(), view_.source + channel},
                                                       results);
      std::uint16_t* const to = band_.data() + (channel / 4 + kGaussianReach) * kBandChannels + 4 * half;
      for (std::size_t step = 0; step < kGaussianSteps; ++step) L::scatter(results[step], to + 4 * step, kBandChannels);
    }
  }

  void repeatBorders() {
    const auto column = [this](std::size_t x) {
      return band_.begin() + static_cast<std::ptrdiff_t>(x * kBandChannels);
    };
    const std::size_t end = kGaussianReach + view_.width;
    for (std::size_t x = 0; x < kGaussianReach; ++x) std::copy_n(column(kGaussianReach), kBandChannels, column(x));
    for (std::size_t x = end; x < end + kGaussianReach; ++x) std::copy_n(column(end - 1), kBandChannels, column(x));
  }

  QUORVEL_KERNEL void along(std::size_t group) {
    for (std::size_t x = 0; x < view_.width; x += kGaussianSteps) {
      typename L::Units results[kGaussianSteps];
      means<kGaussianAlongBits + kGaussianFractionBits>(run_.along, AtColumns{band_.data() + x * kBandChannels + group},
                                                        results);
      for (std::size_t step = 0; step < kGaussianSteps; ++step) {
        L::storeBytes(results[step], bytes_.data() + (x + step) * kBandChannels + group);
      }
    }
  }

  const GaussianRun& run_;
  const PixelView& view_;
  std::vector<std::uint16_t> band_;
  std::vector<std::uint8_t> bytes_;
  std::vector<std::size_t> places_;
};

}  // namespace
}  // namespace quorvel::pixels
