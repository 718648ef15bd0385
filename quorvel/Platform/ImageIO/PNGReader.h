// PNGReader: pixels of PNG files of every kind; of an animated one its default image.
#pragma once

#include <quorvel/Platform/ImageIO/ImageReader.h>

namespace quorvel {

/// As `readPixels`. Memory: the file's rows while they are inflated at once, as long as they and the result stay within
/// the limit of a full decode; otherwise a few rows. An interlaced picture is decoded in full before it is shrunk.
[[nodiscard]] std::shared_ptr<CGBitmap> readPNG(ImageBytes file, const ImageFacts& facts, PixelSize wanted,
                                                const ImageWork& work);

}  // namespace quorvel
