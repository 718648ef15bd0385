// UIImage(Color): pictures of one colour, thin lines, and a picture's shape in a colour.
// Not here: the form of `imageWithColor:` at scale 1 (UIImage+Tools.h).
#pragma once

#include <quorvel/Platform/UIKit/UIImage.h>

namespace quorvel {

// A result is nil for an empty size and one beyond the limits of images.

/// `maskedImageWithColor:`: the receiver's shape in the colour: its alpha is kept. Upright, at its own scale.
[[nodiscard]] std::optional<UIImage> maskedImageWithColor(const UIImage& image, const UIColor& color);
/// `maskedImageWithAlpahHexColor:`: `maskedImageWithColor:` with 0xAARRGGBB.
[[nodiscard]] std::optional<UIImage> maskedImageWithAlpahHexColor(const UIImage& image, std::uint32_t argb);

enum LinePosition : std::int64_t {
  LinePositionBottom = 0,
  LinePositionTop = 1,
  LinePositionLeft = 2,
  LinePositionRight = 3,
};

namespace UIImageColor {

/// `imageWithColor:size:`: so many points at the main screen's scale in the colour.
[[nodiscard]] std::optional<UIImage> imageWithColor(const UIColor& color, const CGSize& size);
/// `imageWithColor:`: `imageWithColor:size:` with 1 by 1 point. At scale 1: `UIImageTools::imageWithColor`.
[[nodiscard]] std::optional<UIImage> imageWithColor(const UIColor& color);

/// `linedImageWithSize:color:backgroundColor:borderWidth:position:`: so many points at the main screen's scale, filled
/// with the background, if any, and a line along an edge, `borderWidth` pixels of the screen thick. A nil colour draws
/// the line in the background's, or in black without one. At another position than the four there is no line.
[[nodiscard]] std::optional<UIImage> linedImageWithSize(const CGSize& size, const std::optional<UIColor>& color,
                                                        const std::optional<UIColor>& backgroundColor,
                                                        double borderWidth, LinePosition position);
/// `linedImageWithSize:color:backgroundColor:borderWidth:under:`: the line at the bottom, or at the top.
[[nodiscard]] std::optional<UIImage> linedImageWithSize(const CGSize& size, const std::optional<UIColor>& color,
                                                        const std::optional<UIColor>& backgroundColor,
                                                        double borderWidth, bool under);

/// `lineImageWithColor:under:`: 1 by 1 point, transparent but for a line of a pixel.
[[nodiscard]] std::optional<UIImage> lineImageWithColor(const std::optional<UIColor>& color, bool under);
/// `lineImageWithBackgroundColor:under:`: the same with line and background in the colour.
[[nodiscard]] std::optional<UIImage> lineImageWithBackgroundColor(const std::optional<UIColor>& color, bool under);
/// `lineImageWithAlpahHexColor:under:`: `lineImageWithColor:under:` with 0xAARRGGBB.
[[nodiscard]] std::optional<UIImage> lineImageWithAlpahHexColor(std::uint32_t argb, bool under);

}  // namespace UIImageColor
}  // namespace quorvel
