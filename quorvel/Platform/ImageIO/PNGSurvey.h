// PNGSurvey: what a bitmap consists of, so that it is written with as few bits as it needs. Included by sources only.
#pragma once

#include <array>
#include <vector>

#include <quorvel/Platform/CoreGraphics/CGImage.h>
#include <quorvel/Platform/ImageIO/PNGFile.h>

namespace quorvel {

/// A premultiplied pixel (blue in the lowest byte) without its alpha multiplied in, rounded to the nearest.
[[nodiscard]] std::uint32_t straightPixel(std::uint32_t premultiplied);

/// Up to 256 different pixels in the order in which they were met.
class PNGColors {
 public:
  /// False when the pixel is one too many.
  bool add(std::uint32_t pixel);
  [[nodiscard]] std::uint8_t indexOf(std::uint32_t pixel) const { return indexes_[place(pixel)]; }
  [[nodiscard]] const std::vector<std::uint32_t>& pixels() const { return pixels_; }

 private:
  static constexpr std::size_t kPlaces = 1024;
  /// Where the pixel is, or would be.
  [[nodiscard]] std::size_t place(std::uint32_t pixel) const;

  std::array<std::uint32_t, kPlaces> keys_{};
  std::array<std::uint8_t, kPlaces> indexes_{};
  std::array<bool, kPlaces> taken_{};
  std::vector<std::uint32_t> pixels_;
};

struct PNGSurvey {
  PNGFile::Color color = PNGFile::Color::RGBA;
  std::uint8_t depth = 8;
  /// Of a palette.
  PNGColors colors{};

  explicit PNGSurvey(const CGBitmap& bitmap);
};

}  // namespace quorvel
