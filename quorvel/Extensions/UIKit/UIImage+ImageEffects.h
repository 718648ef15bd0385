// UIImage(ImageEffects): frosted glass: a picture blurred, its colours strengthened or turned, washed with a tint.
// Not here: the Gaussian blur (`blurWithCoreImage:`, UIImage+Tools.h).
#pragma once

#include <quorvel/Platform/CoreGraphics/ImageWork.h>
#include <quorvel/Platform/UIKit/UIImage.h>

namespace quorvel {

// The results have the receiver's size in points at the main screen's scale, rounded up to whole pixels, and are nil
// where the receiver has no bitmap or a side below one point, where there is no memory or the size is beyond the limits
// of images, and where `work` is stopped. Tints wash the whole rectangle, the receiver's transparent parts too. As the
// bitmap is stored: an orientation is not applied.

/// `applyLightEffect`: blurred by 30 points, saturation 1.8, white at alpha 0.3.
[[nodiscard]] std::optional<UIImage> applyLightEffect(const UIImage& image, const ImageWork& work = {});
/// `applyExtraLightEffect`: blurred by 20 points, saturation 1.8, white 0.97 at alpha 0.82.
[[nodiscard]] std::optional<UIImage> applyExtraLightEffect(const UIImage& image, const ImageWork& work = {});
/// `applyDarkEffect`: blurred by 20 points, saturation 1.8, white 0.11 at alpha 0.73.
[[nodiscard]] std::optional<UIImage> applyDarkEffect(const UIImage& image, const ImageWork& work = {});
/// `applyTintEffectWithColor:`: blurred by 10 points, saturation -1, the colour at alpha 0.6 whatever its own.
[[nodiscard]] std::optional<UIImage> applyTintEffectWithColor(const UIImage& image, const UIColor& color,
                                                              const ImageWork& work = {});

/// `applyBlurWithRadius:tintColor:saturationDeltaFactor:maskImage:`: the receiver at the screen's scale; over it,
/// within the mask's alpha, the receiver blurred by three boxes (`boxBlurThrice`), its saturation multiplied by the
/// factor; over both the tint. The boxes' side is 1.88 (3/4 of the root of 2 pi) times the radius in pixels, rounded,
/// and one more where that is even. A radius that is not above 2^-23 does not blur; a factor within 2^-23 of 1 changes
/// no colour. A change of saturation shows without a blur too. nil also for a mask without a bitmap.
[[nodiscard]] std::optional<UIImage> applyBlurWithRadius(const UIImage& image, double radius,
                                                         const std::optional<UIColor>& tintColor,
                                                         double saturationDeltaFactor,
                                                         const std::optional<UIImage>& maskImage,
                                                         const ImageWork& work = {});

}  // namespace quorvel
