#include <gtest/gtest.h>
#include <sys/xattr.h>
#include <tests/support/TemporaryFolder.h>

#include <quorvel/Platform/Foundation/Log.h>
#include <quorvel/Utility/ICloudUtils.h>

namespace quorvel {
namespace {

std::string& logged() {
  static std::string lines;
  return lines;
}

class BackupMarks : public testing::Test {
 protected:
  void SetUp() override {
    logged().clear();
    before_ = setLogSink([](LogLevel, std::string_view line) { logged().append(line).append("|"); });
  }
  void TearDown() override { setLogSink(before_); }
  [[nodiscard]] String path(const std::string& name) const { return String::fromUTF8(folder_.path(name)).value(); }

  test::TemporaryFolder folder_;
  LogSink before_ = nullptr;
};

TEST_F(BackupMarks, MarkFilesAndFolders) {
  test::writeFile(folder_.path("a 한#.txt"), "");
  std::filesystem::create_directory(folder_.path("d"));
  if (::setxattr(folder_.path("a 한#.txt").c_str(), "user.probe", "", 0, 0) != 0) GTEST_SKIP() << "no attributes here";
  for (const char* name : {"a 한#.txt", "d"}) {
    EXPECT_FALSE(ICloudUtils::isSetBackupAttributeToItemAtPath(path(name))) << name;
    EXPECT_TRUE(ICloudUtils::addSkipBackupAttributeToItemAtPath(path(name))) << name;
    EXPECT_TRUE(ICloudUtils::isSetBackupAttributeToItemAtPath(path(name))) << name;
  }
  EXPECT_EQ(logged(), "");
}

TEST_F(BackupMarks, WhatIsNotThereIsLoggedAndNotMade) {
  const std::string missing = "File or directory does not exist.: " + folder_.path("no ne") + "|";
  EXPECT_FALSE(ICloudUtils::addSkipBackupAttributeToItemAtPath(path("no\nne")));
  EXPECT_FALSE(ICloudUtils::isSetBackupAttributeToItemAtPath(path("no\nne")));
  EXPECT_EQ(logged(), missing + missing) << "one line each";
  EXPECT_EQ(test::namesIn(folder_.path()), "");
  logged().clear();
  EXPECT_FALSE(ICloudUtils::addSkipBackupAttributeToItemAtPath(nil));
  EXPECT_EQ(logged(), "File or directory does not exist.: (null)|");
}

TEST_F(BackupMarks, ARefusalIsLoggedWithTheNameAndTheReason) {
  ASSERT_EQ(::mkfifo(folder_.path("pipe").c_str(), 0600), 0);
  EXPECT_FALSE(ICloudUtils::addSkipBackupAttributeToItemAtPath(path("pipe")));
  EXPECT_EQ(logged(), "Error excluding pipe from backup Invalid argument|");
  logged().clear();
  EXPECT_FALSE(ICloudUtils::isSetBackupAttributeToItemAtPath(path("pipe")));
  EXPECT_EQ(logged(), "") << "it can be read, and has no mark";
  if (::geteuid() == 0) return;  // who may read everything
  test::writeFile(folder_.path("closed"), "");
  ASSERT_EQ(::chmod(folder_.path("closed").c_str(), 0), 0);
  EXPECT_FALSE(ICloudUtils::isSetBackupAttributeToItemAtPath(path("closed")));
  EXPECT_EQ(logged(), "Error get excluding closed from backup Permission denied|");
}

}  // namespace
}  // namespace quorvel
