// Numbers as text and text as numbers, without the C locale.
// Not here: descriptions of other values (Description.h), JSON (NSJSONSerialization.h).
#pragma once

#include <array>

#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/Foundation/Number.h>
#include <quorvel/Platform/Foundation/String.h>

namespace quorvel {

/// A short text in a buffer of its own, for digits on their way into a longer text.
class NumberBuffer {
 public:
  [[nodiscard]] std::string_view ascii() const { return {bytes_.data(), size_}; }

 private:
  friend NumberBuffer integerText(std::int64_t value);
  friend NumberBuffer unsignedText(std::uint64_t value);
  friend NumberBuffer doubleText(double value);
  friend NumberBuffer floatText(float value);
  std::array<char, 40> bytes_{};
  std::size_t size_ = 0;
};

[[nodiscard]] NumberBuffer integerText(std::int64_t value);
[[nodiscard]] NumberBuffer unsignedText(std::uint64_t value);
/// The shortest digits that read back, laid out as ECMAScript lays numbers out (Number::toString): positional from 1e-6
/// to below 1e21, else '1e+21', '1e-7'; but -0.0 is '-0', and 'inf', '-inf', 'nan'.
[[nodiscard]] NumberBuffer doubleText(double value);
[[nodiscard]] NumberBuffer floatText(float value);
/// `stringValue`: by the number's kind; a boolean is '1' or '0'.
[[nodiscard]] NumberBuffer numberText(Number number);
[[nodiscard]] String stringValue(Number number);
/// The text of `toString()`: doubles keep '.0' and turn to exponents beyond 2^53 (floats beyond 2^24) and below 1e-4
/// ('1e+16', '1.25e-05'); booleans are 'true' and 'false'.
[[nodiscard]] String debugText(Number number);
/// Fixed-point digits, correctly rounded from the exact value with an exact half to the even digit, as C's "%.*f" gives
/// them. `decimals` below 0 count as 0, those above `limits::kSizeDecimals` as that; 'inf', '-inf', 'nan'.
[[nodiscard]] String fixedText(double value, int decimals);
/// The longest fixed text: a sign, 309 digits, the point and the decimals.
inline constexpr std::size_t kFixedTextLength = 311 + limits::kSizeDecimals;
/// Writes the digits of `fixedText` to `out`, which has room for `kFixedTextLength` bytes, and answers their number.
[[nodiscard]] std::size_t writeFixedText(double value, int decimals, char* out);

/// `longLongValue`: white space and newlines are skipped, one sign is accepted, ASCII digits are read; without digits
/// 0; beyond the range the nearest end of it. nil gives 0.
[[nodiscard]] std::int64_t longLongValue(StringView text);
/// `integerValue`: the same; integers have 64 bits here.
[[nodiscard]] inline std::int64_t integerValue(StringView text) { return longLongValue(text); }

}  // namespace quorvel
