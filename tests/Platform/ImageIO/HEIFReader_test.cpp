#include <cmath>
#include <map>

#include <gtest/gtest.h>
#include <libheif/heif.h>
#include <tests/support/PNGFiles.h>

#include <quorvel/Platform/ImageIO/ImageReader.h>

/// What the encoder and the decoder of damaged pictures leave is not ours to free.
extern "C" const char* __lsan_default_suppressions() { return "leak:libx265\nleak:libdav1d\n"; }

namespace quorvel {
namespace {

using test::Bytes;

constexpr int kWidth = 80;
constexpr int kHeight = 64;

/// Straight red, green, blue, alpha.
std::uint8_t sample(int x, int y, int channel) {
  if (channel == 3) return static_cast<std::uint8_t>(255 - x * 2);
  const double wave = std::sin(x * 0.08 + channel) * std::cos(y * 0.06);
  return static_cast<std::uint8_t>(120 + 100 * wave);
}

heif_image* colors(bool hasAlpha) {
  const int channels = hasAlpha ? 4 : 3;
  heif_image* image = nullptr;
  const heif_chroma order = hasAlpha ? heif_chroma_interleaved_RGBA : heif_chroma_interleaved_RGB;
  heif_image_create(kWidth, kHeight, heif_colorspace_RGB, order, &image);
  heif_image_add_plane(image, heif_channel_interleaved, kWidth, kHeight, 8);
  int bytesPerRow = 0;
  std::uint8_t* const plane = heif_image_get_plane(image, heif_channel_interleaved, &bytesPerRow);
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      for (int c = 0; c < channels; ++c) plane[y * bytesPerRow + channels * x + c] = sample(x, y, c);
    }
  }
  return image;
}

/// The red samples as greys of ten bits, each in two bytes, between planes of no colour at half the width.
heif_image* deepGrays() {
  heif_image* image = nullptr;
  heif_image_create(kWidth, kHeight, heif_colorspace_YCbCr, heif_chroma_422, &image);
  for (const heif_channel channel : {heif_channel_Y, heif_channel_Cb, heif_channel_Cr}) {
    const int step = channel == heif_channel_Y ? 1 : 2;
    heif_image_add_plane(image, channel, kWidth / step, kHeight, 10);
    int bytesPerRow = 0;
    std::uint8_t* const plane = heif_image_get_plane(image, channel, &bytesPerRow);
    for (int y = 0; y < kHeight; ++y) {
      for (int x = 0; x < kWidth / step; ++x) {
        const int value = step == 1 ? (sample(x, y, 0) * 1023 + 127) / 255 : 512;
        plane[y * bytesPerRow + 2 * x] = static_cast<std::uint8_t>(value);
        plane[y * bytesPerRow + 2 * x + 1] = static_cast<std::uint8_t>(value >> 8);
      }
    }
  }
  return image;
}

/// What an encoder makes of the picture; empty where the library has none.
Bytes encoded(heif_compression_format format, heif_image* image) {
  heif_context* const context = heif_context_alloc();
  heif_encoder* encoder = nullptr;
  Bytes file;
  if (heif_context_get_encoder_for_format(context, format, &encoder).code == 0) {
    heif_encoder_set_lossy_quality(encoder, 95);
    heif_encoder_set_logging_level(encoder, 0);
    const bool isHalved = heif_image_get_chroma_format(image) == heif_chroma_422;
    if (isHalved) heif_encoder_set_parameter_string(encoder, "chroma", "422");
    heif_context_encode_image(context, image, encoder, nullptr, nullptr);
    heif_writer writer{1, [](heif_context*, const void* bytes, std::size_t size, void* to) {
                         const auto* const from = static_cast<const std::uint8_t*>(bytes);
                         static_cast<Bytes*>(to)->assign(from, from + size);
                         return heif_error{heif_error_Ok, heif_suberror_Unspecified, ""};
                       }};
    heif_context_write(context, &writer, &file);
    heif_encoder_release(encoder);
  }
  heif_image_release(image);
  heif_context_free(context);
  return file;
}

const Bytes& heifFile(heif_compression_format format, bool hasAlpha) {
  static std::map<std::pair<int, bool>, Bytes> made;
  Bytes& file = made[{format, hasAlpha}];
  if (file.empty()) file = encoded(format, colors(hasAlpha));
  return file;
}

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
      const int alpha = hasAlpha ? sample(x, y, 3) : 255;
      const std::uint32_t pixel = test::pixelOf(bitmap, static_cast<std::size_t>(x), static_cast<std::size_t>(y));
      for (int c = 0; c < 3; ++c) {
        const int got = static_cast<int>(pixel >> (16 - 8 * c) & 0xFF);
        greatest = std::max(greatest, std::abs(got - sample(x, y, isGray ? 0 : c) * alpha / 255));
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
    const Bytes file = encoded(format, deepGrays());
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

TEST(HEIFReader, SurvivesEveryCutAndFlippedByteInSilence) {
  for (const heif_compression_format format : kFormats) {
    const Bytes& file = heifFile(format, false);
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
      (void)read(Bytes(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(i)), {5, 7});
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "") << format;
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << format;
    EXPECT_GT(shown, 100) << format << ": the decoder itself must have seen damage";
  }
}

}  // namespace
}  // namespace quorvel
