#include <algorithm>

#include <quorvel/Extensions/UIKit/UIColor+ColorWithHex.h>

namespace quorvel::UIColorWithHex {
namespace {

int hexDigit(StringView text, std::size_t index) {
  if (index >= text.size()) return -1;
  const char16_t unit = text[index];
  if (unit >= u'0' && unit <= u'9') return unit - u'0';
  const int letter = unit | 0x20;
  return letter >= u'a' && letter <= u'f' ? letter - u'a' + 10 : -1;
}

bool isSpace(char16_t unit) { return unit == u' ' || (unit >= u'\t' && unit <= u'\r'); }

/// The 64-bit value as strtol gives it, cut to its low 32 bits.
std::uint32_t packedColor(StringView text) {
  if (std::ranges::any_of(text.units(), [](char16_t unit) { return unit >= 0x80; })) return 0;
  std::size_t i = !text.isEmpty() && text.front() == u'#' ? 1 : 0;
  while (i < text.size() && isSpace(text[i])) ++i;
  const bool negative = i < text.size() && text[i] == u'-';
  if (negative || (i < text.size() && text[i] == u'+')) ++i;
  // "0x" without a digit behind it is the number 0 alone.
  if (i + 1 < text.size() && text[i] == u'0' && (text[i + 1] | 0x20) == u'x' && hexDigit(text, i + 2) >= 0) i += 2;
  const std::uint64_t limit = negative ? std::uint64_t{1} << 63 : INT64_MAX;
  std::uint64_t value = 0;
  for (int digit; (digit = hexDigit(text, i)) >= 0; ++i) {
    if (value > (limit - static_cast<std::uint64_t>(digit)) >> 4)
      return static_cast<std::uint32_t>(negative ? 0 - limit : limit);
    value = value << 4 | static_cast<std::uint64_t>(digit);
  }
  return static_cast<std::uint32_t>(negative ? 0 - value : value);
}

}  // namespace

UIColor colorWithHexString(StringView text) { return colorWithHex(packedColor(text)); }
UIColor colorWithAlphaHexString(StringView text) { return colorWithAlphaHex(packedColor(text)); }
UIColor colorWithAlphaHexStringRGBA(StringView text) { return colorWithAlphaHexRGBA(packedColor(text)); }

}  // namespace quorvel::UIColorWithHex
