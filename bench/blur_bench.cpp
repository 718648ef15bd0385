// Blurs, the colour matrix and grey on pictures of a screen and of a camera, beside OpenCV and a plain copy. The size
// of a case is its number of pixels.
#include <cstring>
#include <memory>
#include <string>

#include <bench/Cases.h>

#include <quorvel/Platform/Accelerate/vImage.h>
#include <quorvel/Platform/CoreGraphics/CGImage.h>
#include <quorvel/Platform/CoreImage/CoreImage.h>
#include <quorvel/Platform/Foundation/WideKernels.h>

#if QUORVEL_HAVE_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

namespace quorvel::bench {
namespace {

struct Pictures {
  std::shared_ptr<CGBitmap> source;
  std::shared_ptr<CGBitmap> result;
  std::shared_ptr<CGBitmap> spare;

  Pictures(std::int64_t width, std::int64_t height)
      : source(CGBitmap::make(width, height)),
        result(CGBitmap::make(width, height)),
        spare(CGBitmap::make(width, height)) {
    std::uint32_t state = 1;
    for (std::size_t y = 0; y < source->height(); ++y) {
      for (std::size_t i = 0; i < source->bytesPerRow(); ++i) {
        source->row(y)[i] = static_cast<std::uint8_t>((state = state * 1664525 + 1013904223) >> 24);
      }
    }
  }
  [[nodiscard]] vImage_Buffer from() const { return vImage_Buffer::of(*source); }
  [[nodiscard]] vImage_Buffer to() const { return vImage_Buffer::of(*result); }
  [[nodiscard]] std::size_t size() const { return source->width() * source->height(); }
};

#if QUORVEL_HAVE_OPENCV
cv::Mat matrixOf(CGBitmap& bitmap) {
  return {static_cast<int>(bitmap.height()), static_cast<int>(bitmap.width()), CV_8UC4, bitmap.data(),
          bitmap.bytesPerRow()};
}
#endif

void addCopy(const std::string& name, const Pictures& pictures) {
  add(name, pictures.size(), "floor:memcpy", [pictures] {
    std::memcpy(pictures.result->data(), pictures.source->data(),
                pictures.source->bytesPerRow() * pictures.source->height());
    return pictures.result->data()[0];
  });
}

void addBoxes(const Pictures& pictures, std::uint32_t side) {
  const std::string name = "blur/three boxes of " + std::to_string(side);
  const auto ours = [pictures, side](bool wide) {
    return [pictures, side, wide] {
      wide::setEnabled(wide);
      const bool done = boxBlurThrice(pictures.from(), pictures.to(), side);
      wide::setEnabled(true);
      return done;
    };
  };
  add(name, pictures.size(), "ours", ours(true));
  add(name, pictures.size(), "ours without AVX2", ours(false));
#if QUORVEL_HAVE_OPENCV
  add(name, pictures.size(), "OpenCV", [pictures, side] {
    const cv::Size box(static_cast<int>(side), static_cast<int>(side));
    const cv::Mat first = matrixOf(*pictures.source);
    cv::Mat second = matrixOf(*pictures.result);
    cv::Mat third = matrixOf(*pictures.spare);
    cv::blur(first, second, box, cv::Point(-1, -1), cv::BORDER_REPLICATE);
    cv::blur(second, third, box, cv::Point(-1, -1), cv::BORDER_REPLICATE);
    cv::blur(third, second, box, cv::Point(-1, -1), cv::BORDER_REPLICATE);
    return second.data[0];
  });
#endif
  addCopy(name, pictures);
}

void addColors(const Pictures& pictures) {
  static constexpr std::int16_t kSaturate[16] = {446, -15, -15, 0, -146, 314, -146, 0, -44, -44, 417, 0, 0, 0, 0, 256};
  add("blur/color matrix", pictures.size(), "ours",
      [pictures] { return vImageMatrixMultiply_ARGB8888(pictures.from(), pictures.to(), kSaturate, 256); });
#if QUORVEL_HAVE_OPENCV
  cv::Mat matrix(4, 4, CV_32F);
  for (int i = 0; i < 16; ++i) matrix.at<float>(i % 4, i / 4) = static_cast<float>(kSaturate[i]) / 256;
  add("blur/color matrix", pictures.size(), "OpenCV", [pictures, matrix] {
    cv::Mat result = matrixOf(*pictures.result);
    cv::transform(matrixOf(*pictures.source), result, matrix);
    return result.data[0];
  });
#endif
  addCopy("blur/color matrix", pictures);
  add("blur/gray", pictures.size(), "ours", [pictures] { return convertToGray(pictures.from(), pictures.to()); });
#if QUORVEL_HAVE_OPENCV
  add("blur/gray", pictures.size(), "OpenCV to one channel", [pictures] {
    cv::Mat gray;
    cv::cvtColor(matrixOf(*pictures.source), gray, cv::COLOR_BGRA2GRAY);
    return gray.data[0];
  });
#endif
  addCopy("blur/gray", pictures);
  add("blur/gaussian of 30", pictures.size(), "ours",
      [pictures] { return CoreImage::clampedGaussianBlur(pictures.from(), pictures.to()); });
#if QUORVEL_HAVE_OPENCV
  add("blur/gaussian of 30", pictures.size(), "OpenCV", [pictures] {
    cv::Mat result = matrixOf(*pictures.result);
    cv::GaussianBlur(matrixOf(*pictures.source), result, cv::Size(241, 241), 30, 30, cv::BORDER_REPLICATE);
    return result.data[0];
  });
#endif
  addCopy("blur/gaussian of 30", pictures);
}

}  // namespace
}  // namespace quorvel::bench

int main(int argc, char** argv) {
#if QUORVEL_HAVE_OPENCV
  cv::setNumThreads(1);
#endif
  for (const auto& [width, height] : {std::pair(1170, 2532), std::pair(4032, 3024)}) {
    const quorvel::bench::Pictures pictures(width, height);
    for (const std::uint32_t side : {3U, 39U, 113U, 169U}) quorvel::bench::addBoxes(pictures, side);
    quorvel::bench::addColors(pictures);
  }
  return quorvel::bench::run(argc, argv);
}
