#include <cmath>
#include <map>

#include <tests/support/HEIFFiles.h>

/// What the encoder and the decoder of damaged pictures leave is not ours to free.
extern "C" const char* __lsan_default_suppressions() { return "leak:libx265\nleak:libdav1d\n"; }

namespace quorvel::test {

using Bytes = std::vector<std::uint8_t>;

std::uint8_t heifSample(int x, int y, int channel) {
  if (channel == 3) return static_cast<std::uint8_t>(255 - x * 2);
  const double wave = std::sin(x * 0.08 + channel) * std::cos(y * 0.06);
  return static_cast<std::uint8_t>(120 + 100 * wave);
}

namespace {

heif_image* colors(bool hasAlpha) {
  const int channels = hasAlpha ? 4 : 3;
  heif_image* image = nullptr;
  const heif_chroma order = hasAlpha ? heif_chroma_interleaved_RGBA : heif_chroma_interleaved_RGB;
  heif_image_create(kHEIFWidth, kHEIFHeight, heif_colorspace_RGB, order, &image);
  heif_image_add_plane(image, heif_channel_interleaved, kHEIFWidth, kHEIFHeight, 8);
  int bytesPerRow = 0;
  std::uint8_t* const plane = heif_image_get_plane(image, heif_channel_interleaved, &bytesPerRow);
  for (int y = 0; y < kHEIFHeight; ++y) {
    for (int x = 0; x < kHEIFWidth; ++x) {
      for (int c = 0; c < channels; ++c) plane[y * bytesPerRow + channels * x + c] = heifSample(x, y, c);
    }
  }
  return image;
}

/// The red samples as greys of ten bits, each in two bytes, between planes of no colour at half the width.
heif_image* deepGrays() {
  heif_image* image = nullptr;
  heif_image_create(kHEIFWidth, kHEIFHeight, heif_colorspace_YCbCr, heif_chroma_422, &image);
  for (const heif_channel channel : {heif_channel_Y, heif_channel_Cb, heif_channel_Cr}) {
    const int step = channel == heif_channel_Y ? 1 : 2;
    heif_image_add_plane(image, channel, kHEIFWidth / step, kHEIFHeight, 10);
    int bytesPerRow = 0;
    std::uint8_t* const plane = heif_image_get_plane(image, channel, &bytesPerRow);
    for (int y = 0; y < kHEIFHeight; ++y) {
      for (int x = 0; x < kHEIFWidth / step; ++x) {
        const int value = step == 1 ? (heifSample(x, y, 0) * 1023 + 127) / 255 : 512;
        plane[y * bytesPerRow + 2 * x] = static_cast<std::uint8_t>(value);
        plane[y * bytesPerRow + 2 * x + 1] = static_cast<std::uint8_t>(value >> 8);
      }
    }
  }
  return image;
}

/// What an encoder makes of the picture; empty where the library has none.
Bytes encoded(heif_compression_format format, heif_image* image) {
  heif_context* const context = heif_context_alloc();
  heif_encoder* encoder = nullptr;
  Bytes file;
  if (heif_context_get_encoder_for_format(context, format, &encoder).code == 0) {
    heif_encoder_set_lossy_quality(encoder, 95);
    heif_encoder_set_logging_level(encoder, 0);
    const bool isHalved = heif_image_get_chroma_format(image) == heif_chroma_422;
    if (isHalved) heif_encoder_set_parameter_string(encoder, "chroma", "422");
    heif_context_encode_image(context, image, encoder, nullptr, nullptr);
    heif_writer writer{1, [](heif_context*, const void* bytes, std::size_t size, void* to) {
                         const auto* const from = static_cast<const std::uint8_t*>(bytes);
                         static_cast<Bytes*>(to)->assign(from, from + size);
                         return heif_error{heif_error_Ok, heif_suberror_Unspecified, ""};
                       }};
    heif_context_write(context, &writer, &file);
    heif_encoder_release(encoder);
  }
  heif_image_release(image);
  heif_context_free(context);
  return file;
}

}  // namespace

const Bytes& heifFile(heif_compression_format format, bool hasAlpha) {
  static std::map<std::pair<int, bool>, Bytes> made;
  Bytes& file = made[{format, hasAlpha}];
  if (file.empty()) file = encoded(format, colors(hasAlpha));
  return file;
}

Bytes deepHEIFFile(heif_compression_format format) { return encoded(format, deepGrays()); }

}  // namespace quorvel::test
