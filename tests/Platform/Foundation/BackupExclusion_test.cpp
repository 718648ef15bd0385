#include <cstring>

#include <gtest/gtest.h>
#include <tests/support/FileMarks.h>
#include <tests/support/TemporaryFolder.h>

#include <quorvel/Platform/Foundation/BackupExclusion.h>

namespace quorvel {
namespace {

using test::modeOf;
using test::readFile;
using test::writeFile;

constexpr const char* kAttribute = "user.xdg.robots.backup";
constexpr std::string_view kTag = "Signature: 8a477f597d28d172789f06886806bc55";

class Exclusion : public testing::Test {
 protected:
  void SetUp() override {
    writeFile(file(), "x");
    std::filesystem::create_directory(folder());
    holdsAttributes_ = ::setxattr(file().c_str(), "user.probe", "", 0, 0) == 0;
    holdsFlag_ = test::setNoDump(file(), true) && test::setNoDump(file(), false);
  }
  [[nodiscard]] std::string file() const { return root_.path("file"); }
  [[nodiscard]] std::string folder() const { return root_.path("folder"); }

  /// What a walk of the folder tells, an item a word, failures with "!".
  static std::string walk(const std::string& root) {
    std::string told;
    backup::visit(root, {[&](const std::string& path) { told += path + " "; },
                         [&](const std::string& path, FileError) { told += "!" + path + " "; }});
    return told;
  }

