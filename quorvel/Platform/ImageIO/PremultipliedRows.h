// PremultipliedRows: rows of straight pixels made the library's own. Included by sources only.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace quorvel {

/// round(sample * alpha / 255), exactly.
[[nodiscard]] constexpr std::uint32_t premultiplied(std::uint32_t sample, std::uint32_t alpha) {
  const std::uint32_t product = sample * alpha + 128;
  return (product + (product >> 8)) >> 8;
}

/// One pixel, its alpha in the upper eight bits; the other three in any order.
[[nodiscard]] constexpr std::uint32_t premultipliedPixel(std::uint32_t pixel) {
  const std::uint32_t alpha = pixel >> 24;
  std::uint32_t outer = (pixel & 0x00FF00FF) * alpha + 0x00800080;
  outer = (outer + (outer >> 8 & 0x00FF00FF)) >> 8 & 0x00FF00FF;
  return alpha << 24 | outer | premultiplied(pixel >> 8 & 0xFF, alpha) << 8;
}

/// In place, for rows whose alpha is the fourth byte of each pixel.
inline void premultiplyRow(std::uint8_t* row, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i, row += 4) {
    if (row[3] == 0xFF) continue;
    std::uint32_t pixel =
        row[0] | std::uint32_t{row[1]} << 8 | std::uint32_t{row[2]} << 16 | std::uint32_t{row[3]} << 24;
    pixel = premultipliedPixel(pixel);
    for (std::size_t c = 0; c < 4; ++c) row[c] = static_cast<std::uint8_t>(pixel >> (8 * c));
  }
}

}  // namespace quorvel
