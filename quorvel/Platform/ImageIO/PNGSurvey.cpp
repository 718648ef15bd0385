#include <cstring>

#include <quorvel/Platform/ImageIO/PNGSurvey.h>

namespace quorvel {
namespace {

constexpr std::uint32_t kOpaque = 0xFF000000;

std::uint32_t pixelAt(const std::uint8_t* row, std::size_t x) {
  row += 4 * x;
  return row[0] | std::uint32_t{row[1]} << 8 | std::uint32_t{row[2]} << 16 | std::uint32_t{row[3]} << 24;
}

/// 2^24 / alpha, rounded up: numerators have 16 bits, so that the product's upper part is the exact quotient.
constexpr auto kReciprocals = [] {
  std::array<std::uint32_t, 256> table{};
  for (std::uint32_t alpha = 1; alpha < 256; ++alpha) table[alpha] = ((1U << 24) + alpha - 1) / alpha;
  return table;
}();

std::uint32_t straightSample(std::uint32_t sample, std::uint32_t alpha) {
  if (sample >= alpha) return 255;
  return static_cast<std::uint32_t>((sample * 255 + alpha / 2) * std::uint64_t{kReciprocals[alpha]} >> 24);
}

/// What all pixels have in common.
struct Common {
  bool isOpaque = true;
  bool isGray = true;

  void look(const std::uint8_t* row, std::size_t count) {
    std::uint32_t alphas = UINT32_MAX;
    std::uint32_t differences = 0;
    for (std::size_t x = 0; x < count; ++x) {
      const std::uint32_t pixel = pixelAt(row, x);
      alphas &= pixel;
      differences |= pixel ^ pixel >> 8;
    }
    isOpaque = isOpaque && alphas >= kOpaque;
    isGray = isGray && (differences & 0xFFFF) == 0;
  }
};

bool collect(const CGBitmap& bitmap, PNGColors& colors) {
  std::uint32_t last = ~pixelAt(bitmap.row(0), 0);
  for (std::size_t y = 0; y < bitmap.height(); ++y) {
    const std::uint8_t* const row = bitmap.row(y);
    for (std::size_t x = 0; x < bitmap.width(); ++x) {
      const std::uint32_t pixel = pixelAt(row, x);
      if (pixel == last) continue;
      last = pixel;
      if (!colors.add(pixel)) return false;
    }
  }
  return true;
}

std::uint8_t indexDepth(std::size_t colors) {
  if (colors <= 2) return 1;
  if (colors <= 4) return 2;
  return colors <= 16 ? 4 : 8;
}

std::size_t unpackedSize(const CGBitmap& bitmap, std::size_t bits) {
  return (bitmap.width() * bits + 7) / 8 * bitmap.height();
}

}  // namespace

std::uint32_t straightPixel(std::uint32_t premultiplied) {
  const std::uint32_t alpha = premultiplied >> 24;
  if (alpha == 255) return premultiplied;
  if (alpha == 0) return 0;
  return alpha << 24 | straightSample(premultiplied >> 16 & 0xFF, alpha) << 16 |
         straightSample(premultiplied >> 8 & 0xFF, alpha) << 8 | straightSample(premultiplied & 0xFF, alpha);
}

std::size_t PNGColors::place(std::uint32_t pixel) const {
  std::size_t at = (pixel * 0x9E3779B1U) >> 22;
  while (taken_[at] && keys_[at] != pixel) at = (at + 1) % kPlaces;
  return at;
}

bool PNGColors::add(std::uint32_t pixel) {
  const std::size_t at = place(pixel);
  if (taken_[at]) return true;
  if (pixels_.size() == 256) return false;
  taken_[at] = true;
  keys_[at] = pixel;
  indexes_[at] = static_cast<std::uint8_t>(pixels_.size());
  pixels_.push_back(pixel);
  return true;
}

PNGSurvey::PNGSurvey(const CGBitmap& bitmap) {
  Common common;
  for (std::size_t y = 0; y < bitmap.height(); ++y) common.look(bitmap.row(y), bitmap.width());
  std::size_t bits = 32;
  if (common.isOpaque) {
    color = common.isGray ? PNGFile::Color::Gray : PNGFile::Color::RGB;
    bits = common.isGray ? 8 : 24;
  } else if (common.isGray) {
    color = PNGFile::Color::GrayAlpha;
    bits = 16;
  }
  if (!collect(bitmap, colors)) return;
  const std::size_t count = colors.pixels().size();
  const std::size_t around = 12 + 3 * count + (common.isOpaque ? 0 : 12 + count);
  if (unpackedSize(bitmap, indexDepth(count)) + around >= unpackedSize(bitmap, bits)) return;
  color = PNGFile::Color::Palette;
  depth = indexDepth(count);
}

}  // namespace quorvel
