#include <cmath>

#include <gtest/gtest.h>
#include <tests/support/Images.h>
#include <tests/support/Row.h>

#include <quorvel/Extensions/UIKit/UIImage+Extension.h>
#include <quorvel/Platform/UIKit/UIImagePNG.h>

namespace quorvel {
namespace {

using test::noise;
using test::pixel;
using test::place;
using test::places;

TEST(ScaledImage, RoundsUpToWholePoints) {
  const test::Row<CGSize, double, double, std::optional<CGSize>, test::Why> rows[] = {
      {{3, 3}, 1, 0.5, CGSize{2, 2}, "1.5 is 2"},
      {{5, 1}, 1, 0.5, CGSize{3, 1}, "half a point is one"},
      {{12, 30}, 3, 0.5, CGSize{2, 5}, "points, not pixels"},
      {{4, 4}, 1, 1.5, CGSize{6, 6}, "larger"},
      {{4, 4}, 1, 1e-9, CGSize{1, 1}, "as small as it gets"},
      {{4, 4}, 1, 0, std::nullopt, "nothing left"},
      {{4, 4}, 1, -1, std::nullopt, "below nothing"},
      {{4, 4}, 1, NAN, std::nullopt, "no number"},
      {{4, 4}, 1, 1e9, std::nullopt, "beyond the limits of images"},
  };
  for (const auto& [pixels, scale, factor, expected, why] : rows) {
    const UIImage image(places(static_cast<std::int64_t>(pixels.width), static_cast<std::int64_t>(pixels.height)),
                        scale);
    const auto scaled = scaledImage(image, factor);
    ASSERT_EQ(scaled.has_value(), expected.has_value()) << why;
    if (!expected) continue;
    EXPECT_EQ(scaled->size(), *expected) << why;
    EXPECT_EQ(scaled->scale(), scale) << why;
  }
  EXPECT_FALSE(scaledImage(UIImage(), 0.5));
  const auto turned = scaledImage(UIImage(places(4, 2), 1, UIImageOrientation::Right), 1);
  EXPECT_EQ(pixel(*turned, 1, 0), place(0, 0)) << "upright";
}

std::int64_t fileSize(const UIImage& image) {
  return static_cast<std::int64_t>(UIImagePNGRepresentation(image)->size());
}

TEST(ScaledImageLimitedLength, HalvesUntilTheFileFits) {
  const UIImage image(noise(65, 40));
  const std::int64_t whole = fileSize(image);
  EXPECT_EQ(scaledImageLimitedLength(image, whole), image) << "exactly its bytes fit: the receiver itself";
  const auto half = scaledImageLimitedLength(image, whole - 1);
  ASSERT_TRUE(half);
  EXPECT_EQ(half->size(), (CGSize{33, 20}));
  const std::int64_t budget = fileSize(*half) - 1;
  const auto quarter = scaledImageLimitedLength(image, budget);
  EXPECT_EQ(quarter->size(), (CGSize{17, 10}));
  EXPECT_LE(fileSize(*quarter), budget);
}

TEST(ScaledImageLimitedLength, EndsWhereNothingShrinks) {
  for (const std::int64_t budget : {std::int64_t{1}, std::int64_t{0}, std::int64_t{-1}, INT64_MIN}) {
    const auto smallest = scaledImageLimitedLength(UIImage(noise(37, 3)), budget);
    ASSERT_TRUE(smallest) << budget;
    EXPECT_EQ(smallest->size(), (CGSize{1, 1})) << budget;
  }
  const UIImage point(places(3, 3), 3);
  EXPECT_EQ(scaledImageLimitedLength(point, 1), point) << "a point of nine pixels stays as it is";
  const UIImage part(places(1, 1), 2);
  EXPECT_EQ(scaledImageLimitedLength(part, 1), part) << "half a point would grow to one";
  EXPECT_FALSE(scaledImageLimitedLength(UIImage(), 1000)) << "no bitmap, no file";
}

}  // namespace
}  // namespace quorvel
