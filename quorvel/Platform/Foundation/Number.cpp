#include <bit>
#include <cmath>

#include <quorvel/Platform/Foundation/Hash.h>
#include <quorvel/Platform/Foundation/Number.h>

namespace quorvel {
namespace {

constexpr double kTwo63 = 9223372036854775808.0;
constexpr double kTwo64 = 18446744073709551616.0;

/// An integer of 64 bits of either sign, as sign and magnitude.
struct Whole {
  bool negative;
  std::uint64_t magnitude;
};

Whole wholeOf(Number number) {
  const std::uint64_t bits = number.bits();
  const bool negative = number.kind() != Number::Kind::Unsigned && static_cast<std::int64_t>(bits) < 0;
  return {negative, negative ? 0 - bits : bits};
}

std::weak_ordering compareWhole(Whole a, Whole b) {
  if (a.negative != b.negative) return a.negative ? std::weak_ordering::less : std::weak_ordering::greater;
  return a.negative ? b.magnitude <=> a.magnitude : a.magnitude <=> b.magnitude;
}

std::weak_ordering compareWholeToDouble(Whole whole, double value) {
  if (std::isnan(value) || value < -kTwo63) return std::weak_ordering::greater;
  if (value >= kTwo64) return std::weak_ordering::less;
  const double cut = std::trunc(value);
  const Whole other{cut < 0, static_cast<std::uint64_t>(std::fabs(cut))};
  const std::weak_ordering order = compareWhole(whole, other);
  if (order != 0 || cut == value) return order;
  return value < cut ? std::weak_ordering::greater : std::weak_ordering::less;
}

std::weak_ordering compareDoubles(double a, double b) {
  if (std::isnan(a) || std::isnan(b)) return std::isnan(b) <=> std::isnan(a);
  return a < b ? std::weak_ordering::less : a > b ? std::weak_ordering::greater : std::weak_ordering::equivalent;
}

std::weak_ordering reversed(std::weak_ordering order) { return 0 <=> order; }

}  // namespace

std::int64_t Number::longLongValue() const {
  if (kind_ == Kind::Unsigned) return INT64_MAX;
  if (!isFloating()) return integer_;
  if (std::isnan(double_)) return 0;
  if (double_ >= kTwo63) return INT64_MAX;
  if (double_ < -kTwo63) return INT64_MIN;
  return static_cast<std::int64_t>(double_);
}

double Number::doubleValue() const {
  if (isFloating()) return double_;
  return kind_ == Kind::Unsigned ? static_cast<double>(bits()) : static_cast<double>(integer_);
}

bool Number::boolValue() const { return isFloating() ? double_ != 0 : integer_ != 0; }

std::weak_ordering Number::compare(Number a, Number b) {
  if (a.isFloating()) {
    if (b.isFloating()) return compareDoubles(a.double_, b.double_);
    return reversed(compareWholeToDouble(wholeOf(b), a.double_));
  }
  if (b.isFloating()) return compareWholeToDouble(wholeOf(a), b.double_);
  return compareWhole(wholeOf(a), wholeOf(b));
}

std::uint64_t Number::hash() const {
  Whole whole{};
  if (!isFloating()) {
    whole = wholeOf(*this);
  } else if (std::trunc(double_) == double_ && double_ >= -kTwo63 && double_ < kTwo64) {
    whole = {double_ < 0, static_cast<std::uint64_t>(std::fabs(double_))};
  } else {
    return hashing::mix(std::isnan(double_) ? 1 : std::bit_cast<std::uint64_t>(double_), 0x2545F4914F6CDD1D);
  }
  return hashing::mix(whole.magnitude, whole.negative ? 0x9E3779B97F4A7C15 : 0xC2B2AE3D27D4EB4F);
}

}  // namespace quorvel
