#include <cmath>

#include <gtest/gtest.h>
#include <tests/support/PNGFiles.h>
#include <tests/support/TIFFFiles.h>
#include <tiffio.h>

#include <quorvel/Platform/ImageIO/ImageReader.h>

namespace quorvel {
namespace {

using test::Bytes;
using test::TIFFSpec;
using test::TIFFWriter;

constexpr TIFFSpec kSpecs[] = {
    {3, 8, PHOTOMETRIC_RGB, 0, COMPRESSION_NONE, 5, ORIENTATION_TOPLEFT, false, "strips"},
    {3, 8, PHOTOMETRIC_RGB, 0, COMPRESSION_LZW, 100, ORIENTATION_TOPLEFT, false, "one strip"},
    {3, 8, PHOTOMETRIC_RGB, 0, COMPRESSION_ADOBE_DEFLATE, 0, ORIENTATION_TOPLEFT, false, "tiles"},
    {3, 8, PHOTOMETRIC_RGB, 0, COMPRESSION_PACKBITS, 7, ORIENTATION_RIGHTTOP, false, "turned: as stored"},
    {3, 8, PHOTOMETRIC_RGB, 0, COMPRESSION_NONE, 7, ORIENTATION_BOTRIGHT, false, "upside down: as stored"},
    {3, 8, PHOTOMETRIC_RGB, 0, COMPRESSION_LZW, 9, ORIENTATION_TOPLEFT, true, "a plane for each colour"},
    {3, 16, PHOTOMETRIC_RGB, 0, COMPRESSION_LZW, 9, ORIENTATION_TOPLEFT, false, "16 bits"},
    {4, 8, PHOTOMETRIC_RGB, EXTRASAMPLE_ASSOCALPHA, COMPRESSION_LZW, 9, ORIENTATION_TOPLEFT, false, "alpha"},
    {4, 8, PHOTOMETRIC_RGB, EXTRASAMPLE_UNASSALPHA, COMPRESSION_LZW, 9, ORIENTATION_TOPLEFT, false, "straight alpha"},
    {4, 8, PHOTOMETRIC_RGB, EXTRASAMPLE_UNASSALPHA, COMPRESSION_LZW, 0, ORIENTATION_TOPLEFT, false, "the same, tiles"},
    {1, 8, PHOTOMETRIC_MINISBLACK, 0, COMPRESSION_LZW, 3, ORIENTATION_TOPLEFT, false, "grey"},
    {1, 8, PHOTOMETRIC_MINISWHITE, 0, COMPRESSION_NONE, 3, ORIENTATION_TOPLEFT, false, "white is 0"},
    {1, 16, PHOTOMETRIC_MINISBLACK, 0, COMPRESSION_LZW, 9, ORIENTATION_TOPLEFT, false, "grey of 16 bits"},
    {2, 8, PHOTOMETRIC_MINISBLACK, EXTRASAMPLE_ASSOCALPHA, COMPRESSION_LZW, 9, ORIENTATION_TOPLEFT, false,
     "with alpha"},
    {2, 8, PHOTOMETRIC_MINISBLACK, EXTRASAMPLE_UNASSALPHA, COMPRESSION_LZW, 9, ORIENTATION_TOPLEFT, false, "straight"},
    {2, 8, PHOTOMETRIC_MINISWHITE, EXTRASAMPLE_UNASSALPHA, COMPRESSION_LZW, 0, ORIENTATION_TOPLEFT, false, "in tiles"},
    {2, 16, PHOTOMETRIC_MINISBLACK, EXTRASAMPLE_UNASSALPHA, COMPRESSION_LZW, 9, ORIENTATION_TOPLEFT, false, "deep"},
    {2, 8, PHOTOMETRIC_MINISBLACK, EXTRASAMPLE_UNASSALPHA, COMPRESSION_LZW, 9, ORIENTATION_TOPLEFT, true, "planes"},
    {1, 16, PHOTOMETRIC_MINISBLACK, 0, COMPRESSION_LZW, 0, ORIENTATION_TOPLEFT, false, "deep, in tiles"},
    {2, 8, PHOTOMETRIC_MINISBLACK, 0, COMPRESSION_LZW, 0, ORIENTATION_TOPLEFT, false, "a sample of another kind"},
    {4, 8, PHOTOMETRIC_SEPARATED, 0, COMPRESSION_LZW, 9, ORIENTATION_TOPLEFT, false, "four inks"},
};
constexpr std::uint32_t kWidth = test::kTIFFWidth;
constexpr std::uint32_t kHeight = test::kTIFFHeight;

std::uint32_t expectedPixel(const TIFFSpec& spec, std::uint32_t x, std::uint32_t y) {
  const unsigned alpha = spec.alpha ? test::sample(spec, x, y, spec.samples - 1U) : 255;
  std::uint32_t pixel = alpha << 24;
  for (unsigned c = 0; c < 3; ++c) {
    double value = test::sample(spec, x, y, spec.samples < 3 ? 0 : c);
    if (spec.photometric == PHOTOMETRIC_MINISWHITE) value = 255 - value;
    if (spec.photometric == PHOTOMETRIC_SEPARATED) {
      value = std::floor((255 - value) * (255 - test::sample(spec, x, y, 3)) / 255);
    }
    if (spec.alpha == EXTRASAMPLE_UNASSALPHA) value = value * alpha / 255;
    pixel |= static_cast<std::uint32_t>(std::lround(value)) << (16 - 8 * c);
  }
  return pixel;
}

std::shared_ptr<CGBitmap> read(const Bytes& file, PixelSize wanted = {kWidth, kHeight}) {
  return readPixels(file, test::factsOf(ImageFormat::TIFF, kWidth, kHeight), wanted);
}

std::uint32_t rightRows(const CGBitmap& bitmap, const TIFFSpec& spec) {
  return test::rightRows(bitmap, [&spec](std::uint32_t x, std::uint32_t y) { return expectedPixel(spec, x, y); });
}

TEST(TIFFReader, ReadsTheFirstPageAsItIsStored) {
  for (const TIFFSpec& spec : kSpecs) {
    const Bytes file = test::tiffFile(spec);
    const auto bitmap = read(file);
    ASSERT_TRUE(bitmap) << spec.why;
    EXPECT_EQ(rightRows(*bitmap, spec), kHeight) << spec.why;
    EXPECT_TRUE(read(file, {5, 6})) << spec.why;
  }
  EXPECT_FALSE(readPixels(test::tiffFile(kSpecs[0]), test::factsOf(ImageFormat::TIFF, kWidth, kHeight + 1), {5, 5}));
}

TEST(TIFFReader, GivesTheStripsBeforeADamagedOne) {
  Bytes file = test::tiffFile(kSpecs[6]);
  const std::size_t offset = test::lastStrip(file);
  std::fill_n(file.begin() + static_cast<std::ptrdiff_t>(offset), 8, std::uint8_t{0xFF});
  const auto bitmap = read(file);
  ASSERT_TRUE(bitmap);
  EXPECT_EQ(rightRows(*bitmap, kSpecs[6]), 36U);
  EXPECT_EQ(test::pixelOf(*bitmap, 3, 40), 0U);
}

TEST(TIFFReader, SurvivesEveryCutAndFlippedByteWithoutAWord) {
  testing::internal::CaptureStderr();
  for (const std::size_t which : {0U, 2U, 8U}) {
    const Bytes file = test::tiffFile(kSpecs[which]);
    for (std::size_t i = 0; i < file.size(); ++i) {
      if (i > 64 && i + 400 < file.size() && i % 37 != 0) continue;
      Bytes damaged = file;
      damaged[i] ^= 0xFF;
      (void)read(damaged, {5, 7});
      (void)read(test::beginning(file, i), {5, 7});
    }
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

/// A file of these sides with one strip of eight bytes.
Bytes declared(std::uint32_t width, std::uint32_t height) {
  TIFFWriter writer(true);
  return writer.file(
      writer.add({writer.longs(TIFFTAG_IMAGEWIDTH, {width}), writer.longs(TIFFTAG_IMAGELENGTH, {height}),
                  writer.shorts(TIFFTAG_BITSPERSAMPLE, {8}), writer.shorts(TIFFTAG_COMPRESSION, {COMPRESSION_PACKBITS}),
                  writer.shorts(TIFFTAG_PHOTOMETRIC, {PHOTOMETRIC_MINISBLACK}), writer.longs(TIFFTAG_STRIPOFFSETS, {8}),
                  writer.shorts(TIFFTAG_SAMPLESPERPIXEL, {1}), writer.longs(TIFFTAG_ROWSPERSTRIP, {height}),
                  writer.longs(TIFFTAG_STRIPBYTECOUNTS, {8})}));
}

TEST(TIFFReader, TakesNoMemoryForWhatAFileOnlyDeclares) {
  for (const std::uint32_t side : {1'000U, 9'999U, 32'767U, 4'000'000'000U}) {
    EXPECT_FALSE(readPixels(declared(side, side), test::factsOf(ImageFormat::TIFF, side, side), {10, 10})) << side;
  }
}

}  // namespace
}  // namespace quorvel
