// Facts of a device and marks on files: the screen's class, backup exclusion, the locked state, shared defaults.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>

#include <quorvel/Extensions/Foundation/NSURL+File.h>
#include <quorvel/Extensions/UIKit/UIDevice+Additions.h>
#include <quorvel/Platform/Foundation/NSHTTPCookieStorage.h>
#include <quorvel/Platform/Foundation/NSUserDefaults.h>
#include <quorvel/Platform/UIKit/UIDevice.h>
#include <quorvel/Platform/UIKit/UIScreen.h>
#include <quorvel/Utility/DeviceLockChecker.h>
#include <quorvel/Utility/ICloudUtils.h>

using namespace quorvel;

namespace {

void showScreens() {
  constexpr UIScreen::Bounds kScreens[] = {{0, 0, 320, 480}, {0, 0, 320, 568},  {0, 0, 375, 667}, {0, 0, 736, 414},
                                           {0, 0, 375, 812}, {0, 0, 1024, 768}, {0, 0, 834, 1112}};
  for (const UIScreen::Bounds& bounds : kScreens) {
    UIScreen::setMain(UIScreen(bounds, 2));
    std::cout << bounds.width << " x " << bounds.height << ": class " << UIDeviceAdditions::deviceDisplay()
              << (UIDeviceAdditions::is4InchesDisplayOrLess() ? ", small" : "") << '\n';
  }
}

void showFiles(const std::filesystem::path& home) {
  const std::filesystem::path file = home / "Documents" / "a b.txt";
  std::ofstream(file) << "12345";
  const String path = String::fromUTF8(file.string()).value();
  std::cout << "size of the file: " << fileSize(*NSURL::fileURLWithPath(path)) << '\n';
  std::cout << "excluded from backups: " << ICloudUtils::isSetBackupAttributeToItemAtPath(path);
  ICloudUtils::addSkipBackupAttributeToItemAtPath(path);
  std::cout << ", then " << ICloudUtils::isSetBackupAttributeToItemAtPath(path) << '\n';
  std::cout << "free space is known: " << (UIDeviceAdditions::freeDiskSpace() > 0) << '\n';
}

void showStores(const std::filesystem::path& home) {
  std::cout << "unlocked: " << DeviceLockChecker::isUnlocked() << ", marker of "
            << std::filesystem::file_size(home / "Documents/tandrel.secure") << " bytes\n";
  NSHTTPCookieStorage::setShared(NSHTTPCookieStorage::at((home / "cookies").string()));
  std::cout << "cookie storage locked: " << DeviceLockChecker::isCookieStorageLocked() << '\n';
  const auto store = NSUserDefaults::withSuiteName(u"group.example");
  store->setObject(Dictionary{{u"theme", u"dark"}, {u"seen", Date{1500000000}}}, u"settings");
  std::cout << "settings: " << store->objectForKey(u"settings") << '\n';
  std::cout << "a suite outside the folder: " << NSUserDefaults::withSuiteName(u"../x").has_value() << '\n';
}

}  // namespace

int main() {
  std::string pattern = (std::filesystem::temp_directory_path() / "quorvel-example-XXXXXX").string();
  if (!::mkdtemp(pattern.data())) return 1;
  const std::filesystem::path home = pattern;
  std::filesystem::create_directory(home / "Documents");
  ::setenv("HOME", pattern.c_str(), 1);
  ::unsetenv("XDG_CONFIG_HOME");
  UIDevice::setMachine(String(u"Tablet7,2"));

  std::cout << std::boolalpha << "model: " << UIDeviceAdditions::modelName() << '\n';
  showScreens();
  showFiles(home);
  showStores(home);
  std::filesystem::remove_all(home);
}
