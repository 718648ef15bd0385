// GIFBlocks: the blocks of a GIF, walked without unpacking a pixel (GIF89a, sections 15 to 27).
// Not here: pixels (ImageReader.h).
#pragma once

#include <optional>

#include <quorvel/Platform/ImageIO/ByteView.h>

namespace quorvel {

/// What of a GIF's blocks is no fact of every image.
struct GIFTiming {
  /// How often the animation is shown, 0 for without end; nothing when the file does not say it, which means once.
  std::optional<std::uint16_t> loopCount;
  /// Of the first frame, in hundredths of a second.
  std::uint16_t firstDelay = 0;
};

[[nodiscard]] bool isGIFFile(ByteView file);
/// The size is that of the canvas, or of the first frame where the canvas has none. Frames count from the first byte of
/// their pixels on.
void readGIFFacts(ByteView file, ImageFacts& facts);
[[nodiscard]] GIFTiming gifTiming(ByteView file);

}  // namespace quorvel
