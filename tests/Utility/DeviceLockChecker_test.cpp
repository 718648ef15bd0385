#include <gtest/gtest.h>
#include <tests/support/TemporaryFolder.h>

#include <quorvel/Platform/Foundation/NSFileManager.h>
#include <quorvel/Platform/Foundation/NSHTTPCookieStorage.h>
#include <quorvel/Utility/DeviceLockChecker.h>

namespace quorvel {
namespace {

using test::modeOf;
using test::readFile;

class LockChecker : public testing::Test {
 protected:
  void SetUp() override {
    std::filesystem::create_directory(home_.path("Documents"));
    NSHTTPCookieStorage::setShared(storage_);
  }
  void TearDown() override { NSHTTPCookieStorage::setShared(before_); }
  [[nodiscard]] std::string marker() const { return home_.path("Documents/tandrel.secure"); }

  test::TemporaryFolder home_;
  test::Environment variable_{"HOME", home_.path()};
  test::Environment configuration_{"XDG_CONFIG_HOME", std::nullopt};
  test::Environment data_{"XDG_DATA_HOME", home_.path("data")};
  NSHTTPCookieStorage before_ = NSHTTPCookieStorage::shared();
  NSHTTPCookieStorage storage_ = NSHTTPCookieStorage::at(home_.path("jar"));
};

TEST_F(LockChecker, TheFirstCallMakesTheMarkerAndLaterOnesLeaveIt) {
  const test::Umask guard(0);
  EXPECT_TRUE(DeviceLockChecker::isUnlocked());
  EXPECT_EQ(readFile(marker()), "TANDREL secure content");
  EXPECT_EQ(modeOf(marker()), S_IFREG | 0600U);
  const auto attributes = NSFileManager::defaultManager().attributesOfItemAtPath(String::fromUTF8(marker()));
  ASSERT_TRUE(attributes);
  const Value protection = (*attributes)[NSFileProtectionKey];
  EXPECT_TRUE(protection.isNil() || protection == Value(u"NSFileProtectionCompleteUntilFirstUserAuthentication"));
  test::writeFile(marker(), "other");
  EXPECT_FALSE(DeviceLockChecker::isLocked());
  EXPECT_EQ(readFile(marker()), "other");
  std::filesystem::remove(marker());
  EXPECT_FALSE(DeviceLockChecker::isLocked()) << "isLocked makes it too";
  EXPECT_EQ(readFile(marker()), "TANDREL secure content");
}

TEST_F(LockChecker, WithoutDocumentsItIsLockedAndNothingIsMade) {
  const test::Environment none("HOME", "");
  EXPECT_FALSE(DeviceLockChecker::isUnlocked());
  EXPECT_TRUE(DeviceLockChecker::isLocked());
  const test::Environment absent("HOME", home_.path("absent"));
  EXPECT_TRUE(DeviceLockChecker::isLocked());
  EXPECT_EQ(modeOf(home_.path("absent")), 0U);
}

TEST_F(LockChecker, WhatIsPlantedReadsAsLockedAtOnce) {
  for (const auto& [what, plant] : test::kPlanted) {
    std::filesystem::remove_all(marker());
    test::writeFile(home_.path("victim"), "victim");
    plant(marker(), home_.path("victim"));
    const bool isFile = S_ISREG(modeOf(marker()));
    const test::Stopwatch watch;
    EXPECT_EQ(DeviceLockChecker::isUnlocked(), isFile) << what;
    EXPECT_EQ(DeviceLockChecker::isLocked(), !isFile) << what;
    EXPECT_LT(watch.elapsed(), test::kRefusing) << what;
    EXPECT_EQ(readFile(home_.path("victim")), "victim") << what;
    EXPECT_EQ(modeOf(home_.path("victim.absent")), 0U) << what << ": a dangling link is not written through";
  }
}

TEST_F(LockChecker, TheProbeLeavesTheCookieStorageAsItWas) {
  EXPECT_FALSE(DeviceLockChecker::isCookieStorageLocked()) << "an empty storage that takes the probe";
  EXPECT_TRUE(DeviceLockChecker::isCookieStorageUnlocked());
  EXPECT_EQ(storage_.cookies(), std::vector<NSHTTPCookie>());
  const auto cookie = NSHTTPCookie::withProperties(
      {{NSHTTPCookieName, u"n"}, {NSHTTPCookieValue, u"v"}, {NSHTTPCookieDomain, u"h"}, {NSHTTPCookiePath, u"/"}});
  ASSERT_TRUE(storage_.setCookie(cookie.value()));
  const auto written = std::filesystem::last_write_time(home_.path("jar/cookies.json"));
  storage_.setCookieAcceptPolicy(NSHTTPCookieStorage::AcceptPolicy::Never);
  EXPECT_FALSE(DeviceLockChecker::isCookieStorageLocked()) << "any cookie is enough";
  EXPECT_EQ(std::filesystem::last_write_time(home_.path("jar/cookies.json")), written) << "nothing stored or deleted";
  ASSERT_TRUE(storage_.deleteCookie(*cookie));
  EXPECT_TRUE(DeviceLockChecker::isCookieStorageLocked()) << "a storage that silently drops the probe";
  EXPECT_FALSE(DeviceLockChecker::isCookieStorageUnlocked());
}

TEST_F(LockChecker, AStorageThatCannotBeReadIsLocked) {
  std::filesystem::create_directories(home_.path("jar/cookies.json"));
  EXPECT_TRUE(DeviceLockChecker::isCookieStorageLocked());
}

}  // namespace
}  // namespace quorvel
