// JPEG files of every kind that the format knows, made for tests and benchmarks, and decoded without our reader.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace quorvel::test {

/// Pixels of `channels` bytes, row by row without gaps.
struct Samples {
  std::uint32_t width;
  std::uint32_t height;
  std::uint32_t channels;
  std::vector<std::uint8_t> bytes;

  [[nodiscard]] const std::uint8_t* row(std::size_t y) const { return bytes.data() + y * width * channels; }
};

/// Something like a photograph: large shapes, fine structure, edges and grain, in red, green, blue.
[[nodiscard]] Samples photograph(std::uint32_t width, std::uint32_t height);
/// Four channels as ink of cyan, magenta, yellow, black for the same picture.
[[nodiscard]] Samples inks(const Samples& picture);
[[nodiscard]] Samples gray(const Samples& picture);

struct JPEGKind {
  int quality = 90;
  /// Of the first component; the others have 1 by 1.
  int across = 2;
  int down = 2;
  bool isProgressive = false;
  /// A scan for each component.
  bool isSeparate = false;
  /// Without YCbCr or YCCK: the channels are stored as they are.
  bool isDirect = false;
  /// MCUs between restart markers; 0 for none.
  unsigned restartInterval = 0;
  /// Files without Adobe's marker keep CMYK as it is; those with it inverted, which is the caller's work.
  bool hasAdobeMarker = true;
  /// Written as pieces of at most `profilePiece` bytes.
  std::vector<std::uint8_t> profile{};
  std::size_t profilePiece = 65'000;
};

[[nodiscard]] std::vector<std::uint8_t> makeJPEG(const Samples& samples, const JPEGKind& kind = {});

/// Where a baseline or progressive file's frame header begins; its sides stand five bytes further.
[[nodiscard]] std::size_t frameOf(std::span<const std::uint8_t> file);
/// The same file with other sides in its frame header.
[[nodiscard]] std::vector<std::uint8_t> declaring(std::vector<std::uint8_t> file, std::uint32_t width,
                                                  std::uint32_t height);

/// The whole picture in red, green, blue; inks as they are stored.
[[nodiscard]] Samples decodeWhole(std::span<const std::uint8_t> file);

}  // namespace quorvel::test
