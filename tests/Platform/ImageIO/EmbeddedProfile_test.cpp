#include <cstdlib>
#include <vector>

#include <gtest/gtest.h>
#include <lcms2.h>
#include <tests/support/ImageFiles.h>
#include <tests/support/PNGFiles.h>
#include <webp/encode.h>

#include <quorvel/Platform/ImageIO/ImageReader.h>
#include <quorvel/Platform/ImageIO/ImageSniff.h>

namespace quorvel {
namespace {

using test::Bytes;
using test::ByteWriter;

constexpr std::uint32_t kWidth = 32;
constexpr std::uint32_t kHeight = 24;

/// Red and blue of sRGB in each other's place, and another curve: what is forgotten shows everywhere.
Bytes swappedProfile() {
  const cmsCIExyY white{0.3127, 0.3290, 1};
  const cmsCIExyYTRIPLE primaries{{0.15, 0.06, 1}, {0.30, 0.60, 1}, {0.64, 0.33, 1}};
  cmsToneCurve* const curve = cmsBuildGamma(nullptr, 1.6);
  cmsToneCurve* curves[3] = {curve, curve, curve};
  cmsHPROFILE profile = cmsCreateRGBProfile(&white, &primaries, curves);
  cmsFreeToneCurve(curve);
  cmsUInt32Number size = 0;
  cmsSaveProfileToMem(profile, nullptr, &size);
  Bytes bytes(size);
  cmsSaveProfileToMem(profile, bytes.data(), &size);
  cmsCloseProfile(profile);
  return bytes;
}

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
  spec.extra = test::chunk("iCCP", test::joined({{'x', 0, 0}, test::packed(profile)}));
  return test::pngFile(spec);
}

Bytes webpWith(const Bytes& pixels, const Bytes& profile) {
  std::uint8_t* out = nullptr;
  const std::size_t size = WebPEncodeLosslessBGRA(pixels.data(), kWidth, kHeight, 4 * kWidth, &out);
  // The chunk of the picture, behind the file's twelve bytes, is of even length with its padding.
  const Bytes picture(out + 12, out + size);
  WebPFree(out);
  ByteWriter body(true);
  body.text("WEBPVP8X").u32(10).u32(0x20).u24(kWidth - 1).u24(kHeight - 1);
  body.text("ICCP").u32(profile.size()).add(profile).zeros(profile.size() % 2).add(picture);
  return ByteWriter(true).text("RIFF").u32(body.file.size()).add(body.file).file;
}

Bytes tiffWith(const Bytes& pixels, const Bytes& profile) {
  constexpr unsigned kShort = 3;
  constexpr unsigned kLong = 4;
  constexpr unsigned kOpaqueBytes = 7;
  constexpr std::uint32_t kBits = 8 + 2 + 10 * 12 + 4;
  constexpr std::uint32_t kPixels = kBits + 6;
  constexpr std::uint32_t kProfile = kPixels + 3 * kWidth * kHeight;
  ByteWriter file(true);
  file.text("II").u16(42).u32(8).u16(10);
  const auto entry = [&file](unsigned tag, unsigned type, std::size_t count, std::uint64_t value) {
    file.u16(tag).u16(type).u32(count).u32(value);
  };
  entry(256, kShort, 1, kWidth);
  entry(257, kShort, 1, kHeight);
  entry(258, kShort, 3, kBits);
  entry(259, kShort, 1, 1);
  entry(262, kShort, 1, 2);
  entry(273, kLong, 1, kPixels);
  entry(277, kShort, 1, 3);
  entry(278, kShort, 1, kHeight);
  entry(279, kLong, 1, 3 * kWidth * kHeight);
  entry(34675, kOpaqueBytes, profile.size(), kProfile);
  file.u32(0).u16(8).u16(8).u16(8);
  for (std::size_t i = 0; i < pixels.size(); i += 4) file.u8(pixels[i + 2]).u8(pixels[i + 1]).u8(pixels[i]);
  return file.add(profile).file;
}

TEST(EmbeddedProfile, IsAppliedInEveryFormat) {
  test::PNGSpec spec;
  spec.width = kWidth;
  spec.height = kHeight;
  const Bytes profile = swappedProfile();
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
