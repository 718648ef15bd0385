#include <algorithm>

#include <quorvel/Extensions/UIKit/UIColor+ColorWithHex.h>

namespace quorvel::UIColorWithHex {
namespace {

constexpr int digitOf(char16_t unit) {
  if (unit >= u'0' && unit <= u'9') return unit - u'0';
  const auto letter = static_cast<char16_t>(unit | 0x20);
  return letter >= u'a' && letter <= u'f' ? letter - u'a' + 10 : -1;
}
constexpr bool isSpace(char16_t unit) { return unit == u' ' || (unit >= 0x09 && unit <= 0x0D); }

StringView withoutPrefix(StringView text) {
  const bool hasPrefix = text.size() > 2 && text[0] == u'0' && (text[1] | 0x20) == u'x' && digitOf(text[2]) >= 0;
  return hasPrefix ? text.sub(2) : text;
}

/// What strtol answers for the text in base 16, on 64 bits and in the C locale.
std::int64_t hexadecimalInteger(StringView text) {
  while (!text.isEmpty() && isSpace(text[0])) text = text.sub(1);
  const bool isNegative = !text.isEmpty() && text[0] == u'-';
  if (isNegative || (!text.isEmpty() && text[0] == u'+')) text = text.sub(1);
  const std::uint64_t most = isNegative ? std::uint64_t{1} << 63 : INT64_MAX;
  std::uint64_t magnitude = 0;
  for (const char16_t unit : withoutPrefix(text).units()) {
    const int digit = digitOf(unit);
    if (digit < 0) break;
    magnitude = magnitude >> 60 ? most : std::min(most, magnitude << 4 | static_cast<std::uint64_t>(digit));
  }
  return static_cast<std::int64_t>(isNegative ? 0 - magnitude : magnitude);
}

std::uint32_t packed(StringView text) {
  const bool isASCII = std::all_of(text.begin(), text.end(), [](char16_t unit) { return unit < 0x80; });
  if (text.isEmpty() || !isASCII) return 0;
  return static_cast<std::uint32_t>(hexadecimalInteger(text[0] == u'#' ? text.sub(1) : text));
}

}  // namespace

UIColor colorWithHexString(StringView text) { return colorWithHex(packed(text)); }
UIColor colorWithAlphaHexString(StringView text) { return colorWithAlphaHex(packed(text)); }
UIColor colorWithAlphaHexStringRGBA(StringView text) { return colorWithAlphaHexRGBA(packed(text)); }

}  // namespace quorvel::UIColorWithHex
