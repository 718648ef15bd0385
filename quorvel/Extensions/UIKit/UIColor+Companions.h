// Companions of the colour families: colours as text and from CSS, and how well two of them can be told apart.
// Not here: hexadecimal text in the platform's own reading (UIColor+ColorWithHex.h).
#pragma once

#include <quorvel/Platform/UIKit/UIColor.h>

namespace quorvel {

// "#" and upper-case digits, each component limited to 0 to 1 and rounded to the nearest byte, NaN as 0.

/// `hexTextRGB`: #RRGGBB, without the alpha; `colorWithHexString:` reads it back.
[[nodiscard]] String hexTextRGB(const UIColor& color);
/// `hexTextRGBA`: #RRGGBBAA, as CSS has it; `colorWithAlphaHexStringRGBA:` reads it back.
[[nodiscard]] String hexTextRGBA(const UIColor& color);
/// `hexTextARGB`: #AARRGGBB; `colorWithAlphaHexString:` reads it back.
[[nodiscard]] String hexTextARGB(const UIColor& color);

/// `colorFromCSS`: a colour of CSS Color 4: #rgb, #rgba, #rrggbb, #rrggbbaa; rgb(), rgba(), hsl() and hsla() with
/// commas, or with spaces, "none" and an alpha behind a slash; hwb() with spaces; the 148 names and "transparent".
/// Letter case and white space around it do not count. Components beyond their range are limited to it; those of a
/// function are not rounded to bytes. nil for all else: other functions, calc(), comments, escapes, system colours,
/// nil.
///
///     colorFromCSS(u"hsl(120deg 100% 25% / 50%)")   // 0, 0.5, 0, alpha 0.5
[[nodiscard]] std::optional<UIColor> colorFromCSS(StringView text);

/// `contrastRatio`: by WCAG 2.1, from 1 (none) to 21 (black and white). A translucent colour is laid over the
/// background first, which counts as opaque. Components are limited to 0 to 1, NaN as 0.
[[nodiscard]] double contrastRatio(const UIColor& color, const UIColor& background);

/// `readableOn`: the colour with another lightness, so that its contrast to the background reaches `ratio`, both as it
/// is and with its components rounded to bytes: the lightness nearest to the colour's own that does, lighter or darker.
/// Hue, saturation and alpha stay. A colour that reaches it is answered as it came. Where no lightness reaches it, that
/// with the most contrast.
[[nodiscard]] UIColor readableOn(const UIColor& color, const UIColor& background, double ratio = 4.5);

}  // namespace quorvel
