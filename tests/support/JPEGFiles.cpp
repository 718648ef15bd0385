#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <jpeglib.h>
#include <tests/support/JPEGFiles.h>

namespace quorvel::test {
namespace {

std::uint32_t scramble(std::uint32_t x, std::uint32_t y, std::uint32_t seed) {
  std::uint32_t state = x * 0x9E3779B1U ^ y * 0x85EBCA77U ^ seed * 0xC2B2AE3DU;
  state = (state ^ state >> 15) * 0x2C1B3C6DU;
  state = (state ^ state >> 12) * 0x297A2D39U;
  return state ^ state >> 15;
}

/// Smooth noise between -1 and 1 with one random value every `step` pixels.
double noise(std::uint32_t x, std::uint32_t y, std::uint32_t step, std::uint32_t seed) {
  const auto at = [&](std::uint32_t i, std::uint32_t j) {
    return scramble(x / step + i, y / step + j, seed) / 2147483648.0 - 1;
  };
  const auto ease = [](double t) { return t * t * (3 - 2 * t); };
  const double u = ease(x % step / static_cast<double>(step));
  const double v = ease(y % step / static_cast<double>(step));
  return (at(0, 0) * (1 - u) + at(1, 0) * u) * (1 - v) + (at(0, 1) * (1 - u) + at(1, 1) * u) * v;
}

void setScript(jpeg_compress_struct& info, const JPEGKind& kind, std::vector<jpeg_scan_info>& script) {
  if (kind.isProgressive) jpeg_simple_progression(&info);
  if (kind.isSeparate) {
    for (int i = 0; i < info.num_components; ++i) script.push_back({1, {i, 0, 0, 0}, 0, 63, 0, 0});
  }
  if (script.empty()) return;
  info.scan_info = script.data();
  info.num_scans = static_cast<int>(script.size());
}

void writeProfile(jpeg_compress_struct& info, const JPEGKind& kind) {
  const std::size_t count = (kind.profile.size() + kind.profilePiece - 1) / kind.profilePiece;
  for (std::size_t i = 0; i < count; ++i) {
    std::vector<std::uint8_t> body{'I', 'C', 'C', '_', 'P', 'R', 'O', 'F', 'I', 'L', 'E', 0};
    body.push_back(static_cast<std::uint8_t>(i + 1));
    body.push_back(static_cast<std::uint8_t>(count));
    const auto from = kind.profile.begin() + static_cast<std::ptrdiff_t>(i * kind.profilePiece);
    const std::size_t size = std::min(kind.profilePiece, kind.profile.size() - i * kind.profilePiece);
    body.insert(body.end(), from, from + static_cast<std::ptrdiff_t>(size));
    jpeg_write_marker(&info, JPEG_APP0 + 2, body.data(), static_cast<unsigned>(body.size()));
  }
}

J_COLOR_SPACE spaceOf(std::uint32_t channels) {
  return channels == 1 ? JCS_GRAYSCALE : channels == 3 ? JCS_RGB : JCS_CMYK;
}

}  // namespace

Samples photograph(std::uint32_t width, std::uint32_t height) {
  Samples samples{width, height, 3, std::vector<std::uint8_t>(std::size_t{width} * height * 3)};
  std::uint8_t* to = samples.bytes.data();
  for (std::uint32_t y = 0; y < height; ++y) {
    for (std::uint32_t x = 0; x < width; ++x) {
      double light = 120 + 60 * noise(x, y, 701, 1) + 40 * noise(x, y, 173, 2) + 22 * noise(x, y, 41, 3) +
                     12 * noise(x, y, 11, 4) + 5 * noise(x, y, 3, 5);
      if (noise(x, y, 311, 6) > 0.25) light -= 55;  // shapes with edges
      light += 4 * (scramble(x, y, 7) / 2147483648.0 - 1);
      const double tint[3] = {30 * noise(x, y, 503, 8), -6 * noise(x, y, 89, 9), 35 * noise(x, y, 397, 10)};
      for (const double channel : tint) {
        const double value = light + channel;
        *to++ = static_cast<std::uint8_t>(value < 0 ? 0 : value > 255 ? 255 : value);
      }
    }
  }
  return samples;
}

Samples gray(const Samples& picture) {
  Samples result{picture.width, picture.height, 1, {}};
  for (std::size_t i = 1; i < picture.bytes.size(); i += 3) result.bytes.push_back(picture.bytes[i]);
  return result;
}

Samples inks(const Samples& picture) {
  Samples result{picture.width, picture.height, 4, {}};
  for (std::size_t i = 0; i < picture.bytes.size(); i += 3) {
    for (std::size_t c = 0; c < 3; ++c) result.bytes.push_back(static_cast<std::uint8_t>(255 - picture.bytes[i + c]));
    result.bytes.push_back(static_cast<std::uint8_t>(i / 3 * 90 / (picture.bytes.size() / 3)));
  }
  return result;
}

std::vector<std::uint8_t> makeJPEG(const Samples& samples, const JPEGKind& kind) {
  jpeg_compress_struct info{};
  jpeg_error_mgr errors{};
  info.err = jpeg_std_error(&errors);
  jpeg_create_compress(&info);
  unsigned char* memory = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&info, &memory, &size);
  info.image_width = samples.width;
  info.image_height = samples.height;
  info.input_components = static_cast<int>(samples.channels);
  info.in_color_space = spaceOf(samples.channels);
  jpeg_set_defaults(&info);
  if (samples.channels == 4) jpeg_set_colorspace(&info, kind.isDirect ? JCS_CMYK : JCS_YCCK);
  if (samples.channels == 3 && kind.isDirect) jpeg_set_colorspace(&info, JCS_RGB);
  jpeg_set_quality(&info, kind.quality, TRUE);
  info.comp_info[0].h_samp_factor = samples.channels == 1 ? 1 : kind.across;
  info.comp_info[0].v_samp_factor = samples.channels == 1 ? 1 : kind.down;
  if (samples.channels == 4) {
    info.comp_info[3].h_samp_factor = kind.across;
    info.comp_info[3].v_samp_factor = kind.down;
    info.write_Adobe_marker = kind.hasAdobeMarker ? TRUE : FALSE;
  }
  info.restart_interval = kind.restartInterval;
  std::vector<jpeg_scan_info> script;
  setScript(info, kind, script);
  jpeg_start_compress(&info, TRUE);
  writeProfile(info, kind);
  while (info.next_scanline < info.image_height) {
    JSAMPROW row = const_cast<JSAMPROW>(samples.row(info.next_scanline));
    jpeg_write_scanlines(&info, &row, 1);
  }
  jpeg_finish_compress(&info);
  jpeg_destroy_compress(&info);
  std::vector<std::uint8_t> file(memory, memory + size);
  std::free(memory);
  return file;
}

