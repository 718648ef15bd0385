#include <gtest/gtest.h>
#include <tests/support/HEIFFiles.h>
#include <tests/support/PNGFiles.h>

#include <quorvel/Platform/ImageIO/HEIFDecoders.h>
#include <quorvel/Platform/ImageIO/ImageReader.h>

namespace quorvel {
namespace {

using test::Bytes;
using test::heifFile;
using test::heifSample;

constexpr int kWidth = test::kHEIFWidth;
constexpr int kHeight = test::kHEIFHeight;

std::shared_ptr<CGBitmap> read(const Bytes& file, PixelSize wanted, std::uint32_t width = kWidth,
                               std::uint32_t height = kHeight) {
  return readPixels(file, test::factsOf(ImageFormat::HEIC, width, height), wanted);
}

constexpr heif_compression_format kFormats[] = {heif_compression_HEVC, heif_compression_AV1};

/// The greatest distance of a channel from the premultiplied samples.
int distance(const CGBitmap& bitmap, bool hasAlpha, bool isGray = false) {
  int greatest = 0;
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      const int alpha = hasAlpha ? heifSample(x, y, 3) : 255;
      const std::uint32_t pixel = test::pixelOf(bitmap, static_cast<std::size_t>(x), static_cast<std::size_t>(y));
      for (int c = 0; c < 3; ++c) {
        const int got = static_cast<int>(pixel >> (16 - 8 * c) & 0xFF);
        greatest = std::max(greatest, std::abs(got - heifSample(x, y, isGray ? 0 : c) * alpha / 255));
      }
      greatest = std::max(greatest, std::abs(static_cast<int>(pixel >> 24) - alpha));
    }
  }
  return greatest;
}

TEST(HEIFReader, ReadsThePrimaryImage) {
  for (const heif_compression_format format : kFormats) {
    for (const bool hasAlpha : {false, true}) {
      const Bytes& file = heifFile(format, hasAlpha);
      ASSERT_FALSE(file.empty());
      const auto bitmap = read(file, {kWidth, kHeight});
      ASSERT_TRUE(bitmap) << format;
      EXPECT_LE(distance(*bitmap, hasAlpha), 14) << format << hasAlpha;
      EXPECT_TRUE(read(file, {8, 6}));
      EXPECT_FALSE(read(file, {8, 6}, kWidth + 1)) << "another size than the facts'";
    }
  }
}

TEST(HEIFReader, ReadsSamplesOfTenBits) {
  for (const heif_compression_format format : kFormats) {
    const Bytes file = test::deepHEIFFile(format);
    const auto bitmap = read(file, {kWidth, kHeight});
    ASSERT_TRUE(bitmap) << format;
    EXPECT_LE(distance(*bitmap, false, true), 3) << format;
  }
}

/// The place of the box with the picture's sides, which comes after its name.
std::size_t sidesIn(const Bytes& file) {
  const std::string_view text(reinterpret_cast<const char*>(file.data()), file.size());
  return text.find("ispe") + 8;
}

TEST(HEIFReader, TakesNoMemoryForWhatAFileOnlyDeclares) {
  for (const unsigned exponent : {8U, 7U, 6U}) {
    Bytes file = heifFile(heif_compression_HEVC, false);
    const std::size_t at = sidesIn(file);
    // Both sides 2^15, 2^14 and 2^13; 2^13 squared is within the limits, but is not what the picture has.
    for (const std::size_t side : {at, at + 4}) {
      file[side + 2] = static_cast<std::uint8_t>(1U << (exponent - 1));
      file[side + 3] = 0;
    }
    const std::uint32_t side = 1U << (exponent + 7);
    EXPECT_FALSE(read(file, {10, 10}, side, side));
  }
}

/// A unit of AV1 that begins a sequence of still pictures of these sides.
Bytes av1Sequence(std::uint32_t width, std::uint32_t height, bool tellsLength = true) {
  std::vector<bool> bits;
  const auto put = [&bits](std::uint32_t value, unsigned count) {
    while (count-- > 0) bits.push_back(value >> count & 1);
  };
  put(0b000'1'1, 5);  // profile, still, reduced
  put(0, 5);
  put(0xFF, 8);  // both sides take 16 bits
  put(width - 1, 16);
  put(height - 1, 16);
  put(0, 14);
  put(1, 1);
  bits.resize((bits.size() + 7) / 8 * 8);
  Bytes unit = {static_cast<std::uint8_t>(tellsLength ? 0x0A : 0x08)};
  if (tellsLength) unit.push_back(static_cast<std::uint8_t>(bits.size() / 8));
  for (std::size_t i = 0; i < bits.size(); ++i) {
    if (i % 8 == 0) unit.push_back(0);
    unit.back() = static_cast<std::uint8_t>(unit.back() | (bits[i] ? 0x80U >> i % 8 : 0U));
  }
  return unit;
}

TEST(HEIFReader, RefusesAV1BeyondTheLimits) {
  const auto both = [](Bytes first, const Bytes& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
  };
  const Bytes delimiter = {0x12, 0};
  const std::tuple<Bytes, bool, const char*> rows[] = {
      {av1Sequence(64, 64), true, "small"},
      {av1Sequence(32'766, 3'000), true, "as long as may be"},
      {av1Sequence(32'767, 1), false, "longer"},
      {av1Sequence(1, 65'536), false, "higher"},
      {av1Sequence(10'000, 10'001), false, "more pixels"},
      {both(delimiter, av1Sequence(65'536, 65'536)), false, "behind another unit"},
      {both(av1Sequence(64, 64), av1Sequence(65'536, 65'536)), false, "behind a small one"},
      {both(av1Sequence(64, 64), av1Sequence(65'536, 65'536, false)), true, "without a length, libaom takes none"},
      {{0x0A}, true, "nothing declared"},
      {{0x0A, 0x80}, true, "a length that does not end"},
      {{}, true, "nothing at all"},
  };
  for (const auto& [stream, isWithin, why] : rows) EXPECT_EQ(isAV1WithinLimits(stream), isWithin) << why;
}

TEST(HEIFReader, SurvivesEveryCutAndFlippedByteInSilence) {
  const Bytes* const files[] = {&heifFile(heif_compression_HEVC, false), &heifFile(heif_compression_AV1, false),
                                &heifFile(heif_compression_AV1, true)};
  for (std::size_t format = 0; format < std::size(files); ++format) {
    const Bytes& file = *files[format];
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    int shown = 0;
    for (std::size_t i = 0; i < file.size(); ++i) {
      if (i > 900 && i % 211 != 0) continue;
      for (const unsigned flipped : {0xFFU, 0x01U, 0x80U}) {
        Bytes damaged = file;
        damaged[i] ^= static_cast<std::uint8_t>(flipped);
        shown += read(damaged, {5, 7}) != nullptr;
      }
      (void)read(test::beginning(file, i), {5, 7});
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "") << format;
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << format;
    EXPECT_GT(shown, 100) << format << ": the decoder itself must have seen damage";
  }
}

}  // namespace
}  // namespace quorvel
