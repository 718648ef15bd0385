// Where two nested values differ first.
// Not here: whether they do (`==` in Value.h, Extensions/Foundation/DeepEquality.h).
#pragma once

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

struct Difference {
  /// The place, as a JSON Pointer (RFC 6901): "/list/3/a~1b"; "" for the values as a whole. A key that is no text is
  /// written as its description.
  String pointer;
  /// What stands there; nil on a side that has nothing there.
  Value first;
  Value second;
  friend bool operator==(const Difference& a, const Difference& b) = default;
};

/// `firstDifference`: the innermost place at which the two first differ by `==`; nil when they are equal. Lists are
/// read in order, dictionaries in the order of the keys of `a`, then of those that `b` alone has. Linear in the size of
/// both, shared parts counted once.
///
///     firstDifference(List{1, Dictionary{{u"a", 2}}}, List{1, Dictionary{{u"a", 3}}})   // "/1/a", 2, 3
[[nodiscard]] std::optional<Difference> firstDifference(const Value& a, const Value& b);

}  // namespace quorvel
