#include <random>

#include <gtest/gtest.h>
#include <tests/support/Images.h>
#include <tests/support/PNGFiles.h>

#include <quorvel/Platform/ImageIO/ImageReader.h>
#include <quorvel/Platform/ImageIO/PNGWriter.h>
#include <quorvel/Platform/UIKit/UIImagePNG.h>

namespace quorvel {
namespace {

using Draw = std::function<std::uint32_t(std::uint32_t x, std::uint32_t y)>;

std::shared_ptr<const CGBitmap> draw(PixelSize size, const Draw& pixel) {
  return test::picture(size.width, size.height,
                       [&pixel](std::size_t x, std::size_t y) {
                         return pixel(static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y));
                       })
      .sharedBitmap();
}

/// Alpha as given, the other channels no larger.
std::uint32_t translucent(std::uint32_t alpha, std::uint32_t seed) {
  std::uint32_t pixel = alpha << 24;
  for (unsigned c = 0; c < 3; ++c) pixel |= (seed * 2654435761U >> (8 * c) & 0xFF) * alpha / 255 << (8 * c);
  return pixel;
}

struct WriterRow {
  Draw pixel;
  unsigned color;
  unsigned depth;
  const char* why;
};

const WriterRow kRows[] = {
    {[](auto, auto) { return 0xFF123456; }, 3, 1, "one colour"},
    {[](auto x, auto y) { return (x + y) % 2 ? 0xFF123456 : 0; }, 3, 1, "two colours, one transparent"},
    {[](auto x, auto) { return 0xFF000000 | x % 3; }, 3, 2, "three colours"},
    {[](auto x, auto y) { return translucent(255 - x % 4, y % 4); }, 3, 4, "sixteen colours with alpha"},
    {[](auto x, auto y) { return 0xFF000000 | (x % 17) * 7 | y % 2; }, 3, 8, "34 colours"},
    {[](auto x, auto y) { return 0xFF000000 | (x * 5 + y * 3) % 256 * 0x010101; }, 0, 8, "grey"},
    {[](auto x, auto y) { return (x * 5 + y * 3) % 256 * 0x01010101U; }, 3, 8, "white with 256 alphas"},
    {[](auto x, auto y) { return (200 + x % 50) << 24 | (y % 200) * 0x010101; }, 4, 8, "grey with alpha"},
    {[](auto x, auto y) { return 0xFF000000 | x << 16 | y * 3 << 8 | x; }, 2, 8, "a slope"},
    {[](auto x, auto y) { return 0xFF000000 | (x * 7919 + y * 104729) * 2654435761U >> 8; }, 2, 8, "noise"},
    {[](auto x, auto y) { return translucent((x + y) % 256, x * 131 + y); }, 6, 8, "every alpha"},
};

TEST(PNGWriter, GivesEveryPixelBackInTheFewestBits) {
  constexpr PixelSize kSizes[] = {{120, 90}, {67, 131}};
  for (const auto& [pixel, color, depth, why] : kRows) {
    for (const PixelSize size : kSizes) {
      const auto bitmap = draw(size, pixel);
      const auto file = encodePNG(*bitmap);
      ASSERT_TRUE(file) << why;
      EXPECT_EQ(*file, *encodePNG(*bitmap)) << why;
      EXPECT_EQ(file->bytes()[25], color) << why;
      EXPECT_EQ(file->bytes()[24], depth) << why;
      const auto back = readPixels(file->bytes(), test::factsOf(ImageFormat::PNG, size.width, size.height), size);
      ASSERT_TRUE(back) << why;
      EXPECT_TRUE(test::isSame(*back, *bitmap)) << why;
    }
  }
}

TEST(PNGWriter, KeepsEverySampleOfEveryAlpha) {
  const auto bitmap =
      draw({256, 256}, [](auto x, auto y) { return y << 24 | std::min(x, y) | (y - std::min(x, y)) << 8; });
  const auto file = encodePNG(*bitmap);
  const auto back = readPixels(file->bytes(), test::factsOf(ImageFormat::PNG, 256, 256), {256, 256});
  EXPECT_TRUE(test::isSame(*back, *bitmap));
}

TEST(PNGWriter, KeepsRandomPicturesOfRandomSizes) {
  std::mt19937 random(5);
  for (int i = 0; i < 200; ++i) {
    const PixelSize size = {1 + static_cast<std::uint32_t>(random() % 70),
                            1 + static_cast<std::uint32_t>(random() % 70)};
    const std::uint32_t colors = 1 + static_cast<std::uint32_t>(random() % 400);
    const auto seed = static_cast<std::uint32_t>(random());
    const auto bitmap = draw(size, [&](auto x, auto y) {
      const std::uint32_t hash = ((x ^ seed) * 7919 + y * 104729) * 2654435761U >> 7;
      return translucent(seed % 2 ? 255 : hash % colors * 97 % 256, hash % colors);
    });
    const auto file = encodePNG(*bitmap);
    ASSERT_TRUE(file);
    const auto back = readPixels(file->bytes(), test::factsOf(ImageFormat::PNG, size.width, size.height), size);
    ASSERT_TRUE(back);
    ASSERT_TRUE(test::isSame(*back, *bitmap)) << i;
  }
}

TEST(PNGWriter, PacksSlopesMuchSmallerThanTheyAre) {
  const auto slope = draw({400, 300}, [](auto x, auto y) {
    return 0xFF000000 | (x + y) * 255 / 700 << 16 | (2 * x + y) * 255 / 1100 << 8 | (x + 3 * y) * 255 / 1300;
  });
  EXPECT_LT(encodePNG(*slope)->size(), 400U * 300 * 3 / 10);
}

TEST(UIImagePNGRepresentation, TurnsTheImageUpright) {
  EXPECT_FALSE(UIImagePNGRepresentation(UIImage()));
  const CGImage stored(draw({5, 3}, [](auto x, auto y) { return 0xFF000000 | x * 40 << 8 | y * 60; }));
  const auto same = UIImagePNGRepresentation(UIImage(stored, 2));
  ASSERT_TRUE(same);
  EXPECT_EQ(*same, *encodePNG(stored.bitmap()));
  const auto turned = UIImagePNGRepresentation(UIImage(stored, 2, UIImageOrientation::Right));
  ASSERT_TRUE(turned);
  const auto back = readPixels(turned->bytes(), test::factsOf(ImageFormat::PNG, 3, 5), {3, 5});
  ASSERT_TRUE(back);
  // Shown turned to the right, the stored bottom row is the left column.
  EXPECT_EQ(test::rightRows(*back, [&](auto x, auto y) { return test::pixelOf(stored.bitmap(), y, 2 - x); }), 5U);
}

}  // namespace
}  // namespace quorvel
