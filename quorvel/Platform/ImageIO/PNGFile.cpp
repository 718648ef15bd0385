#include <algorithm>
#include <array>

#include <libdeflate.h>

#include <quorvel/Platform/ImageIO/PNGFile.h>

namespace quorvel {
namespace {

constexpr std::array<std::uint8_t, 8> kSignature = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
constexpr std::size_t kAround = 12;  // length, type and checksum
constexpr std::uint32_t kCritical = 0x20000000;

std::uint32_t bigEndian(const std::uint8_t* from) {
  return std::uint32_t{from[0]} << 24 | std::uint32_t{from[1]} << 16 | std::uint32_t{from[2]} << 8 | from[3];
}

constexpr std::uint32_t type(const char (&name)[5]) {
  std::uint32_t all = 0;
  for (int i = 0; i < 4; ++i) all = all << 8 | static_cast<std::uint8_t>(name[i]);
  return all;
}

struct Chunk {
  std::uint32_t type = 0;
  ImageBytes bytes;
  /// All there, and as its checksum says.
  bool isWhole = false;
};

/// Takes the next chunk off the file, cut where the file ends.
std::optional<Chunk> takeChunk(ImageBytes& file) {
  if (file.size() < 8) return std::nullopt;
  const std::size_t length = bigEndian(file.data());
  if (length > INT32_MAX) return std::nullopt;
  Chunk chunk{bigEndian(file.data() + 4), file.subspan(8, std::min(length, file.size() - 8))};
  if (file.size() < length + kAround) {
    file = {};
    return chunk;
  }
  chunk.isWhole = libdeflate_crc32(0, file.data() + 4, length + 4) == bigEndian(file.data() + 8 + length);
  file = file.subspan(length + kAround);
  return chunk;
}

bool isKnown(PNGFile::Color color, unsigned depth) {
  const bool byte = depth == 8 || depth == 16;
  switch (color) {
    case PNGFile::Color::Gray:
      return byte || depth == 1 || depth == 2 || depth == 4;
    case PNGFile::Color::Palette:
      return depth == 1 || depth == 2 || depth == 4 || depth == 8;
    case PNGFile::Color::RGB:
    case PNGFile::Color::GrayAlpha:
    case PNGFile::Color::RGBA:
      return byte;
  }
  return false;
}

bool readHeader(const Chunk& chunk, PNGFile& png) {
  if (chunk.type != type("IHDR") || !chunk.isWhole || chunk.bytes.size() != 13) return false;
  const std::uint8_t* const bytes = chunk.bytes.data();
  png.width = bigEndian(bytes);
  png.height = bigEndian(bytes + 4);
  png.depth = bytes[8];
  png.color = static_cast<PNGFile::Color>(bytes[9]);
  png.isInterlaced = bytes[12] == 1;
  return png.width != 0 && png.height != 0 && isKnown(png.color, png.depth) && bytes[10] == 0 && bytes[11] == 0 &&
         bytes[12] <= 1;
}

/// The packed part of iCCP: after a name, its end and the number of the only packing that there is.
ImageBytes profileIn(ImageBytes chunk) {
  const auto end = std::find(chunk.begin(), chunk.begin() + std::min<std::ptrdiff_t>(std::ssize(chunk), 80), 0);
  const auto at = static_cast<std::size_t>(end - chunk.begin());
  return at + 2 < chunk.size() && chunk[at] == 0 && chunk[at + 1] == 0 ? chunk.subspan(at + 2) : ImageBytes{};
}

/// Keeps what a chunk before the pixels says, the first of its kind. False when the file cannot be read further.
bool note(const Chunk& chunk, PNGFile& png) {
  if (chunk.type == type("PLTE")) {
    if (!chunk.isWhole) return png.color != PNGFile::Color::Palette;
    if (png.palette.empty()) png.palette = chunk.bytes.first(std::min<std::size_t>(chunk.bytes.size() / 3, 256) * 3);
    return true;
  }
  if ((chunk.type & kCritical) == 0) return false;
  if (!chunk.isWhole) return true;
  if (chunk.type == type("tRNS") && png.transparency.empty()) png.transparency = chunk.bytes;
  if (chunk.type == type("iCCP") && png.profile.empty()) png.profile = profileIn(chunk.bytes);
  if (chunk.type == type("sRGB")) png.isSRGB = true;
  if (chunk.type == type("gAMA") && chunk.bytes.size() == 4) png.gamma = bigEndian(chunk.bytes.data());
  return true;
}

/// The run of IDAT that begins with `chunk`. One with a wrong checksum is the last, and still gives its rows.
void gather(Chunk chunk, ImageBytes file, PNGFile& png) {
  for (;;) {
    if (!chunk.bytes.empty()) png.data.push_back(chunk.bytes);
    if (!chunk.isWhole) return;
    const auto next = takeChunk(file);
    if (!next || next->type != type("IDAT")) return;
    chunk = *next;
  }
}

}  // namespace

std::size_t PNGFile::bits() const {
  switch (color) {
    case Color::Gray:
    case Color::Palette:
      return depth;
    case Color::GrayAlpha:
      return std::size_t{2} * depth;
    case Color::RGB:
      return std::size_t{3} * depth;
    case Color::RGBA:
      return std::size_t{4} * depth;
  }
  return 0;
}

std::optional<PNGFile> parsePNG(ImageBytes file) {
  if (file.size() < kSignature.size() || !std::equal(kSignature.begin(), kSignature.end(), file.begin())) {
    return std::nullopt;
  }
  file = file.subspan(kSignature.size());
  PNGFile png;
  auto chunk = takeChunk(file);
  if (!chunk || !readHeader(*chunk, png)) return std::nullopt;
  while ((chunk = takeChunk(file)) && chunk->type != type("IDAT")) {
    if (!note(*chunk, png)) return std::nullopt;
  }
  if (!chunk || (png.color == PNGFile::Color::Palette && png.palette.empty())) return std::nullopt;
  gather(*chunk, file, png);
  return png.data.empty() ? std::nullopt : std::optional(std::move(png));
}

}  // namespace quorvel
