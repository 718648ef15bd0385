// Thumbnails of a camera's picture as WebP, HEIC and AVIF beside what the decoders alone take. The size of a
// case is the thumbnail's longer side; the largest is the picture's own.
#include <cstdlib>
#include <memory>
#include <vector>

#include <bench/Cases.h>
#include <tests/support/JPEGFiles.h>
#include <webp/decode.h>
#include <webp/encode.h>

#include <quorvel/Platform/ImageIO/ImageReader.h>

#if QUORVEL_HAVE_HEIF
#include <libheif/heif.h>
#endif

namespace quorvel::bench {
namespace {

using Bytes = std::vector<std::uint8_t>;
using File = std::shared_ptr<const Bytes>;

constexpr std::uint32_t kSides[] = {320, 1024};

void addOurs(const std::string& name, const File& file, ImageFormat format, PixelSize size, std::uint32_t side) {
  ImageFacts facts;
  facts.format = format;
  facts.width = size.width;
  facts.height = size.height;
  const PixelSize wanted = thumbnailSize(size, side);
  add(name, side, "ours", [file, facts, wanted] { return readPixels(*file, facts, wanted); });
}

// WebP

File webP(const test::Samples& picture, bool lossless) {
  std::uint8_t* bytes = nullptr;
  const auto width = static_cast<int>(picture.width);
  const auto height = static_cast<int>(picture.height);
  const std::size_t size = lossless ? WebPEncodeLosslessRGB(picture.row(0), width, height, 3 * width, &bytes)
                                    : WebPEncodeRGB(picture.row(0), width, height, 3 * width, 80, &bytes);
  const auto file = std::make_shared<const Bytes>(bytes, bytes + size);
  WebPFree(bytes);
  return file;
}

/// The decoder alone: to the size itself where `scales`, else the whole picture.
std::uint8_t decodeWebP(const Bytes& file, PixelSize wanted, bool scales) {
  WebPDecoderConfig config;
  WebPInitDecoderConfig(&config);
  config.output.colorspace = MODE_bgrA;
  config.options.use_scaling = scales;
  config.options.scaled_width = static_cast<int>(wanted.width);
  config.options.scaled_height = static_cast<int>(wanted.height);
  WebPDecode(file.data(), file.size(), &config);
  const std::uint8_t first = config.output.u.RGBA.rgba[0];
  WebPFreeDecBuffer(&config.output);
  return first;
}

void addWebP(const std::string& name, const test::Samples& picture, bool lossless) {
  const File file = webP(picture, lossless);
  const PixelSize size{static_cast<std::uint32_t>(picture.width), static_cast<std::uint32_t>(picture.height)};
  const auto addSide = [&](std::uint32_t side) {
    const PixelSize wanted = thumbnailSize(size, side);
    addOurs(name, file, ImageFormat::WebP, size, side);
    add(name, side, "floor:libwebp", [file, wanted, size] { return decodeWebP(*file, wanted, wanted != size); });
    if (wanted != size) add(name, side, "libwebp whole", [file, wanted] { return decodeWebP(*file, wanted, false); });
  };
  for (const std::uint32_t side : kSides) addSide(side);
  addSide(size.width * 3 / 4);
  addSide(size.width);
}

// HEIC and AVIF

#if QUORVEL_HAVE_HEIF

File heif(const test::Samples& picture, heif_compression_format format) {
  const auto width = static_cast<int>(picture.width);
  const auto height = static_cast<int>(picture.height);
  heif_image* image = nullptr;
  heif_image_create(width, height, heif_colorspace_RGB, heif_chroma_interleaved_RGB, &image);
  heif_image_add_plane(image, heif_channel_interleaved, width, height, 24);
  int stride = 0;
  std::uint8_t* const plane = heif_image_get_plane(image, heif_channel_interleaved, &stride);
  for (std::size_t y = 0; y < picture.height; ++y) {
    std::copy_n(picture.row(y), 3 * picture.width, plane + y * static_cast<std::size_t>(stride));
  }
  heif_context* const context = heif_context_alloc();
  heif_encoder* encoder = nullptr;
  Bytes bytes;
  if (heif_context_get_encoder_for_format(context, format, &encoder).code == 0) {
    heif_encoder_set_lossy_quality(encoder, 60);
    const bool isHEVC = format == heif_compression_HEVC;
    heif_encoder_set_parameter(encoder, isHEVC ? "preset" : "speed", isHEVC ? "ultrafast" : "9");
    heif_context_encode_image(context, image, encoder, nullptr, nullptr);
    heif_encoder_release(encoder);
    heif_writer writer{1, [](heif_context*, const void* data, std::size_t size, void* to) {
                         const auto* const from = static_cast<const std::uint8_t*>(data);
                         static_cast<Bytes*>(to)->assign(from, from + size);
                         return heif_error{heif_error_Ok, heif_suberror_Unspecified, "ok"};
                       }};
    heif_context_write(context, &writer, &bytes);
  }
  heif_context_free(context);
  heif_image_release(image);
  return std::make_shared<const Bytes>(std::move(bytes));
}

/// The library alone, in the calling thread, to the pixels that it answers.
std::uint8_t decodeHEIF(const Bytes& file) {
  heif_context* const context = heif_context_alloc();
  heif_context_set_max_decoding_threads(context, 0);
  heif_context_read_from_memory_without_copy(context, file.data(), file.size(), nullptr);
  heif_image_handle* handle = nullptr;
  heif_context_get_primary_image_handle(context, &handle);
  heif_image* image = nullptr;
  heif_decode_image(handle, &image, heif_colorspace_RGB, heif_chroma_interleaved_RGB, nullptr);
  int stride = 0;
  const std::uint8_t* const plane = heif_image_get_plane_readonly(image, heif_channel_interleaved, &stride);
  const std::uint8_t first = plane ? plane[0] : 0;
  heif_image_release(image);
  heif_image_handle_release(handle);
  heif_context_free(context);
  return first;
}

void addHEIF(const std::string& name, const test::Samples& picture, heif_compression_format compression,
             ImageFormat format) {
  const File file = heif(picture, compression);
  if (file->empty()) return;
  const PixelSize size{static_cast<std::uint32_t>(picture.width), static_cast<std::uint32_t>(picture.height)};
  for (const std::uint32_t side : {kSides[0], kSides[1], size.width}) {
    addOurs(name, file, format, size, side);
    add(name, side, "floor:libheif whole", [file] { return decodeHEIF(*file); });
  }
}

#endif

}  // namespace
}  // namespace quorvel::bench

int main(int argc, char** argv) {
  using namespace quorvel;
  const test::Samples picture = test::photograph(4032, 3024);
  bench::addWebP("webp/thumbnail", picture, false);
  bench::addWebP("webp/thumbnail of lossless", test::photograph(2016, 1512), true);
#if QUORVEL_HAVE_HEIF
  bench::addHEIF("heif/thumbnail of HEIC", picture, heif_compression_HEVC, ImageFormat::HEIC);
  bench::addHEIF("heif/thumbnail of AVIF", test::photograph(2016, 1512), heif_compression_AV1, ImageFormat::AVIF);
#endif
  return quorvel::bench::run(argc, argv);
}
