// TIFFReader: the first page of a TIFF file, by a library that is loaded when such a file comes and never linked.
#pragma once

#include <quorvel/Platform/ImageIO/ImageReader.h>

namespace quorvel {

/// As `readPixels`; nullptr too where the library is missing. Memory: the strips or tiles of one band of rows.
[[nodiscard]] std::shared_ptr<CGBitmap> readTIFF(ImageBytes file, const ImageFacts& facts, PixelSize wanted,
                                                 const ImageWork& work);

}  // namespace quorvel
