#include <gtest/gtest.h>
#include <tests/support/Pictures.h>

#include <quorvel/Platform/Accelerate/vImage.h>
#include <quorvel/Platform/Foundation/WideKernels.h>

namespace quorvel {
namespace {

using test::draw;
using test::Exact;
using test::Motif;
using test::Picture;

/// Without the wide kernels and with them, where the processor has them.
class BothWidths {
 public:
  ~BothWidths() { wide::setEnabled(true); }
  template <class Check>
  void operator()(Check check) const {
    for (const bool wide : {false, true}) {
      wide::setEnabled(wide);
      SCOPED_TRACE(wide ? "wide" : "portable");
      check();
    }
  }
};

Exact boxMeans(const Exact& line, std::uint32_t side) { return test::boxMeans(line, side / 2); }

Exact threeBoxMeans(const Picture& picture, std::uint32_t side) {
  Exact exact = test::exactOf(picture);
  for (int pass = 0; pass < 3; ++pass) {
    test::filterLines(exact, picture.width, picture.height, [side](const Exact& line) { return boxMeans(line, side); });
  }
  return exact;
}

Picture blurred(Picture picture, std::uint32_t side) {
  Picture result(picture.width, picture.height);
  EXPECT_TRUE(boxBlurThrice(picture.buffer(), result.buffer(), side));
  return result;
}

struct SizeRow {
  std::size_t width;
  std::size_t height;
  std::uint32_t side;
  const char* why;
};
constexpr SizeRow kSizes[] = {
    {1, 1, 3, "a single pixel is its own surroundings"},
    {2, 2, 3, "first and last difference are one"},
    {3, 1, 3, "narrower than a vector, one row"},
    {1, 9, 5, "one column"},
    {4, 8, 9, "one vector, one band"},
    {5, 9, 7, "the last vector overlaps, the last band has one row"},
    {9, 5, 9, "radius is side of the picture less one"},
    {9, 6, 11, "radius is the height less one"},
    {6, 9, 13, "radius is the width"},
    {7, 7, 41, "the box is larger than the picture"},
    {23, 17, 1, "a side of one keeps the picture"},
    {23, 17, 131071, "the largest side"},
    {37, 41, 3, "gain of small boxes"},
    {64, 50, 17, "borders of all stretches apart"},
    {64, 50, 31, "stretches of both ends overlap"},
    {40, 33, 39, "a preset's side"},
    {61, 70, 81, "last side with 31 steps"},
    {61, 70, 83, "first with fewer"},
    {50, 61, 127, "seven steps"},
    {50, 61, 169, "three steps"},
    {50, 61, 177, "last side whose sums have 32 bits"},
    {50, 61, 179, "first side whose sums have 64 bits"},
};

TEST(BoxBlurThrice, StaysAtTheExactMeans) {
  BothWidths()([] {
    for (const auto& [width, height, side, why] : kSizes) {
      for (const Motif motif : test::kMotifs) {
        const Picture picture = draw(motif, width, height, 4 * (side % 3));
        const double largest = deviation(blurred(picture, side), threeBoxMeans(picture, side)).largest;
        EXPECT_LE(largest, 0.72) << width << " x " << height << ", side " << side << ", " << motif << ": " << why;
      }
    }
  });
}

TEST(BoxBlurThrice, HasNoBias) {
  for (const std::uint32_t side : {3U, 39U, 113U, 169U}) {
    // Pictures that change in one direction only: what the other rounds must not add up.
    for (const bool lying : {false, true}) {
      const Picture slope = draw(Motif::Slope, 12, 3000);
      Picture picture(lying ? 3000 : 12, lying ? 12 : 3000);
      for (std::size_t y = 0; y < picture.height; ++y) {
        for (std::size_t i = 0; i < 4 * picture.width; ++i) {
          picture.at(i / 4, y, i % 4) = slope.at(0, lying ? i / 4 : y, i % 4);
        }
      }
      EXPECT_LT(std::fabs(deviation(blurred(picture, side), threeBoxMeans(picture, side)).mean), 0.02)
          << side << (lying ? " along rows" : " down columns");
    }
  }
}

TEST(BoxBlurThrice, WidthsOfVectorsAgree) {
  for (std::uint32_t side = 3; side < 260; side += side < 20 ? 2 : 14) {
    for (const std::size_t width : {2U, 4U, 5U, 31U, 130U}) {
      const Picture picture = draw(Motif::Noise, width, 200 - width);
      wide::setEnabled(false);
      const Picture portable = blurred(picture, side);
      wide::setEnabled(true);
      EXPECT_EQ(blurred(picture, side).bytes, portable.bytes) << "width " << width << ", side " << side;
    }
  }
}

TEST(BoxBlurThrice, KeepsFlatAreasOfEveryLevel) {
  BothWidths()([] {
    for (const std::uint32_t side : {3U, 5U, 39U, 81U, 113U, 169U, 177U, 179U, 4097U}) {
      // Each channel has a level of its own.
      for (std::size_t level = 0; level < 256; level += 4) {
        Picture picture(5, 9);
        for (std::size_t i = 0; i < picture.bytes.size(); ++i) {
          picture.bytes[i] = static_cast<std::uint8_t>(level + i % 4);
        }
        EXPECT_EQ(blurred(picture, side).bytes, picture.bytes) << "level " << level << ", side " << side;
      }
    }
  });
}

TEST(BoxBlurThrice, WritesOnlyThePixels) {
  Picture picture = draw(Motif::Noise, 13, 21);
  Picture result(13, 21, 12);
  std::fill(result.bytes.begin(), result.bytes.end(), std::uint8_t{0xA5});
  const Picture before = picture;
  ASSERT_TRUE(boxBlurThrice(picture.buffer(), result.buffer(), 9));
  EXPECT_EQ(picture.bytes, before.bytes);
  for (std::size_t y = 0; y + 1 < 21; ++y) {
    for (std::size_t i = 4 * 13; i < result.rowBytes; ++i) ASSERT_EQ(result.bytes[y * result.rowBytes + i], 0xA5);
  }
}

TEST(BoxBlurThrice, StopsAndTellsHowFarItIs) {
  Picture picture = draw(Motif::Noise, 10, 100);
  Picture result(10, 100);
  std::stop_source source;
  std::vector<double> parts;
  ImageWork work{source.get_token(), [&parts](double done) { parts.push_back(done); }};
  EXPECT_TRUE(boxBlurThrice(picture.buffer(), result.buffer(), 9, work));
  EXPECT_TRUE(std::is_sorted(parts.begin(), parts.end()));
  EXPECT_GT(parts.size(), 10U);
  EXPECT_EQ(parts.back(), 1);
  parts.clear();
  work.progress = [&](double done) {
    parts.push_back(done);
    if (done > 0.4) source.request_stop();
  };
  EXPECT_FALSE(boxBlurThrice(picture.buffer(), result.buffer(), 9, work));
  EXPECT_LT(parts.back(), 0.6);
}

TEST(VImage, RefusesWhatDoesNotFit) {
  Picture picture(4, 4);
  Picture other(4, 5);
  const vImage_Buffer good = picture.buffer();
  vImage_Buffer shortRows = good;
  shortRows.rowBytes = 15;
  vImage_Buffer empty = good;
  empty.width = 0;
  const std::int16_t matrix[16] = {};
  for (const vImage_Buffer& bad : {other.buffer(), shortRows, empty, vImage_Buffer{}}) {
    EXPECT_FALSE(boxBlurThrice(good, bad, 3));
    EXPECT_FALSE(convertToGray(bad, good));
    EXPECT_FALSE(vImageMatrixMultiply_ARGB8888(good, bad, matrix, 256));
  }
  EXPECT_FALSE(vImageMatrixMultiply_ARGB8888(good, good, matrix, 0));
  Picture result(4, 4);
  for (const std::uint32_t even : {0U, 2U, 4U}) EXPECT_FALSE(boxBlurThrice(good, result.buffer(), even)) << even;
  EXPECT_FALSE(vImageBoxConvolve_ARGB8888(good, result.buffer(), 0, 0, 3, 2, kvImageEdgeExtend));
  EXPECT_FALSE(vImageBoxConvolve_ARGB8888(good, result.buffer(), 0, 0, 3, 3, 0)) << "no other edges";
  EXPECT_FALSE(vImageBoxConvolve_ARGB8888(good, result.buffer(), 1, 0, 3, 3, kvImageEdgeExtend)) << "beyond the source";
}

TEST(BoxConvolve, RoundsTheExactMeanAtItsPlace) {
  struct Row {
    std::size_t x, y;
    std::uint32_t height, width;
    const char* why;
  };
  constexpr Row kRows[] = {{0, 0, 1, 1, "a copy"},
                           {0, 0, 3, 5, "sides of their own"},
                           {3, 2, 5, 3, "an offset"},
                           {5, 6, 9, 1, "columns only"},
                           {0, 0, 99, 101, "larger than the picture"},
                           {2, 2, 131071, 131071, "the largest box"}};
  Picture picture = draw(Motif::Noise, 19, 15, 8);
  for (const auto& [x, y, height, width, why] : kRows) {
    Exact exact = test::exactOf(picture);
    bool columns = true;
    std::size_t lines = 0;
    test::filterLines(exact, 19, 15, [&](const Exact& line) {
      columns = lines++ < std::size_t{4} * 19;
      return boxMeans(line, columns ? height : width);
    });
    Picture result(19 - x, 15 - y);
    ASSERT_TRUE(vImageBoxConvolve_ARGB8888(picture.buffer(), result.buffer(), x, y, height, width, kvImageEdgeExtend));
    for (std::size_t i = 0; i < result.width; ++i) {
      for (std::size_t j = 0; j < result.height; ++j) {
        EXPECT_NEAR(result.at(i, j, 2), exact[((y + j) * 19 + x + i) * 4 + 2], 0.5 + 1e-6) << why << i << ", " << j;
      }
    }
  }
}

TEST(MatrixMultiply, RoundsAndClamps) {
  constexpr std::int16_t kSaturate[16] = {446, -15, -15, 0, -146, 314, -146, 0, -44, -44, 417, 0, 0, 0, 0, 256};
  constexpr std::int16_t kExtremes[16] = {32767, -32768, 1, 128,  32767, -32768, -1, 127,
                                          32767, -32768, 0, -128, 32767, -32768, 3,  -1};
  BothWidths()([&] {
    for (const auto& matrix : {kSaturate, kExtremes}) {
      for (const std::int32_t divisor : {256, 1, 255, 100000}) {
        for (std::size_t width = 1; width < 20; ++width) {
          const Picture picture = draw(width % 2 == 0 ? Motif::Noise : Motif::Extremes, width, 40, 4);
          Picture result = picture;
          ASSERT_TRUE(vImageMatrixMultiply_ARGB8888(result.buffer(), result.buffer(),
                                                    std::span<const std::int16_t, 16>(matrix, 16), divisor));
          for (std::size_t pixel = 0; pixel < width * 40; ++pixel) {
            for (std::size_t j = 0; j < 4; ++j) {
              const auto channel = [&](std::size_t i) { return picture.at(pixel % width, pixel / width, i); };
              double sum = 0;
              for (std::size_t i = 0; i < 4; ++i) sum += channel(i) * matrix[4 * i + j];
              const double expected = std::clamp(std::floor(sum / divisor + 0.5), 0.0, 255.0);
              ASSERT_EQ(result.at(pixel % width, pixel / width, j), expected) << sum << " by " << divisor;
            }
          }
        }
      }
    }
  });
}

TEST(ConvertToGray, IsTheRuleForEveryColor) {
  BothWidths()([] {
    Picture picture(4099, 1);
    std::vector<std::uint8_t> expected(picture.bytes.size());
    for (std::uint32_t from = 0; from < 1U << 24; from += 4099) {
      for (std::uint32_t i = 0; i < 4099; ++i) {
        const std::uint32_t color = from + i;
        std::uint8_t* const pixel = &picture.bytes[4 * std::size_t{i}];
        for (unsigned channel = 0; channel < 4; ++channel)
          pixel[channel] = static_cast<std::uint8_t>(color >> 8 * channel);
        pixel[3] = static_cast<std::uint8_t>(i);
        const auto gray = static_cast<std::uint8_t>(0.3 * pixel[2] + 0.59 * pixel[1] + 0.11 * pixel[0]);
        std::fill_n(&expected[4 * std::size_t{i}], 3, gray);
        expected[4 * std::size_t{i} + 3] = pixel[3];
      }
      ASSERT_TRUE(convertToGray(picture.buffer(), picture.buffer()));
      ASSERT_EQ(picture.bytes, expected) << "colors from " << from;
    }
  });
}

/// All pairs of a channel above an alpha and of one beneath it, in rows whose last block is not whole.
TEST(LayUnder, BlendsEveryValueToTheNearest) {
  constexpr std::size_t kWidth = 256 + 3;
  std::vector<std::uint8_t> under(4 * kWidth);
  for (std::size_t i = 0; i < under.size(); ++i) under[i] = static_cast<std::uint8_t>(i / 4 + i % 4);
  for (unsigned alpha = 0; alpha < 256; ++alpha) {
    std::vector<std::uint8_t> row(4 * kWidth);
    for (std::size_t i = 0; i < row.size(); ++i) row[i] = static_cast<std::uint8_t>(i % 4 == 3 ? alpha : i * alpha);
    auto over = under;
    auto expected = row;
    auto expectedOver = under;
    const unsigned channels[] = {alpha / 3, alpha, 255, alpha};
    std::uint32_t pixel = 0;
    for (unsigned c = 0; c < 4; ++c) pixel |= channels[c] << (8 * c);
    for (std::size_t i = 0; i < row.size(); ++i) {
      // 255 is odd: no quotient lies in the middle.
      const unsigned shining = (2 * under[i] * (255 - alpha) + 255) / 510;
      expected[i] = static_cast<std::uint8_t>(std::min(255U, row[i] + shining));
      expectedOver[i] = static_cast<std::uint8_t>(std::min(255U, channels[i % 4] + shining));
    }
    ASSERT_TRUE(layUnder({under.data(), 1, kWidth, under.size()}, {row.data(), 1, kWidth, row.size()}));
    layOver(pixel, {over.data(), 1, kWidth, over.size()});
    ASSERT_EQ(row, expected) << alpha;
    ASSERT_EQ(over, expectedOver) << alpha;
  }
  EXPECT_FALSE(layUnder({under.data(), 1, 3, 12}, {under.data(), 1, 4, 16})) << "different sizes";
}

}  // namespace
}  // namespace quorvel
