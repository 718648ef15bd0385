// JPEG files, whole and decoded small: both widths of vectors agree, pixels are opaque, and a thumbnail comes when the
// whole picture does.
#include <algorithm>
#include <cstring>

#include <fuzz/DamagedFile.h>
#include <tests/support/JPEGFiles.h>

#include <quorvel/Platform/Foundation/WideKernels.h>
#include <quorvel/Platform/ImageIO/CGImageDestination.h>
#include <quorvel/Platform/ImageIO/ImageSniff.h>
#include <quorvel/Platform/ImageIO/JPEGReader.h>

using namespace quorvel;
using fuzz::require;

namespace {

/// Larger ones only take time.
constexpr std::uint64_t kMostPixels = 1U << 20;

bool isEqual(const CGBitmap& a, const CGBitmap& b) {
  for (std::size_t y = 0; y < a.height(); ++y) {
    if (std::memcmp(a.row(y), b.row(y), 4 * a.width()) != 0) return false;
  }
  return true;
}

std::shared_ptr<CGBitmap> bothWays(ImageBytes file, const ImageFacts& facts, PixelSize wanted, std::uint32_t eighths) {
  wide::setEnabled(false);
  const auto portable = readJPEG(file, facts, wanted, eighths);
  wide::setEnabled(true);
  auto result = readJPEG(file, facts, wanted, eighths);
  require((portable == nullptr) == (result == nullptr), "both widths of vectors answer");
  if (!result) return nullptr;
  require(isEqual(*portable, *result), "both widths of vectors agree");
  require(result->width() == wanted.width && result->height() == wanted.height, "the size is the wanted one");
  require(CGImage(result).isOpaque(), "JPEG has no alpha");
  return result;
}

using Bytes = std::vector<std::uint8_t>;

/// Small files of every kind.
const std::vector<Bytes>& bases() {
  static const std::vector<Bytes> files = [] {
    const test::Samples picture = test::photograph(37, 50);
    std::vector<Bytes> made;
    for (const test::Samples& samples : {picture, test::gray(picture), test::inks(picture)}) {
      for (unsigned way = 0; way < 8; ++way) {
        test::JPEGKind kind;
        kind.quality = 60;
        kind.isProgressive = (way & 1) != 0;
        kind.isDirect = (way & 2) != 0;
        kind.restartInterval = (way & 4) != 0 ? 2 : 0;
        made.push_back(makeJPEG(samples, kind));
      }
    }
    return made;
  }();
  return files;
}

/// A file as it is, or one of ours with bytes changed, taken out or put in where the input says.
Bytes fileOf(fuzz::Input& input) {
  const std::string_view rest = input.bytes();
  if (rest.starts_with("\xFF\xD8")) return {rest.begin(), rest.end()};
  const Bytes& base = bases()[input.byte() % bases().size()];
  return fuzz::damaged(base, 2, input);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const unsigned choice = input.byte();
  const Bytes file = fileOf(input);
  const ImageFacts facts = sniff(file);
  if (facts.format != ImageFormat::JPEG || std::uint64_t{facts.width} * facts.height > kMostPixels) return 0;
  if (facts.width == 0 || facts.height == 0) return 0;
  const std::uint32_t eighths = 1U << (choice & 3);
  const std::uint64_t longest = std::uint64_t{std::max(facts.width, facts.height)} * eighths / 8;
  const PixelSize picture{facts.width, facts.height};
  const PixelSize wanted = thumbnailSize(picture, std::max(1.0, static_cast<double>(longest) * (choice >> 2) / 64));
  const bool isCovered = std::uint64_t{wanted.width} * 8 <= std::uint64_t{picture.width} * eighths &&
                         std::uint64_t{wanted.height} * 8 <= std::uint64_t{picture.height} * eighths;
  const auto small = bothWays(file, facts, wanted, isCovered ? eighths : 8);
  const auto whole = bothWays(file, facts, picture, 8);
  require(!whole || small, "a thumbnail comes when the whole does");
  if (!small) return 0;
  const auto written = encodeJPEG(*small, choice / 255.0);
  require(written.has_value(), "what was read can be written");
  const ImageFacts again = sniff(written->bytes());
  require(again.width == small->width() && again.height == small->height(), "the file says its size");
  require(readPixels(written->bytes(), again, {again.width, again.height}) != nullptr, "what was written can be read");
  return 0;
}
