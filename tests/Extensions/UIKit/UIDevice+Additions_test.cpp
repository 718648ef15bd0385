#include <limits>

#include <gtest/gtest.h>
#include <sys/statvfs.h>
#include <sys/utsname.h>
#include <tests/support/TemporaryFolder.h>

#include <quorvel/Extensions/UIKit/UIDevice+Additions.h>
#include <quorvel/Platform/Foundation/Nil.h>
#include <quorvel/Platform/UIKit/UIDevice.h>
#include <quorvel/Platform/UIKit/UIScreen.h>

namespace quorvel {
namespace {

struct DisplayRow {
  double width;
  double height;
  std::int64_t display;
  const char* why;
};

TEST(UIDeviceAdditions, DisplayClassIsTheFirstRuleThatHolds) {
  const double tiny = std::numeric_limits<double>::epsilon() * 512;
  const DisplayRow rows[] = {
      {768, 1024, 5, "exactly a pad"},
      {768 + tiny, 1024, 6, "the least bit wider is no pad"},
      {320, 480, 0, "exact, though it fits the next rule too"},
      {320, 480.5, 1, "not exact: the next rule"},
      {320, 568, 1, "equal to the border"},
      {320, 0, 1, "any height up to it"},
      {320, 568.5, 2, "beyond it: the next rule"},
      {319, 480, 2, "the width must be exactly 320"},
      {375, 667, 2, "equal to both borders"},
      {375, 667.5, 3, "higher: fits the rule after it"},
      {414, 736, 3, "equal to both borders"},
      {375, 736, 3, "narrower"},
      {375, 736.5, 4, "higher than 736"},
      {375, 812, 4, "equal to both borders"},
      {376, 812, 6, "wider than 375"},
      {414, 896, 6, "larger"},
      {834, 1112, 6, "a larger pad"},
      {0, 0, 2, "before the application told a size"},
      {std::numeric_limits<double>::quiet_NaN(), 0, 6, "no size at all"},
  };
  for (const auto& [width, height, display, why] : rows) {
    UIScreen::setMain(UIScreen({0, 0, height, width}, 2));
    EXPECT_EQ(UIDeviceAdditions::deviceDisplay(), display) << width << " x " << height << " on its side: " << why;
    UIScreen::setMain(UIScreen({0, 0, width, height}, 2));
    EXPECT_EQ(UIDeviceAdditions::deviceDisplay(), display) << width << " x " << height << ": " << why;
    EXPECT_EQ(UIDeviceAdditions::is4InchesDisplayOrLess(), display < 2) << why;
    EXPECT_EQ(UIDeviceAdditions::is5_5InchesDisplayOrLess(), display < 4) << why;
  }
  EXPECT_EQ(UIScreen::mainScreen().scale(), 2);
  UIScreen::setMain(UIScreen());
}

TEST(UIDeviceAdditions, FreeSpaceIsThatOfTheDocumentsVolume) {
  const test::TemporaryFolder folder;
  const test::Environment configuration("XDG_CONFIG_HOME", std::nullopt);
  const test::Environment home("HOME", folder.path());
  EXPECT_EQ(UIDeviceAdditions::freeDiskSpace(), 0U) << "no documents folder";
  std::filesystem::create_directory(folder.path("Documents"));
  struct statvfs volume{};
  ASSERT_EQ(::statvfs(folder.path().c_str(), &volume), 0);
  const auto expected = static_cast<double>(volume.f_bavail) * static_cast<double>(volume.f_frsize);
  EXPECT_NEAR(static_cast<double>(UIDeviceAdditions::freeDiskSpace()), expected, 1e9) << "others may write meanwhile";
  const test::Environment none("HOME", "");
  EXPECT_EQ(UIDeviceAdditions::freeDiskSpace(), 0U);
}

TEST(UIDeviceAdditions, ModelIsTheMachine) {
  utsname record{};
  ASSERT_EQ(::uname(&record), 0);
  EXPECT_EQ(UIDeviceAdditions::modelName(), String::fromUTF8(record.machine));
  UIDevice::setMachine(String(u"Phone12,3"));
  EXPECT_EQ(UIDeviceAdditions::modelName(), u"Phone12,3");
  UIDevice::setMachine(nil);
  EXPECT_EQ(UIDeviceAdditions::modelName(), String::fromUTF8(record.machine));
}

}  // namespace
}  // namespace quorvel
