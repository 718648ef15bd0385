// VersionHelper: dotted versions compared, and lists of them pruned.
// Not here: a version as a number (NSString+Additions+Version.h), the application's own version (NSBundle+Extension.h).
#pragma once

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

class VersionHelper {
 public:
  VersionHelper() = delete;

  /// `compare:with:`: -1, 0 or 1 as the first version's `convertVersionNumeric` is smaller, the same or larger; nil
  /// counts as 0. Nothing is allocated.
  [[nodiscard]] static int compare(StringView first, StringView with);

  /// `isLower:than:versionPointer:`: whether the first version is smaller. Then the slot, if there is one, receives the
  /// second; otherwise it is left as it was.
  static bool isLower(StringView version, StringView than, std::optional<String>* versionPointer = nullptr);

  /// `deleteVersionsIfNeeded:currentVersion:`: the versions before the first that is newer than `currentVersion`; all
  /// from there on are dropped, older ones too. The list itself when none is newer. An element that is no string counts
  /// as version 0. nil for nil.
  [[nodiscard]] static std::optional<List> deleteVersionsIfNeeded(const std::optional<List>& versions,
                                                                  StringView currentVersion);
};

}  // namespace quorvel