  test::TemporaryFolder root_;
  bool holdsAttributes_ = false;
  bool holdsFlag_ = false;
};

TEST_F(Exclusion, SetsEveryMarkThatTheFileSystemHoldsAndTakesThemBack) {
  const test::Umask guard(0);
  for (const std::string& path : {file(), folder()}) {
    EXPECT_EQ(backup::isExcluded(path), false) << path;
    if (path == folder() || holdsAttributes_ || holdsFlag_) {
      ASSERT_FALSE(backup::setExcluded(path, true)) << path;
      ASSERT_FALSE(backup::setExcluded(path, true)) << "twice: " << path;
      EXPECT_EQ(backup::isExcluded(path), true) << path;
    }
    EXPECT_EQ(test::attributeOf(path, kAttribute), holdsAttributes_ ? "false" : "none") << path;
    EXPECT_EQ(test::hasNoDump(path), holdsFlag_) << path;
  }
  EXPECT_TRUE(readFile(root_.path("folder/CACHEDIR.TAG")).starts_with(kTag));
  EXPECT_EQ(modeOf(root_.path("folder/CACHEDIR.TAG")), S_IFREG | 0600U);
  EXPECT_EQ(readFile(file()), "x");
  for (const std::string& path : {file(), folder()}) {
    ASSERT_FALSE(backup::setExcluded(path, false)) << path;
    ASSERT_FALSE(backup::setExcluded(path, false)) << "twice: " << path;
    EXPECT_EQ(backup::isExcluded(path), false) << path;
  }
  EXPECT_EQ(test::namesIn(folder()), "");
}

TEST_F(Exclusion, ReadsAnyMarkWhoeverSetIt) {
  if (holdsAttributes_) {
    for (const auto& [value, isExcluded] :
         {std::pair{"false", true}, {"true", false}, {"", false}, {"falsehood and more", false}}) {
      ASSERT_EQ(::setxattr(file().c_str(), kAttribute, value, std::strlen(value), 0), 0);
      EXPECT_EQ(backup::isExcluded(file()), isExcluded) << value;
    }
    ::removexattr(file().c_str(), kAttribute);
  }
  if (holdsFlag_) {
    ASSERT_TRUE(test::setNoDump(file(), true));
    EXPECT_EQ(backup::isExcluded(file()), true);
  }
  writeFile(root_.path("folder/CACHEDIR.TAG"), std::string(kTag) + "\n# by another program\n");
  EXPECT_EQ(backup::isExcluded(folder()), true);
  EXPECT_EQ(backup::setExcluded(folder(), false).number, EEXIST) << "another program's tag is not ours to remove";
  EXPECT_EQ(backup::isExcluded(folder()), true);
  writeFile(root_.path("folder/CACHEDIR.TAG"), kTag.substr(0, 42));
  EXPECT_EQ(backup::isExcluded(folder()), false) << "a signature that is cut short";
}

TEST_F(Exclusion, ATagThatIsPlantedIsNotFollowed) {
  for (const auto& [what, plant] : test::kPlanted) {
    const std::string tag = root_.path("folder/CACHEDIR.TAG");
    std::filesystem::remove_all(tag);
    writeFile(root_.path("victim"), kTag);
    plant(tag, root_.path("victim"));
    const bool isFile = S_ISREG(modeOf(tag));
    const test::Stopwatch watch;
    EXPECT_EQ(backup::isExcluded(folder()), isFile) << what << ": only a regular file is a tag";
    const FileError error = backup::setExcluded(folder(), true);
    EXPECT_EQ(bool(error), !isFile && !holdsAttributes_ && !holdsFlag_) << what;
    EXPECT_LT(watch.elapsed(), test::kRefusing) << what;
    EXPECT_EQ(readFile(root_.path("victim")), kTag) << what;
    EXPECT_EQ(modeOf(root_.path("victim.absent")), 0U) << what;
    ASSERT_EQ(backup::setExcluded(folder(), false).number, isFile ? EEXIST : 0) << what;
  }
}

TEST_F(Exclusion, WhatIsNeitherFileNorFolderHasNoMark) {
  ASSERT_EQ(::mkfifo(root_.path("pipe").c_str(), 0600), 0);
  std::filesystem::create_symlink("file", root_.path("link"));
  const test::Stopwatch watch;
  EXPECT_EQ(backup::setExcluded(root_.path("pipe"), true).number, EINVAL);
  EXPECT_EQ(backup::isExcluded(root_.path("pipe")), false);
  EXPECT_LT(watch.elapsed(), test::kRefusing);
  FileError error;
  EXPECT_EQ(backup::isExcluded(root_.path("none"), &error), std::nullopt);
  EXPECT_EQ(error.number, ENOENT);
  if (holdsAttributes_ || holdsFlag_) {
    ASSERT_FALSE(backup::setExcluded(root_.path("link"), true));
    EXPECT_EQ(backup::isExcluded(file()), true) << "a link that the caller names is followed";
  }
}

TEST_F(Exclusion, WalksInOrderAndNeitherIntoLinksNorIntoWhatIsExcluded) {
  if (!holdsAttributes_ && !holdsFlag_) GTEST_SKIP() << "this file system holds no mark on files";
  for (const char* path : {"folder/b", "folder/a/x", "folder/out/inner", "folder/z/y/x"})
    writeFile(root_.path(path), "");
  std::filesystem::create_directory_symlink("..", root_.path("folder/loop"));
  std::filesystem::create_symlink("../file", root_.path("folder/link"));
  ASSERT_EQ(::mkfifo(root_.path("folder/pipe").c_str(), 0600), 0);
  for (const char* path : {"file", "folder/b", "folder/out", "folder/out/inner", "folder/z/y/x"}) {
    ASSERT_FALSE(backup::setExcluded(root_.path(path), true));
  }
  EXPECT_EQ(walk(folder()), "b out z/y/x ");
  std::filesystem::create_directory_symlink("folder", root_.path("named"));
  EXPECT_EQ(walk(root_.path("named")), "b out z/y/x ") << "the root itself may be a link";
  ASSERT_FALSE(backup::setExcluded(folder(), true));
  EXPECT_EQ(walk(folder()), " ") << "the root itself";
  EXPECT_EQ(walk(file()), "! ");
  EXPECT_EQ(walk(root_.path("none")), "! ");
}

TEST_F(Exclusion, DepthIsBoundedByNeitherStackNorDescriptors) {
  FileDescriptor at(::open(folder().c_str(), O_RDONLY | O_DIRECTORY));
  for (int depth = 0; depth < 1500; ++depth) {
    ASSERT_EQ(::mkdirat(at.number(), "d", 0700), 0) << depth;
    at = FileDescriptor(::openat(at.number(), "d", O_RDONLY | O_DIRECTORY));
  }
  ASSERT_EQ(::mkdirat(at.number(), "last", 0700), 0);
  const FileDescriptor last(::openat(at.number(), "last", O_RDONLY | O_DIRECTORY));
  const FileDescriptor tag(::openat(last.number(), "CACHEDIR.TAG", O_CREAT | O_WRONLY, 0600));
  ASSERT_EQ(::write(tag.number(), kTag.data(), kTag.size()), static_cast<ssize_t>(kTag.size()));
  const std::string told = walk(folder());
  EXPECT_EQ(told.size(), 1500U * 2 + 5) << told.substr(0, 80);
}

}  // namespace
}  // namespace quorvel
