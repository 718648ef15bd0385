#include <algorithm>

#include <quorvel/Extensions/Foundation/NSString+Additions+Version.h>
#include <quorvel/Utility/VersionHelper.h>

namespace quorvel {

int VersionHelper::compare(StringView first, StringView with) {
  const std::int64_t a = convertVersionNumeric(first);
  const std::int64_t b = convertVersionNumeric(with);
  return (a > b) - (a < b);
}

bool VersionHelper::isLower(StringView version, StringView than, std::optional<String>* versionPointer) {
  if (compare(version, than) >= 0) return false;
  if (versionPointer) *versionPointer = than.isNil() ? std::nullopt : std::optional<String>(than);
  return true;
}

std::optional<List> VersionHelper::deleteVersionsIfNeeded(const std::optional<List>& versions,
                                                          StringView currentVersion) {
  if (!versions) return nil;
  const auto* newer = std::find_if(versions->begin(), versions->end(),
                                   [&](const Value& version) { return isLower(currentVersion, version.text()); });
  if (newer == versions->end()) return versions;
  List kept;
  for (const Value* version = versions->begin(); version != newer; ++version) kept.append(*version);
  return kept;
}

}  // namespace quorvel
