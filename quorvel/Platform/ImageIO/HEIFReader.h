// HEIFReader: the primary image of a HEIC, HEIF or AVIF file, by a library that is loaded when such a file comes and
// never linked.
#pragma once

#include <quorvel/Platform/ImageIO/ImageReader.h>

namespace quorvel {

/// As `readPixels`; nullptr too where the library is missing. The library turns the picture itself as the file says.
/// It is decoded in full before it is shrunk.
[[nodiscard]] std::shared_ptr<CGBitmap> readHEIF(ImageBytes file, const ImageFacts& facts, PixelSize wanted,
                                                 const ImageWork& work);

}  // namespace quorvel
