#include <cmath>
#include <cstring>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <tests/support/JPEGFiles.h>
#include <tests/support/Row.h>
#include <tests/support/TemporaryFolder.h>

#include <quorvel/Platform/ImageIO/CGImageDestination.h>
#include <quorvel/Platform/ImageIO/JPEGReader.h>

namespace quorvel {
namespace {

using test::Samples;
using test::TemporaryFolder;

std::shared_ptr<CGBitmap> bitmapOf(const Samples& samples, std::uint8_t alpha = 255) {
  auto bitmap = CGBitmap::make(samples.width, samples.height);
  for (std::uint32_t y = 0; y < samples.height; ++y) {
    for (std::uint32_t x = 0; x < samples.width; ++x) {
      const std::uint8_t* const from = samples.row(y) + std::size_t{x} * 3;
      const std::uint8_t pixel[4] = {from[2], from[1], from[0], alpha};
      std::memcpy(bitmap->row(y) + std::size_t{x} * 4, pixel, 4);
    }
  }
  return bitmap;
}

double meanDifference(const Samples& a, const Samples& b) {
  double sum = 0;
  for (std::size_t i = 0; i < a.bytes.size(); ++i) sum += std::abs(a.bytes[i] - b.bytes[i]);
  return sum / static_cast<double>(a.bytes.size());
}

NSURL urlOf(const std::string& path) { return *NSURL::fileURLWithPath(*String::fromUTF8(path)); }

TEST(EncodeJPEG, KeepsThePictureAsQualityAsks) {
  const Samples picture = test::photograph(201, 99);
  const auto bitmap = bitmapOf(picture);
  std::size_t previous = 0;
  double worst = 256;
  for (const double quality : {0.0, 0.5, kJPEGQuality, 1.0}) {
    const auto file = encodeJPEG(*bitmap, quality);
    ASSERT_TRUE(file);
    const Samples decoded = test::decodeWhole(file->bytes());
    ASSERT_EQ(decoded.width, 201U);
    ASSERT_EQ(decoded.height, 99U);
    const double difference = meanDifference(picture, decoded);
    EXPECT_LT(difference, worst) << quality;
    EXPECT_GT(file->size(), previous) << quality;
    previous = file->size();
    worst = difference;
  }
  EXPECT_LT(worst, 2);
  EXPECT_EQ(encodeJPEG(*bitmap)->bytes().size(), encodeJPEG(*bitmap, 0.8)->bytes().size());
  EXPECT_EQ(*encodeJPEG(*bitmap, -3), *encodeJPEG(*bitmap, 0));
  EXPECT_EQ(*encodeJPEG(*bitmap, HUGE_VAL), *encodeJPEG(*bitmap, 1));
  EXPECT_EQ(*encodeJPEG(*bitmap, std::nan("")), *encodeJPEG(*bitmap, 0));
  // More than the first block of memory, so that it grows.
  EXPECT_LT(meanDifference(test::photograph(900, 700),
                           test::decodeWhole(encodeJPEG(*bitmapOf(test::photograph(900, 700)), 1)->bytes())),
            2);
}

TEST(EncodeJPEG, ClearPixelsLieOverBlack) {
  const Samples gray{16, 16, 3, std::vector<std::uint8_t>(16 * 16 * 3, 100)};
  EXPECT_EQ(*encodeJPEG(*bitmapOf(gray, 128)), *encodeJPEG(*bitmapOf(gray, 255)));
}

struct TargetRow {
  StringView url;
  StringView type;
  std::size_t count;
  bool isTaken;
};

TEST(CGImageDestination, TakesFileURLsAndOneJPEG) {
  const TargetRow rows[] = {
      {u"file:///tmp/a.jpg", kUTTypeJPEG, 1, true},    {u"file:///tmp/a.png", kUTTypeJPEG, 1, true},
      {u"file:///tmp/a.jpg", u"public.png", 1, false}, {u"file:///tmp/a.jpg", kUTTypeJPEG, 2, false},
      {u"file:///tmp/a.jpg", kUTTypeJPEG, 0, false},   {u"https://example.com/a", kUTTypeJPEG, 1, false},
      {u"/tmp/a.jpg", kUTTypeJPEG, 1, false},          {u"file:", kUTTypeJPEG, 1, false},
      {u"file:///tmp/%00.jpg", kUTTypeJPEG, 1, false}, {u"FILE:///tmp/a.jpg", kUTTypeJPEG, 1, true},
  };
  for (const auto& [url, type, count, isTaken] : rows) {
    EXPECT_EQ(CGImageDestination::withURL(*NSURL::withString(url), type, count).has_value(), isTaken)
        << String(url) << " " << count;
  }
}

TEST(CGImageDestination, ReplacesTheWholeFileOrNothing) {
  const TemporaryFolder folder;
  const std::string path = folder.path("photo.jpg");
  test::writeFile(path, "old");
  ::chmod(path.c_str(), 0640);
  const CGImage image(bitmapOf(test::photograph(300, 200)));

  auto writer = CGImageDestination::withURL(urlOf(path), kUTTypeJPEG, 1);
  ASSERT_TRUE(writer);
  EXPECT_FALSE(writer->finalize()) << "no image";
  writer->addImage(CGImage());
  EXPECT_FALSE(writer->finalize()) << "no pixels";
  EXPECT_EQ(test::readFile(path), "old");
  writer->addImage(image);
  EXPECT_TRUE(writer->finalize());
  const std::string bytes = test::readFile(path);
  EXPECT_EQ(bytes.size(), encodeJPEG(image.bitmap())->size());
  EXPECT_EQ(test::modeOf(path), S_IFREG | 0640U);
  EXPECT_EQ(test::namesIn(folder.path()), "photo.jpg");

  writer = CGImageDestination::withURL(urlOf(folder.path("none/photo.jpg")), kUTTypeJPEG, 1);
  writer->addImage(image);
  EXPECT_FALSE(writer->finalize()) << "no folder";
}

}  // namespace
}  // namespace quorvel
