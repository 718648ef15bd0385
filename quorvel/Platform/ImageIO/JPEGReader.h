// JPEGReader: pixels of JPEG files (ITU-T T.81), decoded no larger than is wanted.
// Not here: what readers have in common (ImageReader.h), writing (CGImageDestination.h).
#pragma once

#include <quorvel/Platform/ImageIO/ImageReader.h>

namespace quorvel {

/// `readPixels` for JPEG: baseline and progressive of 8 bits; grey, RGB, YCbCr, CMYK, YCCK. Thumbnails are decoded at
/// 1/8, 1/4 or 1/2 of the sides, and scans that such a size does not show are passed over. Data that end early or are
/// damaged give grey where no pixels came. nullptr where the header does not say what `facts` do.
[[nodiscard]] std::shared_ptr<CGBitmap> readJPEG(ImageBytes file, const ImageFacts& facts, PixelSize wanted,
                                                 const ImageWork& work);

namespace jpeg {

/// To how many eighths of its sides a picture is decoded before it is shrunk to `wanted`.
[[nodiscard]] std::uint32_t decodedEighths(PixelSize picture, PixelSize wanted);

}  // namespace jpeg
}  // namespace quorvel
