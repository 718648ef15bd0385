#include <algorithm>

#include <libdeflate.h>

#include <quorvel/Platform/ImageIO/PNGChunks.h>
#include <quorvel/Platform/ImageIO/PNGFile.h>

namespace quorvel {
namespace {

constexpr std::uint32_t kPixels = fourCharacters("IDAT");
constexpr std::uint32_t kNotCritical = 0x20000000;

struct Chunk {
  std::uint32_t type = 0;
  /// Cut where the file ends.
  ImageBytes bytes;
  /// All there, and as its checksum says.
  bool isWhole = false;
};

std::optional<Chunk> nextChunk(PNGChunkWalk& walk, ByteView file) {
  PNGChunk chunk;
  if (!walk.nextOrCut(chunk)) return std::nullopt;
  const ImageBytes checked = file.part(chunk.location - 4, chunk.length + 4);
  const bool isWhole = file.has(chunk.location, chunk.length + 4) &&
                       libdeflate_crc32(0, checked.data(), checked.size()) == file.big32(chunk.location + chunk.length);
  return Chunk{chunk.type, file.part(chunk.location, chunk.length), isWhole};
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
  if (chunk.type != fourCharacters("IHDR") || !chunk.isWhole || chunk.bytes.size() != 13) return false;
  const ImageBytes bytes = chunk.bytes;
  png.width = ByteView(bytes).big32(0);
  png.height = ByteView(bytes).big32(4);
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
  if (chunk.type == fourCharacters("PLTE")) {
    if (!chunk.isWhole) return png.color != PNGFile::Color::Palette;
    if (png.palette.empty()) png.palette = chunk.bytes.first(std::min<std::size_t>(chunk.bytes.size() / 3, 256) * 3);
    return true;
  }
  if ((chunk.type & kNotCritical) == 0) return false;
  if (!chunk.isWhole) return true;
  if (chunk.type == fourCharacters("tRNS") && png.transparency.empty()) png.transparency = chunk.bytes;
  if (chunk.type == fourCharacters("iCCP") && png.profile.empty()) png.profile = profileIn(chunk.bytes);
  if (chunk.type == fourCharacters("sRGB")) png.isSRGB = true;
  if (chunk.type == fourCharacters("gAMA") && chunk.bytes.size() == 4) png.gamma = ByteView(chunk.bytes).big32(0);
  return true;
}

/// The run of IDAT that begins with `chunk`. One with a wrong checksum is the last, and still gives its rows.
void gather(Chunk chunk, PNGChunkWalk& walk, ByteView file, PNGFile& png) {
  for (;;) {
    if (!chunk.bytes.empty()) png.data.push_back(chunk.bytes);
    if (!chunk.isWhole) return;
    const auto next = nextChunk(walk, file);
    if (!next || next->type != kPixels) return;
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

std::optional<PNGFile> parsePNG(ImageBytes bytes) {
  const ByteView file(bytes);
  if (!isPNGFile(file)) return std::nullopt;
  PNGFile png;
  PNGChunkWalk walk(file);
  auto chunk = nextChunk(walk, file);
  if (!chunk || !readHeader(*chunk, png)) return std::nullopt;
  while ((chunk = nextChunk(walk, file)) && chunk->type != kPixels) {
    if (!note(*chunk, png)) return std::nullopt;
  }
  if (!chunk || (png.color == PNGFile::Color::Palette && png.palette.empty())) return std::nullopt;
  gather(*chunk, walk, file, png);
  return png.data.empty() ? std::nullopt : std::optional(std::move(png));
}

}  // namespace quorvel
