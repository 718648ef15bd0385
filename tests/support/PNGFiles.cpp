#include <cmath>
#include <cstdlib>

#include <tests/support/PNGFiles.h>
#include <zlib.h>

namespace quorvel::test {
namespace {

/// The pixels of a row from `x` on, every `step`th, their bits put together.
Bytes row(const PNGSpec& spec, std::uint32_t x, std::uint32_t step, std::uint32_t y) {
  Bytes bytes;
  unsigned bits = 0;
  for (; x < spec.width; x += step) {
    for (unsigned channel = 0; channel < spec.channels(); ++channel) {
      const unsigned sample = spec.sample(x, y, channel);
      for (unsigned bit = spec.depth; bit-- > 0; ++bits) {
        if (bits % 8 == 0) bytes.push_back(0);
        bytes.back() = static_cast<std::uint8_t>(bytes.back() | (sample >> bit & 1) << (7 - bits % 8));
      }
    }
  }
  return bytes;
}

int foretold(unsigned filter, int left, int above, int corner) {
  const int guess = left + above - corner;
  switch (filter) {
    case 1:
      return left;
    case 2:
      return above;
    case 3:
      return (left + above) / 2;
    case 4:
      if (std::abs(guess - left) <= std::abs(guess - above) && std::abs(guess - left) <= std::abs(guess - corner)) {
        return left;
      }
      return std::abs(guess - above) <= std::abs(guess - corner) ? above : corner;
    default:
      return 0;
  }
}

void addFiltered(const PNGSpec& spec, const Bytes& bytes, const Bytes& above, unsigned filter, Bytes& to) {
  const std::size_t step = std::max(1U, spec.channels() * spec.depth / 8);
  to.push_back(static_cast<std::uint8_t>(filter));
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const int left = i < step ? 0 : bytes[i - step];
    const int up = above.empty() ? 0 : above[i];
    const int corner = above.empty() || i < step ? 0 : above[i - step];
    to.push_back(static_cast<std::uint8_t>(bytes[i] - foretold(filter, left, up, corner)));
  }
}

void addPass(const PNGSpec& spec, std::uint32_t x, std::uint32_t y, std::uint32_t right, std::uint32_t down,
             Bytes& to) {
  Bytes above;
  for (unsigned count = 0; x < spec.width && y < spec.height; y += down, ++count) {
    const Bytes bytes = row(spec, x, right, y);
    addFiltered(spec, bytes, above, spec.filter < 5 ? spec.filter : count % 5, to);
    above = bytes;
  }
}

/// The sample as a level of 0 to 255.
unsigned level(const PNGSpec& spec, unsigned sample) {
  return static_cast<unsigned>(std::lround(sample * 255.0 / ((1 << spec.depth) - 1)));
}

unsigned number(const Bytes& bytes, std::size_t at) { return bytes[at] * 256U + bytes[at + 1]; }

bool isHidden(const PNGSpec& spec, std::uint32_t x, std::uint32_t y) {
  if (spec.color == 3 || spec.transparency.empty()) return false;
  for (unsigned channel = 0; channel < spec.channels(); ++channel) {
    if (spec.sample(x, y, channel) != number(spec.transparency, std::size_t{2} * channel)) return false;
  }
  return true;
}

}  // namespace

unsigned PNGSpec::channels() const { return color == 2 ? 3 : color == 4 ? 2 : color == 6 ? 4 : 1; }

unsigned PNGSpec::sample(std::uint32_t x, std::uint32_t y, unsigned channel) const {
  const unsigned value = x * 2617 + y * 5003 * (channel + 1) + (x * y * 77 >> 3) + channel * 21001;
  return depth == 16 ? value & 0xFFFF : (value & 0xFFFF) >> (16 - depth);
}

Bytes packed(const Bytes& bytes) {
  uLongf size = compressBound(static_cast<uLong>(bytes.size()));
  Bytes result(size);
  compress2(result.data(), &size, bytes.data(), static_cast<uLong>(bytes.size()), 6);
  result.resize(size);
  return result;
}

Bytes filteredRows(const PNGSpec& spec) {
  Bytes rows;
  if (!spec.isInterlaced) {
    addPass(spec, 0, 0, 1, 1, rows);
    return rows;
  }
  constexpr std::uint32_t kPasses[][4] = {{0, 0, 8, 8}, {4, 0, 8, 8}, {0, 4, 4, 8}, {2, 0, 4, 4},
                                          {0, 2, 2, 4}, {1, 0, 2, 2}, {0, 1, 1, 2}};
  for (const auto& [x, y, right, down] : kPasses) addPass(spec, x, y, right, down, rows);
  return rows;
}

Bytes pngFile(const PNGSpec& spec) { return pngFile(spec, packed(filteredRows(spec))); }

Bytes pngFile(const PNGSpec& spec, const Bytes& packedRows) {
  const Bytes header =
      ByteWriter().u32(spec.width).u32(spec.height).u8(spec.depth).u8(spec.color).u16(0).u8(spec.isInterlaced).file;
  ByteWriter file;
  file.text("\x89PNG\r\n\x1A\n").add(pngChunk("IHDR", header)).add(spec.extra);
  if (!spec.palette.empty()) file.add(pngChunk("PLTE", spec.palette));
  if (!spec.transparency.empty()) file.add(pngChunk("tRNS", spec.transparency));
  for (std::size_t at = 0; at < packedRows.size();) {
    const std::size_t count = std::min(spec.part, packedRows.size() - at);
    const auto from = packedRows.begin() + static_cast<std::ptrdiff_t>(at);
    file.add(pngChunk("IDAT", Bytes(from, from + static_cast<std::ptrdiff_t>(count))));
    at += count;
  }
  return file.add(pngChunk("IEND", {})).file;
}

std::uint32_t expectedPixel(const PNGSpec& spec, std::uint32_t x, std::uint32_t y) {
  if (isHidden(spec, x, y)) return 0;
  unsigned channels[4] = {0, 0, 0, 255};
  if (spec.color == 3) {
    const std::size_t index = spec.sample(x, y, 0);
    for (std::size_t c = 0; c < 3; ++c) {
      if (3 * index + c < spec.palette.size()) channels[c] = spec.palette[3 * index + c];
    }
    if (index < spec.transparency.size()) channels[3] = spec.transparency[index];
  } else {
    const bool isGray = spec.color == 0 || spec.color == 4;
    for (unsigned c = 0; c < 3; ++c) channels[c] = level(spec, spec.sample(x, y, isGray ? 0 : c));
    if (spec.color >= 4) channels[3] = level(spec, spec.sample(x, y, spec.channels() - 1));
  }
  std::uint32_t pixel = std::uint32_t{channels[3]} << 24;
  for (unsigned c = 0; c < 3; ++c) {
    pixel |= static_cast<std::uint32_t>(std::lround(channels[c] * channels[3] / 255.0)) << (16 - 8 * c);
  }
  return pixel;
}

}  // namespace quorvel::test
