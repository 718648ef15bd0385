// Numbers of JSON text: integers of 64 bits stay integers, all others become the nearest double.
// Included by sources of the platform alone. Not here: numbers written (NumberText.h).
#pragma once

#include <charconv>
#include <cmath>
#include <string>

#include <quorvel/Platform/Foundation/JSONCursor.h>

namespace quorvel::json {

template <class Unit>
class NumberReader {
 public:
  explicit NumberReader(Cursor<Unit>& cursor) : cursor_(cursor), first_(cursor.at) {}

  /// Reads the number that begins with the digit or "-" at the cursor into raw memory.
  bool read(Value* place) {
    const bool negative = cursor_.take('-');
    const Unit* const digits = cursor_.at;
    if (!readWhole()) return false;
    if (!cursor_.isAt('.') && !cursor_.isAt('e') && !cursor_.isAt('E')) {
      return storeInteger(place, negative, static_cast<std::size_t>(cursor_.at - digits));
    }
    return readFraction() && readExponent() && storeDouble(place, negative);
  }

 private:
  /// Digits that `mantissa_` surely holds.
  static constexpr std::size_t kSafeDigits = 19;

  bool readWhole() {
    if (!cursor_.isAtDigit()) return cursor_.unexpected(reason::kDigit);
    if (cursor_.take('0')) return true;
    takeDigits();
    return true;
  }

  void takeDigits() {
    const Unit* at = cursor_.at;
    while (significant_ == 0 && at != cursor_.end && *at == Unit{'0'}) ++at;
    const Unit* const from = at;
    for (; at != cursor_.end && *at >= Unit{'0'} && *at <= Unit{'9'}; ++at) {
      mantissa_ = mantissa_ * 10 + static_cast<std::uint64_t>(*at - Unit{'0'});
    }
    significant_ += static_cast<std::size_t>(at - from);
    cursor_.at = at;
  }

  bool readFraction() {
    if (!cursor_.take('.')) return true;
    if (!cursor_.isAtDigit()) return cursor_.unexpected(reason::kDigit);
    const Unit* const from = cursor_.at;
    takeDigits();
    scale_ = -static_cast<std::int64_t>(cursor_.at - from);
    return true;
  }

  bool readExponent() {
    if (!cursor_.take('e') && !cursor_.take('E')) return true;
    const bool negative = cursor_.take('-');
    if (!negative) cursor_.take('+');
    if (!cursor_.isAtDigit()) return cursor_.unexpected(reason::kDigit);
    std::int64_t exponent = 0;
    for (; cursor_.isAtDigit(); ++cursor_.at) {
      if (exponent < 1'000'000) exponent = exponent * 10 + (*cursor_.at - Unit{'0'});
    }
    scale_ += negative ? -exponent : exponent;
    return true;
  }

  bool storeInteger(Value* place, bool negative, std::size_t digits) {
    constexpr std::uint64_t kTen19 = 10'000'000'000'000'000'000U;
    constexpr std::uint64_t kTwo63 = std::uint64_t{1} << 63;
    // Of twenty digits only 1 at the front fits; what wrapped past 2^64 is then below 10^19.
    const bool fits64 = digits <= kSafeDigits ||
                        (digits == kSafeDigits + 1 && *(cursor_.at - digits) == Unit{'1'} && mantissa_ >= kTen19);
    if (!fits64 || (negative && mantissa_ > kTwo63)) return storeDouble(place, negative);
    if (negative) {
      new (place) Value(static_cast<std::int64_t>(0 - mantissa_));
    } else {
      new (place) Value(mantissa_);
    }
    return true;
  }

  bool storeDouble(Value* place, bool negative) {
    // A product or quotient of two exact doubles is rounded once (Clinger, PLDI 1990).
    static constexpr double kPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                         1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    constexpr std::uint64_t kTwo53 = std::uint64_t{1} << 53;
    if (significant_ <= kSafeDigits && mantissa_ <= kTwo53 && scale_ >= -22 && scale_ <= 22) {
      const auto mantissa = static_cast<double>(mantissa_);
      const double magnitude = scale_ < 0 ? mantissa / kPowers[-scale_] : mantissa * kPowers[scale_];
      new (place) Value(negative ? -magnitude : magnitude);
      return true;
    }
    return storeLongDouble(place);
  }

  bool storeLongDouble(Value* place) {
    std::string narrowed;
    const char* from;
    if constexpr (sizeof(Unit) == 1) {
      from = first_;
    } else {
      narrowed.assign(first_, cursor_.at);  // digits, signs, points and "e" alone
      from = narrowed.data();
    }
    double value = 0;
    const auto [end, error] = std::from_chars(from, from + (cursor_.at - first_), value);
    if (significant_ == 0) {
      value = *first_ == Unit{'-'} ? -0.0 : 0.0;  // whatever the exponent
    } else if (error != std::errc() || std::isinf(value) || value == 0) {
      return cursor_.fail(first_, reason::kRange);
    }
    new (place) Value(value);
    return true;
  }

  Cursor<Unit>& cursor_;
  const Unit* first_;
  std::uint64_t mantissa_ = 0;   // all digits without the point, modulo 2^64
  std::size_t significant_ = 0;  // digits from the first that is not zero on
  std::int64_t scale_ = 0;       // the power of ten that the mantissa takes
};

}  // namespace quorvel::json
