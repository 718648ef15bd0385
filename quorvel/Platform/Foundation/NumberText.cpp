#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>

#include <quorvel/Platform/Foundation/CharacterSet.h>
#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/Foundation/NumberText.h>

namespace quorvel {
namespace {

/// Beyond these whole numbers not every integer is a value of the type.
constexpr double kExactDouble = 9007199254740992.0;
constexpr double kExactFloat = 16777216.0;

std::string_view nonFiniteText(double value) { return std::isnan(value) ? "nan" : value < 0 ? "-inf" : "inf"; }

std::size_t copyTo(char* out, std::string_view text) {
  std::copy(text.begin(), text.end(), out);
  return text.size();
}

/// The shortest digits that read back: value = 0.DIGITS * 10^point.
struct Digits {
  char text[20];
  int count = 0;
  int point = 0;
};

template <class Floating>
Digits shortestDigits(Floating magnitude) {
  char buffer[40];
  const auto [end, error] = std::to_chars(buffer, buffer + sizeof buffer, magnitude, std::chars_format::scientific);
  Digits digits;
  const char* at = buffer;
  for (; *at != 'e'; ++at) {
    if (*at != '.') digits.text[digits.count++] = *at;
  }
  ++at;
  std::from_chars(*at == '+' ? at + 1 : at, end, digits.point);
  ++digits.point;
  return digits;
}

char* writeDigits(char* out, const Digits& digits, int from, int to) {
  for (int i = from; i < to; ++i) *out++ = i < digits.count ? digits.text[i] : '0';
  return out;
}

/// Without an exponent; the text has no point when no digit follows it.
char* writePositional(char* out, const Digits& digits) {
  if (digits.point > 0) {
    out = writeDigits(out, digits, 0, digits.point);
    if (digits.count <= digits.point) return out;
    *out++ = '.';
    return writeDigits(out, digits, digits.point, digits.count);
  }
  *out++ = '0';
  *out++ = '.';
  out = std::fill_n(out, -digits.point, '0');
  return writeDigits(out, digits, 0, digits.count);
}

char* writeExponential(char* out, const Digits& digits, int leastExponentDigits) {
  *out++ = digits.text[0];
  if (digits.count > 1) *out++ = '.';
  out = writeDigits(out, digits, 1, digits.count);
  const int exponent = digits.point - 1;
  *out++ = 'e';
  *out++ = exponent < 0 ? '-' : '+';
  const int magnitude = std::abs(exponent);
  if (leastExponentDigits == 2 && magnitude < 10) *out++ = '0';
  return std::to_chars(out, out + 4, magnitude).ptr;
}

template <class Floating>
std::size_t writeFloating(char* out, Floating value) {
  if (!std::isfinite(value)) return copyTo(out, nonFiniteText(static_cast<double>(value)));
  char* const start = out;
  if (std::signbit(value)) *out++ = '-';
  const Floating magnitude = std::fabs(value);
  if (magnitude < Floating(kExactFloat) && std::trunc(magnitude) == magnitude) {
    return static_cast<std::size_t>(std::to_chars(out, out + 10, static_cast<std::uint32_t>(magnitude)).ptr - start);
  }
  const Digits digits = shortestDigits(magnitude);
  const bool positional = digits.point > -6 && digits.point <= 21;
  return static_cast<std::size_t>((positional ? writePositional(out, digits) : writeExponential(out, digits, 1)) -
                                  start);
}

template <class Floating>
String floatingDebugText(Floating value, double exact) {
  if (!std::isfinite(value)) return String::fromASCII(nonFiniteText(static_cast<double>(value)));
  char buffer[40];
  char* out = buffer;
  if (std::signbit(value)) *out++ = '-';
  const Floating magnitude = std::fabs(value);
  const Digits digits = shortestDigits(magnitude);
  if (magnitude != 0 && (static_cast<double>(magnitude) > exact || digits.point < -3)) {
    out = writeExponential(out, digits, 2);
  } else {
    out = writePositional(out, digits);
    if (digits.count <= digits.point) out += copyTo(out, ".0");
  }
  return String::fromASCII({buffer, out});
}

__extension__ using Wide = unsigned __int128;

constexpr int kFastDecimals = 3;

/// `magnitude` * `power` as a whole number, an exact half to the even one. The magnitude is below 2^48, so that nothing
/// here overflows.
std::uint64_t scaledAndRounded(double magnitude, std::uint64_t power) {
  const auto bits = std::bit_cast<std::uint64_t>(magnitude);
  const int exponent = static_cast<int>(bits >> 52);
  const std::uint64_t fraction = bits & ((std::uint64_t{1} << 52) - 1);
  const std::uint64_t mantissa = exponent == 0 ? fraction : fraction | std::uint64_t{1} << 52;
  const int shift = 1075 - std::max(exponent, 1);  // magnitude = mantissa / 2^shift, shift > 4
  if (shift > 100) return 0;                       // below a half by far
  const Wide product = Wide{mantissa} * power;
  const Wide half = Wide{1} << (shift - 1);
  const Wide rest = product & ((half << 1) - 1);
  const auto whole = static_cast<std::uint64_t>(product >> shift);
  return whole + (rest > half || (rest == half && whole % 2 == 1));
}

template <int kDecimals>
std::size_t writeFastFixed(double value, char* out) {
  constexpr std::uint64_t kPower = std::array<std::uint64_t, 4>{1, 10, 100, 1000}[kDecimals];
  char* const start = out;
  if (std::signbit(value)) *out++ = '-';
  const std::uint64_t scaled = scaledAndRounded(std::fabs(value), kPower);
  out = std::to_chars(out, out + 20, scaled / kPower).ptr;
  if constexpr (kDecimals > 0) {
    *out++ = '.';
    std::uint64_t fraction = scaled % kPower;
    for (int i = kDecimals; i-- > 0; fraction /= 10) out[i] = static_cast<char>('0' + fraction % 10);
    out += kDecimals;
  }
  return static_cast<std::size_t>(out - start);
}

std::size_t writeFastFixed(double value, int decimals, char* out) {
  switch (decimals) {
    case 0:
      return writeFastFixed<0>(value, out);
    case 1:
      return writeFastFixed<1>(value, out);
    case 2:
      return writeFastFixed<2>(value, out);
    default:
      return writeFastFixed<kFastDecimals>(value, out);
  }
}

}  // namespace

NumberBuffer integerText(std::int64_t value) {
  NumberBuffer buffer;
  char* const start = buffer.bytes_.data();
  buffer.size_ = static_cast<std::size_t>(std::to_chars(start, start + 20, value).ptr - start);
  return buffer;
}

NumberBuffer unsignedText(std::uint64_t value) {
  NumberBuffer buffer;
  char* const start = buffer.bytes_.data();
  buffer.size_ = static_cast<std::size_t>(std::to_chars(start, start + 20, value).ptr - start);
  return buffer;
}

NumberBuffer doubleText(double value) {
  NumberBuffer buffer;
  buffer.size_ = writeFloating(buffer.bytes_.data(), value);
  return buffer;
}

NumberBuffer floatText(float value) {
  NumberBuffer buffer;
  buffer.size_ = writeFloating(buffer.bytes_.data(), value);
  return buffer;
}

NumberBuffer numberText(Number number) {
  switch (number.kind()) {
    case Number::Kind::Unsigned:
      return unsignedText(number.bits());
    case Number::Kind::Double:
      return doubleText(number.doubleValue());
    case Number::Kind::Float:
      return floatText(static_cast<float>(number.doubleValue()));
    case Number::Kind::Boolean:
    case Number::Kind::Integer:
      break;
  }
  return integerText(number.longLongValue());
}

String stringValue(Number number) { return String::fromASCII(numberText(number).ascii()); }

String debugText(Number number) {
  switch (number.kind()) {
    case Number::Kind::Boolean:
      return number.boolValue() ? String(u"true") : String(u"false");
    case Number::Kind::Double:
      return floatingDebugText(number.doubleValue(), kExactDouble);
    case Number::Kind::Float:
      return floatingDebugText(static_cast<float>(number.doubleValue()), kExactFloat);
    case Number::Kind::Integer:
    case Number::Kind::Unsigned:
      break;
  }
  return stringValue(number);
}

std::size_t writeFixedText(double value, int decimals, char* out) {
  if (!std::isfinite(value)) return copyTo(out, nonFiniteText(value));
  decimals = std::clamp(decimals, 0, limits::kSizeDecimals);
  if (decimals <= kFastDecimals && std::fabs(value) < 0x1p48) return writeFastFixed(value, decimals, out);
  // The one conversion of the standard library that is both exact and without a locale.
  const auto result = std::to_chars(out, out + kFixedTextLength, value, std::chars_format::fixed, decimals);
  return static_cast<std::size_t>(result.ptr - out);
}

String fixedText(double value, int decimals) {
  char buffer[kFixedTextLength];
  return String::fromASCII({buffer, writeFixedText(value, decimals, buffer)});
}

std::int64_t longLongValue(StringView text) {
  std::size_t i = 0;
  while (i < text.size() && isWhitespaceOrNewline(text[i])) ++i;
  const bool negative = i < text.size() && text[i] == u'-';
  if (i < text.size() && (text[i] == u'-' || text[i] == u'+')) ++i;
  const std::uint64_t limit = negative ? std::uint64_t{1} << 63 : INT64_MAX;
  std::uint64_t magnitude = 0;
  for (; i < text.size() && text[i] >= u'0' && text[i] <= u'9'; ++i) {
    const std::uint64_t digit = text[i] - std::uint64_t{u'0'};
    if (magnitude > (limit - digit) / 10) {
      magnitude = limit;
      break;
    }
    magnitude = magnitude * 10 + digit;
  }
  return static_cast<std::int64_t>(negative ? 0 - magnitude : magnitude);
}

}  // namespace quorvel
