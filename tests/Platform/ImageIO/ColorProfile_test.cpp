#include <array>
#include <cstdlib>
#include <vector>

#include <gtest/gtest.h>
#include <tests/support/JPEGFiles.h>
#include <tests/support/Profiles.h>

#include <quorvel/Platform/ImageIO/ColorProfile.h>
#include <quorvel/Platform/ImageIO/JPEGReader.h>

namespace quorvel {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Model = ColorProfile::Model;
using test::rgbProfile;
using test::saved;

constexpr cmsCIExyYTRIPLE kNarrow{{0.64, 0.33, 1}, {0.30, 0.60, 1}, {0.15, 0.06, 1}};
constexpr cmsCIExyYTRIPLE kWide{{0.68, 0.32, 1}, {0.265, 0.69, 1}, {0.15, 0.06, 1}};

Bytes grayProfile(double gamma) {
  const cmsCIExyY white{0.3457, 0.3585, 1};
  cmsToneCurve* const curve = cmsBuildGamma(nullptr, gamma);
  Bytes bytes = saved(cmsCreateGrayProfile(&white, curve));
  cmsFreeToneCurve(curve);
  return bytes;
}

/// Inks to Lab by hand: lightness falls with all four alike, without any colour.
Bytes inkProfile() {
  const auto sample = [](const cmsUInt16Number in[], cmsUInt16Number out[], void*) -> cmsInt32Number {
    const double ink = (in[0] + in[1] + in[2] + in[3]) / (4 * 65535.0);
    out[0] = static_cast<cmsUInt16Number>(0xFF00 * (1 - ink));
    out[1] = out[2] = 0x8000;
    return TRUE;
  };
  cmsHPROFILE profile = cmsCreateProfilePlaceholder(nullptr);
  cmsSetDeviceClass(profile, cmsSigOutputClass);
  cmsSetColorSpace(profile, cmsSigCmykData);
  cmsSetPCS(profile, cmsSigLabData);
  cmsSetProfileVersion(profile, 2.1);
  cmsPipeline* const pipeline = cmsPipelineAlloc(nullptr, 4, 3);
  cmsStage* const table = cmsStageAllocCLut16bit(nullptr, 3, 4, 3, nullptr);
  cmsStageSampleCLut16bit(table, sample, nullptr, 0);
  cmsPipelineInsertStage(pipeline, cmsAT_END, table);
  cmsWriteTag(profile, cmsSigAToB0Tag, pipeline);
  cmsPipelineFree(pipeline);
  return saved(profile);
}

TEST(ColorProfile, LeavesAloneWhatNeedsNothing) {
  const Bytes standard = saved(cmsCreate_sRGBProfile());
  const Bytes wide = rgbProfile(2.2, kWide);
  EXPECT_FALSE(ColorProfile::make(standard, Model::RGB)) << "sRGB itself";
  EXPECT_TRUE(ColorProfile::make(wide, Model::RGB));
  EXPECT_FALSE(ColorProfile::make({}, Model::RGB)) << "none";
  EXPECT_FALSE(ColorProfile::make(wide, Model::Gray)) << "of another model";
  EXPECT_FALSE(ColorProfile::make(wide, Model::CMYK)) << "of another model";
  EXPECT_FALSE(ColorProfile::make(grayProfile(1.5), Model::RGB)) << "of another model";
  EXPECT_FALSE(ColorProfile::make(saved(cmsCreateLab4Profile(nullptr)), Model::RGB)) << "a connection space";
  Bytes long4MiB = wide;
  long4MiB.resize(ColorProfile::kLongest + 1);
  EXPECT_FALSE(ColorProfile::make(long4MiB, Model::RGB)) << "too long";
  for (std::size_t size = 0; size + 1 < wide.size(); size += 11) {
    static_cast<void>(ColorProfile::make(ImageBytes(wide).first(size), Model::RGB));
  }
  for (std::size_t at = 0; at < wide.size(); at += 3) {
    Bytes damaged = wide;
    damaged[at] = static_cast<std::uint8_t>(damaged[at] ^ 0x81);
    static_cast<void>(ColorProfile::make(damaged, Model::RGB));
  }
}

TEST(ColorProfile, ConvertsLevelsAndLeavesAlpha) {
  // Gamma 1 to sRGB: half the light is level 188; a quarter 137.
  const auto linear = ColorProfile::make(rgbProfile(1, kNarrow), Model::RGB);
  const auto gray = ColorProfile::make(grayProfile(1), Model::Gray);
  ASSERT_TRUE(linear);
  ASSERT_TRUE(gray);
  for (const auto* profile : {&*linear, &*gray}) {
    // More than a chunk, with the clear and half clear ones at its border.
    Bytes row(4 * 600);
    for (std::size_t i = 0; i < row.size(); i += 4) {
      const auto alpha = static_cast<std::uint8_t>(i / 4 % 3 == 0 ? 255 : i / 4 % 3 == 1 ? 128 : 0);
      for (std::size_t c = 0; c < 3; ++c) row[i + c] = static_cast<std::uint8_t>(128 * alpha / 255);
      row[i + 3] = alpha;
    }
    profile->convertRow(row.data(), 600);
    for (std::size_t i = 0; i < row.size(); i += 12) {
      for (std::size_t c = 0; c < 3; ++c) {
        ASSERT_NEAR(row[i + c], 188, 1) << i;
        ASSERT_NEAR(row[i + 4 + c], 188 * 128 / 255, 1) << i << ": premultiplied again";
        ASSERT_EQ(row[i + 8 + c], 0) << i;
      }
      ASSERT_EQ(row[i + 3], 255);
      ASSERT_EQ(row[i + 7], 128);
      ASSERT_EQ(row[i + 11], 0);
    }
  }
}

TEST(ColorProfile, KnowsBlueFromRed) {
  const auto wide = ColorProfile::make(rgbProfile(2.2, kWide), Model::RGB);
  ASSERT_TRUE(wide);
  std::uint8_t pixels[8] = {60, 60, 200, 255, 200, 60, 60, 255};
  wide->convertRow(pixels, 2);
  EXPECT_GT(pixels[2], 208) << "a wide red is beyond sRGB's";
  EXPECT_LT(pixels[6], 60);
  EXPECT_NEAR(pixels[4], 200, 12) << "the blues are the same";
}

TEST(ColorProfile, ConvertsInksBothWays) {
  const Bytes profile = inkProfile();
  const std::uint8_t plain[8] = {0, 0, 0, 0, 255, 255, 255, 255};
  const std::uint8_t inverted[8] = {255, 255, 255, 255, 0, 0, 0, 0};
  for (const bool isInverted : {false, true}) {
    const auto converter = ColorProfile::make(profile, isInverted ? Model::InvertedCMYK : Model::CMYK);
    ASSERT_TRUE(converter);
    std::uint8_t row[8] = {};
    converter->convertCMYKRow(isInverted ? inverted : plain, row, 2);
    EXPECT_GE(row[0], 250) << isInverted;
    EXPECT_EQ(row[3], 255);
    EXPECT_LE(row[4], 5) << isInverted;
    EXPECT_EQ(row[7], 255);
  }
}

TEST(ColorProfile, PlainInksLeaveTheirShareOfWhite) {
  std::uint8_t row[12];
  const std::uint8_t inks[12] = {255, 0, 0, 0, 0, 128, 0, 128, 10, 20, 30, 255};
  convertPlainCMYKRow(inks, false, row, 3);
  const std::array<std::uint8_t, 12> expected = {255, 255, 0, 255, 127, 63, 127, 255, 0, 0, 0, 255};
  EXPECT_EQ(std::to_array(row), expected) << "cyan, half magenta with half black, black";
}

TEST(JPEGProfile, IsFoundInPiecesAndApplied) {
  const test::Samples picture{16, 16, 3, Bytes(16 * 16 * 3, 128)};
  ImageFacts facts;
  facts.format = ImageFormat::JPEG;
  facts.width = facts.height = 16;
  const auto levelOf = [&facts](const Bytes& file, std::uint32_t side) {
    const auto result = readPixels(file, facts, {side, side});
    return result ? result->row(side - 1)[4 * (side - 1)] : 0;
  };
  test::JPEGKind kind;
  kind.profile = rgbProfile(1, kNarrow);
  for (const std::size_t piece : {65'000U, 100U, 7U}) {
    kind.profilePiece = piece;
    const Bytes file = makeJPEG(picture, kind);
    EXPECT_NEAR(levelOf(file, 16), 188, 1) << piece;
    EXPECT_NEAR(levelOf(file, 2), 188, 1) << piece;
  }
  kind.profilePiece = 100;
  Bytes doubled = makeJPEG(picture, kind);
  const std::size_t second = 2 + 18 + 118;  // start, JFIF, the first piece
  ASSERT_EQ(doubled[second + 16], 2);
  doubled[second + 16] = 1;
  EXPECT_EQ(levelOf(doubled, 16), 128) << "a profile in disorder is none";
  kind.profile.clear();
  EXPECT_EQ(levelOf(makeJPEG(picture, kind), 16), 128);
}

}  // namespace
}  // namespace quorvel
