#include <cmath>

#include <quorvel/Extensions/UIKit/UIColor+Companions.h>
#include <quorvel/Extensions/UIKit/UIColor+HSL.h>

namespace quorvel {
namespace {

/// NaN is 0.
double limited(double component) { return component > 0 ? std::fmin(component, 1.0) : 0.0; }
UIColor limited(const UIColor& c) {
  return {limited(c.red()), limited(c.green()), limited(c.blue()), limited(c.alpha())};
}

int byteOf(double component) { return static_cast<int>(std::lround(limited(component) * 255)); }
UIColor inBytes(const UIColor& c) {
  return {byteOf(c.red()) / 255.0, byteOf(c.green()) / 255.0, byteOf(c.blue()) / 255.0, byteOf(c.alpha()) / 255.0};
}

String hexText(std::initializer_list<double> components) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  StringBuilder out;
  out.append(u'#');
  for (const double component : components) {
    const int byte = byteOf(component);
    out.append(static_cast<char16_t>(kDigits[byte >> 4]));
    out.append(static_cast<char16_t>(kDigits[byte & 15]));
  }
  return out.finish();
}

/// x to the power of 2.4 for x from 0.09 to 1, by products and quotients alone, whose last bits do not depend on a
/// mathematical library: x^2 times the fifth root of x^2.
double power2point4(double x) {
  const double square = x * x;
  double root = 1;
  // Newton's steps come down from 1, quadratically near the root; the least square, 0.008, needs nine.
  for (int i = 0; i < 10; ++i) root = (4 * root + square / (root * root * root * root)) / 5;
  return square * root;
}

/// Of a component from 0 to 1.
double linear(double component) {
  return component <= 0.04045 ? component / 12.92 : power2point4((component + 0.055) / 1.055);
}

/// Relative luminance; the alpha is not looked at.
double luminance(const UIColor& c) {
  return 0.2126 * linear(c.red()) + 0.7152 * linear(c.green()) + 0.0722 * linear(c.blue());
}

/// Of colours within their range.
UIColor composed(const UIColor& c, const UIColor& background) {
  const auto mixed = [&c](double over, double under) { return limited(over * c.alpha() + under * (1 - c.alpha())); };
  return {mixed(c.red(), background.red()), mixed(c.green(), background.green()), mixed(c.blue(), background.blue()),
          1};
}

/// The lightness of a colour, to be moved while its contrast to a background is watched.
class Lightness {
 public:
  Lightness(const UIColor& color, const UIColor& background, double ratio)
      : color_(limited(color)), background_(background), ratio_(ratio) {
    getHue(color_, &hue_, &saturation_, &lightness_, nullptr);
  }

  [[nodiscard]] double own() const { return lightness_; }
  [[nodiscard]] UIColor at(double lightness) const {
    return limited(UIColorHSL::colorWithHue(hue_, saturation_, lightness, color_.alpha()));
  }
  /// The lesser of the contrasts of the colour as it is and in bytes.
  [[nodiscard]] double contrast(const UIColor& color) const {
    return std::fmin(contrastRatio(color, background_), contrastRatio(inBytes(color), background_));
  }
  [[nodiscard]] bool reaches(double lightness) const { return contrast(at(lightness)) >= ratio_; }

  /// The lightness nearest to its own, towards `end`, that reaches the ratio, where `end` does. Luminance rises with
  /// lightness, so that between a place that does not reach it and an end that does there is one border.
  [[nodiscard]] std::optional<double> nearestTowards(double end) const {
    if (!reaches(end)) return std::nullopt;
    double fails = lightness_;
    double holds = end;
    for (int i = 0; i < 64; ++i) {
      const double middle = fails + (holds - fails) / 2;
      (reaches(middle) ? holds : fails) = middle;
    }
    return holds;
  }

 private:
  UIColor color_;
  UIColor background_;
  double ratio_;
  double hue_ = 0;
  double saturation_ = 0;
  double lightness_ = 0;
};

}  // namespace

String hexTextRGB(const UIColor& c) { return hexText({c.red(), c.green(), c.blue()}); }
String hexTextRGBA(const UIColor& c) { return hexText({c.red(), c.green(), c.blue(), c.alpha()}); }
String hexTextARGB(const UIColor& c) { return hexText({c.alpha(), c.red(), c.green(), c.blue()}); }

double contrastRatio(const UIColor& color, const UIColor& background) {
  const UIColor under = limited(background);
  const double first = luminance(composed(limited(color), under));
  const double second = luminance(under);
  return (std::fmax(first, second) + 0.05) / (std::fmin(first, second) + 0.05);
}

UIColor readableOn(const UIColor& color, const UIColor& background, double ratio) {
  const Lightness lightness(color, background, ratio);
  if (lightness.contrast(color) >= ratio) return color;
  const auto darker = lightness.nearestTowards(0);
  const auto lighter = lightness.nearestTowards(1);
  if (darker && (!lighter || lightness.own() - *darker <= *lighter - lightness.own())) return lightness.at(*darker);
  if (lighter) return lightness.at(*lighter);
  UIColor best = color;
  for (const double end : {0.0, 1.0}) {
    if (lightness.contrast(lightness.at(end)) > lightness.contrast(best)) best = lightness.at(end);
  }
  return best;
}

}  // namespace quorvel