std::size_t frameOf(std::span<const std::uint8_t> file) {
  std::size_t at = 2;
  while (file[at + 1] < 0xC0 || file[at + 1] > 0xC2) at += 2 + (std::size_t{file[at + 2]} << 8 | file[at + 3]);
  return at;
}

std::vector<std::uint8_t> declaring(std::vector<std::uint8_t> file, std::uint32_t width, std::uint32_t height) {
  std::uint8_t* const sides = file.data() + frameOf(file) + 5;
  sides[0] = static_cast<std::uint8_t>(height >> 8);
  sides[1] = static_cast<std::uint8_t>(height);
  sides[2] = static_cast<std::uint8_t>(width >> 8);
  sides[3] = static_cast<std::uint8_t>(width);
  return file;
}

Samples decodeWhole(std::span<const std::uint8_t> file) {
  jpeg_decompress_struct info{};
  jpeg_error_mgr errors{};
  info.err = jpeg_std_error(&errors);
  jpeg_create_decompress(&info);
  jpeg_mem_src(&info, file.data(), file.size());
  jpeg_read_header(&info, TRUE);
  info.out_color_space = info.num_components == 4 ? JCS_CMYK : JCS_RGB;
  jpeg_start_decompress(&info);
  Samples samples{info.output_width, info.output_height, static_cast<std::uint32_t>(info.output_components), {}};
  samples.bytes.resize(std::size_t{samples.width} * samples.height * samples.channels);
  while (info.output_scanline < info.output_height) {
    JSAMPROW row = samples.bytes.data() + std::size_t{info.output_scanline} * samples.width * samples.channels;
    jpeg_read_scanlines(&info, &row, 1);
  }
  jpeg_finish_decompress(&info);
  jpeg_destroy_decompress(&info);
  return samples;
}

}  // namespace quorvel::test
