// The loops of AreaShrink for processors with AVX2; what they write is what the portable loops in AreaShrink.cpp write.
// Their sums lie otherwise: of two pixels side by side the channels alternate. Included by sources only.
#pragma once

#include <cstddef>
#include <cstdint>

namespace quorvel::area {

/// Sums are padded to a whole number of so many pixels, result pixels too.
inline constexpr std::size_t kBlock = 4;
/// Column sums that are no exact ones come to so many units of weight.
inline constexpr std::uint32_t kNarrowWhole = 128;

/// What lies under `count` result pixels: the first source pixel of each (an even one), and weights in pairs: all first
/// pairs, then all second pairs. Entries up to the next whole block are zeros.
struct Columns {
  const std::uint32_t* starts;
  const std::uint32_t* weights;
  std::size_t count;
  std::size_t pairs;
};

/// The row times its weight, added to the sums or, of a first row, in their place.
void addWide(std::uint16_t* sums, const std::uint8_t* row, std::size_t pixels, std::uint32_t weight, bool isFirst);
/// A row that ends one row of the result and begins the next: `ended` gets the sums with it.
void splitWide(std::uint16_t* sums, const std::uint8_t* row, std::size_t pixels, std::uint32_t endWeight,
               std::uint32_t beginWeight, std::uint16_t* ended);
/// The same sums in words, their channels in order.
void addWide(std::uint32_t* sums, const std::uint8_t* row, std::size_t pixels, std::uint32_t weight, bool isFirst);
/// Brings such sums to kNarrowWhole units.
void narrowWide(const std::uint32_t* wide, std::size_t pixels, std::uint32_t total, std::uint16_t* narrow);
/// The pixels of a row of the result, up to the next whole block.
void meansWide(const std::uint16_t* sums, const Columns& columns, std::uint64_t divisor, std::uint8_t* to);

}  // namespace quorvel::area
