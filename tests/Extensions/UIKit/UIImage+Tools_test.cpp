#include <cmath>

#include <gtest/gtest.h>
#include <tests/support/Images.h>
#include <tests/support/Row.h>

#include <quorvel/Extensions/UIKit/UIImage+Color.h>
#include <quorvel/Extensions/UIKit/UIImage+Resize.h>
#include <quorvel/Extensions/UIKit/UIImage+Tools.h>

namespace quorvel {
namespace {

using test::channelOf;
using test::pixel;
using test::place;
using test::places;
using test::ScreenScale;

TEST(CropImage, CutsStoredPixels) {
  const UIImage image(places(100, 80), 2, UIImageOrientation::Right);
  const auto piece = cropImageWithSize(image, {10, 10, 20, 20});
  ASSERT_TRUE(piece);
  EXPECT_EQ(piece->size(), (CGSize{20, 20}));
  EXPECT_EQ(piece->scale(), 2);
  EXPECT_EQ(piece->orientation(), UIImageOrientation::Up);
  EXPECT_EQ(pixel(*piece, 0, 0), place(20, 20)) << "in the bitmap's own coordinates, whatever the orientation";
  const UIImage tenfold(places(100, 80), 10);
  EXPECT_EQ(cropImageWithSize(tenfold, {0, 0, 1.1, 0.7})->bitmap().width(), 11U) << "1.1 * 10 is a little above 11";
  EXPECT_EQ(cropImageWithSize(image, {40, 30, 100, 100})->size(), (CGSize{10, 10})) << "cut at the border";
  EXPECT_FALSE(cropImageWithSize(image, {50, 0, 5, 5})) << "outside";
  EXPECT_FALSE(cropImageWithSize(UIImage(), {0, 0, 5, 5}));
}

TEST(ResizeImage, TakesTwoOrTheScreensScale) {
  const UIImage image(places(8, 4), 1);
  const test::Row<double, CGSize> rows[] = {{1, {200, 100}}, {1.5, {200, 100}}, {2, {200, 100}}, {3, {300, 150}}};
  for (const auto& [scale, size] : rows) {
    const ScreenScale screen(scale);
    const auto resized = resizeImage(image, {100, 50});
    ASSERT_TRUE(resized);
    EXPECT_EQ(resized->size(), size) << "on a screen of scale " << scale;
    EXPECT_EQ(resized->scale(), 1);
  }
  EXPECT_FALSE(resizeImage(image, {0, 5}, 2));
  EXPECT_FALSE(resizeImage(image, {5, 5}, -1));
  EXPECT_FALSE(resizeImage(image, {1e6, 1e6}, 2)) << "beyond the limits of images";
}

// The mean of the pixels that each pixel of the result covers, in whole numbers of them.
TEST(ResizeImage, MakesSmallerByMeans) {
  const CGImage noise = test::noise(60, 36);
  for (const auto orientation : {UIImageOrientation::Up, UIImageOrientation::Down, UIImageOrientation::UpMirrored}) {
    const UIImage image(noise, 1, orientation);
    const auto small = resizeImage(image, {12, 4}, 1);  // 5 by 9 pixels each
    const bool mirrorsX = orientation != UIImageOrientation::Up;
    const bool mirrorsY = orientation == UIImageOrientation::Down;
    for (std::size_t y = 0; y < 4; ++y) {
      for (std::size_t x = 0; x < 12; ++x) {
        double sum = 0;
        for (std::size_t i = 0; i < 45; ++i) sum += channelOf(pixel(image, 5 * x + i % 5, 9 * y + i / 5), 1);
        const std::uint32_t mean = pixel(*small, mirrorsX ? 11 - x : x, mirrorsY ? 3 - y : y);
        ASSERT_NEAR(channelOf(mean, 1), sum / 45, 0.51) << x << ", " << y;
      }
    }
  }
  const auto turned = resizeImage(UIImage(noise, 1, UIImageOrientation::Right), {4, 12}, 1);
  const auto straight = resizeImage(UIImage(noise), {12, 4}, 1);
  EXPECT_EQ(pixel(*turned, 3, 0), pixel(*straight, 0, 0)) << "turned with the clock: the first pixel goes right";
  EXPECT_EQ(pixel(*turned, 0, 11), pixel(*straight, 11, 3));
}

TEST(ResizeImage, KeepsEdgesOpaqueAndAveragesAlpha) {
  const UIImage checks(
      test::picture(10, 10, [](std::size_t x, std::size_t y) { return (x + y) % 2 ? 0xFFFFFFFF : 0; }));
  const auto half = resizeImage(checks, {5, 5}, 1);
  EXPECT_NEAR(channelOf(pixel(*half, 0, 0), 3), 128, 1);
  EXPECT_NEAR(channelOf(pixel(*half, 4, 4), 0), 128, 1) << "premultiplied: colour goes with alpha";
  const UIImage white(test::flat(100, 100, 0xFFFFFFFF));
  for (const double side : {99.0, 67.0, 33.0, 7.0, 1.0, 133.0}) {
    const auto resized = resizeImage(white, {side, side}, 1);
    EXPECT_TRUE(resized->bitmap().isOpaque()) << side;
    EXPECT_EQ(pixel(*resized, 0, 0), 0xFFFFFFFF) << side;
  }
  const auto stretched = resizeImage(checks, {5, 20}, 1);  // smaller one way, larger the other
  EXPECT_NEAR(channelOf(pixel(*stretched, 2, 9), 3), 128, 1);
}

TEST(ImageScaledToSize, IsAtTheScreensScaleAndUpright) {
  const ScreenScale screen(3);
  const auto result = UIImageResize::imageWithImage(UIImage(places(30, 12), 1, UIImageOrientation::Right), {4, 10});
  ASSERT_TRUE(result);
  EXPECT_EQ(result->size(), (CGSize{4, 10}));
  EXPECT_EQ(result->scale(), 3);
  EXPECT_EQ(pixel(*result, 11, 0), place(0, 0)) << "12 by 30 pixels: none is filtered";
  EXPECT_EQ(pixel(*result, 0, 29), place(29, 11));
}

TEST(ConvertToGrayscale, WorksOnWholePoints) {
  const UIImage red(test::flat(107, 52, 0xFFFF0000), 10);
  const auto gray = convertToGrayscale(red);  // 10.7 by 5.2 points
  ASSERT_TRUE(gray);
  EXPECT_EQ(gray->size(), (CGSize{10, 5}));
  EXPECT_EQ(gray->scale(), 1);
  EXPECT_EQ(pixel(*gray, 9, 4), 0xFF4C4C4C) << "76.5, truncated";
  const UIImage half(test::flat(2, 2, 0x80008000));
  EXPECT_EQ(pixel(*convertToGrayscale(half), 0, 0), 0x804B4B4B) << "premultiplied bytes; alpha stays";
  EXPECT_EQ(pixel(*convertToGrayscale(UIImage(places(3, 2))), 0, 1), 0xFF000000) << "upright";
  EXPECT_FALSE(convertToGrayscale(UIImage(places(9, 100), 10))) << "below a point";
  EXPECT_FALSE(convertToGrayscale(UIImage(places(9, 9), 1e-9))) << "beyond the limits of images";
  EXPECT_FALSE(convertToGrayscale(UIImage()));
}

TEST(RenderingModeTemplate, ChangesTheModeAlone) {
  const UIImage image(places(3, 2), 2, UIImageOrientation::Left);
  const UIImage marked = renderingModeTemplate(image);
  EXPECT_EQ(marked.renderingMode(), UIImageRenderingMode::AlwaysTemplate);
  EXPECT_EQ(marked.withRenderingMode(UIImageRenderingMode::Automatic), image);
}

TEST(ImageWithAlpha, FadesColorAndAlpha) {
  const ScreenScale screen(2);
  const UIImage image(test::picture(4, 4, [](std::size_t x, std::size_t) { return x < 2 ? 0xFFFF8000 : 0x80400020; }),
                      2);
  for (const double alpha : {0.0, 0.25, 0.5, 1.0, 3.0}) {
    const auto faded = imageWithAlpha(image, alpha);
    ASSERT_TRUE(faded);
    EXPECT_EQ(faded->size(), (CGSize{2, 2}));
    for (const std::size_t x : {0U, 3U}) {
      for (int channel = 0; channel < 4; ++channel) {
        EXPECT_NEAR(channelOf(pixel(*faded, x, 0), channel),
                    channelOf(pixel(image, x, 0), channel) * std::fmin(alpha, 1), 1)
            << alpha;
      }
    }
  }
  EXPECT_FALSE(imageWithAlpha(UIImage(), 1));
}

/// A colour of alpha 0.5 through each alpha of a mask's pixels.
TEST(MaskRenderedImage, FillsTheAlphaWithTheColor) {
  const ScreenScale screen(1);
  const UIImage image(test::picture(4, 2, [](std::size_t x, std::size_t y) {
    return static_cast<std::uint32_t>(x * 85) << 24 | (y == 0 ? 0 : static_cast<std::uint32_t>(x * 85));
  }));
  const auto result = maskRenderedImageWithTintColor(image, UIColor(0, 1, 0, 0.5));
  for (std::size_t x = 0; x < 4; ++x) {
    for (std::size_t y = 0; y < 2; ++y) {
      const double alpha = static_cast<double>(x) * 85 * 0.5;
      EXPECT_NEAR(channelOf(pixel(*result, x, y), 3), alpha, 1) << x;
      EXPECT_NEAR(channelOf(pixel(*result, x, y), 1), alpha, 1) << x;
      EXPECT_EQ(channelOf(pixel(*result, x, y), 0), 0) << "the picture's own colours do not show";
    }
  }
}

TEST(MaskedImage, KeepsTheShapeAtItsOwnScale) {
  const ScreenScale screen(2);
  const UIImage image(test::picture(6, 3, [](std::size_t x, std::size_t) { return x < 3 ? 0x80800000 : 0; }), 3);
  const auto blue = maskedImageWithAlpahHexColor(image, 0xFF0000FF);
  ASSERT_TRUE(blue);
  EXPECT_EQ(blue->scale(), 3);
  EXPECT_EQ(blue->size(), image.size());
  EXPECT_EQ(pixel(*blue, 2, 2), 0x80000080);
  EXPECT_EQ(pixel(*blue, 3, 0), 0U);
  const auto turned = maskedImageWithColor(UIImage(image.bitmap(), 3, UIImageOrientation::Down), UIColor(0, 0, 1, 1));
  EXPECT_EQ(pixel(*turned, 0, 0), 0U) << "upright";
  EXPECT_EQ(pixel(*turned, 5, 0), 0x80000080);
}

TEST(ImageWithColor, HasTwoForms) {
  const ScreenScale screen(3);
  const UIColor half(1, 0, 0, 0.5);
  const auto atOne = UIImageTools::imageWithColor(half);
  const auto atThree = UIImageColor::imageWithColor(half);
  EXPECT_EQ(atOne->bitmap().width(), 1U);
  EXPECT_EQ(atThree->bitmap().width(), 3U);
  EXPECT_EQ(atOne->size(), atThree->size());
  EXPECT_EQ(channelOf(pixel(*atOne, 0, 0), 3), 128) << "the alpha is kept";
  const auto wide = UIImageColor::imageWithColor(UIColor(0, 1, 0, 1), {4, 2});
  EXPECT_EQ(wide->bitmap().width(), 12U);
  EXPECT_EQ(pixel(*wide, 11, 5), 0xFF00FF00);
  EXPECT_FALSE(UIImageColor::imageWithColor(half, {0, 2}));
}

struct Lines {
  double scale;
  double width;
  LinePosition position;
  CGRect pixels;  // of the line
  test::Why why;
};

TEST(LinedImage, DrawsWholePixelsOfTheScreen) {
  constexpr UIColor kLine(1, 0, 0, 1);
  constexpr UIColor kGround(0, 0, 1, 1);
  const Lines rows[] = {
      {2, 2, LinePositionRight, {18, 0, 2, 40}, "9, 0, 1 by 20 points"},
      {2, 1, LinePositionBottom, {0, 39, 20, 1}, "a pixel at the bottom"},
      {3, 1, LinePositionTop, {0, 0, 30, 1}, "a third of a point"},
      {3, 4, LinePositionLeft, {0, 0, 4, 60}, "more than a point"},
      {1, 99, LinePositionTop, {0, 0, 10, 20}, "thicker than the image"},
      {2, 0, LinePositionTop, {0, 0, 0, 0}, "no thickness"},
      {2, 3, static_cast<LinePosition>(4), {0, 0, 0, 0}, "no such edge"},
      {2, 3, static_cast<LinePosition>(-1), {0, 0, 0, 0}, "no such edge"},
  };
  for (const auto& [scale, width, position, line, why] : rows) {
    const ScreenScale screen(scale);
    const auto image = UIImageColor::linedImageWithSize({10, 20}, kLine, kGround, width, position);
    ASSERT_TRUE(image) << why;
    ASSERT_EQ(image->size(), (CGSize{10, 20})) << why;
    for (std::size_t y = 0; y < image->bitmap().height(); ++y) {
      for (std::size_t x = 0; x < image->bitmap().width(); ++x) {
        const auto isWithin = [](std::size_t place, double start, double length) {
          return static_cast<double>(place) >= start && static_cast<double>(place) < start + length;
        };
        const bool isLine = isWithin(x, line.x, line.width) && isWithin(y, line.y, line.height);
        ASSERT_EQ(pixel(*image, x, y), isLine ? 0xFFFF0000 : 0xFF0000FF) << why << ": " << x << ", " << y;
      }
    }
  }
}

TEST(LineImage, IsOnePixelOfOnePoint) {
  using namespace UIImageColor;
  constexpr UIColor kRed(1, 0, 0, 1);
  const test::Row<double, bool, std::array<std::uint32_t, 3>> rows[] = {
      {2, true, {0, 0xFFFF0000}}, {2, false, {0xFFFF0000, 0}}, {3, true, {0, 0, 0xFFFF0000}}};
  for (const auto& [scale, under, column] : rows) {
    const ScreenScale screen(scale);
    for (std::size_t y = 0; y < static_cast<std::size_t>(scale); ++y) {
      EXPECT_EQ(pixel(*lineImageWithColor(kRed, under), 1, y), column[y]) << scale;
      EXPECT_EQ(pixel(*lineImageWithAlpahHexColor(0xFFFF0000, under), 1, y), column[y]) << scale;
      EXPECT_EQ(pixel(*lineImageWithBackgroundColor(kRed, under), 1, y), 0xFFFF0000) << scale;
      EXPECT_EQ(pixel(*lineImageWithAlpahHexColor(0, under), 1, y), 0U) << scale;
    }
  }
  const ScreenScale screen(2);
  EXPECT_EQ(pixel(*lineImageWithColor(std::nullopt, false), 0, 0), 0xFF000000) << "a context begins with black";
  EXPECT_EQ(pixel(*linedImageWithSize({1, 1}, std::nullopt, kRed, 1, false), 0, 0), 0xFFFF0000)
      << "a nil colour leaves the background's";
}

TEST(BlurWithCoreImage, BlursInPixelsOfTheSourceUnderAWhiteWash) {
  const ScreenScale screen(3);
  const UIImage flat(test::flat(80, 60, 0xFF640000), 2);
  const auto result = UIImageTools::blurWithCoreImage(flat);
  ASSERT_TRUE(result);
  EXPECT_EQ(result->size(), flat.size());
  EXPECT_EQ(result->scale(), 1);
  for (const std::size_t x : {0U, 39U}) {
    EXPECT_NEAR(channelOf(pixel(*result, x, 0), 2), 100 * 0.8 + 51, 1) << "edges do not darken";
    EXPECT_NEAR(channelOf(pixel(*result, x, 0), 1), 51, 1);
    EXPECT_EQ(channelOf(pixel(*result, x, 0), 3), 255);
  }
  EXPECT_FALSE(UIImageTools::blurWithCoreImage(UIImage()));
  std::stop_source stop;
  stop.request_stop();
  EXPECT_FALSE(UIImageTools::blurWithCoreImage(flat, {stop.get_token(), {}}));
}

}  // namespace
}  // namespace quorvel
