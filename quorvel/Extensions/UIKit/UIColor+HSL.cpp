#include <cmath>

#include <quorvel/Extensions/UIKit/UIColor+HSL.h>

namespace quorvel {
namespace {

constexpr double kThird = 0.3333333333333333;
constexpr double kTwoThirds = 0.6666666666666666;

double limited(double value) {
  if (value > 1.0) return 1.0;
  return value < 0.0 ? 0.0 : value;
}

/// A component from its place on the circle of hues, between the values `p` and `q`.
double componentAt(double t, double p, double q) {
  if (t < 0) t += 1.0;
  if (t > 1.0) t -= 1.0;
  if (6.0 * t < 1.0) return p + ((q - p) * 6.0) * t;
  if (2.0 * t < 1.0) return q;
  if (3.0 * t < 2.0) return p + ((q - p) * (kTwoThirds - t)) * 6.0;
  return p;
}

/// Six times the hue of a colour whose components differ.
double sextants(const ColorRGBA& c, double max, double min) {
  const double d = max - min;
  const double red = (max - c.red) / d;
  const double green = (max - c.green) / d;
  const double blue = (max - c.blue) / d;
  if (max == c.red) return min == c.green ? 5.0 + blue : 1.0 - green;
  if (max == c.green) return min == c.blue ? 1.0 + red : 3.0 - blue;
  return min == c.red ? 3.0 + green : 5.0 - red;
}

struct HSL {
  double hue = 0;
  double saturation = 0;
  double lightness = 0;
};

HSL hslOf(const ColorRGBA& c) {
  const double m = c.red < c.green ? c.green : c.red;
  const double n = c.red < c.green ? c.red : c.green;
  const double max = m < c.blue ? c.blue : m;
  const double min = n < c.blue ? n : c.blue;
  const double lightness = (max + min) * 0.5;
  if (lightness <= 0) return {0, 0, lightness};
  const double d = max - min;
  if (d <= 0) return {0, d, lightness};
  const double saturation = lightness > 0.5 ? d / (2.0 - max - min) : d / (max + min);
  return {sextants(c, max, min) / 6.0, saturation, lightness};
}

void give(double value, double* to) {
  if (to) *to = value;
}

}  // namespace

UIColor UIColorHSL::colorWithHue(double hue, double saturation, double lightness, double alpha) {
  if (saturation == 0.0) return UIColor::white(lightness, alpha);
  const double q = lightness < 0.5 ? (saturation + 1.0) * lightness : (saturation + lightness) - saturation * lightness;
  const double p = (lightness + lightness) - q;
  return {componentAt(hue + kThird, p, q), componentAt(hue, p, q), componentAt(hue - kThird, p, q), alpha};
}

bool getHue(const UIColor& color, double* hue, double* saturation, double* lightness, double* alpha) {
  const HSL hsl = hslOf(color.components());
  give(hsl.hue, hue);
  give(hsl.saturation, saturation);
  give(hsl.lightness, lightness);
  give(color.alpha(), alpha);
  return true;
}

UIColor offsetWithHue(const UIColor& color, double hue, double saturation, double lightness, double alpha) {
  const HSL hsl = hslOf(color.components());
  const float turned = std::fmod(static_cast<float>(hsl.hue + hue), 1.0F);
  return UIColorHSL::colorWithHue(static_cast<double>(turned), limited(hsl.saturation + saturation),
                                  limited(hsl.lightness + lightness), limited(color.alpha() + alpha));
}

UIColor saturate(const UIColor& color, double amount) { return offsetWithHue(color, 0, amount, 0, 0); }
UIColor desaturate(const UIColor& color, double amount) { return offsetWithHue(color, 0, -amount, 0, 0); }
UIColor lighten(const UIColor& color, double amount) { return offsetWithHue(color, 0, 0, amount, 0); }
UIColor darken(const UIColor& color, double amount) { return offsetWithHue(color, 0, 0, -amount, 0); }
UIColor spin(const UIColor& color, double degrees) { return offsetWithHue(color, degrees / 360.0, 0, 0, 0); }

double clamp(const UIColor&, double value) { return limited(value); }

}  // namespace quorvel
