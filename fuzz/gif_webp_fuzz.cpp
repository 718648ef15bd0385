// GIF and WebP files from any bytes, whole and small: nothing is read or written outside, and the same picture comes
// again.
#include <fuzz/FuzzInput.h>

#include <quorvel/Platform/ImageIO/ImageReader.h>

using namespace quorvel;
using fuzz::require;

namespace {

/// The canvas that the bytes declare, kept small so that a run takes no time.
PixelSize declaredSize(std::span<const std::uint8_t> file, bool isGIF) {
  const auto at = [file](std::size_t place) { return place < file.size() ? std::uint32_t{file[place]} : 0; };
  if (isGIF) return {at(6) | at(7) << 8, at(8) | at(9) << 8};
  if (at(15) == 'X') return {1 + (at(24) | at(25) << 8), 1 + (at(27) | at(28) << 8)};
  if (at(15) == 'L')
    return {1 + ((at(21) | at(22) << 8) & 0x3FFF), 1 + ((at(22) >> 6 | at(23) << 2 | at(24) << 10) & 0x3FFF)};
  return {(at(26) | at(27) << 8) & 0x3FFF, (at(28) | at(29) << 8) & 0x3FFF};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const bool isGIF = data[0] % 2 == 0;
  std::vector<std::uint8_t> file(data + 1, data + size);
  constexpr std::string_view kGIF = "GIF89a";
  if (isGIF && file.size() > kGIF.size()) std::copy(kGIF.begin(), kGIF.end(), file.begin());
  ImageFacts facts;
  facts.format = isGIF ? ImageFormat::GIF : ImageFormat::WebP;
  const auto [width, height] = declaredSize(file, isGIF);
  if (width == 0 || height == 0 || width > 512 || height > 512) return 0;
  facts.width = width;
  facts.height = height;
  (void)readPixels(file, facts, {(width + 2) / 3, (height + 2) / 3});
  const auto picture = readPixels(file, facts, {width, height});
  const auto again = readPixels(file, facts, {width, height});
  require(!picture == !again, "the same file is read again");
  for (std::size_t y = 0; picture && y < height; ++y) {
    require(std::equal(picture->row(y), picture->row(y) + 4 * width, again->row(y)), "with the same pixels");
  }
  return 0;
}
