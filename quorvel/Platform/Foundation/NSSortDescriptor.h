// NSSortDescriptor: the order of values by what stands at a key path, and lists sorted by several of them.
// Not here: the comparison of texts (Comparison.h).
#pragma once

#include <compare>
#include <span>
#include <vector>

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

/// `compare:`: texts by `compareCanonical`, numbers by value across kinds, dates by time. Values of different kinds are
/// ordered nil, null marker, number, text, date, anything else, so that any list can be sorted; what has no order of
/// its own is equivalent.
[[nodiscard]] std::weak_ordering compareValues(const Value& a, const Value& b);

class NSSortDescriptor {
 public:
  /// The key path "self" stands for the value itself, even for a dictionary.
  NSSortDescriptor(String keyPath, bool ascending) : keyPath_(std::move(keyPath)), ascending_(ascending) {}

  [[nodiscard]] const String& keyPath() const { return keyPath_; }
  [[nodiscard]] bool isAscending() const { return ascending_; }
  /// What the value is sorted by; nil when there is nothing at the key path.
  [[nodiscard]] Value keyOf(const Value& value) const;
  /// The order of two values with these keys.
  [[nodiscard]] std::weak_ordering compareKeys(const Value& a, const Value& b) const {
    return ascending_ ? compareValues(a, b) : compareValues(b, a);
  }
  /// `compareObject:toObject:`
  [[nodiscard]] std::weak_ordering compareObject(const Value& a, const Value& b) const {
    return compareKeys(keyOf(a), keyOf(b));
  }

 private:
  String keyPath_;
  bool ascending_;
};

using SortDescriptors = std::vector<NSSortDescriptor>;

/// `sortedArrayUsingDescriptors:`: by the first descriptor, ties by the next one, and so on; what ties by all of them,
/// or by none, keeps its order. Each key is read once.
[[nodiscard]] List sortedArrayUsingDescriptors(const List& list, std::span<const NSSortDescriptor> descriptors);

}  // namespace quorvel
