// PNGPixels: PNG's samples, of any kind and depth, as premultiplied pixels in sRGB. Included by sources only.
#pragma once

#include <array>

#include <quorvel/Platform/ImageIO/ColorProfile.h>
#include <quorvel/Platform/ImageIO/PNGFile.h>

namespace quorvel {

class PNGPixels {
 public:
  explicit PNGPixels(const PNGFile& png);

  /// `count` pixels out of a row without its filter; up to three bytes past its end are read.
  void convert(const std::uint8_t* samples, std::size_t count, std::uint8_t* to) const;

 private:
  using Convert = void (*)(const PNGPixels& pixels, const std::uint8_t* samples, std::size_t count, std::uint8_t* to);
  struct Kernels;

  void prepareProfile(const PNGFile& png);
  void prepareGamma(const PNGFile& png);
  void prepareColors(const PNGFile& png);
  void prepareHidden(const PNGFile& png);
  /// Straight pixels of the file's colours to premultiplied ones in sRGB, in place.
  void finish(std::uint8_t* row, std::size_t count) const;

  Convert convert_;
  Convert hide_ = nullptr;
  /// Each sample leads to a colour, in which everything is done.
  bool isFinished_;
  bool hasAlpha_;
  bool isCorrected_ = false;
  std::optional<ColorProfile> profile_{};
  std::array<std::uint32_t, 256> colors_{};
  std::array<std::uint8_t, 256> gamma_{};
  /// The one colour that is transparent, as its samples stand in the file.
  std::array<std::uint8_t, 6> hidden_{};
};

}  // namespace quorvel
