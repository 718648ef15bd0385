// The UIImage extension: pictures made smaller by a factor, or until their PNG file fits a number of bytes.
// Not here: sizes in points or pixels (UIImage+Resize.h, UIImage+Tools.h).
#pragma once

#include <quorvel/Platform/UIKit/UIImage.h>

namespace quorvel {

/// `scaledImage(_:)`, `scaledImage:`: drawn upright to the size times the factor, each side rounded up to whole points,
/// at the receiver's scale. nil when a side would not be above 0, and beyond the limits of images.
[[nodiscard]] std::optional<UIImage> scaledImage(const UIImage& image, double factor);

/// `scaledImage(limitedLength:)`, `scaledImageWithLimitedLength:`: the receiver itself when its PNG file has at most
/// `limitedLength` bytes, else halved by `scaledImage:`, again and again, until it fits. What cannot shrink any
/// further, or was halved 32 times, is answered as small as it became. nil when it cannot be written as PNG, as without
/// a bitmap.
[[nodiscard]] std::optional<UIImage> scaledImageLimitedLength(const UIImage& image, std::int64_t limitedLength);

}  // namespace quorvel
