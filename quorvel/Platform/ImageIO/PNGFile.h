// PNGFile: the chunks of a PNG file that pixels depend on (PNG, third edition). Included by sources only.
// Not here: pixels (PNGReader.h), facts about a file (ImageSniff.h).
#pragma once

#include <optional>
#include <vector>

#include <quorvel/Platform/ImageIO/ImageFacts.h>

namespace quorvel {

struct PNGFile {
  enum class Color : std::uint8_t { Gray = 0, RGB = 2, Palette = 3, GrayAlpha = 4, RGBA = 6 };

  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint8_t depth = 0;
  Color color = Color::Gray;
  bool isInterlaced = false;
  /// Three bytes a colour.
  ImageBytes palette;
  /// What tRNS holds.
  ImageBytes transparency;
  /// A packed ICC profile, without its name.
  ImageBytes profile;
  /// The file's gamma times 100,000, 0 when it is not said or the colours are sRGB.
  std::uint32_t gamma = 0;
  bool isSRGB = false;
  /// The packed pixels, up to where the file is damaged.
  std::vector<ImageBytes> data;

  /// Bits a pixel.
  [[nodiscard]] std::size_t bits() const;
  /// Bytes of a row of so many pixels, without its filter.
  [[nodiscard]] std::size_t rowBytes(std::size_t pixels) const { return (pixels * bits() + 7) / 8; }
};

/// nullopt when the header is missing or damaged, or says what the format does not know, when a needed palette is
/// missing, and when there are no pixels.
[[nodiscard]] std::optional<PNGFile> parsePNG(ImageBytes file);

}  // namespace quorvel
