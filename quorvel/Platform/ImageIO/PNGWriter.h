// PNGWriter: a bitmap as the bytes of a PNG file.
// Not here: images with an orientation (UIKit/UIImagePNG.h), files.
#pragma once

#include <optional>

#include <quorvel/Platform/CoreGraphics/CGImage.h>
#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

/// The bitmap as a PNG file in sRGB, in the kind of pixels that needs the fewest bits: a palette, grey, or colours,
/// with alpha where a pixel has some. Premultiplied again, what is read back are the bitmap's own bytes. The same
/// bitmap always gives the same bytes. nil when there is no memory.
[[nodiscard]] std::optional<Data> encodePNG(const CGBitmap& bitmap);

}  // namespace quorvel
