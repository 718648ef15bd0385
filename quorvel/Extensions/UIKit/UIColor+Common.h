// UIColor.Common: the application's named palette.
#pragma once

#include <span>

#include <quorvel/Platform/UIKit/UIColor.h>

namespace quorvel {

/// `UIColor.Common`: 24 colours that screens use by name. Every access to a name gives the same object.
struct UIColor::Common {
  struct Named {
    const char* name;
    UIColor color;
  };
  /// The whole palette in its order, for listings.
  [[nodiscard]] static std::span<const Named> all();

  /// `navyColor`: 0xFF485D77
  [[nodiscard]] static const UIColor& navyColor();
  /// `brandGreenColor`: 0xFF33B92A
  [[nodiscard]] static const UIColor& brandGreenColor();
  /// `blueColor`: 0xFF157EFB
  [[nodiscard]] static const UIColor& blueColor();
  /// `redColor`: 0xFFFD472B
  [[nodiscard]] static const UIColor& redColor();
  /// `cellSeparatorColor`: 0xFFDDDDDD
  [[nodiscard]] static const UIColor& cellSeparatorColor();
  /// `cellSeparatorDarkColor`: 0xFFB9D5E6
  [[nodiscard]] static const UIColor& cellSeparatorDarkColor();
  /// `selectedCellColor`: 0xFF333333
  [[nodiscard]] static const UIColor& selectedCellColor();
  /// `grayColor`: 0xFF666666
  [[nodiscard]] static const UIColor& grayColor();
  /// `darkGrayColor`: 0xFF222222
  [[nodiscard]] static const UIColor& darkGrayColor();
  /// `gray99Color`: 0xFF999999
  [[nodiscard]] static const UIColor& gray99Color();
  /// `grayDarkColor`: 0xFF7C909D
  [[nodiscard]] static const UIColor& grayDarkColor();
  /// `lightGrayColor`: 0xFFACACAC
  [[nodiscard]] static const UIColor& lightGrayColor();
  /// `grayCcColor`: 0xFFCCCCCC
  [[nodiscard]] static const UIColor& grayCcColor();
  /// `exceptionLineColor`: 0xFFEEEEEE
  [[nodiscard]] static const UIColor& exceptionLineColor();
  /// `selectionBackgroundColor`: 0xFFFAFAFA
  [[nodiscard]] static const UIColor& selectionBackgroundColor();
  /// `backgroundColor`: 0xFFF5F5F5
  [[nodiscard]] static const UIColor& backgroundColor();
  /// `transparentWhiteColor`: 0x88FFFFFF
  [[nodiscard]] static const UIColor& transparentWhiteColor();
  /// `highlightMarkColor`: 0xFFF6FF00
  [[nodiscard]] static const UIColor& highlightMarkColor();
  /// `orangeColor`: 0xFFFF9600
  [[nodiscard]] static const UIColor& orangeColor();
  /// `textCursorColor`: 0xFF007AFF
  [[nodiscard]] static const UIColor& textCursorColor();
  /// `pemraGreen`: 0xFF07B53B
  [[nodiscard]] static const UIColor& pemraGreen();
  /// `smsPurple`: 0xFF8E8EDC
  [[nodiscard]] static const UIColor& smsPurple();
  /// `greenyBlue`: 0xFF3AB6C1
  [[nodiscard]] static const UIColor& greenyBlue();
  /// `urlCopyBlue`: 0xFF7CAAE0
  [[nodiscard]] static const UIColor& urlCopyBlue();
};

}  // namespace quorvel
