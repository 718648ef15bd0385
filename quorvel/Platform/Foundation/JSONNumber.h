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
  NumberReader(Source<Unit>& source, Value* place) : source_(source), place_(place) {}

  /// Reads the number that begins with the digit or "-" at `first` into raw memory.
  const Unit* read(const Unit* first) {
    const bool negative = *first == Unit{'-'};
    const Unit* const digits = first + negative;
    if (!source_.isDigitAt(digits)) return source_.unexpected(digits, reason::kDigit);
    const Unit* at = *digits == Unit{'0'} ? digits + 1 : takeDigits(digits);
    if (at == source_.end || (*at != Unit{'.'} && *at != Unit{'e'} && *at != Unit{'E'})) {
      return storeInteger(first, digits, at);
    }
    if (source_.isAt(at, '.')) at = readFraction(at + 1);
    if (at && (source_.isAt(at, 'e') || source_.isAt(at, 'E'))) at = readExponent(at + 1);
    return at ? storeDouble(first, at) : nullptr;
  }

 private:
  /// Digits that `mantissa_` surely holds.
  static constexpr std::size_t kSafeDigits = 19;

  const Unit* takeDigits(const Unit* at) {
    while (significant_ == 0 && source_.isAt(at, '0')) ++at;
    const Unit* const from = at;
    for (; source_.isDigitAt(at); ++at) mantissa_ = mantissa_ * 10 + static_cast<std::uint64_t>(*at - Unit{'0'});
    significant_ += static_cast<std::size_t>(at - from);
    return at;
  }

  const Unit* readFraction(const Unit* from) {
    if (!source_.isDigitAt(from)) return source_.unexpected(from, reason::kDigit);
    const Unit* const at = takeDigits(from);
    scale_ = from - at;
    return at;
  }

  const Unit* readExponent(const Unit* at) {
    const bool negative = source_.isAt(at, '-');
    at += negative || source_.isAt(at, '+');
    if (!source_.isDigitAt(at)) return source_.unexpected(at, reason::kDigit);
    std::int64_t exponent = 0;
    for (; source_.isDigitAt(at); ++at) {
      if (exponent < kLargeExponent) exponent = exponent * 10 + (*at - Unit{'0'});
    }
    scale_ += negative ? -exponent : exponent;
    return at;
  }

  const Unit* storeInteger(const Unit* first, const Unit* digits, const Unit* at) {
    constexpr std::uint64_t kTen19 = 10'000'000'000'000'000'000U;
    constexpr std::uint64_t kTwo63 = std::uint64_t{1} << 63;
    const bool negative = first != digits;
    const auto count = static_cast<std::size_t>(at - digits);
    // Of twenty digits only 1 at the front fits; what wrapped past 2^64 is then below 10^19.
    const bool fits64 =
        count <= kSafeDigits || (count == kSafeDigits + 1 && *digits == Unit{'1'} && mantissa_ >= kTen19);
    if (!fits64 || (negative && mantissa_ > kTwo63)) return storeDouble(first, at);
    new (place_) Value(negative ? Number(static_cast<std::int64_t>(0 - mantissa_)) : Number(mantissa_));
    return at;
  }

  const Unit* storeDouble(const Unit* first, const Unit* at) {
    // A product or quotient of two exact doubles is rounded once (Clinger, PLDI 1990).
    static constexpr double kPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                         1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    constexpr std::uint64_t kTwo53 = std::uint64_t{1} << 53;
    if (significant_ > kSafeDigits || mantissa_ > kTwo53 || scale_ < -22 || scale_ > 22) return storeHard(first, at);
    const auto mantissa = static_cast<double>(mantissa_);
    const double magnitude = scale_ < 0 ? mantissa / kPowers[-scale_] : mantissa * kPowers[scale_];
    new (place_) Value(*first == Unit{'-'} ? -magnitude : magnitude);
    return at;
  }

  const Unit* storeHard(const Unit* first, const Unit* at) {
    double value = *first == Unit{'-'} ? -0.0 : 0.0;
    if (significant_ != 0 && !readHard(first, at, value)) return source_.fail(first, reason::kRange);
    new (place_) Value(value);
    return at;
  }

  /// False for a number that is beyond the range of doubles, or too small to differ from zero.
  static bool readHard(const Unit* first, const Unit* at, double& value) {
    const std::string ascii(first, at);  // digits, signs, points and "e" alone
    const auto [end, error] = std::from_chars(ascii.data(), ascii.data() + ascii.size(), value);
    return error == std::errc() && std::isfinite(value) && value != 0;
  }

  static constexpr std::int64_t kLargeExponent = 1'000'000'000;

  Source<Unit>& source_;
  Value* place_;
  std::uint64_t mantissa_ = 0;   // all digits without the point, modulo 2^64
  std::size_t significant_ = 0;  // digits from the first that is not zero on
  std::int64_t scale_ = 0;       // the power of ten that the mantissa takes
};

}  // namespace quorvel::json
