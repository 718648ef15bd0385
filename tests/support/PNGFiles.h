// PNG files of every kind, made from samples, and what their pixels must be by the plain rules.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

#include <tests/support/ImageFiles.h>

#include <quorvel/Platform/ImageIO/AreaShrink.h>

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

/// Rows from the top that are as `pixelAt(x, y)` has them.
template <class PixelAt>
[[nodiscard]] std::uint32_t rightRows(const CGBitmap& bitmap, PixelAt pixelAt) {
  for (std::uint32_t y = 0; y < bitmap.height(); ++y) {
    for (std::uint32_t x = 0; x < bitmap.width(); ++x) {
      if (pixelOf(bitmap, x, y) != pixelAt(x, y)) return y;
    }
  }
  return static_cast<std::uint32_t>(bitmap.height());
}
[[nodiscard]] inline bool isSame(const CGBitmap& a, const CGBitmap& b) {
  return a.width() == b.width() && a.height() == b.height() &&
         rightRows(a, [&b](std::size_t x, std::size_t y) { return pixelOf(b, x, y); }) == a.height();
}

/// The means of a whole picture.
[[nodiscard]] inline std::shared_ptr<CGBitmap> shrunk(const CGBitmap& whole, PixelSize size) {
  auto result = CGBitmap::make(size.width, size.height);
  auto shrink = AreaShrink::make(
      {static_cast<std::uint32_t>(whole.width()), static_cast<std::uint32_t>(whole.height())}, *result);
  for (std::size_t y = 0; y < whole.height(); ++y) shrink->addRow(whole.row(y));
  return result;
}

}  // namespace quorvel::test
