// NSUserDefaults extension: the store that the applications of a group share.
// Not here: the name of the group (NSBundle+Extension.h), the stores (NSUserDefaults.h).
#pragma once

#include <quorvel/Platform/Foundation/NSUserDefaults.h>

namespace quorvel::NSUserDefaultsExtension {

/// `appGroup`: the store named by "Shared-AppGroup" of the main bundle's information, the application's own where that
/// is missing or no string; nil when the name is refused. A new object at each call.
[[nodiscard]] std::optional<NSUserDefaults> appGroup();

}  // namespace quorvel::NSUserDefaultsExtension
