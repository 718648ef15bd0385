#include <gtest/gtest.h>
#include <sys/statvfs.h>
#include <sys/xattr.h>
#include <tests/support/TemporaryFolder.h>

#include <quorvel/Platform/Foundation/NSFileManager.h>

namespace quorvel {
namespace {

using test::modeOf;
using test::readFile;

const NSFileManager kManager = NSFileManager::defaultManager();

String text(const std::string& path) { return String::fromUTF8(path).value(); }

TEST(NSFileManager, CreatesPrivateFilesAndFollowsNothing) {
  const test::TemporaryFolder folder;
  const std::uint8_t bytes[] = {'a', 0, 'b'};
  for (const mode_t mask : {0000U, 0077U}) {
    const test::Umask guard(mask);
    const std::string path = folder.path("f" + std::to_string(mask));
    ASSERT_TRUE(kManager.createFileAtPath(text(path), Data(bytes)));
    EXPECT_EQ(modeOf(path), S_IFREG | 0600U) << std::oct << mask;
    EXPECT_EQ(readFile(path), std::string("a\0b", 3));
    ASSERT_TRUE(kManager.createFileAtPath(text(path), Data(), {{NSFilePosixPermissions, 07644}}));
    EXPECT_EQ(modeOf(path), S_IFREG | 0644U) << std::oct << mask;
    EXPECT_EQ(readFile(path), "");
  }
  EXPECT_FALSE(kManager.createFileAtPath(text(folder.path("none/f")), Data()));
  for (const StringView none :
       {StringView(nil), StringView(u""), StringView(u"/tmp/a\0b", 8), StringView(u"/\xD800")}) {
    EXPECT_FALSE(kManager.createFileAtPath(none, Data()));
    EXPECT_FALSE(kManager.fileExistsAtPath(none));
    EXPECT_FALSE(kManager.attributesOfItemAtPath(none));
  }
}

TEST(NSFileManager, RecordsTheProtectionClass) {
  const test::TemporaryFolder folder;
  const std::string path = folder.path("f");
  const Dictionary protection{{NSFileProtectionKey, NSFileProtectionCompleteUntilFirstUserAuthentication}};
  ASSERT_TRUE(kManager.createFileAtPath(text(path), Data(), protection));
  const bool hasAttributes = ::setxattr(path.c_str(), "user.probe", "", 0, 0) == 0;
  const auto attributes = kManager.attributesOfItemAtPath(text(path));
  ASSERT_TRUE(attributes);
  EXPECT_EQ((*attributes)[NSFileProtectionKey], hasAttributes ? protection[NSFileProtectionKey] : Value(nil));
  ASSERT_TRUE(kManager.createFileAtPath(text(path), Data()));
  EXPECT_EQ((*kManager.attributesOfItemAtPath(text(path)))[NSFileProtectionKey], Value(nil)) << "a new file";
}

TEST(NSFileManager, TellsFactsOfItemsAndVolumes) {
  const test::TemporaryFolder folder;
  test::writeFile(folder.path("f"), "12345");
  ASSERT_EQ(::truncate(folder.path("f").c_str(), 5'000'000'000), 0);
  std::filesystem::create_symlink("f", folder.path("l"));
  std::filesystem::create_symlink("nowhere", folder.path("dangling"));
  ASSERT_EQ(::mkfifo(folder.path("p").c_str(), 0600), 0);
  const auto attribute = [&](const char* name, StringView key) {
    const auto attributes = kManager.attributesOfItemAtPath(text(folder.path(name)));
    return attributes ? (*attributes)[key] : Value(nil);
  };
  EXPECT_EQ(attribute("f", NSFileSize), std::int64_t{5'000'000'000}) << "beyond 32 bits";
  EXPECT_EQ(attribute("l", NSFileSize), 1) << "the link's own size";
  EXPECT_EQ(attribute("f", NSFileType), Value(NSFileTypeRegular));
  EXPECT_EQ(attribute("l", NSFileType), Value(NSFileTypeSymbolicLink));
  EXPECT_EQ(attribute("", NSFileType), Value(NSFileTypeDirectory));
  EXPECT_EQ(attribute("p", NSFileType), Value(NSFileTypeUnknown));
  EXPECT_TRUE(kManager.fileExistsAtPath(text(folder.path("l"))));
  EXPECT_FALSE(kManager.fileExistsAtPath(text(folder.path("dangling"))));
  FileError error;
  EXPECT_FALSE(kManager.attributesOfItemAtPath(text(folder.path("none")), &error));
  EXPECT_EQ(error.number, ENOENT);

  struct statvfs volume{};
  ASSERT_EQ(::statvfs("/proc", &volume), 0);
  const auto none = kManager.attributesOfFileSystemForPath(u"/proc");
  ASSERT_TRUE(none);
  // Where /proc is not mounted it is an empty folder of an ordinary volume.
  const bool hasNoBlocks = volume.f_blocks == 0;
  EXPECT_EQ((*none)[NSFileSystemFreeSize] == Value(0), hasNoBlocks) << "a volume without blocks";
  EXPECT_FALSE(kManager.attributesOfFileSystemForPath(text(folder.path("none")), &error));
}

TEST(NSFileManager, DocumentsAreWhereTheUserKeepsThem) {
  const test::TemporaryFolder folder;
  const test::Environment home("HOME", folder.path());
  const test::Environment configuration("XDG_CONFIG_HOME", std::nullopt);
  const auto path = [](bool expandTilde) {
    const auto paths = NSSearchPathForDirectoriesInDomains(NSDocumentDirectory, NSUserDomainMask, expandTilde);
    return paths.size() == 1 ? paths[0].toUTF8Replacing() : std::to_string(paths.size());
  };
  EXPECT_EQ(path(true), folder.path("Documents"));
  EXPECT_EQ(path(false), "~/Documents");
  test::writeFile(folder.path(".config/user-dirs.dirs"), "XDG_DOCUMENTS_DIR=\"$HOME-too/한 글\"\n");
  EXPECT_EQ(path(false), "~/Documents") << "the home folder's name goes on: no folder in it";
  test::writeFile(folder.path(".config/user-dirs.dirs"), "XDG_DOCUMENTS_DIR=\"" + folder.path() + "x/한 글\"\n");
  EXPECT_EQ(path(false), folder.path() + "x/한 글");
  const auto urls = kManager.URLsForDirectory(NSDocumentDirectory, NSUserDomainMask);
  ASSERT_EQ(urls.size(), 1U);
  EXPECT_EQ(urls[0].path(), text(folder.path() + "x/한 글"));
  EXPECT_TRUE(kManager.URLsForDirectory(8, NSUserDomainMask).empty());
  EXPECT_TRUE(kManager.URLsForDirectory(NSDocumentDirectory, 2).empty());
  test::writeFile(folder.path(".config/user-dirs.dirs"), "XDG_DOCUMENTS_DIR=\"/\xFF\"\n");
  EXPECT_TRUE(kManager.URLsForDirectory(NSDocumentDirectory, NSUserDomainMask).empty()) << "a path that is no text";
}

TEST(NSFileHandle, OpensRegularFilesOnlyAndAtOnce) {
  const test::TemporaryFolder folder;
  test::writeFile(folder.path("victim"), "bytes");
  FileError error;
  const auto file = NSFileHandle::fileHandleForReadingAtPath(text(folder.path("victim")), &error);
  ASSERT_TRUE(file);
  EXPECT_EQ(file->readDataToEndOfFile(5)->size(), 5U);
  EXPECT_FALSE(file->readDataToEndOfFile(4, &error));
  EXPECT_EQ(error.number, EFBIG);
  for (const auto& [what, plant] : test::kPlanted) {
    std::filesystem::remove_all(folder.path("path"));
    plant(folder.path("path"), folder.path("victim"));
    const test::Stopwatch watch;
    const bool isFile = S_ISREG(modeOf(folder.path("path")));
    EXPECT_EQ(NSFileHandle::fileHandleForReadingAtPath(text(folder.path("path"))).has_value(), isFile) << what;
    EXPECT_LT(watch.elapsed(), test::kRefusing) << what;
  }
}

}  // namespace
}  // namespace quorvel
