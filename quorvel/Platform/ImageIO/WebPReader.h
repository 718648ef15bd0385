// WebPReader: still WebP pictures, and the first frame of an animation on its canvas.
#pragma once

#include <quorvel/Platform/ImageIO/ImageReader.h>

namespace quorvel {

/// As `readPixels`. The decoder shrinks by itself to half the sides or less what is packed without loss, and what is
/// not and has no alpha; there its means differ by a few levels from those of the whole picture's pixels. The rest, and
/// an animation's frame, is decoded in full first. Of what is packed without loss the decoder keeps the whole picture:
/// nullptr where that, the file and the pixels come to more than 280 MiB.
[[nodiscard]] std::shared_ptr<CGBitmap> readWebP(ImageBytes file, const ImageFacts& facts, PixelSize wanted,
                                                 const ImageWork& work);

}  // namespace quorvel
