// UIColor(HSL): colours by hue, saturation and lightness, and adjustments of one of them.
// Not here: text and contrast of colours (UIColor+Companions.h).
#pragma once

#include <quorvel/Platform/UIKit/UIColor.h>

namespace quorvel {

// Hue is a part of a full turn: 0 red, 1/3 green, 2/3 blue, 1 red again. Saturation and lightness are 0 to 1.

namespace UIColorHSL {

/// `colorWithHue:saturation:lightness:alpha:`: a saturation of exactly 0 is the grey of that lightness. A hue is
/// brought by one turn at most towards 0 to 1; nothing is clamped.
[[nodiscard]] UIColor colorWithHue(double hue, double saturation, double lightness, double alpha);

}  // namespace UIColorHSL

/// `getHue:saturation:lightness:alpha:`: writes each value whose pointer is not null; always true. Pure red has the hue
/// 1, not 0; greys, and colours whose lightness is 0 or less, have hue and saturation 0.
bool getHue(const UIColor& color, double* hue, double* saturation, double* lightness, double* alpha);

/// `offsetWithHue:saturation:lightness:alpha:`: each value with its difference added: the hue rounded to 32-bit
/// floating point and brought into -1 to 1 keeping its sign, the others limited to 0 to 1.
[[nodiscard]] UIColor offsetWithHue(const UIColor& color, double hue, double saturation, double lightness,
                                    double alpha);
/// `saturate:`: `offsetWithHue:saturation:lightness:alpha:` with the saturation alone, by `amount`.
[[nodiscard]] UIColor saturate(const UIColor& color, double amount);
/// `desaturate:`: the same by `-amount`.
[[nodiscard]] UIColor desaturate(const UIColor& color, double amount);
/// `lighten:`: `offsetWithHue:saturation:lightness:alpha:` with the lightness alone, by `amount`.
[[nodiscard]] UIColor lighten(const UIColor& color, double amount);
/// `darken:`: the same by `-amount`.
[[nodiscard]] UIColor darken(const UIColor& color, double amount);
/// `spin:`: `offsetWithHue:saturation:lightness:alpha:` with the hue alone, by an angle in degrees.
[[nodiscard]] UIColor spin(const UIColor& color, double degrees);

/// `clamp:`: the value limited to 0 to 1; NaN stays NaN. The colour is not looked at.
[[nodiscard]] double clamp(const UIColor& color, double value);

}  // namespace quorvel
