#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include <quorvel/Platform/ImageIO/Inflater.h>
#include <quorvel/Platform/ImageIO/PNGPixels.h>
#include <quorvel/Platform/ImageIO/PremultipliedRows.h>

namespace quorvel {
namespace {

constexpr std::uint32_t kOpaque = 0xFF000000;

/// A pixel's bytes in memory, whichever way the processor orders them.
void put(std::uint32_t pixel, std::uint8_t* to) {
  if constexpr (std::endian::native == std::endian::big) pixel = __builtin_bswap32(pixel);
  std::memcpy(to, &pixel, sizeof pixel);
}

std::uint32_t get(const std::uint8_t* from) {
  std::uint32_t pixel;
  std::memcpy(&pixel, from, sizeof pixel);
  return std::endian::native == std::endian::big ? __builtin_bswap32(pixel) : pixel;
}

/// Red, green, blue from the lowest byte on, the other way round.
std::uint32_t swapped(std::uint32_t pixel) {
  return (pixel & 0xFF00FF00) | (pixel >> 16 & 0xFF) | (pixel & 0xFF) << 16;
}

std::uint32_t grayPixel(std::uint32_t gray) { return kOpaque | gray * 0x010101; }

/// 16 bits rounded to eight: exactly round(sample * 255 / 65535).
std::uint32_t narrowed(const std::uint8_t* sample) {
  return ((std::uint32_t{sample[0]} << 8 | sample[1]) * 255 + 32895) >> 16;
}

}  // namespace

struct PNGPixels::Kernels {
  template <unsigned kBits>
  static void indexed(const PNGPixels& pixels, const std::uint8_t* samples, std::size_t count, std::uint8_t* to) {
    constexpr unsigned kPerByte = 8 / kBits;
    for (std::size_t i = 0; i < count; ++i) {
      const unsigned shift = 8 - kBits * (static_cast<unsigned>(i % kPerByte) + 1);
      put(pixels.colors_[(unsigned{samples[i / kPerByte]} >> shift) & ((1U << kBits) - 1)], to + 4 * i);
    }
  }

  static void rgb(const PNGPixels& /*pixels*/, const std::uint8_t* samples, std::size_t count, std::uint8_t* to) {
    for (std::size_t i = 0; i < count; ++i) put(__builtin_bswap32(get(samples + 3 * i)) >> 8 | kOpaque, to + 4 * i);
  }

  static void rgba(const PNGPixels& /*pixels*/, const std::uint8_t* samples, std::size_t count, std::uint8_t* to) {
    for (std::size_t i = 0; i < count; ++i) put(swapped(get(samples + 4 * i)), to + 4 * i);
  }

  static void grayAlpha(const PNGPixels& /*pixels*/, const std::uint8_t* samples, std::size_t count, std::uint8_t* to) {
    for (std::size_t i = 0; i < count; ++i) {
      put(samples[2 * i] * 0x010101U | std::uint32_t{samples[2 * i + 1]} << 24, to + 4 * i);
    }
  }

  /// Samples of 16 bits: as many for a pixel as the kind has.
  template <PNGFile::Color kColor>
  static void deep(const PNGPixels& /*pixels*/, const std::uint8_t* samples, std::size_t count, std::uint8_t* to) {
    constexpr bool kIsColored = kColor == PNGFile::Color::RGB || kColor == PNGFile::Color::RGBA;
    constexpr bool kHasAlpha = kColor == PNGFile::Color::GrayAlpha || kColor == PNGFile::Color::RGBA;
    constexpr std::size_t kColors = kIsColored ? 3 : 1;
    for (std::size_t i = 0; i < count; ++i, samples += 2 * (kColors + (kHasAlpha ? 1 : 0))) {
      std::uint32_t pixel = grayPixel(narrowed(samples));
      if (kIsColored) {
        pixel = kOpaque | narrowed(samples) << 16 | narrowed(samples + 2) << 8 | narrowed(samples + 4);
      }
      if (kHasAlpha) pixel = (pixel & ~kOpaque) | narrowed(samples + 2 * kColors) << 24;
      put(pixel, to + 4 * i);
    }
  }

  template <std::size_t kBytes>
  static void hide(const PNGPixels& pixels, const std::uint8_t* samples, std::size_t count, std::uint8_t* to) {
    for (std::size_t i = 0; i < count; ++i) {
      if (std::equal(samples + i * kBytes, samples + (i + 1) * kBytes, pixels.hidden_.begin())) put(0, to + 4 * i);
    }
  }

