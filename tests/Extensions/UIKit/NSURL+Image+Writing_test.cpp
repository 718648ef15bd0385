#include <cmath>
#include <csignal>
#include <cstdlib>
#include <random>

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <tests/support/Crowd.h>
#include <tests/support/ImageFiles.h>
#include <tests/support/JPEGFiles.h>
#include <tests/support/TemporaryFolder.h>

#include <quorvel/Extensions/UIKit/NSURL+Image+Writing.h>

namespace quorvel {
namespace {

using test::readFile;
using test::Samples;
using test::TemporaryFolder;
using test::writeFile;

NSURL urlOf(const std::string& path) { return *NSURL::fileURLWithPath(*String::fromUTF8(path)); }

std::string fileOf(const Samples& picture, const test::JPEGKind& kind = {}) {
  const auto bytes = makeJPEG(picture, kind);
  return {bytes.begin(), bytes.end()};
}

/// The file with EXIF's number of how it was turned.
std::string turned(const std::string& file, unsigned orientation) {
  const auto segment = test::jpegExif(test::exifWithOrientation(static_cast<std::uint16_t>(orientation), true));
  return std::string(file).insert(2, std::string(segment.begin(), segment.end()));
}

Samples decoded(const std::string& path) {
  const std::string file = readFile(path);
  return test::decodeWhole({reinterpret_cast<const std::uint8_t*>(file.data()), file.size()});
}

TEST(ResizeImageAtPixel, MakesTheFileSmallerAndUpright) {
  const TemporaryFolder folder;
  const std::string path = folder.path("photo.png");  // names do not matter
  // The upper half is light.
  Samples picture{400, 300, 3, std::vector<std::uint8_t>(400 * 300 * 3, 30)};
  std::fill(picture.bytes.begin(), picture.bytes.begin() + 400 * 150 * 3, std::uint8_t{220});
  const std::string file = fileOf(picture);
  struct Row {
    unsigned orientation;
    double side;
    std::uint32_t width, height;
    bool isFirstLight, isLastLight;
    const char* why;
  };
  const Row rows[] = {
      {1, 100, 100, 75, true, false, "upright"},
      {1, 100.9, 100, 75, true, false, "whole pixels"},
      {1, 5000, 400, 300, true, false, "never enlarged"},
      {1, 1, 1, 1, false, false, "the least"},
      {3, 100, 100, 75, false, true, "upside down"},
      {6, 100, 75, 100, false, false, "turned by a quarter: light on the right"},
      {8, 100, 75, 100, true, true, "turned the other way: light on the left"},
  };
  for (const auto& [orientation, side, width, height, isFirstLight, isLastLight, why] : rows) {
    writeFile(path, turned(file, orientation));
    EXPECT_TRUE(resizeImageAtPixel(urlOf(path), side)) << why;
    const Samples result = decoded(path);
    EXPECT_EQ(result.width, width) << why;
    EXPECT_EQ(result.height, height) << why;
    EXPECT_EQ(result.bytes.front() > 128, isFirstLight) << why;
    if (width > 1) {
      EXPECT_EQ(result.row(height - 1)[0] > 128, isLastLight) << why;
    }
    EXPECT_TRUE(resizeImageAtPixel(urlOf(path), side)) << "again: " << why;
    EXPECT_EQ(decoded(path).width, width) << "turned once only: " << why;
  }
}

TEST(ResizeImageAtPixel, KeepsLinkAndMode) {
  const TemporaryFolder folder;
  writeFile(folder.path("photo"), fileOf(test::photograph(64, 48)));
  ::chmod(folder.path("photo").c_str(), 0604);
  std::filesystem::create_symlink("photo", folder.path("link"));
  EXPECT_TRUE(resizeImageAtPixel(urlOf(folder.path("link")), 32));
  EXPECT_TRUE(std::filesystem::is_symlink(folder.path("link")));
  EXPECT_EQ(decoded(folder.path("photo")).width, 32U);
  EXPECT_EQ(test::modeOf(folder.path("photo")), S_IFREG | 0604U);
}

TEST(ResizeImageAtPixel, LeavesAloneWhatItCannotDo) {
  const TemporaryFolder folder;
  const std::string path = folder.path("a.jpg");
  const std::string photo = fileOf(test::photograph(64, 48));
  struct Row {
    std::string bytes;
    double side;
    const char* why;
  };
  const Row rows[] = {
      {photo, 0, "no pixel"},
      {photo, 0.99, "no whole pixel"},
      {photo, -3, "negative"},
      {photo, std::nan(""), "no number"},
      {"hello", 100, "no image"},
      {"", 100, "empty"},
      {photo.substr(0, 300), 100, "headers alone"},
  };
  for (const auto& [bytes, side, why] : rows) {
    writeFile(path, bytes);
    EXPECT_FALSE(resizeImageAtPixel(urlOf(path), side)) << why;
    EXPECT_EQ(readFile(path), bytes) << why;
    EXPECT_EQ(test::namesIn(folder.path()), "a.jpg") << why;
  }
  EXPECT_FALSE(resizeImageAtPixel(urlOf(folder.path("absent.jpg")), 100));
  EXPECT_FALSE(resizeImageAtPixel(urlOf(folder.path()), 100));
  EXPECT_FALSE(resizeImageAtPixel(*NSURL::withString(u"https://example.com/a.jpg"), 100));
  EXPECT_EQ(test::namesIn(folder.path()), "a.jpg");
}

TEST(WriteToCGImageFile, WritesOnlyPixels) {
  const TemporaryFolder folder;
  const auto bitmap = CGBitmap::make(5, 4);
  EXPECT_FALSE(writeToCGImageFile(urlOf(folder.path("a.jpg")), CGImage()));
  EXPECT_FALSE(writeToCGImageFile(*NSURL::withString(u"https://example.com/a.jpg"), CGImage(bitmap)));
  EXPECT_EQ(test::namesIn(folder.path()), "");
  EXPECT_TRUE(writeToCGImageFile(urlOf(folder.path("a.jpg")), CGImage(bitmap)));
  EXPECT_EQ(decoded(folder.path("a.jpg")).width, 5U);
  EXPECT_EQ(decoded(folder.path("a.jpg")).row(3)[14], 0) << "clear pixels lie over black";
}

/// A file and what one undisturbed run makes of it.
struct Sample {
  TemporaryFolder folder{};
  std::string path = folder.path("photo.jpg");
  std::string old = fileOf(test::photograph(320, 240));
  std::string made;

