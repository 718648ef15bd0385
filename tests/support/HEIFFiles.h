// HEIC and AVIF files made from samples by the encoders of libheif.
#pragma once

#include <cstdint>
#include <vector>

#include <libheif/heif.h>

namespace quorvel::test {

inline constexpr int kHEIFWidth = 80;
inline constexpr int kHEIFHeight = 64;

/// Straight red, green, blue, alpha.
[[nodiscard]] std::uint8_t heifSample(int x, int y, int channel);
/// Of eight bits; made once. Empty where the library has no encoder.
[[nodiscard]] const std::vector<std::uint8_t>& heifFile(heif_compression_format format, bool hasAlpha);
/// The red samples as greys of ten bits between planes of no colour at half the width.
[[nodiscard]] std::vector<std::uint8_t> deepHEIFFile(heif_compression_format format);

}  // namespace quorvel::test