  static Convert of(const PNGFile& png) {
    using enum PNGFile::Color;
    if (png.color == Gray || png.color == Palette) {
      constexpr Convert kIndexed[] = {indexed<1>, indexed<2>, indexed<4>, indexed<8>, deep<Gray>};
      return kIndexed[std::countr_zero(png.depth)];
    }
    const bool isDeep = png.depth == 16;
    if (png.color == RGB) return isDeep ? deep<RGB> : rgb;
    if (png.color == RGBA) return isDeep ? deep<RGBA> : rgba;
    return isDeep ? deep<GrayAlpha> : grayAlpha;
  }
};

PNGPixels::PNGPixels(const PNGFile& png)
    : convert_(Kernels::of(png)),
      isFinished_(png.color == PNGFile::Color::Palette || (png.color == PNGFile::Color::Gray && png.depth <= 8)),
      hasAlpha_(isFinished_ || png.color == PNGFile::Color::GrayAlpha || png.color == PNGFile::Color::RGBA) {
  prepareProfile(png);
  prepareGamma(png);
  if (isFinished_) {
    prepareColors(png);
  } else {
    prepareHidden(png);
  }
}

/// A colour of samples of 16 bits each, of which the upper ones count where the file's are as long.
void PNGPixels::prepareHidden(const PNGFile& png) {
  const bool isDeep = png.depth == 16;
  if (png.color == PNGFile::Color::Gray && png.transparency.size() == 2) {
    hide_ = Kernels::hide<2>;
  } else if (png.color == PNGFile::Color::RGB && png.transparency.size() == 6) {
    hide_ = isDeep ? Kernels::hide<6> : Kernels::hide<3>;
  } else {
    return;
  }
  for (std::size_t i = 0; i < png.transparency.size() / (isDeep ? 1 : 2); ++i) {
    hidden_[i] = png.transparency[isDeep ? i : 2 * i + 1];
  }
}

void PNGPixels::prepareProfile(const PNGFile& png) {
  if (png.profile.empty()) return;
  const bool isGray = png.color == PNGFile::Color::Gray || png.color == PNGFile::Color::GrayAlpha;
  const std::vector<std::uint8_t> profile = inflateAtMost(png.profile, ColorProfile::kLongest);
  profile_ = ColorProfile::make(profile, isGray ? ColorProfile::Model::Gray : ColorProfile::Model::RGB);
}

/// Samples are the light to the power of the file's gamma; ours are to the power of 1/2.2. What lies within a twentieth
/// is left as it is.
void PNGPixels::prepareGamma(const PNGFile& png) {
  if (png.isSRGB || png.gamma == 0 || !png.profile.empty()) return;
  const double power = 1 / (png.gamma / 100'000.0 * 2.2);
  if (std::abs(power - 1) < 0.05) return;
  isCorrected_ = true;
  for (std::size_t i = 0; i < gamma_.size(); ++i) {
    gamma_[i] = static_cast<std::uint8_t>(std::lround(255 * std::pow(static_cast<double>(i) / 255, power)));
  }
}

void PNGPixels::prepareColors(const PNGFile& png) {
  const bool isPalette = png.color == PNGFile::Color::Palette;
  const std::uint32_t greatest = (1U << png.depth) - 1;
  std::array<std::uint8_t, 4 * 256> straight{};
  for (std::uint32_t i = 0; i <= greatest; ++i) {
    // Beyond the palette, the colours are opaque black.
    std::uint32_t pixel = isPalette ? kOpaque : grayPixel(i * 255 / greatest);
    if (isPalette && std::size_t{3} * i < png.palette.size()) {
      const std::uint8_t* const color = png.palette.data() + std::size_t{3} * i;
      pixel |= std::uint32_t{color[0]} << 16 | std::uint32_t{color[1]} << 8 | color[2];
    }
    if (isPalette && i < png.transparency.size()) pixel = (pixel & ~kOpaque) | std::uint32_t{png.transparency[i]} << 24;
    if (!isPalette && png.transparency.size() == 2 && i == (png.transparency[1] & greatest)) pixel &= ~kOpaque;
    put(pixel, straight.data() + std::size_t{4} * i);
  }
  finish(straight.data(), greatest + 1);
  for (std::uint32_t i = 0; i <= greatest; ++i) colors_[i] = get(straight.data() + std::size_t{4} * i);
}

void PNGPixels::finish(std::uint8_t* row, std::size_t count) const {
  for (std::size_t i = 0; isCorrected_ && i < 4 * count; i += 4) {
    for (std::size_t c = 0; c < 3; ++c) row[i + c] = gamma_[row[i + c]];
  }
  if (hasAlpha_) premultiplyRow(row, count);
  if (profile_) profile_->convertRow(row, count);
}

void PNGPixels::convert(const std::uint8_t* samples, std::size_t count, std::uint8_t* to) const {
  convert_(*this, samples, count, to);
  if (isFinished_) return;
  finish(to, count);
  if (hide_) hide_(*this, samples, count, to);
}

}  // namespace quorvel
