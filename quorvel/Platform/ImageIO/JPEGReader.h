// JPEGReader: pixels of JPEG files (ITU-T T.81), decoded no larger than is wanted.
// Not here: what readers have in common (ImageReader.h), writing (CGImageDestination.h).
#pragma once

#include <quorvel/Platform/ImageIO/ImageReader.h>

namespace quorvel {

/// `readPixels` for JPEG: baseline and progressive of 8 bits; grey, RGB, YCbCr, CMYK, YCCK. It is decoded at `eighths`
/// of its sides, 1, 2, 4 or 8, before it is shrunk; scans of a progressive file that such a size does not show are
/// passed over. Data that end early or are damaged give grey where no pixels came. nullptr where the header does not
/// say what `facts` do, and for eighths that do not cover `wanted`.
[[nodiscard]] std::shared_ptr<CGBitmap> readJPEG(ImageBytes file, const ImageFacts& facts, PixelSize wanted,
                                                 std::uint32_t eighths, const ImageWork& work = {});

namespace jpeg {

/// Pictures of up to so many pixels are decoded whole before they are shrunk.
inline constexpr std::uint64_t kSmallPicture = 1'000'000;
/// The eighths that are good enough for `wanted`.
[[nodiscard]] std::uint32_t decodedEighths(PixelSize picture, PixelSize wanted);

}  // namespace jpeg
}  // namespace quorvel
