#include <quorvel/Extensions/Foundation/NSIndexSet+Array.h>

namespace quorvel {

std::vector<NSIndexPath> arrayFromIndexesWithSection(const NSIndexSet& set, std::int64_t section) {
  std::vector<NSIndexPath> paths;
  paths.reserve(set.count());
  for (const NSRange& run : set.ranges()) {
    for (std::uint64_t index = run.location; index < run.end(); ++index)
      paths.push_back({section, static_cast<std::int64_t>(index)});
  }
  return paths;
}

}  // namespace quorvel
