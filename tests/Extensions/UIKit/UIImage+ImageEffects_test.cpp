#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>
#include <tests/support/Images.h>
#include <tests/support/Row.h>

#include <quorvel/Extensions/UIKit/UIImage+ImageEffects.h>
#include <quorvel/Platform/Accelerate/vImage.h>

namespace quorvel {
namespace {

using test::channelOf;
using test::noise;
using test::pixel;
using test::ScreenScale;

constexpr double kNoBlur = 0;
constexpr double kSameColors = 1;

std::optional<UIImage> blurred(const UIImage& image, double radius, double saturation = kSameColors) {
  return applyBlurWithRadius(image, radius, std::nullopt, saturation, std::nullopt);
}

TEST(ApplyBlur, AnswersNilWhereThereIsNothingToBlur) {
  const ScreenScale screen(2);
  const UIImage good(noise(4, 4));
  EXPECT_FALSE(blurred(UIImage(), 5)) << "no bitmap";
  EXPECT_FALSE(blurred(UIImage(noise(1, 200), 2), 5)) << "half a point wide";
  EXPECT_FALSE(blurred(UIImage(noise(200, 1), 2), 5)) << "half a point high";
  EXPECT_FALSE(applyBlurWithRadius(good, 5, std::nullopt, 1, UIImage())) << "a mask without a bitmap";
  EXPECT_FALSE(applyLightEffect(UIImage()));
  EXPECT_TRUE(blurred(UIImage(noise(2, 2), 2), 5)) << "exactly a point";
}

TEST(ApplyBlur, OfNothingIsTheReceiverAtTheScreensScale) {
  const ScreenScale screen(2);
  const UIImage image(test::places(3, 2), 1);
  const auto copy = applyBlurWithRadius(image, 1e-7, std::nullopt, 1 + 1e-7, std::nullopt);
  ASSERT_TRUE(copy);
  EXPECT_EQ(copy->scale(), 2);
  EXPECT_EQ(copy->size(), image.size());
  EXPECT_EQ(copy->bitmap().width(), 6U);
  EXPECT_EQ(pixel(*copy, 0, 0), test::place(0, 0)) << "upright";
  const auto tinted = applyBlurWithRadius(image, kNoBlur, UIColor(0, 0, 1, 1), kSameColors, std::nullopt);
  EXPECT_EQ(pixel(*tinted, 5, 3), 0xFF0000FF);
}

TEST(ApplyBlur, UsesBoxesOfTheOddSideOfItsRadius) {
  const test::Row<double, double, std::uint32_t> rows[] = {{2, 30, 113}, {2, 20, 75}, {2, 10, 39}, {3, 30, 169},
                                                           {3, 20, 113}, {3, 10, 57}, {1, 30, 57}, {1, 20, 39},
                                                           {1, 10, 19},  {1, 0.2, 1}, {1, 0.7, 1}, {1, 0.9, 3}};
  for (const auto& [scale, radius, side] : rows) {
    const ScreenScale screen(scale);
    const CGImage bitmap = noise(190, 9);
    const auto result = blurred(UIImage(bitmap, scale), radius);
    const auto expected = CGBitmap::make(190, 9);
    ASSERT_TRUE(boxBlurThrice(vImage_Buffer::reading(bitmap.bitmap()), vImage_Buffer::of(*expected), side));
    for (std::size_t y = 0; y < 9; ++y) {
      ASSERT_EQ(std::memcmp(result->bitmap().bitmap().row(y), expected->row(y), 4 * 190), 0)
          << "radius " << radius << " at scale " << scale << ", row " << y;
    }
  }
  const ScreenScale screen(1);
  for (const double radius : {1e9, 1e300, static_cast<double>(INFINITY)}) {
    const auto flat = blurred(UIImage(noise(8, 8)), radius);
    ASSERT_TRUE(flat) << radius;
    EXPECT_EQ(pixel(*flat, 0, 0), pixel(*flat, 7, 7)) << "a box far beyond the picture: " << radius;
  }
  EXPECT_EQ(blurred(UIImage(noise(8, 8)), NAN)->bitmap().bitmap().row(3)[5], noise(8, 8).bitmap().row(3)[5]);
}

// One input channel at a time shows a row of the matrix: 100 / 256 of each coefficient, rounded.
TEST(ApplyBlur, ChangesSaturationByTheMatrix) {
  const ScreenScale screen(1);
  const test::Row<double, std::array<int, 9>> rows[] = {
      {1.8, {446, -15, -15, -146, 314, -146, -44, -44, 417}},
      {-1.0, {-219, 37, 37, 366, 110, 366, 109, 109, -147}},
      {0.0, {18, 18, 18, 183, 183, 183, 54, 54, 54}},
  };
  for (const auto& [factor, matrix] : rows) {
    for (std::size_t from = 0; from < 3; ++from) {
      const std::uint32_t color = 0xFF000000 | 100U << (8 * from);
      const UIImage image(test::flat(3, 3, color));
      for (const double radius : {kNoBlur, 2.0}) {
        const std::uint32_t result = pixel(*blurred(image, radius, factor), 1, 1);
        EXPECT_EQ(channelOf(result, 3), 255);
        for (std::size_t to = 0; to < 3; ++to) {
          const double exact = 100 * matrix[3 * from + to] / 256.0;
          EXPECT_EQ(channelOf(result, static_cast<int>(to)),
                    std::clamp<int>(static_cast<int>(std::floor(exact + 0.5)), 0, 255))
              << "factor " << factor << ", channel " << from << " to " << to << ", radius " << radius;
        }
      }
    }
  }
  const UIImage red(test::flat(1, 1, 0xFF190000));
  EXPECT_EQ(channelOf(pixel(*blurred(red, kNoBlur, 2.6), 0, 0), 2), 56) << "0.7873 of red stays red, not 0.7874";
  for (const double huge : {1e9, -1e9, static_cast<double>(INFINITY)}) {
    EXPECT_TRUE(blurred(UIImage(noise(3, 3)), kNoBlur, huge)) << huge;
  }
}

/// What a tint of that component and alpha makes of an opaque channel.
double tinted(int under, double component, double alpha) { return under * (1 - alpha) + 255 * component * alpha; }

TEST(ApplyEffects, WashAFlatPictureWithTheirTint) {
  const ScreenScale screen(2);
  const UIImage gray(test::flat(40, 30, 0xFF808080), 2);
  const UIColor half(1, 0, 0, 0.1);
  const test::Row<std::optional<UIImage>, UIColor, test::Why> rows[] = {
      {applyLightEffect(gray), UIColor::white(1, 0.3), "light"},
      {applyExtraLightEffect(gray), UIColor::white(0.97, 0.82), "extra light"},
      {applyDarkEffect(gray), UIColor::white(0.11, 0.73), "dark"},
      {applyTintEffectWithColor(gray, half), UIColor(1, 0, 0, 0.6), "the colour's own alpha does not count"},
  };
  for (const auto& [result, tint, why] : rows) {
    ASSERT_TRUE(result) << why;
    EXPECT_EQ(result->size(), gray.size()) << why;
    for (const std::size_t x : {0U, 20U, 39U}) {
      const std::uint32_t color = pixel(*result, x, 29);
      EXPECT_EQ(channelOf(color, 3), 255) << why;
      // Coefficients that sum to a little more or less than 1, and two roundings.
      EXPECT_NEAR(channelOf(color, 2), tinted(128, tint.red(), tint.alpha()), 2) << why;
      EXPECT_NEAR(channelOf(color, 1), tinted(128, tint.green(), tint.alpha()), 2) << why;
      EXPECT_NEAR(channelOf(color, 0), tinted(128, tint.blue(), tint.alpha()), 2) << why;
    }
  }
}

TEST(ApplyBlur, StaysWithinItsMask) {
  const ScreenScale screen(1);
  const CGImage stripes =
      test::picture(40, 10, [](std::size_t x, std::size_t) { return x % 2 ? 0xFFFFFFFF : 0xFF000000; });
  // Alpha over the left half, at another size than the picture; its colours do not count.
  const UIImage mask(test::picture(8, 2, [](std::size_t x, std::size_t) { return x < 4 ? 0xFFFFFFFF : 0; }));
  const auto result = applyBlurWithRadius(UIImage(stripes), 5, UIColor(1, 0, 0, 0.5), 1, mask);
  ASSERT_TRUE(result);
  EXPECT_NEAR(channelOf(pixel(*result, 10, 5), 1), 64, 3) << "blurred to a grey, then tinted";
  EXPECT_NEAR(channelOf(pixel(*result, 33, 5), 1), 127, 1) << "a white stripe, sharp, tinted";
  EXPECT_NEAR(channelOf(pixel(*result, 34, 5), 1), 0, 1) << "a black stripe";
  EXPECT_NEAR(channelOf(pixel(*result, 34, 5), 2), 128, 1) << "the tint covers what the mask leaves";
}

TEST(ApplyBlur, LaysTranslucentPicturesOverThemselves) {
  const ScreenScale screen(1);
  const UIImage flat(test::flat(9, 9, 0x80400000));
  const std::uint32_t color = pixel(*blurred(flat, 2), 4, 4);
  EXPECT_NEAR(channelOf(color, 3), 128 + 128 * 127 / 255.0, 1) << "the blur lies over the sharp picture";
  EXPECT_NEAR(channelOf(color, 2), 64 + 64 * 127 / 255.0, 1);
  const UIImage empty(test::flat(9, 9, 0));
  EXPECT_EQ(pixel(*applyBlurWithRadius(empty, 2, UIColor(0, 1, 0, 1), 1, std::nullopt), 8, 8), 0xFF00FF00);
}

TEST(ApplyBlur, CoversPartsOfPixelsWhole) {
  const ScreenScale screen(2);
  const auto result = blurred(UIImage(noise(100, 77), 3), 4);  // 66.67 by 51.33 pixels
  ASSERT_TRUE(result);
  EXPECT_EQ(result->bitmap().width(), 67U);
  EXPECT_EQ(result->bitmap().height(), 52U);
  EXPECT_TRUE(result->bitmap().isOpaque());
}

TEST(ApplyBlur, StopsAndTellsHowFarItIs) {
  const ScreenScale screen(1);
  const UIImage image(noise(64, 300));
  std::stop_source stop;
  double last = 0;
  ImageWork work{stop.get_token(), [&](double done) {
                   EXPECT_GE(done, last);
                   last = done;
                 }};
  EXPECT_TRUE(applyLightEffect(image, work));
  EXPECT_EQ(last, 1);
  work.progress = [&](double) { stop.request_stop(); };
  EXPECT_FALSE(applyLightEffect(image, work));
}

}  // namespace
}  // namespace quorvel
