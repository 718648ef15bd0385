// PNGChunks: the chunks of a PNG or an animated PNG (W3C PNG, third edition, sections 5 and 11).
// Not here: pixels (ImageReader.h), what is packed in a chunk.
#pragma once

#include <quorvel/Platform/ImageIO/ByteView.h>

namespace quorvel {

struct PNGChunk {
  std::uint32_t type = 0;
  /// Of its data.
  std::uint64_t location = 0;
  std::uint64_t length = 0;
};

/// Chunks one after the other, IEND the last. Checksums are not looked at.
class PNGChunkWalk {
 public:
  explicit PNGChunkWalk(ByteView file) : file_(file) {}

  /// False after IEND and where the file is cut within the data of a chunk.
  bool next(PNGChunk& chunk) { return nextOrCut(chunk) && file_.has(chunk.location, chunk.length); }
  /// Gives the chunk too that reaches beyond the end of the file.
  bool nextOrCut(PNGChunk& chunk);
  [[nodiscard]] bool isAtEnd() const { return isAtEnd_; }

 private:
  ByteView file_;
  std::uint64_t at_ = 8;
  bool isAtEnd_ = false;
};

[[nodiscard]] bool isPNGFile(ByteView file);
/// Size and colours from IHDR and tRNS, EXIF from eXIf, frames counted by fcTL where an acTL stands before the pixels.
void readPNGFacts(ByteView file, ImageFacts& facts);

/// The data of the first chunk of this type before the pixels; empty when there is none.
[[nodiscard]] ImageBytes pngChunkBeforePixels(ByteView file, std::uint32_t type);

}  // namespace quorvel
