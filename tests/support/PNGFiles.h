// PNG files of every kind, made from samples, and what their pixels must be by the plain rules.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

#include <quorvel/Platform/CoreGraphics/CGImage.h>
#include <quorvel/Platform/ImageIO/ImageFacts.h>

namespace quorvel::test {

using Bytes = std::vector<std::uint8_t>;

struct PNGSpec {
  std::uint32_t width = 1;
  std::uint32_t height = 1;
  unsigned depth = 8;
  /// 0 grey, 2 colours, 3 palette, 4 grey and alpha, 6 colours and alpha.
  unsigned color = 2;
  bool isInterlaced = false;
  /// 0 to 4; 5: each row another.
  unsigned filter = 5;
  Bytes palette{};
  Bytes transparency{};
  /// Further chunks before the pixels.
  Bytes extra{};
  /// Bytes of packed pixels in a chunk.
  std::size_t part = SIZE_MAX;

  [[nodiscard]] unsigned channels() const;
  /// A sample made by a formula, so that neighbours resemble each other and all bits occur.
  [[nodiscard]] unsigned sample(std::uint32_t x, std::uint32_t y, unsigned channel) const;
};

[[nodiscard]] Bytes packed(const Bytes& bytes);
[[nodiscard]] Bytes chunk(std::string_view type, const Bytes& bytes);
[[nodiscard]] Bytes pngFile(const PNGSpec& spec);
/// With `packedRows` instead of what the samples give.
[[nodiscard]] Bytes pngFile(const PNGSpec& spec, const Bytes& packedRows);
/// Each row after its filter, pass by pass.
[[nodiscard]] Bytes filteredRows(const PNGSpec& spec);
/// Blue, green, red, alpha, premultiplied: of one pixel.
[[nodiscard]] std::uint32_t expectedPixel(const PNGSpec& spec, std::uint32_t x, std::uint32_t y);

[[nodiscard]] inline ImageFacts factsOf(ImageFormat format, std::uint32_t width, std::uint32_t height) {
  ImageFacts facts;
  facts.format = format;
  facts.width = width;
  facts.height = height;
  facts.decodedBytes = std::uint64_t{width} * height * 4;
  return facts;
}

[[nodiscard]] inline std::uint32_t pixelOf(const CGBitmap& bitmap, std::size_t x, std::size_t y) {
  const std::uint8_t* const pixel = bitmap.row(y) + 4 * x;
  return pixel[0] | std::uint32_t{pixel[1]} << 8 | std::uint32_t{pixel[2]} << 16 | std::uint32_t{pixel[3]} << 24;
}

inline void setPixel(CGBitmap& bitmap, std::size_t x, std::size_t y, std::uint32_t pixel) {
  for (unsigned i = 0; i < 4; ++i) bitmap.row(y)[4 * x + i] = static_cast<std::uint8_t>(pixel >> (8 * i));
}

}  // namespace quorvel::test
