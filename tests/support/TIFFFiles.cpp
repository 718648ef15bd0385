#include <algorithm>
#include <cstring>

#include <tests/support/TIFFFiles.h>
#include <tiffio.h>

namespace quorvel::test {

using Bytes = std::vector<std::uint8_t>;

unsigned sample(const TIFFSpec& spec, std::uint32_t x, std::uint32_t y, unsigned channel) {
  const unsigned value = (x * 5 + y * 3 * (channel + 1)) & 0xFF;
  if (spec.alpha && channel + 1U == spec.samples) return 255 - value / 4;
  return spec.alpha == EXTRASAMPLE_ASSOCALPHA ? value / 2 : value;
}

namespace {

/// A file that grows in memory.
struct Target {
  Bytes bytes;
  std::size_t offset = 0;

  static tmsize_t read(thandle_t handle, void* to, tmsize_t size) {
    auto* const target = static_cast<Target*>(handle);
    const std::size_t count = std::min(static_cast<std::size_t>(size), target->bytes.size() - target->offset);
    std::memcpy(to, target->bytes.data() + target->offset, count);
    target->offset += count;
    return static_cast<tmsize_t>(count);
  }
  static tmsize_t write(thandle_t handle, void* from, tmsize_t size) {
    auto* const target = static_cast<Target*>(handle);
    const std::size_t end = target->offset + static_cast<std::size_t>(size);
    if (target->bytes.size() < end) target->bytes.resize(end);
    std::memcpy(target->bytes.data() + target->offset, from, static_cast<std::size_t>(size));
    target->offset = end;
    return size;
  }
  static toff_t seek(thandle_t handle, toff_t offset, int whence) {
    auto* const target = static_cast<Target*>(handle);
    return target->offset = offset + (whence == SEEK_END   ? target->bytes.size()
                                      : whence == SEEK_CUR ? target->offset
                                                           : 0);
  }
  static toff_t size(thandle_t handle) { return static_cast<Target*>(handle)->bytes.size(); }
};

/// The samples of a rectangle; `plane` < 0: all of each pixel.
Bytes block(const TIFFSpec& spec, std::uint32_t left, std::uint32_t top, std::uint32_t width, std::uint32_t height,
            int plane) {
  Bytes bytes;
  for (std::uint32_t y = top; y < top + height; ++y) {
    for (std::uint32_t x = left; x < left + width; ++x) {
      for (unsigned c = 0; c < spec.samples; ++c) {
        if (plane >= 0 && static_cast<int>(c) != plane) continue;
        // Eight bits twice are the same level of 16.
        bytes.insert(bytes.end(), spec.bits / 8U, static_cast<std::uint8_t>(sample(spec, x, y, c)));
      }
    }
  }
  return bytes;
}

void writeBlocks(TIFF* tiff, const TIFFSpec& spec) {
  for (int plane = spec.isSeparate ? 0 : -1; plane < (spec.isSeparate ? spec.samples : 0); ++plane) {
    const std::uint32_t high = spec.stripRows ? spec.stripRows : 16;
    for (std::uint32_t y = 0; y < kTIFFHeight; y += high) {
      const auto number = static_cast<std::uint16_t>(std::max(plane, 0));
      if (spec.stripRows) {
        Bytes bytes = block(spec, 0, y, kTIFFWidth, std::min(high, kTIFFHeight - y), plane);
        TIFFWriteEncodedStrip(tiff, TIFFComputeStrip(tiff, y, number), bytes.data(), std::ssize(bytes));
        continue;
      }
      for (std::uint32_t x = 0; x < kTIFFWidth; x += 16) {
        Bytes bytes = block(spec, x, y, 16, 16, plane);
        TIFFWriteEncodedTile(tiff, TIFFComputeTile(tiff, x, y, 0, number), bytes.data(), std::ssize(bytes));
      }
    }
  }
}

}  // namespace

Bytes tiffFile(const TIFFSpec& spec) {
  Target target;
  TIFF* const tiff = TIFFClientOpen(
      "test", "w", &target, Target::read, Target::write, Target::seek, [](thandle_t) { return 0; }, Target::size,
      nullptr, nullptr);
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, kTIFFWidth);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, kTIFFHeight);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, spec.samples);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, spec.bits);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, spec.photometric);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, spec.compression);
  TIFFSetField(tiff, TIFFTAG_ORIENTATION, spec.orientation);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, spec.isSeparate ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG);
  if (spec.alpha) TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &spec.alpha);
  if (spec.stripRows) {
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, spec.stripRows);
  } else {
    TIFFSetField(tiff, TIFFTAG_TILEWIDTH, 16);
    TIFFSetField(tiff, TIFFTAG_TILELENGTH, 16);
  }
  writeBlocks(tiff, spec);
  TIFFClose(tiff);
  return target.bytes;
}

/// From the directory, which libtiff writes behind the strips.
std::size_t lastStrip(const Bytes& file) {
  Target target{file};
  TIFF* const tiff = TIFFClientOpen(
      "test", "r", &target, Target::read, Target::write, Target::seek, [](thandle_t) { return 0; }, Target::size,
      nullptr, nullptr);
  const std::uint64_t offset = TIFFGetStrileOffset(tiff, TIFFNumberOfStrips(tiff) - 1);
  TIFFClose(tiff);
  return offset;
}

}  // namespace quorvel::test
