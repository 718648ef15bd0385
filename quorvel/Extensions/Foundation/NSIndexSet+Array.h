// NSIndexSet(Array): index sets as index paths.
#pragma once

#include <vector>

#include <quorvel/Platform/Foundation/NSIndexPath.h>
#include <quorvel/Platform/Foundation/NSIndexSet.h>

namespace quorvel {

/// `arrayFromIndexesWithSection:`: an index path in the section for each index, in ascending order.
[[nodiscard]] std::vector<NSIndexPath> arrayFromIndexesWithSection(const NSIndexSet& set, std::int64_t section);

}  // namespace quorvel
