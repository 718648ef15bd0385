#include <gtest/gtest.h>
#include <tests/support/Pictures.h>

#include <quorvel/Platform/CoreImage/CoreImage.h>
#include <quorvel/Platform/Foundation/WideKernels.h>

namespace quorvel {
namespace {

using test::draw;
using test::Exact;
using test::Picture;

Picture blurred(Picture picture, bool wide) {
  Picture result(picture.width, picture.height);
  wide::setEnabled(wide);
  EXPECT_TRUE(CoreImage::clampedGaussianBlur(picture.buffer(), result.buffer()));
  wide::setEnabled(true);
  return result;
}

/// The bell far beyond where the blur cuts it off.
Exact gaussianMeans(const Picture& picture) {
  std::vector<double> bell(240);
  for (std::size_t k = 0; k < bell.size(); ++k) bell[k] = std::exp(-static_cast<double>(k * k) / 1800);
  Exact exact = test::exactOf(picture);
  test::filterLines(exact, picture.width, picture.height,
                    [&bell](const Exact& line) { return test::weightedMeans(line, bell); });
  return exact;
}

struct SizeRow {
  std::size_t width;
  std::size_t height;
  const char* why;
};
constexpr SizeRow kSizes[] = {
    {1, 1, "a single pixel"},
    {3, 2, "narrower than a vector"},
    {5, 13, "the last vector overlaps, and the last band is short"},
    {300, 9, "wider than the bell"},
    {6, 290, "higher than the bell"},
};

TEST(ClampedGaussianBlur, StaysAtTheBell) {
  for (const auto& [width, height, why] : kSizes) {
    for (const test::Motif motif : test::kMotifs) {
      const Picture picture = draw(motif, width, height, 4);
      const Picture result = blurred(picture, true);
      EXPECT_EQ(result.bytes, blurred(picture, false).bytes) << "widths of vectors agree";
      const double largest = deviation(result, gaussianMeans(picture)).largest;
      EXPECT_LT(largest, 0.6) << width << " x " << height << ", " << motif << ": " << why;
    }
  }
}

TEST(ClampedGaussianBlur, KeepsFlatPictures) {
  for (std::size_t level = 0; level < 256; ++level) {
    Picture picture(5, 3);
    std::fill(picture.bytes.begin(), picture.bytes.end(), static_cast<std::uint8_t>(level));
    EXPECT_EQ(blurred(picture, true).bytes, picture.bytes) << level;
  }
}

TEST(ClampedGaussianBlur, StopsAndRefuses) {
  Picture picture(10, 40);
  Picture result(10, 40);
  std::stop_source source;
  int calls = 0;
  const ImageWork work{source.get_token(), [&](double) {
                         if (++calls == 2) source.request_stop();
                       }};
  EXPECT_FALSE(CoreImage::clampedGaussianBlur(picture.buffer(), result.buffer(), work));
  EXPECT_EQ(calls, 2);
  Picture other(10, 41);
  EXPECT_FALSE(CoreImage::clampedGaussianBlur(picture.buffer(), other.buffer()));
}

}  // namespace
}  // namespace quorvel
