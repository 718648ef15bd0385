// PNG files, both as the bytes come and with the bytes as the rows of a well-formed file: nothing is read or written
// outside, the same picture comes again, and what is written of it is read back as it was.
#include <fuzz/FuzzInput.h>
#include <zlib.h>

#include <quorvel/Platform/ImageIO/ImageReader.h>
#include <quorvel/Platform/ImageIO/PNGWriter.h>

using namespace quorvel;
using fuzz::require;

namespace {

using Bytes = std::vector<std::uint8_t>;

void addNumber(Bytes& to, std::uint32_t number) {
  for (unsigned shift = 32; shift > 0; shift -= 8) to.push_back(static_cast<std::uint8_t>(number >> (shift - 8)));
}

void addChunk(Bytes& to, std::string_view type, std::string_view bytes) {
  addNumber(to, static_cast<std::uint32_t>(bytes.size()));
  const std::size_t start = to.size();
  to.insert(to.end(), type.begin(), type.end());
  to.insert(to.end(), bytes.begin(), bytes.end());
  addNumber(to, static_cast<std::uint32_t>(crc32(0, to.data() + start, static_cast<uInt>(to.size() - start))));
}

std::string_view textOf(const Bytes& bytes) { return {reinterpret_cast<const char*>(bytes.data()), bytes.size()}; }

/// A file whose rows are the rest of the input, of the kind that its first bytes say.
Bytes wellFormed(fuzz::Input& input, std::uint32_t width, std::uint32_t height) {
  constexpr std::uint8_t kColors[] = {0, 2, 3, 4, 6};
  Bytes file = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
  Bytes header;
  addNumber(header, width);
  addNumber(header, height);
  header.push_back(static_cast<std::uint8_t>(1U << (input.byte() % 5)));
  header.push_back(kColors[input.byte() % 5]);
  header.insert(header.end(), {0, 0, static_cast<std::uint8_t>(input.byte() % 2)});
  addChunk(file, "IHDR", textOf(header));
  const std::uint8_t extras = input.byte();
  const std::string_view bytes = input.bytes();
  if (extras & 1) addChunk(file, "gAMA", bytes.substr(0, 4));
  if (extras & 2) addChunk(file, "iCCP", bytes.substr(0, 200));
  if (extras & 4) addChunk(file, "PLTE", bytes.substr(0, extras * 3U));
  if (extras & 8) addChunk(file, "tRNS", bytes.substr(0, extras >> 4));
  uLongf size = compressBound(static_cast<uLong>(bytes.size()));
  Bytes packed(size);
  compress2(packed.data(), &size, reinterpret_cast<const Bytef*>(bytes.data()), static_cast<uLong>(bytes.size()), 1);
  addChunk(file, "IDAT", textOf(packed).substr(0, size - (extras & 16 ? 5 : 0)));
  return file;
}

bool areSame(const CGBitmap& a, const CGBitmap& b) {
  for (std::size_t y = 0; y < a.height(); ++y) {
    if (!std::equal(a.row(y), a.row(y) + 4 * a.width(), b.row(y))) return false;
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  ImageFacts facts;
  facts.format = ImageFormat::PNG;
  const bool isRaw = input.byte() % 4 == 0;
  facts.width = 1 + input.byte() % 40;
  facts.height = 1 + input.byte() % 40;
  const PixelSize whole = {facts.width, facts.height};
  const PixelSize small = {1 + input.byte() % facts.width, 1 + input.byte() % facts.height};
  const std::string_view rest = input.bytes();
  const Bytes file = isRaw ? Bytes(rest.begin(), rest.end()) : wellFormed(input, facts.width, facts.height);
  (void)readPixels(file, facts, small);
  const auto picture = readPixels(file, facts, whole);
  if (!picture) return 0;
  const auto again = readPixels(file, facts, whole);
  require(again && areSame(*picture, *again), "the same file gives the same picture");
  const auto written = encodePNG(*picture);
  require(written.has_value(), "a picture can be written");
  const auto back = readPixels(written->bytes(), facts, whole);
  require(back && areSame(*picture, *back), "what is written is read back");
  return 0;
}
