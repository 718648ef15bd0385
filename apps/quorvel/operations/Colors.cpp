#include <apps/quorvel/Binding.h>
#include <apps/quorvel/operations/Tables.h>

#include <quorvel/Extensions/UIKit/UIColor+ColorWithHex.h>
#include <quorvel/Extensions/UIKit/UIColor+Common.h>
#include <quorvel/Extensions/UIKit/UIColor+Companions.h>
#include <quorvel/Extensions/UIKit/UIColor+Extension.h>
#include <quorvel/Extensions/UIKit/UIColor+HSL.h>

namespace quorvel::command {
namespace {

constexpr const char* kHex = "UIColor(ColorWithHex)";
constexpr const char* kExtension = "UIColor extension";
constexpr const char* kHSL = "UIColor(HSL)";
constexpr const char* kText = "color text";

using FromRGB = UIColor (*)(std::uint32_t);
using FromRGBAndAlpha = UIColor (*)(std::int32_t, double);
using FromThree = UIColor (*)(float, float, float);
using FromFour = UIColor (*)(float, float, float, float);

template <auto Function>
consteval Operation paletteRow(std::string_view name) {
  return op<Function>("UIColor.Common", name, "", "a colour of the palette");
}

Dictionary hslRecord(const UIColor& color) {
  double hue = 0;
  double saturation = 0;
  double lightness = 0;
  double alpha = 0;
  getHue(color, &hue, &saturation, &lightness, &alpha);
  Dictionary record;
  record.set(u"hue", hue);
  record.set(u"saturation", saturation);
  record.set(u"lightness", lightness);
  record.set(u"alpha", alpha);
  return record;
}

Dictionary palette() {
  Dictionary colors;
  for (const auto& [name, color] : UIColor::Common::all()) colors.set(String::fromASCII(name), color);
  return colors;
}

constexpr Operation kRows[] = {
    op<static_cast<FromRGB>(&UIColorWithHex::colorWithRGB)>(kHex, "colorWithRGB:", "rgb", "0xRRGGBB, opaque",
                                                            "[16711680]"),
    op<&UIColorWithHex::colorWithHex>(kHex, "colorWithHex:", "rgb", "0xRRGGBB, opaque", "[16711680]"),
    op<static_cast<FromRGBAndAlpha>(&UIColorWithHex::colorWithRGB)>(kHex, "colorWithRGB:WithAlpha:", "rgb, withAlpha",
                                                                    "0xRRGGBB with an alpha", "[65280, 0.3]"),
    op<&UIColorWithHex::colorWithAlphaHex>(kHex, "colorWithAlphaHex:", "argb", "0xAARRGGBB", "[2164195328]"),
    op<&UIColorWithHex::colorWithAlphaHexRGBA>(kHex, "colorWithAlphaHexRGBA:", "rgba", "0xRRGGBBAA", "[2164195328]"),
    op<&UIColorWithHex::colorWithHexString>(kHex, "colorWithHexString:", "text", "a hexadecimal text as RRGGBB",
                                            R"(["#FF0000"])"),
    op<&UIColorWithHex::colorWithAlphaHexString>(kHex, "colorWithAlphaHexString:", "text",
                                                 "a hexadecimal text as AARRGGBB", R"(["#80FF0000"])"),
    op<&UIColorWithHex::colorWithAlphaHexStringRGBA>(kHex, "colorWithAlphaHexStringRGBA:", "text",
                                                     "a hexadecimal text as RRGGBBAA", R"(["#FF000080"])"),

    op<static_cast<FromThree>(&UIColorExtension::color)>(kExtension, "color(r:g:b:)", "r, g, b",
                                                         "from components 0 to 255, opaque", "[255, 0, 0]"),
    op<static_cast<FromFour>(&UIColorExtension::color)>(kExtension, "color(r:g:b:a:)", "r, g, b, a",
                                                        "from components 0 to 255 and an alpha", "[255, 0, 0, 0.5]"),
    op<&isSimilar>(kExtension, "isSimilar(to:)", "color, to", "whether six decimals of each component agree",
                   "[[1, 0, 0, 0.5], [1, 0, 0, 0.5000004]]"),
    op<[] { return palette(); }>(kExtension, "UIColor.Common", "", "the palette: names to colours"),

    paletteRow<&UIColor::Common::navyColor>("navyColor"),
    paletteRow<&UIColor::Common::brandGreenColor>("brandGreenColor"),
    paletteRow<&UIColor::Common::blueColor>("blueColor"),
    paletteRow<&UIColor::Common::redColor>("redColor"),
    paletteRow<&UIColor::Common::cellSeparatorColor>("cellSeparatorColor"),
    paletteRow<&UIColor::Common::cellSeparatorDarkColor>("cellSeparatorDarkColor"),
    paletteRow<&UIColor::Common::selectedCellColor>("selectedCellColor"),
    paletteRow<&UIColor::Common::grayColor>("grayColor"),
    paletteRow<&UIColor::Common::darkGrayColor>("darkGrayColor"),
    paletteRow<&UIColor::Common::gray99Color>("gray99Color"),
    paletteRow<&UIColor::Common::grayDarkColor>("grayDarkColor"),
    paletteRow<&UIColor::Common::lightGrayColor>("lightGrayColor"),
    paletteRow<&UIColor::Common::grayCcColor>("grayCcColor"),
    paletteRow<&UIColor::Common::exceptionLineColor>("exceptionLineColor"),
    paletteRow<&UIColor::Common::selectionBackgroundColor>("selectionBackgroundColor"),
    paletteRow<&UIColor::Common::backgroundColor>("backgroundColor"),
    paletteRow<&UIColor::Common::transparentWhiteColor>("transparentWhiteColor"),
    paletteRow<&UIColor::Common::highlightMarkColor>("highlightMarkColor"),
    paletteRow<&UIColor::Common::orangeColor>("orangeColor"),
    paletteRow<&UIColor::Common::textCursorColor>("textCursorColor"),
    paletteRow<&UIColor::Common::pemraGreen>("pemraGreen"),
    paletteRow<&UIColor::Common::smsPurple>("smsPurple"),
    paletteRow<&UIColor::Common::greenyBlue>("greenyBlue"),
    paletteRow<&UIColor::Common::urlCopyBlue>("urlCopyBlue"),

    op<&UIColorHSL::colorWithHue>(kHSL, "colorWithHue:saturation:lightness:alpha:", "hue, saturation, lightness, alpha",
                                  "from parts of 1, the hue of a turn", "[0.25, 1, 0.5, 1]"),
    op<[](const UIColor& color) { return hslRecord(color); }, &getHue>(
        kHSL, "getHue:saturation:lightness:alpha:", "color", "hue, saturation, lightness and alpha as a record",
        "[[1, 0, 0, 1]]"),
    op<&offsetWithHue>(kHSL, "offsetWithHue:saturation:lightness:alpha:", "color, hue, saturation, lightness, alpha",
                       "each value with its difference added", "[[1, 0, 0, 1], 0.5, 0, 0.1, 0]"),
    op<&saturate>(kHSL, "saturate:", "color, amount", "more saturated", "[[0.6, 0.4, 0.4, 1], 0.2]"),
    op<&desaturate>(kHSL, "desaturate:", "color, amount", "less saturated", "[[1, 0, 0, 1], 0.2]"),
    op<&lighten>(kHSL, "lighten:", "color, amount", "lighter", "[[1, 0, 0, 1], 0.2]"),
    op<&darken>(kHSL, "darken:", "color, amount", "darker", "[[1, 0, 0, 1], 0.2]"),
    op<&spin>(kHSL, "spin:", "color, degrees", "with the hue turned", "[[1, 0, 0, 1], 180]"),
    op<&clamp>(kHSL, "clamp:", "color, value", "the value limited to 0 to 1", "[[1, 0, 0, 1], 1.5]"),

    op<&hexTextRGB>(kText, "hexTextRGB", "color", "#RRGGBB", "[[1, 0.5, 0, 1]]"),
    op<&hexTextRGBA>(kText, "hexTextRGBA", "color", "#RRGGBBAA", "[[1, 0.5, 0, 1]]"),
    op<&hexTextARGB>(kText, "hexTextARGB", "color", "#AARRGGBB", "[[1, 0.5, 0, 1]]"),
    op<&colorFromCSS>(kText, "colorFromCSS", "text", "a colour as CSS writes it", R"x(["hsl(210 50% 40% / 0.5)"])x"),
    op<&contrastRatio>(kText, "contrastRatio", "color, background", "contrast from 1 to 21, by WCAG 2.1",
                       "[[0.5, 0.5, 0.5, 1], [1, 1, 1, 1]]"),
    op<&readableOn>(kText, "readableOn", "color, background, ratio", "with the nearest lightness that has the contrast",
                    "[[1, 0.6, 0, 1], [1, 1, 1, 1], 4.5]"),
};

}  // namespace

std::span<const Operation> colorOperations() { return kRows; }

}  // namespace quorvel::command
