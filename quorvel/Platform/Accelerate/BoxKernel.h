// The loops of three box filters over bands of rows, for one width of lanes. Included once by each source that makes
// them: one for every processor, one that marks them with QUORVEL_KERNEL for a wider instruction set.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include <quorvel/Platform/Accelerate/BoxPlan.h>
#include <quorvel/Platform/Accelerate/BoxRun.h>

#if !defined(QUORVEL_KERNEL)
#define QUORVEL_KERNEL
#endif

namespace quorvel::pixels {
namespace {

template <class L, class Element>
class BoxLine {
 public:
  using Units = typename L::Units;
  using Sums = typename L::Sums;

  /// p3, its difference and the difference of that, as they are after a step.
  struct State {
    Sums value, slope, bend;
  };

  /// `stride` is from one place of the line to the next, in elements.
  QUORVEL_KERNEL BoxLine(const BoxPlan& plan, const Element* line, std::size_t stride)
      : plan_(plan), line_(line), stride_(stride), last_(plan.count - 1) {}

  /// The state at place 0.
  [[nodiscard]] QUORVEL_KERNEL State start() const {
    const auto one = L::factor({plan_.gain, 0});
    const auto difference = L::factor({plan_.gain, static_cast<std::int16_t>(-plan_.gain)});
    const std::size_t r = plan_.radius;
    const std::size_t within = std::min(r, last_);
    const Sums first = L::products(at(0), at(0), one);
    Sums p1 = L::plus(times(first, r + 1), times(L::products(at(last_), at(last_), one), r - within));
    for (std::size_t j = 1; j <= within; ++j) p1 = L::plus(p1, L::products(at(j), at(j), one));
    const Sums p1First = p1;
    Sums p2 = times(p1, r + 1);
    for (std::size_t j = 1; j <= within; ++j) {
      p1 = L::plus(p1, L::products(at(j + r), at(0), difference));
      p2 = L::plus(p2, p1);
    }
    p2 = L::plus(p2, times(p1, r - within));
    const Sums p2First = p2;
    Sums p3 = L::plus(times(p2, r + 1), L::splatSum(plan_.scale.bias));
    for (std::size_t j = 1; j <= within; ++j) {
      if (j + r <= last_) p1 = L::plus(p1, L::products(at(j + 2 * r), at(j - 1), difference));
      p2 = L::plus(p2, L::minus(p1, p1First));
      p3 = L::plus(p3, p2);
    }
    p3 = L::plus(p3, times(p2, r - within));
    return {p3, L::minus(p2, p2First), r <= last_ ? L::minus(p1, p1First) : L::zero()};
  }

  /// Steps `begin` to `end` of a stretch; `take` is given each result's place and units.
  template <class Take>
  QUORVEL_KERNEL void run(State& state, const BoxStretch& stretch, std::size_t begin, std::size_t end,
                          const Take& take) const {
    if (begin == stretch.begin) {
      if (stretch.leavesFirst) state.bend = L::minus(state.bend, difference(1, std::min(plan_.radius + 1, last_)));
      if (stretch.leavesLast) {
        state.bend = L::minus(state.bend, difference(last_ > plan_.radius ? last_ - plan_.radius : 1, last_));
      }
    }
    if (stretch.isInner()) {
      steps<true>(state, stretch, begin, end, take);
    } else {
      steps<false>(state, stretch, begin, end, take);
    }
  }

  [[nodiscard]] QUORVEL_KERNEL static Units scaled(const Sums& value, const BoxScale& scale) {
    const Units upper = L::upper(L::narrowed(value, scale.sumShift), L::splat(scale.factor));
    return L::shifted(upper, scale.valueShift);
  }

 private:
  /// The taps of a band down the columns are 32 rows far from each other, more than processors follow by themselves;
  /// what the strips after the next ones read is asked for, in elements from here.
  static constexpr std::size_t kAhead = 128;

  [[nodiscard]] QUORVEL_KERNEL Units at(std::size_t place) const {
    return L::load(line_ + std::min(place, last_) * stride_);
  }

  [[nodiscard]] QUORVEL_KERNEL static Sums times(Sums sums, std::size_t factor) {
    Sums result = L::zero();
    for (; factor != 0; factor >>= 1) {
      if ((factor & 1) != 0) result = L::plus(result, sums);
      sums = L::plus(sums, sums);
    }
    return result;
  }

  /// p1 at `to` less p1 before `from`.
  [[nodiscard]] QUORVEL_KERNEL Sums difference(std::size_t from, std::size_t to) const {
    const auto factor = L::factor({plan_.gain, static_cast<std::int16_t>(-plan_.gain)});
    const std::size_t r = plan_.radius;
    Sums sums = L::zero();
    for (std::size_t m = from; m <= to; ++m) {
      sums = L::plus(sums, L::products(at(m + r), at(m > r ? m - r - 1 : 0), factor));
    }
    return sums;
  }

