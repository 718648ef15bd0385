#include <gtest/gtest.h>
#include <tests/support/ImageFiles.h>
#include <tests/support/Row.h>

#include <quorvel/Extensions/UIKit/NSData+ImageDetect.h>
#include <quorvel/Extensions/UIKit/NSData+ImageFormat.h>

namespace quorvel {
namespace {

using namespace test;

TEST(NSDataImageFormat, SignaturesByFourBytesOfFive) {
  const Row<FileBytes, bool, bool, Why> rows[] = {
      {{0xFF, 0xD8, 0xFF, 0xE0}, false, false, "four bytes are too few"},
      {{0xFF, 0xD8, 0xFF, 0xE0, 0x77}, true, false, "and any fifth will do"},
      {{0xFF, 0xD8, 0xFE, 0xE0, 0}, false, false, "the third byte counts"},
      {{0x89, 'P', 'N', 'G'}, false, false, "four bytes are too few"},
      {{0x89, 'P', 'N', 'G', 0}, false, true, "the rest of the mark is not compared"},
      {{0x88, 'P', 'N', 'G', '\r'}, false, false, "the first byte counts"},
      {{0, 0x89, 'P', 'N', 'G', '\r'}, false, false, "at the beginning only"},
      {textBytes("GIF89a"), false, false, "an image of another kind"},
      {{}, false, false, "nothing"},
  };
  for (const auto& [bytes, isJPEG, isOther, why] : rows) {
    const Data data(bytes);
    EXPECT_EQ(isJPG(data), isJPEG) << why;
    EXPECT_EQ(isPNG(data), isOther) << why;
    EXPECT_EQ(isImageData(data), isJPEG || isOther) << why;
  }
}

TEST(NSDataImageFormat, SixMarkersOfAllBeginAJPEG) {
  std::vector<int> accepted;
  for (int marker = 0; marker < 256; ++marker) {
    if (isJPG(Data(FileBytes{0xFF, 0xD8, 0xFF, static_cast<std::uint8_t>(marker), 0}))) accepted.push_back(marker);
  }
  EXPECT_EQ(accepted, (std::vector{0xDB, 0xE0, 0xE1, 0xE2, 0xE3, 0xE8}));
}

TEST(NSDataImageFormat, OnlyAGIFOfTwoFramesIsAnimated) {
  const FileBytes frame = gifFrame(2, 2);
  TIFFWriter tiff;
  const auto last = tiff.add({tiff.shorts(256, {1})});
  const Row<FileBytes, bool, Why> rows[] = {
      {gifFile(2, 2, frame), false, "one frame"},
      {gifFile(2, 2, joined({gifLoop(0), frame})), false, "one frame that says that it loops"},
      {gifFile(2, 2, joined({frame, frame})), true, "two frames"},
      {tiff.file(tiff.add({tiff.shorts(256, {1})}, last)), false, "two pages of a TIFF"},
      {webpFile(joined({webpExtended(9, 8, 2), webpFrame(), webpFrame()})), false, "another animation"},
      {textBytes("GIF89a"), false, "a beginning"},
  };
  for (const auto& [bytes, isAnimated, why] : rows) EXPECT_EQ(isAnimatedGIF(Data(bytes)), isAnimated) << why;
}

TEST(NSDataImageFormat, MetadataOfAnImageOrNil) {
  const auto properties = metadata(Data(jpegFile(40, 30, {.segments = jpegExif(exifWithOrientation(6))})));
  ASSERT_TRUE(properties);
  EXPECT_EQ((*properties)[u"PixelWidth"], 40);
  EXPECT_EQ((*properties)[u"Orientation"], 6);
  EXPECT_FALSE(metadata(Data(textBytes("text"))));
  EXPECT_FALSE(metadata(Data(gifFile(2, 2, {})))) << "no image in it";
}

}  // namespace
}  // namespace quorvel
