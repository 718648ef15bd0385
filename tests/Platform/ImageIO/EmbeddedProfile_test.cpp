#include <cstdlib>
#include <vector>

#include <gtest/gtest.h>
#include <tests/support/PNGFiles.h>
#include <tests/support/Profiles.h>
#include <webp/encode.h>

#include <quorvel/Platform/ImageIO/ImageReader.h>
#include <quorvel/Platform/ImageIO/ImageSniff.h>

namespace quorvel {
namespace {

using test::Bytes;
using test::FileBytes;
using test::joined;
using test::TIFFWriter;

constexpr std::uint32_t kWidth = 32;
constexpr std::uint32_t kHeight = 24;

/// Red and blue of sRGB in each other's place, with another curve: what is forgotten shows everywhere.
constexpr cmsCIExyYTRIPLE kSwapped{{0.15, 0.06, 1}, {0.30, 0.60, 1}, {0.64, 0.33, 1}};

/// Blue, green, red, alpha as the file has them.
Bytes storedPixels(const test::PNGSpec& spec) {
  Bytes pixels;
  for (std::uint32_t i = 0; i < kWidth * kHeight; ++i) {
    const std::uint32_t pixel = test::expectedPixel(spec, i % kWidth, i / kWidth);
    for (unsigned c = 0; c < 4; ++c) pixels.push_back(static_cast<std::uint8_t>(pixel >> (8 * c)));
  }
  return pixels;
}

Bytes pngWith(test::PNGSpec spec, const Bytes& profile) {
  spec.extra = test::pngChunk("iCCP", test::joined({{'x', 0, 0}, test::packed(profile)}));
  return test::pngFile(spec);
}

Bytes webpWith(const Bytes& pixels, const Bytes& profile) {
  std::uint8_t* out = nullptr;
  const std::size_t size = WebPEncodeLosslessBGRA(pixels.data(), kWidth, kHeight, 4 * kWidth, &out);
  // The chunk of the picture, behind the file's twelve bytes, is of even length with its padding.
  const Bytes picture(out + 12, out + size);
  WebPFree(out);
  return test::webpFile(joined({test::webpExtended(kWidth, kHeight, 0x20), test::webpChunk("ICCP", profile), picture}));
}

Bytes tiffWith(const Bytes& pixels, const Bytes& profile) {
  FileBytes rows;
  for (std::size_t i = 0; i < pixels.size(); i += 4) rows.insert(rows.end(), {pixels[i + 2], pixels[i + 1], pixels[i]});
  TIFFWriter writer(true);
  const std::uint64_t strip = writer.append(rows);
  return writer.file(writer.add({writer.longs(256, {kWidth}),
                                 writer.longs(257, {kHeight}),
                                 writer.shorts(258, {8, 8, 8}),
                                 writer.shorts(259, {1}),
                                 writer.shorts(262, {2}),
                                 writer.longs(273, {strip}),
                                 writer.shorts(277, {3}),
                                 writer.longs(278, {kHeight}),
                                 writer.longs(279, {rows.size()}),
                                 {34675, 7, profile.size(), profile}}));
}

TEST(EmbeddedProfile, IsAppliedInEveryFormat) {
  test::PNGSpec spec;
  spec.width = kWidth;
  spec.height = kHeight;
  const Bytes profile = test::rgbProfile(1.6, kSwapped);
  const Bytes stored = storedPixels(spec);
  Bytes expected = stored;
  cmsHPROFILE source = cmsOpenProfileFromMem(profile.data(), static_cast<cmsUInt32Number>(profile.size()));
  cmsHPROFILE target = cmsCreate_sRGBProfile();
  cmsHTRANSFORM transform = cmsCreateTransform(source, TYPE_BGRA_8, target, TYPE_BGRA_8, INTENT_PERCEPTUAL, 0);
  cmsDoTransform(transform, stored.data(), expected.data(), kWidth * kHeight);
  cmsDeleteTransform(transform);
  cmsCloseProfile(source);
  cmsCloseProfile(target);

  const std::pair<const char*, Bytes> files[] = {
      {"PNG", pngWith(spec, profile)}, {"WebP", webpWith(stored, profile)}, {"TIFF", tiffWith(stored, profile)}};
  for (const auto& [format, file] : files) {
    const ImageFacts facts = sniff(file);
    const auto bitmap = readPixels(file, facts, {kWidth, kHeight});
    ASSERT_TRUE(bitmap) << format;
    int greatest = 0;
    int moved = 0;
    for (std::size_t i = 0; i < expected.size(); ++i) {
      if (i % 4 == 3) continue;
      const int got = bitmap->row(i / 4 / kWidth)[i / 4 % kWidth * 4 + i % 4];
      greatest = std::max(greatest, std::abs(got - expected[i]));
      moved = std::max(moved, std::abs(got - stored[i]));
    }
    EXPECT_LE(greatest, 1) << format;
    EXPECT_GT(moved, 100) << format << ": the profile makes other colours";
  }
}

}  // namespace
}  // namespace quorvel
