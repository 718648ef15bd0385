// WebPChunks: the chunks of a WebP (RFC 9649).
// Not here: pixels (ImageReader.h).
#pragma once

#include <quorvel/Platform/ImageIO/ByteView.h>

namespace quorvel {

[[nodiscard]] bool isWebPFile(ByteView file);
/// The size from VP8X, else from the header of the one picture, lossy or lossless. Frames counted by ANMF.
void readWebPFacts(ByteView file, ImageFacts& facts);

}  // namespace quorvel
