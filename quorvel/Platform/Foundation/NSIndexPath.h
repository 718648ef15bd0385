// NSIndexPath: the place of a cell in a table or grid with sections.
#pragma once

#include <compare>

#include <quorvel/Platform/Foundation/Hash.h>
#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

/// Ordered by section, then by item. A Value can carry it.
struct NSIndexPath {
  std::int64_t section = 0;
  std::int64_t item = 0;

  /// The same field under its name in tables.
  [[nodiscard]] constexpr std::int64_t row() const { return item; }

  [[nodiscard]] static String className() { return u"NSIndexPath"; }
  /// '{length = 2, path = 1 - 3}'
  [[nodiscard]] String description() const;
  [[nodiscard]] std::uint64_t hash() const {
    return hashing::mix(static_cast<std::uint64_t>(section), static_cast<std::uint64_t>(item));
  }
  friend constexpr bool operator==(NSIndexPath, NSIndexPath) = default;
  friend constexpr auto operator<=>(NSIndexPath, NSIndexPath) = default;
};

}  // namespace quorvel
