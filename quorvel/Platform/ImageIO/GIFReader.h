// GIFReader: the first frame of a GIF on its canvas (GIF89a).
#pragma once

#include <quorvel/Platform/ImageIO/ImageReader.h>

namespace quorvel {

/// As `readPixels`. Around the frame, and where it is transparent, the canvas is; its background colour is not painted.
/// What of the frame lies beside the canvas is left out. Memory: a row; of an interlaced frame one byte a pixel.
[[nodiscard]] std::shared_ptr<CGBitmap> readGIF(ImageBytes file, const ImageFacts& facts, PixelSize wanted,
                                                const ImageWork& work);

}  // namespace quorvel
