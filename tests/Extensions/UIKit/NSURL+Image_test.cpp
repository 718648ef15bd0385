#include <gtest/gtest.h>
#include <tests/support/ImageFiles.h>
#include <tests/support/TemporaryFolder.h>

#include <quorvel/Extensions/UIKit/NSURL+Image.h>
#include <quorvel/Extensions/UIKit/NSURL+ImageDetect.h>
#include <quorvel/Extensions/UIKit/UIImage+Tools+Files.h>

namespace quorvel {
namespace {

using namespace test;

class NSURLImage : public testing::Test {
 protected:
  NSURL write(const FileBytes& bytes) {
    writeFile(folder_.path("an image"), {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    return *NSURL::fileURLWithPath(String::fromUTF8(folder_.path("an image")));
  }

  TemporaryFolder folder_;
};

TEST_F(NSURLImage, IsImageByTheFirstBytesOfAFile) {
  EXPECT_TRUE(isImage(write(jpegFile(4, 3, {.segments = jpegSegment(0xE0, {})}))));
  EXPECT_TRUE(isImage(write({0x89, 'P', 'N', 'G', 0})));
  EXPECT_FALSE(isImage(write({0x89, 'P', 'N', 'G'}))) << "four bytes";
  EXPECT_FALSE(isImage(write(gifFile(4, 3, gifFrame(4, 3))))) << "an image of another kind";
  EXPECT_FALSE(isImage(write({})));
  const NSURL url = write(pngFile(4, 3));
  EXPECT_TRUE(isImage(url));
  EXPECT_FALSE(isImage(*NSURL::withString(u"http://h/a.png")));
  EXPECT_FALSE(isImage(url.byDeletingLastPathComponent())) << "a folder";
  EXPECT_FALSE(isImage(*NSURL::fileURLWithPath(u"/dev/zero"))) << "a device";
  EXPECT_FALSE(isImage(*NSURL::fileURLWithPath(u"/nowhere/at/all")));
}

TEST_F(NSURLImage, SizesAreThoseStored) {
  const FileBytes turned = jpegFile(40, 30, {.segments = jpegExif(exifWithOrientation(6))});
  EXPECT_EQ(imageFileDimensionSize(write(turned)), (CGSize{40, 30})) << "whatever the orientation";
  EXPECT_EQ(imageFileDimensionSize(write(pngFile(60'000, 60'000))), (CGSize{60'000, 60'000})) << "beyond the limits";
  ByteWriter late;
  late.u16(0x21FE);
  for (int i = 0; i < 30; ++i) late.u8(200).zeros(200);
  late.u8(0).add(gifFrame(4, 3));
  EXPECT_EQ(imageFileDimensionSize(write(gifFile(9, 7, late.file))), (CGSize{9, 7}))
      << "a frame behind what is read first";
  const FileBytes still = joined({webpExtended(9, 7, 0), webpChunk("ICCP", FileBytes(6'000)), webpLossy(9, 7)});
  EXPECT_EQ(imageFileDimensionSize(write(webpFile(still))), (CGSize{9, 7})) << "the same of a WebP";
  EXPECT_EQ(imageFileDimensionSize(write(gifFile(9, 7, {}))), CGSize()) << "a canvas without a frame";
  EXPECT_EQ(imageFileDimensionSize(write(webpFile(webpExtended(9, 7, 2)))), CGSize()) << "an animation without one";
  EXPECT_EQ(imageFileDimensionSize(write(textBytes("%PDF-1.4"))), CGSize()) << "unknown";
  EXPECT_EQ(imageFileDimensionSize(write(textBytes("text"))), CGSize());
  EXPECT_EQ(imageFileDimensionSize(*NSURL::withString(u"http://h/a.png")), CGSize());
}

TEST_F(NSURLImage, NoSmallImageOfWhatIsNone) {
  write(pngFile(60'000, 60'000));
  EXPECT_FALSE(UIImageTools::imageWithFilePath(nil, 100));
  EXPECT_FALSE(UIImageTools::imageWithFilePath(u"", 100));
  EXPECT_FALSE(UIImageTools::imageWithFilePath(u"/nowhere/at/all", 100));
  EXPECT_FALSE(UIImageTools::imageWithFilePath(String::fromUTF8(folder_.path("an image")), 100)) << "beyond the limits";
}

}  // namespace
}  // namespace quorvel
