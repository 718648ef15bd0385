// BoxPlan: three box filters over a line of pixels as one recurrence, cut into stretches that need no decisions.
// Not here: the loops that run it (BoxKernel.h).
//
// Along a line x[0] ... x[N - 1] the three filters of side d = 2 r + 1 are sums p1, p2, p3, each extended beyond its
// ends by its own first and last value. Inside, p3 is x filtered by ((1 - z^d) / (1 - z))^3: its third difference is
//     x[n + 3r] - 3 x[n + r - 1] + 3 x[n - r - 2] - x[n - 3r - 3],
// and three additions a step bring back p3, exactly, because integers wrap around and p3 itself fits its word.
// Near the ends the extension of p1 and p2 switches some of the terms off, and adds twice the difference of p1's
// extended values over the window: at r + 2 that of the first two places, at N - r that of the last two.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include <quorvel/Platform/Accelerate/PixelLanes.h>

namespace quorvel::pixels {

/// The largest side that the arithmetic holds: 256 * 31 * d^3 is within 64 bits.
inline constexpr std::uint32_t kLargestBox = 131'071;

/// Steps `begin` to `end` of a line, all with the same factors.
struct BoxStretch {
  std::size_t begin;
  std::size_t end;
  Factors early;                    // for the taps at n + 3r and n + r - 1
  Factors late;                     // for those at n - r - 2 and n - 3r - 3
  std::array<std::size_t, 4> taps;  // at `begin`
  std::array<bool, 4> moves;        // whether a tap goes on with n, or rests at an end of the line
  bool leavesFirst;                 // the difference at the first two places is taken away before
  bool leavesLast;

  /// The factors of the second pair are those of the first, negated and turned round.
  [[nodiscard]] bool isInner() const { return early.first == -late.second && early.second == -late.first; }
};

/// How a sum becomes a value, in integers: shifted to 15 bits, multiplied for the upper half, which has 33 to 64 parts
/// of a level, and shifted again. All that is lost on the way is on average what `bias` puts in first.
struct BoxScale {
  std::uint64_t bias;
  int sumShift;
  std::uint16_t factor;
  int valueShift;
};

struct BoxPlan {
  std::size_t count;   // N
  std::size_t radius;  // r
  std::int16_t gain;   // of every tap, a power of two that fills the sums of small boxes
  BoxScale scale;
  std::array<BoxStretch, 10> stretches;
  std::size_t stretchCount;
};

/// Steps in which a level is kept between the two directions. They are odd, so that whole levels are steps and halves
/// are none: rounded to the nearest twice, values then lean to no side. The sums of the second direction are 256 *
/// steps * d^3 at most: in 32 bits that leaves 31 up to a side of 81, 11 at 113 and 3 from 150 to 177, with which the
/// result is within 0.72 of a level of the exact one. Larger sides have sums of 64 bits. Four times a value in 31 steps
/// fits 16 bits with a sign, as the differences of the taps must.
[[nodiscard]] int boxSteps(std::uint32_t side);
/// Whether sums of 32 bits do.
[[nodiscard]] bool boxFitsWord(std::uint32_t side);

/// From bytes to steps, and from steps to bytes, each rounded to the nearest.
[[nodiscard]] BoxPlan firstBoxPlan(std::size_t count, std::uint32_t side, int steps);
[[nodiscard]] BoxPlan secondBoxPlan(std::size_t count, std::uint32_t side, int steps);

}  // namespace quorvel::pixels
