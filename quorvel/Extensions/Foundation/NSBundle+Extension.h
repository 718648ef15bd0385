// NSBundle extension: facts of the main bundle's information dictionary.
// Not here: the dictionaries themselves (NSBundle.h), comparing versions (VersionHelper.h).
#pragma once

#include <quorvel/Platform/Foundation/String.h>

namespace quorvel::NSBundleExtension {

// Each is nil when the entry is missing or no string.

/// `bundleVersion`: "CFBundleVersion".
[[nodiscard]] std::optional<String> bundleVersion();
/// `bundleShortVersion`: "CFBundleShortVersionString".
[[nodiscard]] std::optional<String> bundleShortVersion();
/// `bundleName`: "CFBundleName", localised.
[[nodiscard]] std::optional<String> bundleName();
/// `bundleDisplayName`: "CFBundleDisplayName", localised.
[[nodiscard]] std::optional<String> bundleDisplayName();
/// `keychainAccessGroup`: "KeyChain-AccessGroup".
[[nodiscard]] std::optional<String> keychainAccessGroup();
/// `appGroup`: "Shared-AppGroup".
[[nodiscard]] std::optional<String> appGroup();

}  // namespace quorvel::NSBundleExtension
