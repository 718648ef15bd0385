#include <apps/quorvel/Binding.h>
#include <apps/quorvel/operations/Tables.h>

#include <quorvel/Extensions/Foundation/NSBundle+Extension.h>
#include <quorvel/Extensions/Foundation/NSString+Additions+Version.h>
#include <quorvel/Utility/VersionHelper.h>

namespace quorvel::command {
namespace {

constexpr const char* kHelper = "VersionHelper";
constexpr const char* kBundle = "NSBundle extension";

/// The answer and what the slot holds afterwards.
List isLowerWithSlot(StringView version, StringView than) {
  std::optional<String> slot;
  const bool isLower = VersionHelper::isLower(version, than, &slot);
  return List{isLower, slot ? Value(*slot) : Value(null)};
}

constexpr Operation kRows[] = {
    op<&convertVersionNumeric>("NSString(Additions)", "convertVersionNumeric", "text",
                               "a dotted version as one number, two digits a part", R"(["2.10.3"])"),

    op<&VersionHelper::compare>(kHelper, "compare:with:", "first, with",
                                "-1, 0 or 1 as the first is lower, same, higher", R"(["1.9", "1.10"])"),
    op<[](StringView version, StringView than) { return isLowerWithSlot(version, than); }>(
        kHelper, "isLower:than:versionPointer:", "version, than",
        "whether the first is lower, and the second where it is", R"(["1.0", "1.2"])"),
    op<&VersionHelper::deleteVersionsIfNeeded>(
        kHelper, "deleteVersionsIfNeeded:currentVersion:", "versions, currentVersion",
        "the versions before the first newer one", R"([["1.0", "1.2", "2.0", "1.1"], "1.5"])"),

    op<&NSBundleExtension::bundleVersion>(kBundle, "bundleVersion", "", "CFBundleVersion of the main bundle"),
    op<&NSBundleExtension::bundleShortVersion>(kBundle, "bundleShortVersion", "",
                                               "CFBundleShortVersionString of the main bundle"),
    op<&NSBundleExtension::bundleName>(kBundle, "bundleName", "", "CFBundleName, localised"),
    op<&NSBundleExtension::bundleDisplayName>(kBundle, "bundleDisplayName", "", "CFBundleDisplayName, localised"),
    op<&NSBundleExtension::keychainAccessGroup>(kBundle, "keychainAccessGroup", "", "KeyChain-AccessGroup"),
    op<&NSBundleExtension::appGroup>(kBundle, "appGroup", "", "Shared-AppGroup"),
};

}  // namespace

std::span<const Operation> versionOperations() { return kRows; }

}  // namespace quorvel::command
