#include <quorvel/Extensions/UIKit/UIColor+ColorWithHex.h>
#include <quorvel/Extensions/UIKit/UIColor+Common.h>

namespace quorvel {
namespace {

using UIColorWithHex::colorWithAlphaHex;

constexpr UIColor::Common::Named kPalette[] = {
    {"navyColor", colorWithAlphaHex(0xFF485D77)},
    {"brandGreenColor", colorWithAlphaHex(0xFF33B92A)},
    {"blueColor", colorWithAlphaHex(0xFF157EFB)},
    {"redColor", colorWithAlphaHex(0xFFFD472B)},
    {"cellSeparatorColor", colorWithAlphaHex(0xFFDDDDDD)},
    {"cellSeparatorDarkColor", colorWithAlphaHex(0xFFB9D5E6)},
    {"selectedCellColor", colorWithAlphaHex(0xFF333333)},
    {"grayColor", colorWithAlphaHex(0xFF666666)},
    {"darkGrayColor", colorWithAlphaHex(0xFF222222)},
    {"gray99Color", colorWithAlphaHex(0xFF999999)},
    {"grayDarkColor", colorWithAlphaHex(0xFF7C909D)},
    {"lightGrayColor", colorWithAlphaHex(0xFFACACAC)},
    {"grayCcColor", colorWithAlphaHex(0xFFCCCCCC)},
    {"exceptionLineColor", colorWithAlphaHex(0xFFEEEEEE)},
    {"selectionBackgroundColor", colorWithAlphaHex(0xFFFAFAFA)},
    {"backgroundColor", colorWithAlphaHex(0xFFF5F5F5)},
    {"transparentWhiteColor", colorWithAlphaHex(0x88FFFFFF)},
    {"highlightMarkColor", colorWithAlphaHex(0xFFF6FF00)},
    {"orangeColor", colorWithAlphaHex(0xFFFF9600)},
    {"textCursorColor", colorWithAlphaHex(0xFF007AFF)},
    {"pemraGreen", colorWithAlphaHex(0xFF07B53B)},
    {"smsPurple", colorWithAlphaHex(0xFF8E8EDC)},
    {"greenyBlue", colorWithAlphaHex(0xFF3AB6C1)},
    {"urlCopyBlue", colorWithAlphaHex(0xFF7CAAE0)},
};

}  // namespace

std::span<const UIColor::Common::Named> UIColor::Common::all() { return kPalette; }

const UIColor& UIColor::Common::navyColor() { return kPalette[0].color; }
const UIColor& UIColor::Common::brandGreenColor() { return kPalette[1].color; }
const UIColor& UIColor::Common::blueColor() { return kPalette[2].color; }
const UIColor& UIColor::Common::redColor() { return kPalette[3].color; }
const UIColor& UIColor::Common::cellSeparatorColor() { return kPalette[4].color; }
const UIColor& UIColor::Common::cellSeparatorDarkColor() { return kPalette[5].color; }
const UIColor& UIColor::Common::selectedCellColor() { return kPalette[6].color; }
const UIColor& UIColor::Common::grayColor() { return kPalette[7].color; }
const UIColor& UIColor::Common::darkGrayColor() { return kPalette[8].color; }
const UIColor& UIColor::Common::gray99Color() { return kPalette[9].color; }
const UIColor& UIColor::Common::grayDarkColor() { return kPalette[10].color; }
const UIColor& UIColor::Common::lightGrayColor() { return kPalette[11].color; }
const UIColor& UIColor::Common::grayCcColor() { return kPalette[12].color; }
const UIColor& UIColor::Common::exceptionLineColor() { return kPalette[13].color; }
const UIColor& UIColor::Common::selectionBackgroundColor() { return kPalette[14].color; }
const UIColor& UIColor::Common::backgroundColor() { return kPalette[15].color; }
const UIColor& UIColor::Common::transparentWhiteColor() { return kPalette[16].color; }
const UIColor& UIColor::Common::highlightMarkColor() { return kPalette[17].color; }
const UIColor& UIColor::Common::orangeColor() { return kPalette[18].color; }
const UIColor& UIColor::Common::textCursorColor() { return kPalette[19].color; }
const UIColor& UIColor::Common::pemraGreen() { return kPalette[20].color; }
const UIColor& UIColor::Common::smsPurple() { return kPalette[21].color; }
const UIColor& UIColor::Common::greenyBlue() { return kPalette[22].color; }
const UIColor& UIColor::Common::urlCopyBlue() { return kPalette[23].color; }

}  // namespace quorvel
