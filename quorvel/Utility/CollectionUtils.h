// CollectionUtils: emptiness of lists and maps that may be nil, and comparison of lists whatever their order.
// Not here: ordered deep equality (Extensions/Foundation/DeepEquality.h), sets of lists (Array+Extension.h).
#pragma once

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

class CollectionUtils {
 public:
  CollectionUtils() = delete;

  /// `isEmptyList:`: true for nil and a list without elements.
  [[nodiscard]] static bool isEmptyList(const std::optional<List>& list);
  /// `isNotEmptyList:`: the negation of `isEmptyList:`.
  [[nodiscard]] static bool isNotEmptyList(const std::optional<List>& list);
  /// `isEmptyMap:`: true for nil and a dictionary without entries.
  [[nodiscard]] static bool isEmptyMap(const std::optional<Dictionary>& map);
  /// `isNotEmptyMap:`: the negation of `isEmptyMap:`.
  [[nodiscard]] static bool isNotEmptyMap(const std::optional<Dictionary>& map);

  /// `isEqualList:withCompare:`: true when both have the same count (nil has 0) and each element of `first` is equal to
  /// one of `second` that no element of another type stands before. Order and multiplicity play no part: [a, a, b]
  /// equals [a, b, b]; but [1, 'x'] does not equal ['x', 1]. Booleans are a type apart from other numbers, which are
  /// one; of a dictionary the elements are the keys. An argument that has no count, such as a text, makes it true.
  /// Linear in both.
  [[nodiscard]] static bool isEqualList(const Value& first, const Value& second);
  /// `isNotEqualList:withCompare:`: the negation of `isEqualList:withCompare:`.
  [[nodiscard]] static bool isNotEqualList(const Value& first, const Value& second);
};

}  // namespace quorvel
