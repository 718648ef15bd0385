// Number: a number of a record, with its kind kept: boolean, integer, unsigned integer, double or float.
// Not here: numbers as text (NumberText.h).
#pragma once

#include <compare>
#include <concepts>
#include <cstdint>

namespace quorvel {

template <class T>
concept Arithmetic = std::integral<T> || std::floating_point<T>;

class Number {
 public:
  enum class Kind : std::uint8_t { Boolean, Integer, Unsigned, Double, Float };

  template <std::same_as<bool> T>
  constexpr Number(T value) : kind_(Kind::Boolean), integer_(value) {}
  template <std::integral T>
    requires(!std::same_as<T, bool> && (std::signed_integral<T> || sizeof(T) < sizeof(std::int64_t)))
  constexpr Number(T value) : kind_(Kind::Integer), integer_(value) {}
  /// A value that fits the signed 64 bits becomes an integer; `Kind::Unsigned` holds larger ones alone.
  template <std::unsigned_integral T>
    requires(!std::same_as<T, bool> && sizeof(T) == sizeof(std::int64_t))
  constexpr Number(T value)
      : kind_(value > INT64_MAX ? Kind::Unsigned : Kind::Integer), integer_(static_cast<std::int64_t>(value)) {}
  constexpr Number(double value) : kind_(Kind::Double), double_(value) {}
  constexpr Number(float value) : kind_(Kind::Float), double_(static_cast<double>(value)) {}

  [[nodiscard]] constexpr Kind kind() const { return kind_; }
  [[nodiscard]] constexpr bool isBoolean() const { return kind_ == Kind::Boolean; }
  [[nodiscard]] constexpr bool isFloating() const { return kind_ >= Kind::Double; }

  /// The integer part, cut toward zero; beyond the range the nearest end of it, and 0 for NaN.
  [[nodiscard]] std::int64_t longLongValue() const;
  [[nodiscard]] double doubleValue() const;
  /// True for every number but zero; NaN is true.
  [[nodiscard]] bool boolValue() const;
  /// The 64 bits of an integer kind: for `Kind::Unsigned` the unsigned value.
  [[nodiscard]] constexpr std::uint64_t bits() const { return static_cast<std::uint64_t>(integer_); }

  /// Equal by exact value whatever the kinds: 1, 1.0 and true; 2^53 + 1 is not 2^53. NaN equals itself, so that
  /// lists and dictionaries that hold one still equal their copies.
  friend bool operator==(Number a, Number b) { return compare(a, b) == std::weak_ordering::equivalent; }
  /// Orders by exact value across kinds; NaN before all others.
  [[nodiscard]] static std::weak_ordering compare(Number a, Number b);
  /// Equal numbers have equal hashes.
  [[nodiscard]] std::uint64_t hash() const;

 private:
  Kind kind_;
  union {
    std::int64_t integer_;
    double double_;
  };
};

}  // namespace quorvel
