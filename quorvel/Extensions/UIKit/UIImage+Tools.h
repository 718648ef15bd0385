// UIImage(Tools): pictures cut, redrawn, turned grey, faded, recoloured and blurred.
// Not here: files (UIImage+Tools+Files.h), the frosted glass (UIImage+ImageEffects.h).
#pragma once

#include <quorvel/Platform/CoreGraphics/ImageWork.h>
#include <quorvel/Platform/UIKit/UIImage.h>

namespace quorvel {

// A result is nil where it would have no pixels or more than the limits of images allow, and without memory. Where it
// is said that the bitmap is drawn, it is as stored: the orientation is not applied, and one that turns the picture by
// a quarter squeezes it into the upright size.

/// `cropImageWithSize:`: the part of the bitmap, as stored, within a rectangle in points, at the receiver's scale and
/// upright; cut at the border.
[[nodiscard]] std::optional<UIImage> cropImageWithSize(const UIImage& image, const CGRect& rectangle);

/// `resizeImage:scale:`: drawn upright to the size times the factor, at scale 1: as many points as pixels.
[[nodiscard]] std::optional<UIImage> resizeImage(const UIImage& image, const CGSize& size, double scale);
/// `resizeImage:`: `resizeImage:scale:` with the main screen's scale, or 2 where that is less.
[[nodiscard]] std::optional<UIImage> resizeImage(const UIImage& image, const CGSize& size);

/// `convertToGrayscale`: the bitmap drawn to as many pixels as the receiver has whole points, at scale 1; red, green
/// and blue of each pixel become 0.3 red + 0.59 green + 0.11 blue, of premultiplied bytes and truncated. nil also where
/// a side is below one point.
[[nodiscard]] std::optional<UIImage> convertToGrayscale(const UIImage& image);

/// `renderingModeTemplate`: the same picture, of which only the alpha will show, in the tint of the view.
[[nodiscard]] UIImage renderingModeTemplate(const UIImage& image);

/// `imageWithAlpha:`: the bitmap drawn at the screen's scale with an alpha limited to 0 to 1.
[[nodiscard]] std::optional<UIImage> imageWithAlpha(const UIImage& image, double alpha);

/// `maskRenderedImageWithTintColor:`: the colour where the bitmap has alpha, weighted by it, at the screen's scale.
[[nodiscard]] std::optional<UIImage> maskRenderedImageWithTintColor(const UIImage& image, const UIColor& color);

namespace UIImageTools {

/// `imageWithColor:`: 1 by 1 point at scale 1 in the colour. At the screen's scale: `UIImageColor::imageWithColor`.
[[nodiscard]] std::optional<UIImage> imageWithColor(const UIColor& color);

/// `resizableImageNamed:WithCapInsets:`: the application's image of that name (`UIImage::named`), whose parts within
/// the insets, in points, keep their size where it is drawn larger. nil when there is none of that name.
[[nodiscard]] std::optional<UIImage> resizableImageNamed(StringView name, const UIEdgeInsets& capInsets);

/// `blurWithCoreImage:`: the bitmap blurred by the Gaussian of radius 30 in its own pixels, edges repeated, drawn at
/// the source's size in points at scale 1 under white of alpha 0.2. nil also when stopped.
[[nodiscard]] std::optional<UIImage> blurWithCoreImage(const UIImage& source, const ImageWork& work = {});

}  // namespace UIImageTools
}  // namespace quorvel
