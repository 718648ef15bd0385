#include <cmath>
#include <cstring>

#include <gtest/gtest.h>
#include <tests/support/Images.h>
#include <tests/support/Row.h>

#include <quorvel/Platform/Foundation/Limits.h>

namespace quorvel {
namespace {

using test::pixel;
using test::place;
using test::places;

TEST(CGBitmap, RefusesSidesBeyondTheLimits) {
  for (const auto& [width, height] : std::vector<std::pair<std::int64_t, std::int64_t>>{
           {0, 1}, {1, 0}, {-1, 5}, {limits::kImageSide + 1, 1}, {INT64_MAX, INT64_MAX}, {32'000, 32'000}}) {
    EXPECT_EQ(CGBitmap::make(width, height), nullptr) << width << " x " << height;
  }
}

TEST(CGImage, CutsWholePixelsWithinItsBorder) {
  const CGImage image = places(5, 4);
  const CGImage part = image.inRect({1.5, -3, 10, 4.5});  // columns 1 to 4, rows 0 and 1
  ASSERT_EQ(part.width(), 4U);
  ASSERT_EQ(part.height(), 2U);
  EXPECT_EQ(pixel(part, 0, 1), place(1, 1));
  for (const CGRect& empty : {CGRect{5, 0, 1, 1}, CGRect{0, 0, 0, 0}, CGRect{-2, 0, 2, 2}, CGRect{NAN, 0, 1, 1},
                              CGRect{0.5, 0, NAN, 1}, CGRect{0, 0.5, 1, NAN}}) {
    EXPECT_FALSE(image.inRect(empty).hasPixels()) << empty.x << ", " << empty.y << ": " << empty.width;
  }
}

TEST(CGContext, DrawsUprightOnlyAfterTheFlip) {
  const CGImage image = places(3, 2);
  for (const bool flips : {false, true}) {
    const auto context = CGContext::make(3, 2);
    if (flips) {
      context->scaleCTM(1, -1);
      context->translateCTM(0, -2);
    }
    context->drawImage({0, 0, 3, 2}, image);
    EXPECT_EQ(pixel(context->image(), 2, 0), place(2, flips ? 0 : 1));
  }
}

// Where the stored pixel of column 2 and row 0 comes to lie in the upright picture, for a stored 3 x 2.
TEST(CGContext, TurnsAllEightOrientations) {
  const struct {
    UIImageOrientation orientation;
    std::size_t x;
    std::size_t y;
  } rows[] = {{UIImageOrientation::Up, 2, 0},
              {UIImageOrientation::Down, 0, 1},
              {UIImageOrientation::Left, 0, 0},
              {UIImageOrientation::Right, 1, 2},
              {UIImageOrientation::UpMirrored, 0, 0},
              {UIImageOrientation::DownMirrored, 2, 1},
              {UIImageOrientation::LeftMirrored, 0, 2},
              {UIImageOrientation::RightMirrored, 1, 0},
              {UIImageOrientation{8}, 2, 0},
              {UIImageOrientation{10}, 2, 0}};
  for (const auto& [orientation, x, y] : rows) {
    const UIImage image(places(3, 2), 1, orientation);
    const UIGraphicsImageContext context(image.size());
    image.drawInRect({0, 0, image.size().width, image.size().height});
    EXPECT_EQ(pixel(context.image()->bitmap(), x, y), place(2, 0)) << static_cast<int>(orientation);
  }
}

/// Cairo draws nothing, and says nothing, from some length on.
TEST(CGContext, DrawsTheLongestSidesInEveryWay) {
  constexpr auto kLong = static_cast<double>(limits::kImageSide);
  using Draw = void (*)(CGContext& context, const CGRect& whole, const CGImage& image);
  const test::Row<const char*, Draw> rows[] = {
      {"filled", [](CGContext& c, const CGRect& whole, const CGImage&) { c.fillRect(whole); }},
      {"copied", [](CGContext& c, const CGRect& whole, const CGImage& image) { c.drawImage(whole, image); }},
      {"translucent",
       [](CGContext& c, const CGRect& whole, const CGImage& image) {
         c.setAlpha(0.5);
         c.drawImage(whole, image);
       }},
      {"filtered",
       [](CGContext& c, const CGRect& whole, const CGImage& image) {
         c.drawUpright({0, 0, whole.width + 0.5, whole.height + 0.5}, image, UIImageOrientation::Down);
       }},
      {"masked",
       [](CGContext& c, const CGRect& whole, const CGImage& image) {
         c.clipToMask(whole, image);
         c.fillRect(whole);
       }},
      {"apart",
       [](CGContext& c, const CGRect& whole, const CGImage&) {
         c.setAlpha(0.5);
         c.beginTransparencyLayer();
         c.fillRect(whole);
         c.endTransparencyLayer();
       }},
      {"tiled", [](CGContext& c, const CGRect& whole, const CGImage&) { c.drawTiled(whole, places(1, 1), {1, 1}); }},
  };
  for (const CGSize size : {CGSize{kLong, 1}, CGSize{1, kLong}}) {
    const auto width = static_cast<std::int64_t>(size.width);
    const auto height = static_cast<std::int64_t>(size.height);
    const CGImage image = places(width, height);
    for (const auto& [what, draw] : rows) {
      const auto context = CGContext::make(width, height);
      draw(*context, {0, 0, size.width, size.height}, image);
      const CGImage drawn = context->image();
      EXPECT_NE(pixel(drawn, drawn.width() / 2, drawn.height() / 2), 0U) << what << size.width;
      EXPECT_NE(pixel(drawn, drawn.width() - 1, drawn.height() - 1), 0U) << what << size.width;
    }
  }
}

TEST(CGContext, AnImageKeepsWhatWasDrawnBeforeIt) {
  const auto context = CGContext::make(1, 1);
  context->setFillColor({1, 0, 0, 1});
  context->fillRect({0, 0, 1, 1});
  const CGImage before = context->image();
  context->setFillColor({0, 0, 1, 0.5});
  context->fillRect({0, 0, 1, 1});
  EXPECT_EQ(pixel(before, 0, 0), 0xFFFF0000);
  EXPECT_EQ(pixel(context->image(), 0, 0) >> 24, 0xFFU);
  EXPECT_NE(context->image(), before);
}

TEST(CGContext, MasksByAlphaUntilTheStateIsRestored) {
  const auto mask = CGContext::make(2, 1);
  mask->fillRect({0, 0, 1, 1});
  const auto context = CGContext::make(2, 1);
  context->saveGState();
  context->clipToMask({0, 0, 2, 1}, mask->image());
  context->setFillColor({0, 1, 0, 1});
  context->fillRect({0, 0, 2, 1});
  EXPECT_EQ(pixel(context->image(), 0, 0), 0xFF00FF00);
  EXPECT_EQ(pixel(context->image(), 1, 0), 0U) << "nothing where the mask has no alpha";
  context->restoreGState();
  context->setBlendMode(CGBlendMode::SourceAtop);
  context->setFillColor({0, 0, 1, 1});
  context->fillRect({0, 0, 2, 1});
  EXPECT_EQ(pixel(context->image(), 0, 0), 0xFF0000FF);
  EXPECT_EQ(pixel(context->image(), 1, 0), 0U) << "source-atop keeps the alpha that is there";
}

TEST(CGContext, GoesOnAfterATransformationWithoutAnInverse) {
  const auto context = CGContext::make(1, 1);
  context->saveGState();
  context->scaleCTM(0, 1);
  context->fillRect({0, 0, 1, 1});
  context->drawUpright({0, 0, 1, 1}, places(1, 1), UIImageOrientation::Up);
  context->restoreGState();
  context->drawUpright({0, 0, 1e300, 1e300}, places(1, 1), UIImageOrientation::Up);  // no inverse in numbers
  context->fillRect({0, 0, 1, 1});
  EXPECT_EQ(pixel(context->image(), 0, 0), 0xFF000000);
}

TEST(CGContext, LimitsColoursBeforeItsAlpha) {
  const struct {
    ColorRGBA color;
    double alpha;
    std::uint32_t expected;
  } rows[] = {{{2, -1, 0, 1}, 1, 0xFFFF0000}, {{1, 1, 1, 2}, 0.5, 0x80808080}, {{1, 1, 1, INFINITY}, 0.5, 0x80808080},
              {{1, 1, 1, INFINITY}, 0, 0},    {{NAN, 1, 0, 1}, 1, 0xFF00FF00}, {{1, 1, 1, NAN}, 1, 0},
              {{0, 0, 1, 0.5}, 7, 0x80000080}};
  for (const auto& [color, alpha, expected] : rows) {
    const auto context = CGContext::make(1, 1);
    context->setAlpha(alpha);
    context->setFillColor(color);
    context->fillRect({0, 0, 1, 1});
    EXPECT_EQ(pixel(context->image(), 0, 0), expected) << color.red << ", " << color.alpha << " at " << alpha;
  }
}

TEST(CGContext, DrawsWhatReachesFarBeyondTheBitmap) {
  const struct {
    CGRect rectangle;
    bool covers;
    const char* why;
  } rows[] = {{{0, 0, 9e6, 4}, true, "beyond 2^23 pixels"},
              {{-1e9, 0, 2e9, 4}, true, "from far to far"},
              {{-1e308, -1e308, 1e308, 1e308}, false, "up to the corner only"},
              {{0, 0, 1e308, 1e308}, true, "the largest numbers"},
              {{1e308, 0, 1e308, 4}, false, "whose sum is infinite"},
              {{16'777'216, 0, 4, 4}, false, "as far off as coordinates of 24 bits repeat"},
              {{0, -16'777'216, 4, 4}, false, "the same above"},
              {{4, 4, -1e9, -1e9}, true, "backwards"}};
  for (const auto& [rectangle, covers, why] : rows) {
    const auto context = CGContext::make(4, 4);
    context->fillRect(rectangle);
    for (const std::size_t i : {0U, 3U}) EXPECT_EQ(pixel(context->image(), i, i), covers ? 0xFF000000 : 0U) << why;
  }
  const auto context = CGContext::make(4, 4);
  context->drawUpright({-5e8, -9e6, 1e9, 1e7}, places(200, 200), UIImageOrientation::Up);
  for (const std::size_t i : {0U, 3U}) EXPECT_NEAR(pixel(context->image(), i, i) >> 8 & 0xFF, 180, 1) << "its row";
}

// Two columns, red and blue, within the caps; green between them.
TEST(UIGraphics, StretchedPartsDoNotMixOppositeEdges) {
  const auto bitmap = CGContext::make(6, 6);
  for (const auto& [color, x] : {std::pair(ColorRGBA{1, 0, 0, 1}, 0), {{0, 0, 1, 1}, 1}, {{0, 1, 0, 1}, 2}}) {
    bitmap->setFillColor(color);
    bitmap->fillRect({static_cast<double>(x), 0, 6, 6});
  }
  const UIImage image = UIImage(bitmap->image()).resizableWithCapInsets({2, 2, 2, 2});
  for (const double scale : {1, 2, 3}) {
    const UIGraphicsImageContext canvas({10, 10}, scale);
    image.drawInRect({0, 0, -5, 5});  // has no parts
    image.drawInRect({0, 0, 10, 10});
    const CGImage drawn = canvas.image()->bitmap();
    const auto side = static_cast<std::size_t>(10 * scale);
    const auto cap = static_cast<std::size_t>(2 * scale);
    for (const std::size_t y : {std::size_t{0}, side / 2, side - 1}) {
      EXPECT_EQ(pixel(drawn, 0, y), 0xFFFF0000) << scale << ", " << y;
      EXPECT_EQ(pixel(drawn, cap - 1, y), 0xFF0000FF) << scale << ", " << y;
      EXPECT_EQ(pixel(drawn, cap, y), 0xFF00FF00) << scale << ", " << y;
      EXPECT_EQ(pixel(drawn, side - 1, y), 0xFF00FF00) << scale << ", " << y;
    }
  }
}

TEST(UIGraphics, ContextsNestAndSidesRoundUp) {
  EXPECT_EQ(UIGraphicsImageContext::current(), nullptr);
  {
    const UIGraphicsImageContext outer({1.2, 2}, 2);
    EXPECT_EQ(outer.image()->bitmap().width(), 3U);
    {
      const UIGraphicsImageContext none({0, 5});
      EXPECT_EQ(UIGraphicsImageContext::current(), nullptr);
      EXPECT_FALSE(none.image());
    }
    EXPECT_EQ(UIGraphicsImageContext::current(), outer.context());
  }
  EXPECT_EQ(UIGraphicsImageContext::current(), nullptr);
}

// Where nothing was drawn yet, pixels that fall on pixels are copied: the same bytes as composing them.
TEST(CGContext, CopiesExactlyWhatItWouldCompose) {
  const CGImage image = test::picture(7, 5, [](std::size_t x, std::size_t y) {
    const std::size_t alpha = (x * 59 + y * 97) % 256;  // premultiplied, of every alpha
    return alpha << 24 | (x * 37 + y) % (alpha + 1) << 16 | (x + y * 41) % (alpha + 1) << 8 | alpha * x / 9;
  });
  for (const double x : {-9.0, -3.0, 0.0, 2.0, 11.0}) {
    for (const double y : {-6.0, -2.0, 0.0, 4.0, 12.0}) {
      for (const bool flips : {false, true}) {
        CGImage results[2];
        for (const bool isTouched : {false, true}) {
          const auto context = CGContext::make(11, 8);
          context->setFillColor({0, 0, 0, 0});
          if (isTouched) context->fillRect({0, 0, 1, 1});
          if (flips) {
            context->scaleCTM(1, -1);
            context->translateCTM(0, -8);
          }
          context->drawImage({x, y, 7, 5}, image);
          context->drawUpright({3, 3, 7, 5}, image, UIImageOrientation::Up);
          results[isTouched ? 1 : 0] = context->image();
        }
        for (std::size_t row = 0; row < 8; ++row) {
          ASSERT_EQ(std::memcmp(results[0].bitmap().row(row), results[1].bitmap().row(row), 4 * 11), 0)
              << x << ", " << y << (flips ? " flipped" : "") << ", row " << row;
        }
      }
    }
  }
}

TEST(CGContext, CopiesOnlyWhatItWouldDrawUnchanged) {
  const CGImage image = places(2, 2);
  const auto mask = CGContext::make(2, 2);
  const auto drawn = [&image](auto prepare) {
    const auto context = CGContext::make(2, 2);
    prepare(*context);
    context->drawUpright({0, 0, 2, 2}, image, UIImageOrientation::Up);
    return pixel(context->image(), 1, 1);
  };
  EXPECT_EQ(drawn([](CGContext&) {}), place(1, 1));
  EXPECT_EQ(drawn([](CGContext& c) { c.setAlpha(0); }), 0U);
  EXPECT_EQ(drawn([](CGContext& c) { c.setBlendMode(CGBlendMode::SourceAtop); }), 0U);
  EXPECT_EQ(drawn([&](CGContext& c) { c.clipToMask({0, 0, 2, 2}, mask->image()); }), 0U);
  EXPECT_EQ(drawn([](CGContext& c) { c.translateCTM(0.5, 0); }) >> 24, 0xFFU) << "between two pixels: filtered";
}

TEST(CGContext, MasksAreMadeSmallerByMeansToo) {
  auto stripes = CGBitmap::make(64, 1);
  for (std::size_t x = 0; x < 64; x += 4) stripes->row(0)[4 * x + 3] = 0xFF;
  const auto context = CGContext::make(2, 1);
  context->clipToMask({0, 0, 2, 1}, CGImage(std::move(stripes)));
  context->fillRect({0, 0, 2, 1});
  for (const std::size_t x : {0U, 1U}) EXPECT_NEAR(pixel(context->image(), x, 0) >> 24, 64, 1);
}

// 40 pixels on 19.5, from 0.25 on: the part that each pixel covers, and the border's part of a pixel.
TEST(CGContext, PlacesWhatIsSmallerBetweenPixels) {
  auto white = CGBitmap::make(40, 4);
  std::memset(white->data(), 0xFF, white->bytesPerRow() * 4);
  const auto context = CGContext::make(21, 4);
  context->drawUpright({0.25, 0, 19.5, 4}, CGImage(std::move(white)), UIImageOrientation::Up);
  EXPECT_NEAR(pixel(context->image(), 0, 1) >> 24, 0.75 * 255, 2);
  EXPECT_EQ(pixel(context->image(), 10, 1), 0xFFFFFFFF);
  EXPECT_NEAR(pixel(context->image(), 19, 1) >> 24, 0.75 * 255, 2);
  EXPECT_EQ(pixel(context->image(), 20, 1), 0U);
}

}  // namespace
}  // namespace quorvel
