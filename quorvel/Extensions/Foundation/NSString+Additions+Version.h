// NSString(Additions), versions: a dotted version as one number.
// Not here: comparing and pruning (VersionHelper.h).
#pragma once

#include <quorvel/Platform/Foundation/String.h>

namespace quorvel {

/// `convertVersionNumeric`: the first four parts between "." in the receiver, missing ones as 0, each read like
/// `integerValue`, as part1 x 1000000 + part2 x 10000 + part3 x 100 + part4. A part beyond 99 carries into the one
/// above; beyond the 64-bit range the result is the nearest end of it. 0 for nil.
///
///     convertVersionNumeric(u"2.10.3")   // 2100300
[[nodiscard]] std::int64_t convertVersionNumeric(StringView text);

}  // namespace quorvel
