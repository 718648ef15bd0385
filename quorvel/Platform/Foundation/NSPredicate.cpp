#include <quorvel/Platform/Foundation/FirstOccurrences.h>
#include <quorvel/Platform/Foundation/NSPredicate.h>

namespace quorvel {

struct NSPredicate::Membership {
  explicit Membership(List elements) : list(std::move(elements)), occurrences(list.begin(), list.size()) {
    occurrences.insertAll(list.size());
  }
  List list;
  FirstOccurrences<const Value*> occurrences;
};

NSPredicate NSPredicate::selfIn(List list) {
  return NSPredicate(std::make_shared<const Membership>(std::move(list)), true);
}

NSPredicate NSPredicate::negated() const { return NSPredicate(membership_, !wanted_); }

bool NSPredicate::evaluateWithObject(const Value& value) const {
  return membership_->occurrences.contains(value) == wanted_;
}

List filteredArrayUsingPredicate(const List& list, const NSPredicate& predicate) {
  List result;
  for (const Value& element : list) {
    if (predicate.evaluateWithObject(element)) result.append(element);
  }
  return result;
}

}  // namespace quorvel
