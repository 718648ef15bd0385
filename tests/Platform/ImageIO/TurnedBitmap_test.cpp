#include <gtest/gtest.h>
#include <tests/support/Images.h>

#include <quorvel/Platform/ImageIO/ImageFacts.h>
#include <quorvel/Platform/ImageIO/TurnedBitmap.h>

namespace quorvel {
namespace {

/// Opaque pixels, each of another colour.
std::shared_ptr<const CGBitmap> numbered(std::int64_t width, std::int64_t height) {
  return test::picture(
             width, height,
             [width](std::size_t x, std::size_t y) { return 0xFF000000 + y * static_cast<std::size_t>(width) + x; })
      .sharedBitmap();
}

std::vector<std::uint32_t> pixelsOf(const CGBitmap& bitmap) {
  std::vector<std::uint32_t> pixels(bitmap.width() * bitmap.height());
  for (std::size_t y = 0; y < bitmap.height(); ++y) {
    std::memcpy(pixels.data() + y * bitmap.width(), bitmap.row(y), 4 * bitmap.width());
  }
  return pixels;
}

struct TurnRow {
  unsigned exif;
  std::vector<std::uint32_t> shown;  // of the stored picture "0 1 2" over "3 4 5"
  std::size_t width;
};
const TurnRow kTurns[] = {
    {1, {0, 1, 2, 3, 4, 5}, 3}, {2, {2, 1, 0, 5, 4, 3}, 3}, {3, {5, 4, 3, 2, 1, 0}, 3}, {4, {3, 4, 5, 0, 1, 2}, 3},
    {5, {0, 3, 1, 4, 2, 5}, 2}, {6, {3, 0, 4, 1, 5, 2}, 2}, {7, {5, 2, 4, 1, 3, 0}, 2}, {8, {2, 5, 1, 4, 0, 3}, 2},
};

TEST(TurnedBitmap, MovesPixelsToWhereEXIFWantsThem) {
  for (const auto& [exif, shown, width] : kTurns) {
    const auto turned = turnedBitmap(numbered(3, 2), orientationOfEXIF(exif));
    ASSERT_TRUE(turned);
    EXPECT_EQ(turned->width(), width) << exif;
    std::vector<std::uint32_t> numbers = pixelsOf(*turned);
    for (std::uint32_t& number : numbers) number &= 0xFFFFFF;
    EXPECT_EQ(numbers, shown) << exif;
  }
}

/// Sides below, at and beyond what is moved together.
TEST(TurnedBitmap, ShowsWhatDrawingShows) {
  for (const auto& [width, height] : {std::pair{1, 1}, {1, 40}, {15, 16}, {16, 17}, {33, 47}, {64, 5}}) {
    for (const TurnRow& row : kTurns) {
      const UIImageOrientation orientation = orientationOfEXIF(row.exif);
      const auto bitmap = numbered(width, height);
      const UIImage stored(CGImage(bitmap), 1, orientation);
      const UIGraphicsImageContext context(stored.size());
      stored.drawInRect({0, 0, stored.size().width, stored.size().height});
      const auto turned = turnedBitmap(bitmap, orientation);
      ASSERT_TRUE(turned);
      EXPECT_EQ(pixelsOf(*turned), pixelsOf(context.image()->bitmap().bitmap()))
          << width << " x " << height << ", orientation " << row.exif;
    }
  }
}

TEST(TurnedBitmap, StopsAndTellsHowFarItIs) {
  EXPECT_FALSE(turnedBitmap(nullptr, UIImageOrientation::Right));
  std::stop_source source;
  std::vector<double> told;
  const ImageWork work{source.get_token(), [&](double done) { told.push_back(done); }};
  EXPECT_TRUE(turnedBitmap(numbered(40, 50), UIImageOrientation::Left, work));
  EXPECT_TRUE(std::is_sorted(told.begin(), told.end()) && told.front() > 0 && told.back() == 1);
  source.request_stop();
  EXPECT_FALSE(turnedBitmap(numbered(40, 50), UIImageOrientation::Left, work));
}

}  // namespace
}  // namespace quorvel
