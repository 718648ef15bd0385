// A band of rows between the two directions of a separable filter, and its way back into rows. Included by sources
// only.
#pragma once

#include <quorvel/Platform/Accelerate/PixelLanes.h>

namespace quorvel::pixels {

/// Rows of a band, and its channels for each pixel column. Eight rows of 16-bit channels fill a line of the cache with
/// a column, and the band of a wide picture stays within the second cache.
inline constexpr std::size_t kBandRows = 8;
inline constexpr std::size_t kBandChannels = 4 * kBandRows;

/// Writes the first `rows` rows of a band, `bytes` having a column's pixels beside each other.
inline void storeBand(const std::uint8_t* bytes, std::size_t width, std::size_t rows, std::uint8_t* to,
                      std::size_t rowBytes) {
  std::size_t x = 0;
  for (; rows == kBandRows && x + 4 <= width; x += 4) {
    for (std::size_t half = 0; half < kBandRows; half += 4) {
      transposeFour(bytes + x * kBandChannels + 4 * half, kBandChannels, to + half * rowBytes + 4 * x, rowBytes);
    }
  }
  for (; x < width; ++x) {
    for (std::size_t y = 0; y < rows; ++y) {
      std::memcpy(to + y * rowBytes + 4 * x, bytes + x * kBandChannels + 4 * y, 4);
    }
  }
}

}  // namespace quorvel::pixels
