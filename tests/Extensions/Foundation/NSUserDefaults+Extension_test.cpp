#include <gtest/gtest.h>
#include <tests/support/TemporaryFolder.h>

#include <quorvel/Extensions/Foundation/NSUserDefaults+Extension.h>
#include <quorvel/Platform/Foundation/ApplicationFolders.h>
#include <quorvel/Platform/Foundation/NSBundle.h>

namespace quorvel {
namespace {

struct GroupRow {
  const char* entries;  // of Info.plist
  const char* suite;    // nullptr: no store; "own": the application's
  const char* why;
};

TEST(NSUserDefaultsExtension, TheGroupNamesTheStore) {
  const NSBundle before = NSBundle::main();
  const GroupRow rows[] = {
      {"<key>Shared-AppGroup</key><string>group.chat</string>", "group.chat", "the group's"},
      {"", "own", "no group"},
      {"<key>Shared-AppGroup</key><integer>1</integer>", "own", "no string"},
      {"<key>Shared-AppGroup</key><string>../../x</string>", nullptr, "a name that leaves the folder"},
      {"<key>Shared-AppGroup</key><string></string>", nullptr, "an empty name"},
      {"<key>CFBundleIdentifier</key><string>kr.chat</string>", "kr.chat", "the application's own by its identifier"},
      {"<key>CFBundleIdentifier</key><string>../kr</string>", "own", "an identifier that is no name"},
  };
  for (const auto& [entries, suite, why] : rows) {
    const test::TemporaryFolder folder;
    const test::Environment configuration("XDG_CONFIG_HOME", folder.path());
    test::writeFile(folder.path("Info.plist"), std::string("<plist><dict>") + entries + "</dict></plist>");
    NSBundle::setMain(NSBundle::at(folder.path()));
    const auto store = NSUserDefaultsExtension::appGroup();
    ASSERT_EQ(store.has_value(), suite != nullptr) << why;
    if (!store) continue;
    EXPECT_EQ(store->suiteName(), suite == std::string("own") ? folders::applicationName() : suite) << why;
    ASSERT_TRUE(store->setObject(1, u"k")) << why;
    EXPECT_EQ(NSUserDefaultsExtension::appGroup()->objectForKey(u"k"), 1) << why;
  }
  NSBundle::setMain(before);
}

}  // namespace
}  // namespace quorvel
