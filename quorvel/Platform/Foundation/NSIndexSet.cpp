#include <algorithm>

#include <quorvel/Platform/Foundation/Log.h>
#include <quorvel/Platform/Foundation/NSIndexSet.h>

namespace quorvel {

NSIndexSet::NSIndexSet(std::vector<std::uint64_t> indexes) {
  std::ranges::sort(indexes);
  contract(indexes.empty() || indexes.back() < kNotFound, "NSIndexSet", "an index beyond the largest one");
  for (const std::uint64_t index : indexes) {
    if (runs_.empty() || index > runs_.back().end()) {
      runs_.push_back({index, 1});
    } else if (index == runs_.back().end()) {
      ++runs_.back().length;
    }
  }
}

NSIndexSet NSIndexSet::inRange(NSRange range) {
  contract(range.location <= kNotFound && range.length <= kNotFound - range.location, "NSIndexSet",
           "an index beyond the largest one");
  NSIndexSet set;
  if (range.length > 0) set.runs_.push_back(range);
  return set;
}

std::uint64_t NSIndexSet::count() const {
  std::uint64_t count = 0;
  for (const NSRange& run : runs_) count += run.length;
  return count;
}

bool NSIndexSet::contains(std::uint64_t index) const {
  const auto after = std::ranges::upper_bound(runs_, index, {}, &NSRange::location);
  return after != runs_.begin() && index < std::prev(after)->end();
}

}  // namespace quorvel
