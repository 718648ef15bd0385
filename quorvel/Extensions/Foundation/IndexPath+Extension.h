// IndexPath extension: an index path in another section.
#pragma once

#include <quorvel/Platform/Foundation/NSIndexPath.h>

namespace quorvel {

/// `mapToZeroSection()`: the same row in section 0.
[[nodiscard]] constexpr NSIndexPath mapToZeroSection(NSIndexPath path) { return {0, path.row()}; }

}  // namespace quorvel
