#include <quorvel/Extensions/Foundation/NSBundle+Extension.h>
#include <quorvel/Extensions/Foundation/NSUserDefaults+Extension.h>

namespace quorvel::NSUserDefaultsExtension {

std::optional<NSUserDefaults> appGroup() { return NSUserDefaults::withSuiteName(NSBundleExtension::appGroup()); }

}  // namespace quorvel::NSUserDefaultsExtension
