// UIImage(Resize): a picture at another size.
// Not here: sizes in pixels (`resizeImage:`, UIImage+Tools.h), factors (UIImage+Extension.h).
#pragma once

#include <quorvel/Platform/UIKit/UIImage.h>

namespace quorvel::UIImageResize {

/// `imageWithImage:scaledToSize:`: the image drawn upright to a size in points at the main screen's scale; nil for an
/// empty size and one beyond the limits of images.
[[nodiscard]] std::optional<UIImage> imageWithImage(const UIImage& image, const CGSize& scaledToSize);

}  // namespace quorvel::UIImageResize
