#include <charconv>
#include <cstdlib>
#include <cstring>

#include <apps/quorvel/Binding.h>
#include <apps/quorvel/operations/Tables.h>

#include <quorvel/Extensions/Foundation/NSURL+File.h>
#include <quorvel/Extensions/Foundation/NSUserDefaults+Extension.h>
#include <quorvel/Extensions/UIKit/UIDevice+Additions.h>
#include <quorvel/Platform/UIKit/UIScreen.h>
#include <quorvel/Utility/DeviceLockChecker.h>
#include <quorvel/Utility/ICloudUtils.h>

namespace quorvel::command {
namespace {

constexpr const char* kLock = "DeviceLockChecker";
constexpr const char* kBackup = "ICloudUtils";
constexpr const char* kDevice = "UIDevice(Additions)";

/// A command has no screen: QUORVEL_SCREEN tells one as WIDTHxHEIGHT in points.
void takeScreenFromEnvironment() {
  const char* at = std::getenv("QUORVEL_SCREEN");
  if (!at) return;
  const char* const end = at + std::strlen(at);
  UIScreen::Bounds bounds;
  const auto width = std::from_chars(at, end, bounds.width);
  if (width.ec != std::errc() || width.ptr == end || *width.ptr != 'x') return;
  const auto height = std::from_chars(width.ptr + 1, end, bounds.height);
  if (height.ec == std::errc() && height.ptr == end) UIScreen::setMain(UIScreen(bounds, 1));
}

constexpr Operation kRows[] = {
    onDevice(op<&DeviceLockChecker::isUnlocked>(kLock, "isUnlocked", "", "protected files can be read")),
    onDevice(op<&DeviceLockChecker::isLocked>(kLock, "isLocked", "", "protected files cannot be read")),
    onDevice(op<&DeviceLockChecker::isCookieStorageLocked>(kLock, "isCookieStorageLocked", "",
                                                           "cookies cannot be stored and read back")),
    onDevice(op<&DeviceLockChecker::isCookieStorageUnlocked>(kLock, "isCookieStorageUnlocked", "",
                                                             "cookies can be stored and read back")),
    onDevice(op<&ICloudUtils::addSkipBackupAttributeToItemAtPath>(
        kBackup, "addSkipBackupAttributeToItemAtPath:", "path", "keeps a file or folder out of backups",
        R"(["/nowhere/at/all"])")),
    onDevice(op<&ICloudUtils::isSetBackupAttributeToItemAtPath>(kBackup, "isSetBackupAttributeToItemAtPath:", "path",
                                                                "is a file or folder kept out of backups?",
                                                                R"(["/nowhere/at/all"])")),
    onDevice(op<[](StringView url) {
      const auto parsed = NSURL::withString(url);
      return parsed ? fileSize(*parsed) : Value(nil);
    },
                &fileSize>("NSURL(File)", "fileSize", "url", "bytes of the file that a URL names",
                           R"(["file:///dev/null"])")),
    onDevice(op<[] {
      takeScreenFromEnvironment();
      return static_cast<std::int64_t>(UIDeviceAdditions::deviceDisplay());
    }>(kDevice, "deviceDisplay", "", "the class of the screen told by QUORVEL_SCREEN=WIDTHxHEIGHT")),
    onDevice(op<[] {
      takeScreenFromEnvironment();
      return UIDeviceAdditions::is4InchesDisplayOrLess();
    }>(kDevice, "is4InchesDisplayOrLess", "", "the class is 0 or 1")),
    onDevice(op<[] {
      takeScreenFromEnvironment();
      return UIDeviceAdditions::is5_5InchesDisplayOrLess();
    }>(kDevice, "is5_5InchesDisplayOrLess", "", "the class is 0 to 3")),
    onDevice(op<&UIDeviceAdditions::freeDiskSpace>(kDevice, "freeDiskSpace", "",
                                                   "bytes free on the volume of the documents folder")),
    onDevice(op<&UIDeviceAdditions::modelName>(kDevice, "modelName", "", "the machine")),
    onDevice(op<[] {
      const auto store = NSUserDefaultsExtension::appGroup();
      return store ? Value(String::fromUTF8(store->suiteName())) : Value(nil);
    }>("NSUserDefaults extension", "appGroup", "", "the name of the group's store of defaults")),
};

}  // namespace

std::span<const Operation> deviceOperations() { return kRows; }

}  // namespace quorvel::command
