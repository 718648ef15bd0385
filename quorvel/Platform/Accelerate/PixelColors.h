// Colours of whole rows of pixels: a matrix, and grey. Included by sources only.
// Each vector kernel answers how many pixels at the start it did; the rest is for the plain code.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace quorvel::pixels {

inline constexpr std::int32_t kMatrixDivisor = 256;

using Matrix = std::span<const std::int16_t, 16>;

/// A row through the matrix; the vector kernels know the divisor 256 only.
void matrixRow(const std::uint8_t* from, std::uint8_t* to, std::size_t count, Matrix matrix, std::int32_t divisor);
void grayRow(const std::uint8_t* from, std::uint8_t* to, std::size_t count);

#if defined(__x86_64__)
[[nodiscard]] std::size_t matrixRowWide(const std::uint8_t* from, std::uint8_t* to, std::size_t count, Matrix matrix);
[[nodiscard]] std::size_t grayRowWide(const std::uint8_t* from, std::uint8_t* to, std::size_t count);
#endif

}  // namespace quorvel::pixels
