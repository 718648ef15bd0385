// UIColor(ColorWithHex): colours from packed 32-bit integers in three byte orders and from hexadecimal texts.
// Not here: colours from components 0 to 255 (UIColor+Extension.h), the palette (UIColor+Common.h).
#pragma once

#include <quorvel/Platform/UIKit/UIColor.h>

namespace quorvel::UIColorWithHex {

/// `colorWithHex:`: 0xRRGGBB, each component its byte / 255, alpha 1. The highest byte is ignored.
[[nodiscard]] constexpr UIColor colorWithHex(std::uint32_t rgb) {
  return {(rgb >> 16 & 0xFF) / 255.0, (rgb >> 8 & 0xFF) / 255.0, (rgb & 0xFF) / 255.0, 1};
}
/// `colorWithRGB:`: the same as `colorWithHex:`.
[[nodiscard]] constexpr UIColor colorWithRGB(std::uint32_t rgb) { return colorWithHex(rgb); }
/// `colorWithRGB:WithAlpha:`: 0xRRGGBB with the alpha as it is given, neither divided nor clamped.
[[nodiscard]] constexpr UIColor colorWithRGB(std::int32_t rgb, double withAlpha) {
  const UIColor opaque = colorWithHex(static_cast<std::uint32_t>(rgb));
  return {opaque.red(), opaque.green(), opaque.blue(), withAlpha};
}
/// `colorWithAlphaHex:`: 0xAARRGGBB, each component its byte / 255.
[[nodiscard]] constexpr UIColor colorWithAlphaHex(std::uint32_t argb) {
  const UIColor opaque = colorWithHex(argb);
  return {opaque.red(), opaque.green(), opaque.blue(), (argb >> 24) / 255.0};
}
/// `colorWithAlphaHexRGBA:`: 0xRRGGBBAA, each component its byte / 255.
[[nodiscard]] constexpr UIColor colorWithAlphaHexRGBA(std::uint32_t rgba) {
  return colorWithAlphaHex(rgba << 24 | rgba >> 8);
}

/// `colorWithHexString:`: `colorWithHex:` of the text's integer. One "#" at the start is skipped, then white space (C
/// locale); an optional sign, an optional "0x" or "0X" and hexadecimal digits follow, and what comes after is ignored.
/// The integer saturates at the limits of 64 signed bits, then its low 32 bits are taken; without digits it is 0, as
/// for a nil text and one with a unit beyond ASCII.
///
///     colorWithHexString(u"#FF0000")   // opaque red
///     colorWithHexString(u"F00")       // 0x000F00: no three-digit shorthand
[[nodiscard]] UIColor colorWithHexString(StringView text);
/// `colorWithAlphaHexString:`: `colorWithAlphaHex:` of the same integer.
[[nodiscard]] UIColor colorWithAlphaHexString(StringView text);
/// `colorWithAlphaHexStringRGBA:`: `colorWithAlphaHexRGBA:` of the same integer.
[[nodiscard]] UIColor colorWithAlphaHexStringRGBA(StringView text);

}  // namespace quorvel::UIColorWithHex
