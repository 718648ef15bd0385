#include <atomic>
#include <csignal>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/xattr.h>
#include <tests/support/Crowd.h>
#include <tests/support/FileMarks.h>
#include <tests/support/TemporaryFolder.h>

#include <quorvel/Platform/Foundation/FileReplacer.h>

namespace quorvel {
namespace {

using test::attributeOf;
using test::hasNoDump;
using test::modeOf;
using test::namesIn;
using test::readFile;
using test::TemporaryFolder;
using test::writeFile;

constexpr FileReplacement kKept{FileReplacement::Links::Followed, FileReplacement::Metadata::Kept, 0600, {}};

TEST(FileReplacer, NewFilesHaveTheirModeUnderAnyUmask) {
  for (const mode_t mask : {0000U, 0077U, 0777U}) {
    for (const unsigned mode : {0600U, 0644U, 0400U}) {
      const TemporaryFolder folder;
      const test::Umask guard(mask);
      FileReplacement how;
      how.mode = mode;
      ASSERT_FALSE(replaceFile(folder.path("a"), "bytes", how)) << std::oct << mask;
      EXPECT_EQ(modeOf(folder.path("a")), S_IFREG | mode) << std::oct << mask;
      ASSERT_FALSE(replaceFile(folder.path("a"), "more", how)) << std::oct << mask;
      EXPECT_EQ(readFile(folder.path("a")), "more");
      EXPECT_EQ(namesIn(folder.path()), "a");
    }
  }
}

TEST(FileReplacer, KeepsModeOwnerAttributesAndFlag) {
  const TemporaryFolder folder;
  const std::string path = folder.path("photo");
  writeFile(path, "old");
  const bool hasAttributes =
      ::setxattr(path.c_str(), "user.note", "n\0n", 3, 0) == 0 && ::setxattr(path.c_str(), "user.empty", "", 0, 0) == 0;
  const bool hasFlag = test::setNoDump(path, true);
  const bool isRoot = ::geteuid() == 0;
  if (isRoot) {
    ASSERT_EQ(::chown(path.c_str(), 12345, 23456), 0);
  }
  ASSERT_EQ(::chmod(path.c_str(), isRoot ? 0440 : 0640), 0);
  ASSERT_FALSE(replaceFile(path, "new", kKept));
  EXPECT_EQ(readFile(path), "new");
  EXPECT_EQ(modeOf(path), S_IFREG | (isRoot ? 0440U : 0640U)) << "a file without write permission keeps that too";
  struct stat status{};
  ASSERT_EQ(::stat(path.c_str(), &status), 0);
  if (isRoot) {
    EXPECT_EQ(status.st_uid, 12345U);
    EXPECT_EQ(status.st_gid, 23456U);
  }
  if (hasAttributes) {
    EXPECT_EQ(attributeOf(path, "user.note"), std::string("n\0n", 3));
    EXPECT_EQ(attributeOf(path, "user.empty"), "");
  }
  if (hasFlag) {
    EXPECT_TRUE(hasNoDump(path));
  }

  ASSERT_EQ(::chmod(path.c_str(), 06755), 0);
  ASSERT_FALSE(replaceFile(path, "newer", kKept));
  EXPECT_EQ(modeOf(path), S_IFREG | 0755U) << "other bytes do not run as somebody else";
  ASSERT_FALSE(replaceFile(path, "private", {}));
  EXPECT_EQ(modeOf(path), S_IFREG | 0600U);
  EXPECT_EQ(attributeOf(path, "user.note"), "none") << "nothing is kept unless asked for";
  EXPECT_FALSE(hasNoDump(path));
}

struct LinkRow {
  const char* text;    // of the link "link" in the folder
  const char* target;  // what must hold the bytes afterwards; nullptr: refused
  int error;
  const char* why;
};

TEST(FileReplacer, FollowsLinksOnlyWhenAsked) {
  const LinkRow rows[] = {
      {"file", "file", 0, "relative, beside"},
      {"sub/file", "sub/file", 0, "relative, below"},
      {"second", "sub/file", 0, "a chain; the second link is relative to its own folder"},
      {"absent", "absent", 0, "a dangling link makes the file that it names"},
      {"link", nullptr, ELOOP, "a loop"},
      {"sub", nullptr, EISDIR, "a folder"},
      {"sub/..", nullptr, EISDIR, "a folder by its parent's name"},
      {"nowhere/file", nullptr, ENOENT, "no such folder"},
      {"/dev/null", nullptr, EINVAL, "a device"},
  };
  for (const auto& [text, target, error, why] : rows) {
    const TemporaryFolder folder;
    writeFile(folder.path("file"), "old");
    writeFile(folder.path("sub/file"), "old");
    std::filesystem::create_symlink("sub/third", folder.path("second"));
    std::filesystem::create_symlink("file", folder.path("sub/third"));
    std::filesystem::create_symlink(text, folder.path("link"));
    EXPECT_EQ(replaceFile(folder.path("link"), "x", {}).number, ELOOP) << why;
    EXPECT_EQ(replaceFile(folder.path("link"), "new", kKept).number, error) << why;
    EXPECT_TRUE(S_ISLNK(modeOf(folder.path("link")))) << why;
    if (target) {
      EXPECT_EQ(readFile(folder.path(target)), "new") << why;
    }
    EXPECT_EQ(namesIn(folder.path("sub")), "file third") << why;
  }
}

TEST(FileReplacer, RefusesWhatIsNoFileAtOnceAndTouchesNoOtherFile) {
  for (const auto& [what, plant] : test::kPlanted) {
    const TemporaryFolder folder;
    const std::string victim = folder.path("victim");
    writeFile(victim, "victim");
    ASSERT_EQ(::chmod(victim.c_str(), 0644), 0);
    plant(folder.path("path"), victim);
    const unsigned before = modeOf(folder.path("path"));
    const bool isFile = S_ISREG(before);
    const test::Stopwatch watch;
    const FileError error = replaceFile(folder.path("path"), "new", {});
    EXPECT_LT(watch.elapsed(), isFile ? test::kWriting : test::kRefusing) << what;
    EXPECT_EQ(bool(error), !isFile) << what;
    EXPECT_EQ(modeOf(folder.path("path")), isFile ? (S_IFREG | 0600U) : before) << what;
    EXPECT_EQ(readFile(victim), "victim") << what;
    EXPECT_EQ(modeOf(victim), S_IFREG | 0644U) << what;
    EXPECT_EQ(namesIn(folder.path()), "path victim") << what;
  }
}

TEST(FileReplacer, NamesThatAreNone) {
  const TemporaryFolder folder;
  for (const auto& [name, error] : {std::pair{"", ENOENT}, {"/", EISDIR}, {".", EISDIR}, {"./..", EISDIR}}) {
    EXPECT_EQ(replaceFile(std::string(name), "x", {}).number, error) << name;
  }
  EXPECT_EQ(replaceFile(folder.path("none/a"), "x", {}).number, ENOENT);
  EXPECT_EQ(replaceFile(folder.path("a/"), "x", {}).number, EISDIR) << "a slash at the end names a folder";
  EXPECT_FALSE(replaceFile(folder.path(std::string(255, 'n')), "x", {})) << "the temporary's name is no longer";
  EXPECT_EQ(replaceFile(folder.path(std::string(256, 'n')), "x", {}).number, ENAMETOOLONG);
}

TEST(FileReplacer, AFullDiskLeavesTheOldFileWhole) {
  const TemporaryFolder folder;
  writeFile(folder.path("a"), "old");
  for (const rlim_t room : {0U, 1U, 4096U, 99'999U}) {
    const int failure = test::inChild([&] {
      std::signal(SIGXFSZ, SIG_IGN);
      const rlimit limit{room, room};
      ::setrlimit(RLIMIT_FSIZE, &limit);
      return replaceFile(folder.path("a"), std::string(100'000, 'n'), kKept).number;
    });
    EXPECT_EQ(failure, EFBIG) << room;
    EXPECT_EQ(readFile(folder.path("a")), "old") << room;
    EXPECT_EQ(namesIn(folder.path()), "a") << room;
  }
}

TEST(FileReplacer, AKilledProcessLeavesAWholeFileAndItsLeftoversGo) {
  const TemporaryFolder folder;
  const std::string path = folder.path("a");
  const std::string contents[2] = {std::string(300'000, 'a'), std::string(200'000, 'b')};
  ASSERT_FALSE(replaceFile(path, contents[0], {}));
  int leftovers = 0;
  for (unsigned round = 0; round < 60; ++round) {
    const pid_t child = test::startChild([&]() -> int {
      for (unsigned i = 0;; ++i) static_cast<void>(replaceFile(path, contents[i % 2], {}));
    });
    ::usleep(500 + round * 137 % 3000);
    ::kill(child, SIGKILL);
    ASSERT_EQ(test::endOf(child), -SIGKILL);
    const std::string read = readFile(path);
    ASSERT_TRUE(read == contents[0] || read == contents[1]) << round;
    leftovers += namesIn(folder.path()) != "a";
    ASSERT_FALSE(replaceFile(path, contents[0], {}));
    ASSERT_EQ(namesIn(folder.path()), "a") << round;
  }
  EXPECT_GT(leftovers, 0) << "no round was killed in the middle: the test shows nothing";
}

TEST(FileReplacer, WhatIsPlantedAtTheTemporaryNameIsNotFollowed) {
  for (const auto& [what, plant] : test::kPlanted) {
    const TemporaryFolder folder;
    writeFile(folder.path("victim"), "victim");
    ASSERT_EQ(::chmod(folder.path("victim").c_str(), 0644), 0);
    // The name of the first temporary file, as a killed process shows it.
    static_cast<void>(test::inChild([&] {
      std::signal(SIGXFSZ, SIG_DFL);
      const rlimit limit{1, 1};
      ::setrlimit(RLIMIT_FSIZE, &limit);
      const rlimit noCore{0, 0};
      ::setrlimit(RLIMIT_CORE, &noCore);
      return replaceFile(folder.path("a"), "more", {}).number;
    }));
    const std::string left = namesIn(folder.path());
    ASSERT_TRUE(left.starts_with(".quorvel-")) << left;
    const std::string temporary = left.substr(0, left.find(' '));
    std::filesystem::remove(folder.path(temporary));
    plant(folder.path(temporary), folder.path("victim"));
    const test::Stopwatch watch;
    EXPECT_FALSE(replaceFile(folder.path("a"), "new", {})) << what;
    EXPECT_LT(watch.elapsed(), test::kWriting) << what;
    EXPECT_EQ(readFile(folder.path("a")), "new") << what;
    EXPECT_EQ(modeOf(folder.path("a")), S_IFREG | 0600U) << what;
    EXPECT_EQ(readFile(folder.path("victim")), "victim") << what;
    EXPECT_EQ(modeOf(folder.path("victim")), S_IFREG | 0644U) << what;
    for (int slot = 1; slot < 8; ++slot) {
      const std::string name = temporary.substr(0, temporary.size() - 5) + std::to_string(slot) + ".tmp";
      std::filesystem::create_symlink("victim", folder.path(name));
    }
    const test::Stopwatch full;
    const bool isLeftover = S_ISREG(modeOf(folder.path(temporary))) || modeOf(folder.path(temporary)) == 0;
    EXPECT_EQ(replaceFile(folder.path("a"), "newer", {}).number, isLeftover ? 0 : EEXIST) << what;
    EXPECT_LT(full.elapsed(), isLeftover ? test::kWriting : test::kRefusing) << what;
  }
}

TEST(FileReplacer, ThreadsReplaceOneFileAtOnce) {
  const TemporaryFolder folder;
  std::atomic<int> failures = 0;
  test::onThreads(6, [&](int i) {
    for (int n = 0; n < 40; ++n)
      failures += replaceFile(folder.path("a"), std::string(5000, static_cast<char>('a' + i)), {}).number;
  });
  EXPECT_EQ(failures, 0);
  const std::string read = readFile(folder.path("a"));
  EXPECT_EQ(read, std::string(5000, read.empty() ? '?' : read[0]));
  EXPECT_EQ(namesIn(folder.path()), "a");
}

}  // namespace
}  // namespace quorvel