  Sample() {
    writeFile(path, old);
    EXPECT_TRUE(resizeImageAtPixel(urlOf(path), 300));
    made = readFile(path);
  }
};

/// A run in a process of its own, after `prepare`.
template <class Prepare>
pid_t start(const std::string& path, Prepare prepare) {
  return test::startChild([&] {
    prepare();
    return resizeImageAtPixel(urlOf(path), 300) ? 0 : 1;
  });
}

TEST(ResizeImageAtPixel, KilledAtAnyMomentTheFileIsOldOrNewSlow) {
  if (!std::getenv("QUORVEL_SLOW_TESTS")) GTEST_SKIP();
  const Sample sample;
  const auto begun = std::chrono::steady_clock::now();
  ASSERT_EQ(test::endOf(start(sample.path, [] {})), 0);
  const auto usual = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - begun);
  std::mt19937 random(5);
  int olds = 0;
  int news = 0;
  for (int round = 0; round < 500; ++round) {
    writeFile(sample.path, sample.old);
    const pid_t child = start(sample.path, [] {});
    const auto delay = static_cast<useconds_t>(random() % (2 * static_cast<unsigned>(usual.count()) + 1));
    ::usleep(delay);
    ::kill(child, SIGKILL);
    static_cast<void>(test::endOf(child));
    const std::string found = readFile(sample.path);
    (found == sample.old ? olds : news) += 1;
    ASSERT_TRUE(found == sample.old || found == sample.made) << round << ", after " << delay << " us";
  }
  EXPECT_GT(olds, 50);
  EXPECT_GT(news, 50);
  ASSERT_TRUE(resizeImageAtPixel(urlOf(sample.path), 300));
  EXPECT_EQ(test::namesIn(sample.folder.path()), "photo.jpg") << "what killed runs left goes with the next";
}

TEST(ResizeImageAtPixel, WithoutRoomTheFileIsTheOldOneSlow) {
  if (!std::getenv("QUORVEL_SLOW_TESTS")) GTEST_SKIP();
  const Sample sample;
  for (std::size_t room = 0; room < sample.made.size(); room += 61) {
    writeFile(sample.path, sample.old);
    const int status = test::endOf(start(sample.path, [room] {
      const rlimit limit{room, room};
      ::signal(SIGXFSZ, SIG_IGN);
      ::setrlimit(RLIMIT_FSIZE, &limit);
    }));
    ASSERT_EQ(status, 1) << room;
    ASSERT_EQ(readFile(sample.path), sample.old) << room;
    ASSERT_EQ(test::namesIn(sample.folder.path()), "photo.jpg") << room;
  }
}

/// What fails first on a full file system of our own; nullptr when all held.
const char* failureOnFullDisk(const Sample& sample, const std::string& place) {
  const std::string path = place + "/photo.jpg";
  writeFile(path, sample.old);
  std::ofstream filler(place + "/filler", std::ios::binary);
  for (int i = 0; i < 1 << 20 && filler.put('x').flush(); ++i) continue;
  filler.close();
  if (resizeImageAtPixel(urlOf(path), 300)) return "a full disk is no success";
  if (readFile(path) != sample.old) return "the old file stays";
  if (test::namesIn(place) != "filler photo.jpg") return "nothing is left behind";
  std::filesystem::remove(place + "/filler");
  if (!resizeImageAtPixel(urlOf(path), 300)) return "with room it works again";
  return readFile(path) == sample.made ? nullptr : "the new file is whole";
}

TEST(ResizeImageAtPixel, OnAFullDiskTheFileIsTheOldOneSlow) {
  if (!std::getenv("QUORVEL_SLOW_TESTS")) GTEST_SKIP();
  const Sample sample;
  const TemporaryFolder place;
  const int status = test::inChild([&] {
    const bool isOurs = ::unshare(CLONE_NEWNS) == 0 || ::unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0;
    static_cast<void>(::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr));
    if (!isOurs || ::mount("none", place.path().c_str(), "tmpfs", 0, "size=256k") != 0) return 77;
    const char* const failure = failureOnFullDisk(sample, place.path());
    if (failure) ADD_FAILURE() << failure;  // printed by this process, counted by its status
    return failure ? 1 : 0;
  });
  if (status == 77) GTEST_SKIP() << "no file system of our own is permitted here";
  EXPECT_EQ(status, 0);
}

}  // namespace
}  // namespace quorvel
