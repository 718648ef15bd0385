#include <algorithm>
#include <bit>

#include <quorvel/Platform/Accelerate/BoxPlan.h>

namespace quorvel::pixels {
namespace {

constexpr std::uint64_t kMostSteps = 31;
constexpr std::uint64_t kLeastSteps = 3;
constexpr std::uint64_t kMostParts = 64;

std::uint64_t cube(std::uint32_t side) { return std::uint64_t{side} * side * side; }

/// For sums in which a level is `level`, to values of `steps` a level: first the gain that fills 15 bits, or the shift
/// that leaves 15.
void setScale(BoxPlan& plan, std::uint64_t level, std::uint64_t steps) {
  const int width = static_cast<int>(std::bit_width(256 * level - 1));
  const int gainShift = std::max(0, 15 - width);
  plan.gain = static_cast<std::int16_t>(1 << gainShift);
  level <<= gainShift;
  plan.scale.sumShift = width + gainShift - 15;
  plan.scale.valueShift = static_cast<int>(std::bit_width(kMostParts / steps)) - 1;
  const std::uint64_t parts = steps << plan.scale.valueShift;
  // 65536 * parts * 2^sumShift / level, with the shift taken from the level where the product would not fit.
  const int excess = std::max(0, plan.scale.sumShift - 40);
  const std::uint64_t unit = level >> excess;
  const std::uint64_t factor = ((parts << (16 + plan.scale.sumShift - excess)) + unit / 2) / unit;
  plan.scale.factor = static_cast<std::uint16_t>(std::min<std::uint64_t>(factor, UINT16_MAX));
  const std::uint64_t lostByShift = (std::uint64_t{1} << plan.scale.sumShift) / 2;
  plan.scale.bias = level / (2 * steps) + lostByShift + level / (2 * parts);
}

/// Places along the line that a stretch must not cross, from 1 to N.
std::size_t bordersOf(const BoxPlan& plan, std::array<std::size_t, 11>& borders) {
  const auto r = static_cast<std::int64_t>(plan.radius);
  const auto count = static_cast<std::int64_t>(plan.count);
  const std::int64_t all[] = {
      1, 2, r + 2, r + 3, 2 * r + 3, 3 * r + 3, count - 3 * r, count - 2 * r, count - r, count - r + 1, count};
  std::size_t size = 0;
  for (const std::int64_t border : all) {
    if (border >= 1 && border <= count) borders[size++] = static_cast<std::size_t>(border);
  }
  std::sort(borders.begin(), borders.begin() + static_cast<std::ptrdiff_t>(size));
  return static_cast<std::size_t>(std::unique(borders.begin(), borders.begin() + static_cast<std::ptrdiff_t>(size)) -
                                  borders.begin());
}

void setTaps(BoxStretch& stretch, std::int64_t r, std::int64_t count) {
  const std::int64_t offsets[] = {3 * r, r - 1, -r - 2, -3 * r - 3};
  for (std::size_t tap = 0; tap < 4; ++tap) {
    const std::int64_t first = static_cast<std::int64_t>(stretch.begin) + offsets[tap];
    const std::int64_t last = static_cast<std::int64_t>(stretch.end) - 1 + offsets[tap];
    stretch.taps[tap] = static_cast<std::size_t>(std::clamp<std::int64_t>(first, 0, count - 1));
    stretch.moves[tap] = first >= 0 && last < count;
  }
}

BoxStretch stretchOf(const BoxPlan& plan, std::size_t begin, std::size_t end) {
  const auto r = static_cast<std::int64_t>(plan.radius);
  const auto count = static_cast<std::int64_t>(plan.count);
  const auto n = static_cast<std::int64_t>(begin);
  // Which of the differences x[m + r] - x[m - r - 1], of p1, take part: at m = n + 2r, twice at n - 1, at n - 2r - 2.
  const int ahead = n + 2 * r < count ? 1 : 0;
  const int middle = (n >= 2 && n + r < count ? 1 : 0) + (n >= r + 3 ? 1 : 0);
  const int behind = n >= 2 * r + 3 ? 1 : 0;
  const auto times = [gain = plan.gain](int factor) { return static_cast<std::int16_t>(factor * gain); };
  BoxStretch stretch{};
  stretch.begin = begin;
  stretch.end = end;
  stretch.early = {times(ahead), times(-ahead - middle)};
  stretch.late = {times(middle + behind), times(-behind)};
  setTaps(stretch, r, count);
  stretch.leavesFirst = n == r + 2;
  stretch.leavesLast = n == count - r;
  return stretch;
}

BoxPlan planOf(std::size_t count, std::uint32_t side, std::uint64_t level, int steps) {
  BoxPlan plan{};
  plan.count = count;
  plan.radius = side / 2;
  setScale(plan, level, static_cast<std::uint64_t>(steps));
  std::array<std::size_t, 11> borders{};
  const std::size_t size = bordersOf(plan, borders);
  plan.stretchCount = size - 1;
  for (std::size_t i = 0; i + 1 < size; ++i) plan.stretches[i] = stretchOf(plan, borders[i], borders[i + 1]);
  return plan;
}

}  // namespace

bool boxFitsWord(std::uint32_t side) { return kLeastSteps * cube(side) <= std::uint64_t{1} << 24; }

int boxSteps(std::uint32_t side) {
  const std::uint64_t most = boxFitsWord(side) ? (std::uint64_t{1} << 24) / cube(side) : kMostSteps;
  return static_cast<int>(std::min(kMostSteps, (most - 1) | 1));
}

BoxPlan firstBoxPlan(std::size_t count, std::uint32_t side, int steps) {
  return planOf(count, side, cube(side), steps);
}

BoxPlan secondBoxPlan(std::size_t count, std::uint32_t side, int steps) {
  return planOf(count, side, cube(side) * static_cast<std::uint64_t>(steps), 1);
}

}  // namespace quorvel::pixels
