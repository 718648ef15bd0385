#include <apps/quorvel/Binding.h>
#include <apps/quorvel/operations/Tables.h>

#include <quorvel/Extensions/UIKit/UIColor+ColorWithHex.h>
#include <quorvel/Extensions/UIKit/UIColor+Common.h>
#include <quorvel/Extensions/UIKit/UIColor+Extension.h>

namespace quorvel::command {
namespace {

constexpr const char* kHex = "UIColor(ColorWithHex)";
constexpr const char* kExtension = "UIColor extension";

using FromRGB = UIColor (*)(std::uint32_t);
using FromRGBAndAlpha = UIColor (*)(std::int32_t, double);
using FromThree = UIColor (*)(float, float, float);
using FromFour = UIColor (*)(float, float, float, float);

template <auto Function>
consteval Operation paletteRow(std::string_view name) {
  return op<Function>("UIColor.Common", name, "", "a colour of the palette");
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
};

}  // namespace

std::span<const Operation> colorOperations() { return kRows; }

}  // namespace quorvel::command
