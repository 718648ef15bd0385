// NSPredicate: tests of values, as far as lists are filtered by them: membership in a list and its negation.
// Not here: predicate formats.
#pragma once

#include <memory>

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

class NSPredicate {
 public:
  /// "SELF IN %@": true for what is equal to an element of the list by `==`, in constant time on average.
  [[nodiscard]] static NSPredicate selfIn(List list);
  /// "NOT (...)"
  [[nodiscard]] NSPredicate negated() const;

  /// `evaluateWithObject:`
  [[nodiscard]] bool evaluateWithObject(const Value& value) const;

 private:
  struct Membership;
  NSPredicate(std::shared_ptr<const Membership> membership, bool wanted)
      : membership_(std::move(membership)), wanted_(wanted) {}

  std::shared_ptr<const Membership> membership_;
  bool wanted_;
};

/// `filteredArrayUsingPredicate:`: the elements that pass, in order and with their repeats.
[[nodiscard]] List filteredArrayUsingPredicate(const List& list, const NSPredicate& predicate);

}  // namespace quorvel
