// UIColor(ColorWithHex): colours from packed 32-bit integers in three byte orders and from hexadecimal text.
// Not here: the named palette (UIColor+Common.h), components from 0 to 255 (UIColor+Extension.h).
#pragma once

#include <quorvel/Platform/UIKit/UIColor.h>

namespace quorvel::UIColorWithHex {

// A component is its byte / 255.0.

/// `colorWithHex:`: 0x..RRGGBB, opaque; the top byte is ignored.
[[nodiscard]] constexpr UIColor colorWithHex(std::uint32_t rgb) {
  return {(rgb >> 16 & 0xFF) / 255.0, (rgb >> 8 & 0xFF) / 255.0, (rgb & 0xFF) / 255.0, 1.0};
}
/// `colorWithRGB:`: `colorWithHex:` of the same integer.
[[nodiscard]] constexpr UIColor colorWithRGB(std::uint32_t rgb) { return colorWithHex(rgb); }
/// `colorWithRGB:WithAlpha:`: 0x..RRGGBB with the alpha as it is, neither divided nor clamped.
[[nodiscard]] constexpr UIColor colorWithRGB(std::int32_t rgb, double alpha) {
  const UIColor opaque = colorWithHex(static_cast<std::uint32_t>(rgb));
  return {opaque.red(), opaque.green(), opaque.blue(), alpha};
}
/// `colorWithAlphaHex:`: 0xAARRGGBB.
[[nodiscard]] constexpr UIColor colorWithAlphaHex(std::uint32_t argb) {
  const UIColor opaque = colorWithHex(argb);
  return {opaque.red(), opaque.green(), opaque.blue(), (argb >> 24) / 255.0};
}
/// `colorWithAlphaHexRGBA:`: 0xRRGGBBAA.
[[nodiscard]] constexpr UIColor colorWithAlphaHexRGBA(std::uint32_t rgba) {
  return colorWithAlphaHex(rgba >> 8 | rgba << 24);
}

// The text forms skip one "#", then read as C's strtol in base 16 does: leading white space, a sign, "0x" or "0X",
// digits up to the first other character; no digits are 0, and a value beyond 64 bits is the nearest end. The low 32
// bits count. A nil text, or one with a character outside ASCII, reads as 0.

/// `colorWithHexString:`: `colorWithHex:` of the text; "F00" is 0xF00, not a short form.
[[nodiscard]] UIColor colorWithHexString(StringView text);
/// `colorWithAlphaHexString:`: `colorWithAlphaHex:` of the text; "#FF0000" is transparent.
[[nodiscard]] UIColor colorWithAlphaHexString(StringView text);
/// `colorWithAlphaHexStringRGBA:`: `colorWithAlphaHexRGBA:` of the text.
[[nodiscard]] UIColor colorWithAlphaHexStringRGBA(StringView text);

}  // namespace quorvel::UIColorWithHex
