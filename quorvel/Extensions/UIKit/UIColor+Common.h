// UIColor.Common: the application's named palette, 24 colours fixed for the life of the process.
// Not here: colours from packed integers (UIColor+ColorWithHex.h).
#pragma once

#include <array>

#include <quorvel/Extensions/UIKit/UIColor+ColorWithHex.h>

namespace quorvel {

/// `UIColor.Common`: every accessor answers the same object each time, from any thread.
struct UIColor::Common {
  struct Named {
    const char* name;
    std::uint32_t argb;
  };
  /// The whole palette, in its order.
  static constexpr std::array<Named, 24> kPalette = {{
      {"navyColor", 0xFF485D77},
      {"brandGreenColor", 0xFF33B92A},
      {"blueColor", 0xFF157EFB},
      {"redColor", 0xFFFD472B},
      {"cellSeparatorColor", 0xFFDDDDDD},
      {"cellSeparatorDarkColor", 0xFFB9D5E6},
      {"selectedCellColor", 0xFF333333},
      {"grayColor", 0xFF666666},
      {"darkGrayColor", 0xFF222222},
      {"gray99Color", 0xFF999999},
      {"grayDarkColor", 0xFF7C909D},
      {"lightGrayColor", 0xFFACACAC},
      {"grayCcColor", 0xFFCCCCCC},
      {"exceptionLineColor", 0xFFEEEEEE},
      {"selectionBackgroundColor", 0xFFFAFAFA},
      {"backgroundColor", 0xFFF5F5F5},
      {"transparentWhiteColor", 0x88FFFFFF},
      {"highlightMarkColor", 0xFFF6FF00},
      {"orangeColor", 0xFFFF9600},
      {"textCursorColor", 0xFF007AFF},
      {"pemraGreen", 0xFF07B53B},
      {"smsPurple", 0xFF8E8EDC},
      {"greenyBlue", 0xFF3AB6C1},
      {"urlCopyBlue", 0xFF7CAAE0},
  }};

  /// `navyColor`
  [[nodiscard]] static const UIColor& navyColor() { return at(0); }
  /// `brandGreenColor`
  [[nodiscard]] static const UIColor& brandGreenColor() { return at(1); }
  /// `blueColor`
  [[nodiscard]] static const UIColor& blueColor() { return at(2); }
  /// `redColor`
  [[nodiscard]] static const UIColor& redColor() { return at(3); }
  /// `cellSeparatorColor`
  [[nodiscard]] static const UIColor& cellSeparatorColor() { return at(4); }
  /// `cellSeparatorDarkColor`
  [[nodiscard]] static const UIColor& cellSeparatorDarkColor() { return at(5); }
  /// `selectedCellColor`
  [[nodiscard]] static const UIColor& selectedCellColor() { return at(6); }
  /// `grayColor`
  [[nodiscard]] static const UIColor& grayColor() { return at(7); }
  /// `darkGrayColor`
  [[nodiscard]] static const UIColor& darkGrayColor() { return at(8); }
  /// `gray99Color`
  [[nodiscard]] static const UIColor& gray99Color() { return at(9); }
  /// `grayDarkColor`
  [[nodiscard]] static const UIColor& grayDarkColor() { return at(10); }
  /// `lightGrayColor`
  [[nodiscard]] static const UIColor& lightGrayColor() { return at(11); }
  /// `grayCcColor`
  [[nodiscard]] static const UIColor& grayCcColor() { return at(12); }
  /// `exceptionLineColor`
  [[nodiscard]] static const UIColor& exceptionLineColor() { return at(13); }
  /// `selectionBackgroundColor`
  [[nodiscard]] static const UIColor& selectionBackgroundColor() { return at(14); }
  /// `backgroundColor`
  [[nodiscard]] static const UIColor& backgroundColor() { return at(15); }
  /// `transparentWhiteColor`
  [[nodiscard]] static const UIColor& transparentWhiteColor() { return at(16); }
  /// `highlightMarkColor`
  [[nodiscard]] static const UIColor& highlightMarkColor() { return at(17); }
  /// `orangeColor`
  [[nodiscard]] static const UIColor& orangeColor() { return at(18); }
  /// `textCursorColor`
  [[nodiscard]] static const UIColor& textCursorColor() { return at(19); }
  /// `pemraGreen`
  [[nodiscard]] static const UIColor& pemraGreen() { return at(20); }
  /// `smsPurple`
  [[nodiscard]] static const UIColor& smsPurple() { return at(21); }
  /// `greenyBlue`
  [[nodiscard]] static const UIColor& greenyBlue() { return at(22); }
  /// `urlCopyBlue`
  [[nodiscard]] static const UIColor& urlCopyBlue() { return at(23); }

  /// The colour of a row of `kPalette`.
  [[nodiscard]] static const UIColor& at(std::size_t row);
};

}  // namespace quorvel
