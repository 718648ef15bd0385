// Blurs, the colour matrix and grey on small pictures: both widths of vectors agree, flat pictures and the range of
// values are kept, and nothing outside the pixels is read or written.
#include <algorithm>

#include <fuzz/FuzzInput.h>

#include <quorvel/Platform/Accelerate/vImage.h>
#include <quorvel/Platform/CoreImage/CoreImage.h>
#include <quorvel/Platform/Foundation/WideKernels.h>

using namespace quorvel;
using fuzz::require;

namespace {

using Bytes = std::vector<std::uint8_t>;

struct Picture {
  std::size_t width;
  std::size_t height;
  Bytes bytes;
  [[nodiscard]] vImage_Buffer buffer() { return {bytes.data(), height, width, 4 * width}; }
};

/// What `filter` makes of the picture, which must be the same without the wide kernels.
template <class Filter>
Picture bothWays(Picture picture, Filter filter) {
  Picture results[2] = {picture, picture};
  for (const bool wide : {false, true}) {
    wide::setEnabled(wide);
    require(filter(picture.buffer(), results[wide ? 1 : 0].buffer()), "a filter of fitting buffers works");
  }
  require(results[0].bytes == results[1].bytes, "both widths of vectors agree");
  return results[0];
}

void requireWithin(const Picture& picture, const Picture& blurred) {
  for (std::size_t channel = 0; channel < 4; ++channel) {
    std::uint8_t low = 255;
    std::uint8_t high = 0;
    for (std::size_t i = channel; i < picture.bytes.size(); i += 4) {
      low = std::min(low, picture.bytes[i]);
      high = std::max(high, picture.bytes[i]);
    }
    for (std::size_t i = channel; i < blurred.bytes.size(); i += 4) {
      require(low <= blurred.bytes[i] && blurred.bytes[i] <= high, "means lie between the least and the greatest");
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const std::size_t width = 1 + input.byte() % 40;
  const std::size_t height = 1 + input.byte() % 40;
  const std::uint32_t lowSide = input.byte();
  const std::uint32_t side = lowSide << (input.byte() % 10) | 1;
  std::int16_t matrix[16];
  for (std::int16_t& factor : matrix) factor = static_cast<std::int16_t>((input.byte() - 128) * 4);
  const std::string_view rest = input.bytes();
  Picture picture{width, height, Bytes(4 * width * height)};
  for (std::size_t i = 0; i < picture.bytes.size() && !rest.empty(); ++i) {
    picture.bytes[i] = static_cast<std::uint8_t>(rest[i % rest.size()]);
  }
  requireWithin(picture, bothWays(picture, [side](const vImage_Buffer& from, const vImage_Buffer& to) {
                  return boxBlurThrice(from, to, side);
                }));
  requireWithin(picture, bothWays(picture, [side](const vImage_Buffer& from, const vImage_Buffer& to) {
                  return vImageBoxConvolve_ARGB8888(from, to, 0, 0, side, side, kvImageEdgeExtend);
                }));
  if (lowSide % 8 == 0) {
    requireWithin(picture, bothWays(picture, [](const vImage_Buffer& from, const vImage_Buffer& to) {
                    return CoreImage::clampedGaussianBlur(from, to);
                  }));
  }
  requireWithin(picture, bothWays(picture, [](const vImage_Buffer& from, const vImage_Buffer& to) {
                  return vImageBoxConvolve_ARGB8888(from, to, 0, 0, 1, 1, kvImageEdgeExtend);
                }));
  (void)bothWays(picture, convertToGray);
  (void)bothWays(picture, [&matrix](const vImage_Buffer& from, const vImage_Buffer& to) {
    return vImageMatrixMultiply_ARGB8888(from, to, matrix, 256);
  });
  return 0;
}
