// GIFFrame: the blocks up to the first frame's pixels, and the indexes packed in them (GIF89a, appendix F). Included by
// sources only.
#pragma once

#include <array>
#include <optional>

#include <quorvel/Platform/ImageIO/ImageFacts.h>

namespace quorvel {

struct GIFFrame {
  std::uint32_t canvasWidth = 0;
  std::uint32_t canvasHeight = 0;
  std::uint32_t left = 0;
  std::uint32_t top = 0;
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  bool isInterlaced = false;
  /// Three bytes a colour: the frame's own, or those of the file.
  ImageBytes colors;
  /// The index that is not painted.
  std::optional<std::uint8_t> transparent;
  /// The width of the packed indexes, and the blocks that follow it.
  unsigned codeBits = 0;
  ImageBytes blocks;
};

/// nullopt when the file is none, is cut before the first frame's pixels, or has a frame without any.
[[nodiscard]] std::optional<GIFFrame> parseGIF(ImageBytes file);

/// Takes the indexes out of their blocks, up to where they end or are damaged.
class GIFIndexes {
 public:
  explicit GIFIndexes(const GIFFrame& frame);
  /// How many of `count` there were.
  [[nodiscard]] std::size_t read(std::uint8_t* to, std::size_t count);

 private:
  static constexpr unsigned kMostBits = 12;
  static constexpr unsigned kCodes = 1U << kMostBits;
  static constexpr unsigned kNone = kCodes;

  /// The next code; `kNone` at the end.
  [[nodiscard]] unsigned nextCode();
  [[nodiscard]] bool refill();
  /// Makes the next code's indexes ready; false at the end.
  [[nodiscard]] bool unpack();
  void reset();
  /// The string of a code goes to the ready indexes, last one first; answers its first.
  std::uint8_t spell(unsigned code);

  ImageBytes blocks_;
  ImageBytes block_{};
  std::uint32_t bits_ = 0;
  unsigned bitCount_ = 0;
  unsigned clear_;
  unsigned width_ = 0;
  unsigned next_ = 0;
  unsigned last_ = kNone;
  bool ended_ = false;
  std::array<std::uint16_t, kCodes> prefixes_{};
  std::array<std::uint8_t, kCodes> suffixes_{};
  /// Indexes to give, from the back.
  std::array<std::uint8_t, kCodes + 1> ready_{};
  std::size_t readyCount_ = 0;
};

}  // namespace quorvel
