// TIFF, HEIC and AVIF files, as they come and made from well-formed ones: our side of the libraries reads and writes
// nothing outside, and keeps to what the facts say.
#include <fuzz/DamagedFile.h>
#include <tests/support/HEIFFiles.h>
#include <tests/support/TIFFFiles.h>
#include <tiffio.h>

#include <quorvel/Platform/ImageIO/ImageReader.h>
#include <quorvel/Platform/ImageIO/ImageSniff.h>

using namespace quorvel;
using fuzz::require;

namespace {

using Bytes = std::vector<std::uint8_t>;

/// Larger ones only take time.
constexpr std::uint64_t kMostPixels = 1U << 16;
/// A TIFF begins with its byte order, the others with the length of their first box.
constexpr std::size_t kMark = 4;

/// Small files of every kind that our readers tell apart.
const std::vector<Bytes>& bases() {
  static const std::vector<Bytes> files = [] {
    constexpr test::TIFFSpec kSpecs[] = {
        {3, 8, PHOTOMETRIC_RGB, 0, COMPRESSION_NONE, 5, ORIENTATION_TOPLEFT, false, "strips"},
        {3, 16, PHOTOMETRIC_RGB, 0, COMPRESSION_LZW, 9, ORIENTATION_RIGHTTOP, true, "planes"},
        {4, 8, PHOTOMETRIC_RGB, EXTRASAMPLE_UNASSALPHA, COMPRESSION_ADOBE_DEFLATE, 0, ORIENTATION_TOPLEFT, false,
         "tiles"},
        {2, 8, PHOTOMETRIC_MINISWHITE, EXTRASAMPLE_UNASSALPHA, COMPRESSION_NONE, 0, ORIENTATION_TOPLEFT, false, "grey"},
        {2, 16, PHOTOMETRIC_MINISBLACK, EXTRASAMPLE_ASSOCALPHA, COMPRESSION_NONE, 9, ORIENTATION_TOPLEFT, false,
         "deep"},
        {4, 8, PHOTOMETRIC_SEPARATED, 0, COMPRESSION_PACKBITS, 7, ORIENTATION_TOPLEFT, false, "inks"},
    };
    std::vector<Bytes> made;
    for (const test::TIFFSpec& spec : kSpecs) made.push_back(test::tiffFile(spec));
    for (const heif_compression_format format : {heif_compression_HEVC, heif_compression_AV1}) {
      for (const bool hasAlpha : {false, true}) made.push_back(test::heifFile(format, hasAlpha));
      made.push_back(test::deepHEIFFile(format));
    }
    return made;
  }();
  return files;
}

/// A file as it is, or one of ours with some bytes changed.
Bytes fileOf(fuzz::Input& input) {
  const std::string_view rest = input.bytes();
  const Bytes given(rest.begin(), rest.end());
  if (sniff(given).format != ImageFormat::Unknown) return given;
  const Bytes& base = bases()[input.byte() % bases().size()];
  return fuzz::damaged(base, kMark, input);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const unsigned choice = input.byte();
  const Bytes file = fileOf(input);
  const ImageFacts facts = sniff(file);
  const bool isOurs =
      facts.format == ImageFormat::TIFF || facts.format == ImageFormat::HEIC || facts.format == ImageFormat::AVIF;
  if (!isOurs || std::uint64_t{facts.width} * facts.height > kMostPixels) return 0;
  const PixelSize whole = decodedSize(facts);
  const PixelSize wanted = thumbnailSize(whole, choice == 0 ? 1e9 : choice);
  const auto picture = readPixels(file, facts, wanted);
  require(!picture || (picture->width() == wanted.width && picture->height() == wanted.height),
          "the size is as wanted");
  require(picture || size > 2, "what was not damaged is read");
  for (std::size_t y = 0; picture && y < picture->height(); ++y) {
    for (std::size_t x = 0; x < picture->width(); ++x) {
      const std::uint8_t* const pixel = picture->row(y) + 4 * x;
      require(std::max({pixel[0], pixel[1], pixel[2]}) <= pixel[3], "pixels are premultiplied");
    }
  }
  return 0;
}
