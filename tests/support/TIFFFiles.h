// TIFF files of every kind, made from samples.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace quorvel::test {

inline constexpr std::uint32_t kTIFFWidth = 37;
inline constexpr std::uint32_t kTIFFHeight = 41;

struct TIFFSpec {
  std::uint16_t samples;
  std::uint16_t bits;
  std::uint16_t photometric;
  /// 0: none; otherwise EXTRASAMPLE_.
  std::uint16_t alpha;
  std::uint16_t compression;
  /// Rows of a strip; 0: tiles of 16 by 16.
  std::uint32_t stripRows;
  std::uint16_t orientation;
  bool isSeparate;
  const char* why;
};

/// A sample made by a formula, so that all bits occur; a premultiplied one is below its alpha.
[[nodiscard]] unsigned sample(const TIFFSpec& spec, std::uint32_t x, std::uint32_t y, unsigned channel);
[[nodiscard]] std::vector<std::uint8_t> tiffFile(const TIFFSpec& spec);
/// Where the last strip begins.
[[nodiscard]] std::size_t lastStrip(const std::vector<std::uint8_t>& file);

}  // namespace quorvel::test
