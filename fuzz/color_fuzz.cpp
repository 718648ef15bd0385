// Colours: HSL there and back, offsets, CSS text and readable forms. Nothing finite becomes infinite or NaN, and what
// is read stays within 0 to 1.
#include <cmath>
#include <cstring>

#include <fuzz/FuzzInput.h>

#include <quorvel/Extensions/UIKit/UIColor+ColorWithHex.h>
#include <quorvel/Extensions/UIKit/UIColor+Companions.h>
#include <quorvel/Extensions/UIKit/UIColor+HSL.h>

using namespace quorvel;
using fuzz::require;

namespace {

/// Any bits, or a fraction that lies on or beside a border.
double number(fuzz::Input& input) {
  const std::uint8_t kind = input.byte();
  if (kind < 0xC0) return (kind % 64) / 63.0;
  std::uint64_t bits = 0;
  for (int i = 0; i < 8; ++i) bits = bits << 8 | input.byte();
  double value;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}
/// The value brought into 0 to 1.
double fraction(fuzz::Input& input) {
  const double value = number(input);
  return std::isfinite(value) ? std::fabs(std::fmod(value, 1.0)) : 0.5;
}

bool isWithin(double value) { return value >= 0 && value <= 1; }
bool isWithin(const UIColor& c) {
  return isWithin(c.red()) && isWithin(c.green()) && isWithin(c.blue()) && isWithin(c.alpha());
}
bool isFinite(const UIColor& c) {
  return std::isfinite(c.red()) && std::isfinite(c.green()) && std::isfinite(c.blue()) && std::isfinite(c.alpha());
}
bool areNear(const UIColor& a, const UIColor& b) {
  constexpr double kNear = 1e-12;
  return std::fabs(a.red() - b.red()) < kNear && std::fabs(a.green() - b.green()) < kNear &&
         std::fabs(a.blue() - b.blue()) < kNear && a.alpha() == b.alpha();
}

void checkHSL(fuzz::Input& input) {
  const UIColor color(fraction(input), fraction(input), fraction(input), fraction(input));
  double h = 0;
  double s = 0;
  double l = 0;
  double a = 0;
  require(getHue(color, &h, &s, &l, &a), "reading a colour works");
  require(isWithin(h) && s >= 0 && s <= 1 + 1e-9 && isWithin(l), "hue, saturation and lightness lie within 0 to 1");
  require(areNear(UIColorHSL::colorWithHue(h, s, l, a), color), "a colour comes back from its hue");
  require(isFinite(spin(color, fraction(input) * 720 - 360)), "a turned colour is finite");
  require(isFinite(lighten(color, fraction(input))), "a lighter colour is finite");
  const UIColor moved = offsetWithHue(color, number(input), number(input), number(input), number(input));
  require(std::isnan(moved.alpha()) || isWithin(moved.alpha()), "an offset alpha is limited");
  const UIColor other(number(input), number(input), number(input), number(input));
  (void)offsetWithHue(other, number(input), number(input), number(input), number(input));
}

void checkContrast(fuzz::Input& input) {
  const UIColor color(number(input), number(input), number(input), number(input));
  const UIColor background(number(input), number(input), number(input), number(input));
  const double before = contrastRatio(color, background);
  require(before >= 1 && before <= 21, "contrast lies between 1 and 21");
  const double after = contrastRatio(readableOn(color, background), background);
  require(after >= std::fmin(before, 4.5), "a readable form has no less contrast");
  const auto written = colorFromCSS(hexTextRGBA(color));
  require(written && hexTextARGB(*written) == hexTextARGB(color), "hexadecimal text reads back");
}

void checkCSS(const String& text) {
  const auto color = colorFromCSS(text);
  require(!color || isWithin(*color), "a colour of CSS lies within 0 to 1");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const std::uint8_t choice = input.byte() % 4;
  if (choice == 0) {
    checkHSL(input);
  } else if (choice == 1) {
    checkContrast(input);
  } else {
    const StringView kStarts[] = {u"", u"#", u"rgb(", u"hsl(", u"hwb("};
    const bool isFunction = choice == 3;
    StringBuilder css;
    css.append(kStarts[input.byte() % std::size(kStarts)]);
    css.append(input.rest());
    if (isFunction) css.append(u')');
    checkCSS(css.finish());
  }
  return 0;
}
