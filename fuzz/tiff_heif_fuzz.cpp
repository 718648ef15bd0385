// TIFF, HEIC and AVIF files from any bytes: our side of the libraries reads and writes nothing outside, and keeps to
// what the facts say.
#include <fuzz/FuzzInput.h>

#include <quorvel/Platform/ImageIO/ImageReader.h>

using namespace quorvel;
using fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 4) return 0;
  std::vector<std::uint8_t> file(data + 3, data + size);
  ImageFacts facts;
  facts.format = data[0] % 2 == 0 ? ImageFormat::TIFF : ImageFormat::HEIC;
  facts.width = 1 + data[1] % 64;
  facts.height = 1 + data[2] % 64;
  constexpr std::string_view kMark[] = {std::string_view("II*\0", 4), std::string_view("MM\0*", 4)};
  if (facts.format == ImageFormat::TIFF && file.size() > 4) {
    std::copy(kMark[data[0] / 2 % 2].begin(), kMark[data[0] / 2 % 2].end(), file.begin());
  }
  const PixelSize wanted = {1 + facts.width / 3, 1 + facts.height / 3};
  const auto picture = readPixels(file, facts, wanted);
  require(!picture || (picture->width() == wanted.width && picture->height() == wanted.height),
          "the size is as wanted");
  for (std::size_t y = 0; picture && y < picture->height(); ++y) {
    for (std::size_t x = 0; x < picture->width(); ++x) {
      const std::uint8_t* const pixel = picture->row(y) + 4 * x;
      require(std::max({pixel[0], pixel[1], pixel[2]}) <= pixel[3], "pixels are premultiplied");
    }
  }
  return 0;
}
