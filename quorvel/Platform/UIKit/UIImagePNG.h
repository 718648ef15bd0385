// UIImagePNG: an image as the bytes of a PNG file.
// Not here: bitmaps without an orientation (ImageIO/PNGWriter.h), JPEG.
#pragma once

#include <optional>

#include <quorvel/Platform/Foundation/Value.h>
#include <quorvel/Platform/UIKit/UIImage.h>

namespace quorvel {

/// `UIImagePNGRepresentation`: the image's pixels, turned upright, as a PNG file in sRGB; its scale is not written. nil
/// for an image without a bitmap and when there is no memory.
[[nodiscard]] std::optional<Data> UIImagePNGRepresentation(const UIImage& image);

}  // namespace quorvel
