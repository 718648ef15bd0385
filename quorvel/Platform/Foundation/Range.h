// NSRange: a location and a length in UTF-16 units (or list indexes, where an operation says so).
#pragma once

#include <cstddef>
#include <cstdint>

namespace quorvel {

/// The location that a search answers when it finds nothing: the largest signed integer.
inline constexpr std::uint64_t kNotFound = INT64_MAX;

struct NSRange {
  std::uint64_t location = 0;
  std::uint64_t length = 0;

  [[nodiscard]] static constexpr NSRange notFound() { return {kNotFound, 0}; }
  [[nodiscard]] constexpr bool isFound() const { return location != kNotFound; }
  [[nodiscard]] constexpr std::uint64_t end() const { return location + length; }

  /// The part of the range that lies inside a text of `count` units.
  [[nodiscard]] constexpr NSRange clippedTo(std::size_t count) const {
    if (location >= count) return {count, 0};
    const std::uint64_t room = count - location;
    return {location, length < room ? length : room};
  }

  friend constexpr bool operator==(NSRange, NSRange) = default;
};

}  // namespace quorvel
