#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include <gtest/gtest.h>
#include <tests/support/Pictures.h>
#include <tests/support/Row.h>

#include <quorvel/Platform/Foundation/WideKernels.h>
#include <quorvel/Platform/ImageIO/AreaShrink.h>

namespace quorvel {
namespace {

using test::draw;
using test::Motif;
using test::Picture;

std::shared_ptr<CGBitmap> shrinkOnce(const Picture& picture, PixelSize size) {
  auto result = CGBitmap::make(size.width, size.height);
  auto shrinker = AreaShrink::make(
      {static_cast<std::uint32_t>(picture.width), static_cast<std::uint32_t>(picture.height)}, *result);
  if (!shrinker) return nullptr;
  for (std::size_t y = 0; y < picture.height; ++y) {
    // A copy of exact size, so that a sanitizer sees what reads on.
    const std::vector<std::uint8_t> row(
        picture.bytes.begin() + static_cast<std::ptrdiff_t>(y * picture.rowBytes),
        picture.bytes.begin() + static_cast<std::ptrdiff_t>(y * picture.rowBytes + 4 * picture.width));
    shrinker->addRow(row.data());
  }
  EXPECT_EQ(shrinker->rowsDone(), size.height);
  return result;
}

/// The same with and without the wide kernels.
std::shared_ptr<CGBitmap> shrink(const Picture& picture, PixelSize size) {
  auto result = shrinkOnce(picture, size);
  wide::setEnabled(false);
  const auto portable = shrinkOnce(picture, size);
  wide::setEnabled(true);
  for (std::size_t y = 0; result && y < size.height; ++y) {
    if (std::memcmp(result->row(y), portable->row(y), 4 * size.width) == 0) continue;
    ADD_FAILURE() << "row " << y << " differs between the widths of vectors";
    break;
  }
  return result;
}

/// How much of the unit [pixel, pixel + 1) lies within [low, high).
double part(double low, double high, std::size_t pixel) {
  const double start = static_cast<double>(pixel);
  return std::max(0.0, std::min(high, start + 1) - std::max(low, start));
}

double meanAt(const Picture& picture, PixelSize size, std::size_t x, std::size_t y, std::size_t channel) {
  const double across = static_cast<double>(picture.width) / size.width;
  const double down = static_cast<double>(picture.height) / size.height;
  const double left = static_cast<double>(x) * across;
  const double top = static_cast<double>(y) * down;
  double sum = 0;
  for (auto row = static_cast<std::size_t>(top); row < picture.height && static_cast<double>(row) < top + down; ++row) {
    for (auto column = static_cast<std::size_t>(left);
         column < picture.width && static_cast<double>(column) < left + across; ++column) {
      sum += picture.at(column, row, channel) * part(left, left + across, column) * part(top, top + down, row);
    }
  }
  return sum / (across * down);
}

double largestDifference(const Picture& picture, PixelSize size) {
  const auto result = shrink(picture, size);
  if (!result) return HUGE_VAL;
  double largest = 0;
  for (std::size_t y = 0; y < size.height; ++y) {
    for (std::size_t i = 0; i < 4 * size.width; ++i) {
      largest = std::max(largest, std::abs(result->row(y)[i] - meanAt(picture, size, i / 4, y, i % 4)));
    }
  }
  return largest;
}

struct SizeRow {
  std::uint32_t width, height;
  PixelSize wanted;
  const char* why;
};

constexpr SizeRow kSizes[] = {
    {1, 1, {1, 1}, "one pixel"},
    {17, 9, {17, 9}, "nothing to do"},
    {17, 9, {17, 4}, "only lower"},
    {17, 9, {3, 9}, "only narrower"},
    {64, 64, {32, 32}, "halves"},
    {63, 63, {32, 32}, "every pixel but one in two parts"},
    {128, 128, {127, 127}, "hardly smaller: two pixels for each, half words at their limit"},
    {129, 129, {128, 128}, "the first for words"},
    {126, 126, {25, 25}, "divisor just within single precision"},
    {127, 127, {25, 25}, "divisor just beyond single precision"},
    {600, 5, {7, 1}, "many pixels for each, sums in half words"},
    {601, 601, {1, 1}, "all in one"},
    {32766, 1, {1, 1}, "longest row"},
    {32766, 2, {32765, 1}, "longest row, hardly shorter"},
    {1, 32766, {1, 2}, "highest column"},
};

TEST(AreaShrink, IsTheExactMeanOfWhatAPixelCovers) {
  for (const auto& [width, height, wanted, why] : kSizes) {
    for (const Motif motif : {Motif::Noise, Motif::Extremes}) {
      EXPECT_LE(largestDifference(draw(motif, width, height), wanted), 0.5 + 1.0 / 128)
          << width << "x" << height << " to " << wanted.width << "x" << wanted.height << ": " << why << ", " << motif;
    }
  }
  std::mt19937 random(7);
  const auto upTo = [&random](std::uint32_t most) { return 1 + static_cast<std::uint32_t>(random() % most); };
  for (int round = 0; round < 200; ++round) {
    const std::uint32_t width = upTo(200);
    const std::uint32_t height = upTo(200);
    const PixelSize wanted{upTo(width), upTo(height)};
    EXPECT_LE(largestDifference(draw(Motif::Noise, width, height), wanted), 0.5 + 1.0 / 128)
        << width << "x" << height << " to " << wanted.width << "x" << wanted.height;
  }
}

TEST(AreaShrink, KeepsOneColourWhateverTheSizes) {
  std::mt19937 random(11);
  for (int round = 0; round < 200; ++round) {
    Picture picture(1 + random() % 700, 1 + random() % 200);
    const std::uint8_t value = round % 3 == 0 ? 255 : static_cast<std::uint8_t>(random());
    std::fill(picture.bytes.begin(), picture.bytes.end(), value);
    const PixelSize wanted{1 + static_cast<std::uint32_t>(random() % picture.width),
                           1 + static_cast<std::uint32_t>(random() % picture.height)};
    const auto result = shrink(picture, wanted);
    ASSERT_TRUE(result);
    for (std::size_t y = 0; y < wanted.height; ++y) {
      for (std::size_t i = 0; i < 4 * wanted.width; ++i) ASSERT_EQ(result->row(y)[i], value) << round;
    }
  }
}

TEST(AreaShrink, HalvesGoUp) {
  for (const std::uint32_t side : {2U, 6U, 126U, 200U}) {
    Picture picture(side, side);
    for (std::size_t i = 0; i < picture.bytes.size(); ++i) {
      picture.bytes[i] = static_cast<std::uint8_t>(4 + (i / 4 % side + i / 4 / side) % 2);
    }
    const auto result = shrink(picture, {side / 2, side / 2});
    ASSERT_TRUE(result);
    EXPECT_EQ(result->row(0)[0], 5) << side;
  }
}

TEST(AreaShrink, LeavesOutWhatADecoderHasBeyondThePicture) {
  // 13 by 5 at 4/8 are 6.5 by 2.5 of the decoder's 7 by 3 pixels: only half of the last column and row counts.
  const auto result = CGBitmap::make(1, 1);
  auto shrinker = AreaShrink::make({13, 5}, 4, *result);
  ASSERT_TRUE(shrinker);
  std::vector<std::uint8_t> row(28, 0);
  std::fill(row.end() - 4, row.end(), std::uint8_t{255});
  for (int y = 0; y < 2; ++y) shrinker->addRow(row.data());
  std::fill(row.begin(), row.end(), std::uint8_t{0});
  shrinker->addRow(row.data());
  EXPECT_EQ(result->row(0)[0], 16) << "255 in 1 of 16.25";
  EXPECT_FALSE(AreaShrink::make({13, 5}, 4, *CGBitmap::make(7, 1))) << "more than it covers";
}

TEST(AreaShrink, RefusesWhatIsLargerThanTheSourceAndIgnoresRowsTooMany) {
  const auto result = CGBitmap::make(4, 4);
  EXPECT_FALSE(AreaShrink::make({3, 9}, *result));
  EXPECT_FALSE(AreaShrink::make({9, 3}, *result));
  EXPECT_FALSE(AreaShrink::make({0, 0}, *result));
  EXPECT_FALSE(AreaShrink::make({40'000, 40}, *result));
  auto shrinker = AreaShrink::make({4, 8}, *result);
  ASSERT_TRUE(shrinker);
  const std::vector<std::uint8_t> row(16, 9);
  for (int i = 0; i < 20; ++i) shrinker->addRow(row.data());
  EXPECT_EQ(shrinker->rowsDone(), 4U);
}

}  // namespace
}  // namespace quorvel