  template <bool kInner, class Take>
  QUORVEL_KERNEL void steps(State& state, const BoxStretch& stretch, std::size_t begin, std::size_t end,
                            const Take& take) const {
    const Element* taps[4];
    std::size_t strides[4];
    for (std::size_t tap = 0; tap < 4; ++tap) {
      strides[tap] = stretch.moves[tap] ? stride_ : 0;
      taps[tap] = line_ + stretch.taps[tap] * stride_ + (begin - stretch.begin) * strides[tap];
    }
    const auto early = L::factor(kInner ? Factors{stretch.early.first, stretch.late.first} : stretch.early);
    const auto late = L::factor(stretch.late);
    // Copies, because what a byte pointer writes might otherwise be any of these.
    const BoxScale scale = plan_.scale;
    const Take out = take;
    State now = state;
    for (std::size_t n = begin; n < end; ++n) {
      const Units x[4] = {L::load(taps[0]), L::load(taps[1]), L::load(taps[2]), L::load(taps[3])};
      if constexpr (sizeof(Element) == 1) {
        for (const Element* tap : taps) __builtin_prefetch(tap + kAhead);
      }
      if constexpr (kInner) {
        now.bend = L::plus(now.bend, L::products(L::minus(x[0], x[3]), L::minus(x[2], x[1]), early));
      } else {
        now.bend = L::plus(now.bend, L::plus(L::products(x[0], x[1], early), L::products(x[2], x[3], late)));
      }
      now.slope = L::plus(now.slope, now.bend);
      now.value = L::plus(now.value, now.slope);
      out(n, scaled(now.value, scale));
      for (std::size_t tap = 0; tap < 4; ++tap) taps[tap] += strides[tap];
    }
    state = now;
  }

  const BoxPlan& plan_;
  const Element* line_;
  std::size_t stride_;
  std::size_t last_;
};

/// Both directions, band after band of rows: down the columns into a band that lies transposed, each pixel's channels
/// in 16 bits and the rows of a pixel column beside each other; along it in the same way; and back into rows.
template <class L>
class BoxBands {
 public:
  QUORVEL_KERNEL explicit BoxBands(const BoxRun& run)
      : run_(run),
        view_(run.view),
        strips_((view_.paddedWidth * 4 + L::kChannels - 1) / L::kChannels),
        states_(strips_ * sizeof(typename Columns::State)),
        band_(view_.paddedWidth * kBandChannels),
        bytes_((view_.width + 4) * kBandChannels) {}

  QUORVEL_KERNEL bool run(const ImageWork& work) {
    for (std::size_t row = 0; row < view_.height; row += kBandRows) {
      const std::size_t end = std::min(view_.height, row + kBandRows);
      for (std::size_t strip = 0; strip < strips_; ++strip) down(strip, row, end);
      for (std::size_t group = 0; group < kBandChannels; group += L::kChannels) along(group);
      storeBand(bytes_.data(), view_.width, end - row, view_.destination + row * view_.destinationRowBytes,
                view_.destinationRowBytes);
      if (!work.goesOn(static_cast<double>(end) / static_cast<double>(view_.height))) return false;
    }
    return true;
  }

 private:
  using Columns = BoxLine<L, std::uint8_t>;
  using Rows = BoxLine<L, std::uint16_t>;

  struct TakeUnits {
    std::uint16_t* to;
    std::size_t firstRow;
    QUORVEL_KERNEL void operator()(std::size_t row, typename L::Units units) const {
      L::scatter(units, to + (row - firstRow) * 4, kBandChannels);
    }
  };
  struct TakeBytes {
    std::uint8_t* to;
    QUORVEL_KERNEL void operator()(std::size_t x, typename L::Units units) const {
      L::storeBytes(units, to + x * kBandChannels);
    }
  };

  QUORVEL_KERNEL void down(std::size_t strip, std::size_t row, std::size_t end) {
    // The last strip is moved back into the row, over channels that the one before has answered too.
    const std::size_t channel = std::min(strip * L::kChannels, view_.paddedWidth * 4 - L::kChannels);
    const Columns columns(run_.columns, view_.source + channel, view_.sourceRowBytes);
    const TakeUnits take{band_.data() + channel / 4 * kBandChannels, row};
    std::byte* const kept = states_.data() + strip * sizeof(typename Columns::State);
    typename Columns::State state;
    if (row == 0) {
      state = columns.start();
      take(0, Columns::scaled(state.value, run_.columns.scale));
    } else {
      std::memcpy(&state, kept, sizeof state);
    }
    walk(columns, run_.columns, state, row, end, take);
    std::memcpy(kept, &state, sizeof state);
  }

  QUORVEL_KERNEL void along(std::size_t group) {
    const Rows rows(run_.rows, band_.data() + group, kBandChannels);
    const TakeBytes take{bytes_.data() + group};
    typename Rows::State state = rows.start();
    take(0, Rows::scaled(state.value, run_.rows.scale));
    walk(rows, run_.rows, state, 0, view_.width, take);
  }

  template <class Line, class Take>
  QUORVEL_KERNEL static void walk(const Line& line, const BoxPlan& plan, typename Line::State& state, std::size_t begin,
                                  std::size_t end, const Take& take) {
    for (std::size_t i = 0; i < plan.stretchCount; ++i) {
      const BoxStretch& stretch = plan.stretches[i];
      const std::size_t from = std::max(begin, stretch.begin);
      const std::size_t to = std::min(end, stretch.end);
      if (from < to) line.run(state, stretch, from, to, take);
    }
  }

  const BoxRun& run_;
  const PixelView& view_;
  std::size_t strips_;
  std::vector<std::byte> states_;  // of the strips, wherever they lie: a wide vector may ask for more than memory gives
  std::vector<std::uint16_t> band_;
  std::vector<std::uint8_t> bytes_;
};

}  // namespace
}  // namespace quorvel::pixels
