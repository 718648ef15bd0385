// Versions compared, and what an application's bundle says of itself.
#include <filesystem>
#include <fstream>
#include <iostream>

#include <quorvel/Extensions/Foundation/NSBundle+Extension.h>
#include <quorvel/Extensions/Foundation/NSString+Additions+Version.h>
#include <quorvel/Extensions/Foundation/String+Extension.h>
#include <quorvel/Platform/Foundation/NSBundle.h>
#include <quorvel/Utility/VersionHelper.h>

using namespace quorvel;

int main() {
  constexpr StringView pairs[][2] = {{u"1.9", u"1.10"}, {u"2.0", u"2"}, {u"1.0b", u"1.0"}, {u"3", u"2.9.9"}};
  for (const auto& [first, second] : pairs) {
    std::cout << first << " and " << second << ": " << VersionHelper::compare(first, second) << ", numbers "
              << convertVersionNumeric(first) << ' ' << convertVersionNumeric(second) << '\n';
  }
  std::cout << *VersionHelper::deleteVersionsIfNeeded(List{u"1.0", u"1.2", u"2.0", u"1.1"}, u"1.5") << '\n';

  const std::filesystem::path folder = std::filesystem::temp_directory_path() / "quorvel-example-versions";
  std::filesystem::create_directories(folder);
  std::ofstream(folder / "Info.plist") << "<plist version=\"1.0\"><dict><key>CFBundleName</key><string>Quorvel</string>"
                                          "<key>CFBundleShortVersionString</key><string>1.10</string></dict></plist>";
  std::ofstream(folder / "Localizable.strings") << "\"greeting\" = \"안녕하세요, %@\";\n";
  NSBundle::setMain(NSBundle::at(folder.string()));
  std::cout << NSBundleExtension::bundleName() << ' ' << NSBundleExtension::bundleShortVersion() << ' '
            << NSBundleExtension::bundleVersion() << '\n'
            << localizedFormat(u"greeting", {u"민수"}) << ", " << localized(u"no such key") << '\n';
  std::filesystem::remove_all(folder);
}
