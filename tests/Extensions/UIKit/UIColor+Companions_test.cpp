#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>
#include <tests/support/Row.h>

#include <quorvel/Extensions/UIKit/UIColor+CSSNames.h>
#include <quorvel/Extensions/UIKit/UIColor+ColorWithHex.h>
#include <quorvel/Extensions/UIKit/UIColor+Companions.h>
#include <quorvel/Extensions/UIKit/UIColor+HSL.h>

namespace quorvel {
namespace {

constexpr UIColor kWhite(1, 1, 1, 1);
constexpr UIColor kBlack(0, 0, 0, 1);

TEST(HexText, WritesWhatTheHexReadersRead) {
  for (const std::uint32_t packed : {0U, 0x12345678U, 0xFFFFFFFFU, 0x80FF0001U}) {
    const UIColor color = UIColorWithHex::colorWithAlphaHex(packed);
    EXPECT_EQ(UIColorWithHex::colorWithAlphaHexString(hexTextARGB(color)), color);
    EXPECT_EQ(UIColorWithHex::colorWithAlphaHexStringRGBA(hexTextRGBA(color)), color);
    EXPECT_EQ(UIColorWithHex::colorWithHexString(hexTextRGB(color)), UIColorWithHex::colorWithHex(packed));
    EXPECT_EQ(colorFromCSS(hexTextRGBA(color)), color);
  }
  EXPECT_EQ(hexTextARGB(UIColor(-1, 0.5 / 255, 7, NAN)), u"#000001FF") << "limited; half a byte rounds up; NaN is 0";
}

TEST(ColorFromCSS, ReadsEveryForm) {
  const test::Row<StringView, String, test::Why> rows[] = {
      {u"#F80", u"#FF8800FF", "short"},
      {u"#f808", u"#FF880088", "short with alpha"},
      {u"#1E90ff", u"#1E90FFFF", "long"},
      {u"#1e90ff80", u"#1E90FF80", "long with alpha last"},
      {u" \t\n#000\f ", u"#000000FF", "white space around"},
      {u"rgb(255,128 , 0)", u"#FF8000FF", "commas"},
      {u"RGBA(100%, 50%, 0%, 0.5)", u"#FF800080", "percentages and an alpha behind commas"},
      {u"rgba(1,2,3)", u"#010203FF", "rgba is rgb"},
      {u"rgb(255 128 0/50%)", u"#FF800080", "spaces and a slash"},
      {u"rgb(10% 128 none / none)", u"#1A800000", "kinds mix behind spaces, and none is 0"},
      {u"rgb(300 -20 1e2)", u"#FF0064FF", "limited; an exponent"},
      {u"rgb(1+2-3)", u"#010200FF", "signs part numbers"},
      {u"rgb(.5.5.5)", u"#010101FF", "points too"},
      {u"rgb(10%20%30%)", u"#1A334DFF", "and percent signs"},
      {u"rgb(0 0 0 / 7)", u"#000000FF", "alpha is limited"},
      {u"hsl(120, 100%, 25%)", u"#008000FF", "hue in degrees"},
      {u"hsla(120DEG 100% 25% / .5)", u"#00800080", "with its unit"},
      {u"hsl(-240 100 25)", u"#008000FF", "numbers behind spaces; a turn below"},
      {u"hsl(.333333333turn 100% 25%)", u"#008000FF", "turns"},
      {u"hsl(133.3333333grad 100% 25%)", u"#008000FF", "gradians"},
      {u"hsl(2.0943951rad 100% 25%)", u"#008000FF", "radians"},
      {u"hsl(36000000120 100% 25%)", u"#008000FF", "many turns"},
      {u"hsl(0 -50% 50%)", u"#808080FF", "a saturation below 0"},
      {u"hsl(0 0% 120%)", u"#FFFFFFFF", "a lightness beyond"},
      {u"hwb(0 0% 0%)", u"#FF0000FF", "hue, white, black"},
      {u"hwb(240deg 20% 40% / 25%)", u"#33339940", "mixed"},
      {u"hwb(90 60% 60%)", u"#808080FF", "more than a whole is a grey"},
      {u"ReBeccaPurple", u"#663399FF", "letter case of names"},
      {u"transparent", u"#00000000", "black without alpha"},
  };
  for (const auto& [text, expected, why] : rows) {
    const auto color = colorFromCSS(text);
    ASSERT_TRUE(color) << text << ": " << why;
    EXPECT_EQ(hexTextRGBA(*color), expected) << text << ": " << why;
  }
  EXPECT_EQ(colorFromCSS(u"rgb(0.5 0 0)"), UIColor(0.5 / 255, 0, 0, 1)) << "not rounded to bytes";
}

TEST(ColorFromCSS, RefusesWhatIsNoColor) {
  const StringView none[] = {
      // No text, no digits, another count of digits, another base, no number sign.
      nil, u"", u"  ", u"#", u"#12", u"#12345", u"#1234567", u"#123456789", u"#ggg", u"FF0000",
      // Brackets and counts of arguments.
      u"rgb", u"rgb (1,2,3)", u"rgb(1,2,3", u"rgb(1,2,3))", u"rgb(1,2)", u"rgb(1,2,3,4,5)", u"rgb(1,,3)",
      // An alpha behind no slash, a slash behind commas, commas beside spaces.
      u"rgb(1 2 3 4)", u"rgb(1,2,3/4)", u"rgb(1 2 3, 4)", u"rgb(1,2 3)", u"rgb(1 2,3)", u"hwb(0, 0%, 0%)",
      // Kinds that do not mix behind commas, angles for other things, no units of CSS.
      u"rgb(1%,2,3)", u"rgb(none,2,3)", u"hsl(120, 100, 25)", u"rgb(1 2 3 / 90deg)", u"rgb(1deg 2 3)",
      u"hsl(50% 100% 25%)", u"hsl(120furlong 1% 1%)",
      // Numbers that CSS does not write so, or that lie beyond the range of degrees.
      u"rgb(1. 2 3)", u"rgb(1e 2 3)", u"rgb(0x10 2 3)", u"rgb(inf nan 3)", u"hsl(1e308turn 100% 50%)",
      // What CSS has besides, words before, between and behind the names, letters that fold to others.
      u"lab(50% 0 0)", u"rgb(calc(1) 2 3)", u"rgb(1/**/2 3)", u"currentcolor", u"orangey", u"tans", u"zzz", u"r\u00E9d",
      u"\u212Ahaki"};
  for (const StringView text : none) EXPECT_FALSE(colorFromCSS(text)) << text;
}

TEST(ColorFromCSS, KnowsTheNames) {
  EXPECT_EQ(std::size(kCSSNames), 148U);
  EXPECT_TRUE(std::ranges::is_sorted(kCSSNames, {}, &CSSName::name));
  for (const auto& [name, rgb] : kCSSNames) {
    EXPECT_EQ(colorFromCSS(String::fromUTF8(name)), UIColorWithHex::colorWithHex(rgb)) << name;
    const std::size_t gray = name.find("gray");
    if (gray != name.npos) {
      const std::string british = std::string(name).replace(gray, 4, "grey");
      EXPECT_EQ(colorFromCSS(String::fromUTF8(british)), UIColorWithHex::colorWithHex(rgb)) << name;
    }
  }
  EXPECT_EQ(colorFromCSS(u"aqua"), colorFromCSS(u"cyan"));
  EXPECT_EQ(colorFromCSS(u"fuchsia"), colorFromCSS(u"magenta"));
}

TEST(ContrastRatio, KeepsToTheFormula) {
  EXPECT_EQ(contrastRatio(kBlack, kWhite), 21);
  EXPECT_EQ(contrastRatio(kWhite, kBlack), 21);
  EXPECT_NEAR(contrastRatio(UIColorWithHex::colorWithHex(0x767676), kWhite), 4.54, 0.005);
  EXPECT_NEAR(contrastRatio(UIColorWithHex::colorWithHex(0x777777), kWhite), 4.48, 0.005);
  EXPECT_DOUBLE_EQ(contrastRatio(UIColor(0, 0, 0, 0.5), kWhite), contrastRatio(UIColor(0.5, 0.5, 0.5, 1), kWhite))
      << "a translucent colour is laid over the background";
  EXPECT_EQ(contrastRatio(UIColor(1, 0, 0, 0), kWhite), 1) << "one that is not seen has none";
  EXPECT_EQ(contrastRatio(UIColor(NAN, -3, 0, 1), UIColor(9, 1, 1, 1)), 21) << "limited";
  const auto linear = [](double c) { return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4); };
  for (int byte = 0; byte < 256; ++byte) {
    const double c = byte / 255.0;
    EXPECT_NEAR(contrastRatio(UIColor(c, c, c, 1), kBlack), (linear(c) + 0.05) / 0.05, 1e-13) << byte;
  }
}

double lightnessOf(const UIColor& color) {
  double lightness = 0;
  getHue(color, nullptr, nullptr, &lightness, nullptr);
  return lightness;
}

TEST(ReadableOn, MovesNoFurtherThanItMust) {
  for (std::uint32_t packed = 0; packed < 0x1000000; packed += 0x0B1307) {
    const UIColor color = UIColorWithHex::colorWithRGB(static_cast<std::int32_t>(packed), packed % 3 == 0 ? 0.8 : 1);
    for (const std::uint32_t under : {0xFFFFFFU, 0x000000U, 0x6688AAU, 0x777777U}) {
      const UIColor background = UIColorWithHex::colorWithHex(under);
      const UIColor readable = readableOn(color, background);
      const double contrast = contrastRatio(readable, background);
      double hue = 0;
      double saturation = 0;
      double own = 0;
      getHue(color, &hue, &saturation, &own, nullptr);
      const double moved = std::fabs(lightnessOf(readable) - own);
      double best = 0;
      for (int i = 0; i <= 100; ++i) {
        const UIColor other = UIColorHSL::colorWithHue(hue, saturation, i / 100.0, color.alpha());
        best = std::fmax(best, contrastRatio(other, background));
        // Two bytes of each component are between the exact border and one that holds in bytes too.
        const bool isNearer = std::fabs(i / 100.0 - own) < moved - 0.01;
        ASSERT_FALSE(isNearer && contrastRatio(other, background) >= 4.5) << std::hex << packed << " on " << under;
      }
      ASSERT_GE(contrast, std::fmin(4.5, best) - 1e-9) << std::hex << packed << " on " << under;
      ASSERT_EQ(readable.alpha(), color.alpha());
      if (best < 4.5) continue;
      const auto written = colorFromCSS(hexTextRGBA(readable));
      ASSERT_GE(contrastRatio(*written, background), 4.5) << "written in bytes: " << std::hex << packed;
    }
  }
}

TEST(ReadableOn, LeavesWhatCannotOrNeedNotBeMoved) {
  const UIColor navy(0, 0, 0.5, 1);
  EXPECT_EQ(readableOn(navy, kWhite), navy);
  EXPECT_EQ(readableOn(UIColor(0.2, 0.4, 0.6, 0), kWhite), UIColor(0.2, 0.4, 0.6, 0)) << "not seen at any lightness";
  EXPECT_EQ(readableOn(navy, kBlack, 99), kWhite) << "as far as it goes";
  EXPECT_EQ(readableOn(UIColor(0.6, 0.6, 0.6, 1), kWhite, 99), kBlack);
}

}  // namespace
}  // namespace quorvel
