#include <cmath>
#include <random>

#include <gtest/gtest.h>
#include <tests/support/Row.h>

#include <quorvel/Extensions/UIKit/UIColor+ColorWithHex.h>
#include <quorvel/Extensions/UIKit/UIColor+HSL.h>

namespace quorvel {
namespace {

using UIColorHSL::colorWithHue;

struct HSL {
  double hue = -1;
  double saturation = -1;
  double lightness = -1;
  double alpha = -1;
};
HSL hslOf(const UIColor& color) {
  HSL hsl;
  EXPECT_TRUE(getHue(color, &hsl.hue, &hsl.saturation, &hsl.lightness, &hsl.alpha));
  return hsl;
}

double distance(const UIColor& a, const UIColor& b) {
  double largest = 0;
  for (const auto& [x, y] : {std::pair(a.red(), b.red()), std::pair(a.green(), b.green()),
                             std::pair(a.blue(), b.blue()), std::pair(a.alpha(), b.alpha())}) {
    largest = std::fmax(largest, std::fabs(x - y));
  }
  return largest;
}

constexpr double kRounding = 4e-15;

TEST(ColorWithHue, KnowsTheCornersOfTheCircle) {
  const test::Row<UIColor, UIColor, test::Why> rows[] = {
      {colorWithHue(0.25, 0, 0.4, 1), UIColor(0.4, 0.4, 0.4, 1), "no saturation: the hue is not looked at"},
      {colorWithHue(NAN, -0.0, 2, 1), UIColor(2, 2, 2, 1), "not clamped, and -0 is 0"},
      {colorWithHue(0, 1, 0.5, 1), UIColor(1, 0, 0, 1), "red"},
      {colorWithHue(1, 1, 0.5, 1), UIColor(1, 0, 0, 1), "red again"},
      {colorWithHue(2.0 / 3, 1, 0.5, 0.7), UIColor(0, 0, 1, 0.7), "blue"},
      {colorWithHue(0.3, 0.8, 1, 1), UIColor(1, 1, 1, 1), "white at any saturation"},
      {colorWithHue(0.3, 0.8, 0, 1), UIColor(0, 0, 0, 1), "black at any saturation"},
      {colorWithHue(-0.05, 1, 0.5, 1), colorWithHue(0.95, 1, 0.5, 1), "one turn is added"},
      {colorWithHue(-1.5, 1, 0.5, 1), UIColor(-1, -3, -5, 1), "and one only: what is left runs on along the slope"},
  };
  for (const auto& [color, expected, why] : rows) EXPECT_LE(distance(color, expected), kRounding) << why;
}

TEST(GetHue, KnowsGreysAndTies) {
  const test::Row<UIColor, double, double, double, test::Why> rows[] = {
      {UIColor(0, 0, 0, 1), 0, 0, 0, "black"},
      {UIColor(1, 1, 1, 1), 0, 0, 1, "white"},
      {UIColor(1, 0, 0, 1), 1, 1, 0.5, "pure red is 1, not 0"},
      {UIColor(1, 1, 0, 1), 1 / 6.0, 1, 0.5, "red is tested before green"},
      {UIColor(0, 1, 0, 1), 2 / 6.0, 1, 0.5, "green"},
      {UIColor(0, 1, 1, 1), 3 / 6.0, 1, 0.5, "green is tested before blue"},
      {UIColor(0, 0, 1, 1), 4 / 6.0, 1, 0.5, "blue"},
      {UIColor(1, 0, 1, 1), 5 / 6.0, 1, 0.5, "red is tested before blue"},
      {UIColor(-1, 0.5, 0.2, 1), 0, 0, -0.25, "a lightness below 0 stays, without hue"},
  };
  for (const auto& [color, hue, saturation, lightness, why] : rows) {
    const HSL hsl = hslOf(color);
    EXPECT_DOUBLE_EQ(hsl.hue, hue) << why;
    EXPECT_EQ(hsl.saturation, saturation) << why;
    EXPECT_EQ(hsl.lightness, lightness) << why;
  }
  double lightness = -1;
  EXPECT_TRUE(getHue(UIColor(0.2, 0.4, 0.9, 0.5), nullptr, nullptr, &lightness, nullptr));
  EXPECT_DOUBLE_EQ(lightness, 0.55);
}

TEST(GetHue, ComesBackOnAGridOfColors) {
  for (std::uint32_t packed = 0; packed < 0x1000000; packed += 0x010307) {
    const UIColor color = UIColorWithHex::colorWithRGB(static_cast<std::int32_t>(packed), 0.25);
    const HSL hsl = hslOf(color);
    ASSERT_TRUE(hsl.hue >= 0 && hsl.hue <= 1 && hsl.saturation >= 0 && hsl.saturation <= 1 + kRounding) << packed;
    ASSERT_LE(distance(colorWithHue(hsl.hue, hsl.saturation, hsl.lightness, hsl.alpha), color), kRounding) << packed;
  }
}

TEST(OffsetWithHue, MovesOneValueAndLimitsIt) {
  const UIColor red(1, 0, 0, 1);
  constexpr double kFloat = 4e-6;  // the hue passes through 32 bits
  const test::Row<UIColor, UIColor, double, test::Why> rows[] = {
      {lighten(red, 0.6), UIColor(1, 1, 1, 1), 0, "white, not beyond"},
      {darken(red, 0.6), UIColor(0, 0, 0, 1), 0, "black, not below"},
      {desaturate(red, 2), UIColor(0.5, 0.5, 0.5, 1), 0, "grey"},
      {saturate(UIColor(0.6, 0.4, 0.4, 1), 5), UIColor(1, 0, 0, 1), kRounding, "no more than full"},
      {spin(red, 180), UIColor(0, 1, 1, 1), kRounding, "the other side"},
      {spin(red, -120), UIColor(0, 0, 1, 1), kFloat, "a third back from 1"},
      {spin(red, 3600 + 120), UIColor(0, 1, 0, 1), kFloat, "turns do not add up"},
      {spin(colorWithHue(0.05, 1, 0.5, 1), -36), colorWithHue(0.95, 1, 0.5, 1), kFloat, "below 0"},
      {offsetWithHue(red, 0, 0, 0, -3), UIColor(1, 0, 0, 0), 0, "alpha too"},
      {offsetWithHue(UIColor(0.2, 0.2, 0.2, 1), 0.5, 0, 0, 0), UIColor(0.2, 0.2, 0.2, 1), 0, "a grey has no hue"},
  };
  for (const auto& [color, expected, allowed, why] : rows) EXPECT_LE(distance(color, expected), allowed) << why;
  EXPECT_NEAR(spin(UIColor(1, 0.6, 0, 1), 0).green(), 6 * 0.100000001490116119, 1e-12)
      << "even a hue that is not moved is rounded to 32 bits";
  EXPECT_NEAR(spin(red, 3600 + 120).red(), 1.9073486e-06, 1e-9) << "and before the turns go";
  EXPECT_EQ(clamp(red, -0.5), 0);
  EXPECT_EQ(clamp(red, 1.5), 1);
  EXPECT_EQ(clamp(red, 0.3), 0.3);
  EXPECT_TRUE(std::isnan(clamp(red, NAN)));
}

}  // namespace
}  // namespace quorvel
