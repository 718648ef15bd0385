// nil: the absent value, one constant for every type that can be absent.
// Not here: the null marker of records (Value.h), which is a value.
#pragma once

#include <optional>

namespace quorvel {

struct Nil {
  explicit constexpr Nil(int) {}
  template <class T>
  constexpr operator std::optional<T>() const {
    return std::nullopt;
  }
};

/// Converts to an absent `StringView`, `Value` or `std::optional`.
inline constexpr Nil nil{0};

/// An optional equals nil when it holds nothing, whatever its type makes of nil itself.
template <class T>
[[nodiscard]] constexpr bool operator==(const std::optional<T>& value, Nil) {
  return !value.has_value();
}

}  // namespace quorvel
