#include <algorithm>
#include <cstring>
#include <memory>

#include <libde265/de265.h>
#include <libheif/heif.h>
#include <libheif/heif_plugin.h>

#include <quorvel/Platform/Foundation/LoadedLibrary.h>
#include <quorvel/Platform/ImageIO/HEIFDecoders.h>
#include <quorvel/Platform/ImageIO/HEVCParameters.h>

namespace quorvel {
namespace {

constexpr int kPluginVersion = 3;
/// The library's own have 100.
constexpr int kPriority = 200;
constexpr std::uint64_t kLengthBytes = 4;

/// The functions of both libraries, found by name.
struct HEIFFunctions : LoadedLibrary {
  // NOLINTBEGIN(readability-identifier-naming): the members are called as what they point at
  HEIFFunctions() : LoadedLibrary("libheif.so.1") {}
  QUORVEL_FUNCTION(heif_register_decoder_plugin);
  QUORVEL_FUNCTION(heif_image_create);
  QUORVEL_FUNCTION(heif_image_release);
  QUORVEL_FUNCTION(heif_image_add_plane);
  QUORVEL_FUNCTION(heif_image_get_plane);
  QUORVEL_FUNCTION(heif_nclx_color_profile_alloc);
  QUORVEL_FUNCTION(heif_nclx_color_profile_free);
  QUORVEL_FUNCTION(heif_nclx_color_profile_set_color_primaries);
  QUORVEL_FUNCTION(heif_nclx_color_profile_set_transfer_characteristics);
  QUORVEL_FUNCTION(heif_nclx_color_profile_set_matrix_coefficients);
  QUORVEL_FUNCTION(heif_image_set_nclx_color_profile);
};
struct HEVCFunctions : LoadedLibrary {
  HEVCFunctions() : LoadedLibrary("libde265.so.0") {}
  QUORVEL_FUNCTION(de265_new_decoder);
  QUORVEL_FUNCTION(de265_free_decoder);
  QUORVEL_FUNCTION(de265_push_NAL);
  QUORVEL_FUNCTION(de265_flush_data);
  QUORVEL_FUNCTION(de265_decode);
  QUORVEL_FUNCTION(de265_get_next_picture);
  QUORVEL_FUNCTION(de265_get_chroma_format);
  QUORVEL_FUNCTION(de265_get_image_width);
  QUORVEL_FUNCTION(de265_get_image_height);
  QUORVEL_FUNCTION(de265_get_bits_per_pixel);
  QUORVEL_FUNCTION(de265_get_image_plane);
  QUORVEL_FUNCTION(de265_get_image_full_range_flag);
  QUORVEL_FUNCTION(de265_get_image_colour_primaries);
  QUORVEL_FUNCTION(de265_get_image_transfer_characteristics);
  QUORVEL_FUNCTION(de265_get_image_matrix_coefficients);
  // NOLINTEND(readability-identifier-naming)
};

const HEIFFunctions& heif() {
  static const HEIFFunctions found;
  return found;
}
const HEVCFunctions& hevc() {
  static const HEVCFunctions found;
  return found;
}

heif_error done() { return {heif_error_Ok, heif_suberror_Unspecified, "Success"}; }
heif_error failed() { return {heif_error_Decoder_plugin_error, heif_suberror_Unspecified, "damaged HEVC stream"}; }

/// Each unit of the stream comes after its length in four bytes.
bool push(de265_decoder_context* decoder, ByteView stream) {
  std::uint64_t at = 0;
  while (at < stream.size()) {
    const std::uint64_t length = stream.big32(at);
    if (!stream.has(at, kLengthBytes + length)) return false;
    const ImageBytes unit = stream.part(at + kLengthBytes, length);
    at += kLengthBytes + length;
    const HEVCUnit kind = kindOfHEVCUnit(unit);
    if (kind == HEVCUnit::UnsoundParameters) return false;
    if (kind == HEVCUnit::Foreign) continue;
    if (hevc().de265_push_NAL(decoder, unit.data(), static_cast<int>(length), 0, nullptr) != DE265_OK) return false;
  }
  return true;
}

bool copyPlane(const de265_image* from, int plane, heif_image* to, heif_channel channel) {
  const int width = hevc().de265_get_image_width(from, plane);
  const int height = hevc().de265_get_image_height(from, plane);
  const int depth = hevc().de265_get_bits_per_pixel(from, plane);
  if (heif().heif_image_add_plane(to, channel, width, height, depth).code != 0) return false;
  int fromStride = 0;
  int toStride = 0;
  const std::uint8_t* source = hevc().de265_get_image_plane(from, plane, &fromStride);
  std::uint8_t* target = heif().heif_image_get_plane(to, channel, &toStride);
  if (!source || !target) return false;
  const std::size_t rowBytes = static_cast<std::size_t>(width) * (depth > 8 ? 2 : 1);
  for (int y = 0; y < height; ++y, source += fromStride, target += toStride) std::memcpy(target, source, rowBytes);
  return true;
}

void copyColors(const de265_image* from, heif_image* to) {
  const std::unique_ptr<heif_color_profile_nclx, decltype(heif().heif_nclx_color_profile_free)> colors(
      heif().heif_nclx_color_profile_alloc(), heif().heif_nclx_color_profile_free);
  if (!colors) return;
  const auto number = [from](auto get) { return static_cast<std::uint16_t>(get(from)); };
  colors->full_range_flag = hevc().de265_get_image_full_range_flag(from) != 0;
  heif().heif_nclx_color_profile_set_color_primaries(colors.get(), number(hevc().de265_get_image_colour_primaries));
  heif().heif_nclx_color_profile_set_transfer_characteristics(colors.get(),
                                                              number(hevc().de265_get_image_transfer_characteristics));
  heif().heif_nclx_color_profile_set_matrix_coefficients(colors.get(),
                                                         number(hevc().de265_get_image_matrix_coefficients));
  heif().heif_image_set_nclx_color_profile(to, colors.get());
}

/// nullptr for what libheif does not take.
heif_image* copied(const de265_image* from) {
  const de265_chroma chroma = hevc().de265_get_chroma_format(from);
  const bool isGray = chroma == de265_chroma_mono;
  heif_image* to = nullptr;
  // Both libraries count the formats of chroma alike.
  if (heif()
          .heif_image_create(hevc().de265_get_image_width(from, 0), hevc().de265_get_image_height(from, 0),
                             isGray ? heif_colorspace_monochrome : heif_colorspace_YCbCr,
                             isGray ? heif_chroma_monochrome : static_cast<heif_chroma>(chroma), &to)
          .code != 0) {
    return nullptr;
  }
  bool isWhole = copyPlane(from, 0, to, heif_channel_Y);
  isWhole = isWhole && (isGray || (copyPlane(from, 1, to, heif_channel_Cb) && copyPlane(from, 2, to, heif_channel_Cr)));
  if (!isWhole) return heif().heif_image_release(to), nullptr;
  copyColors(from, to);
  return to;
}

heif_error decode(de265_decoder_context* decoder, heif_image** result) {
  *result = nullptr;
  if (hevc().de265_flush_data(decoder) != DE265_OK) return failed();
  int more = 1;
  while (more && !*result) {
    more = 0;
    if (hevc().de265_decode(decoder, &more) != DE265_OK) break;
    if (const de265_image* const picture = hevc().de265_get_next_picture(decoder)) *result = copied(picture);
  }
  return *result ? done() : failed();
}

constexpr heif_decoder_plugin kPlugin = {
    .plugin_api_version = kPluginVersion,
    .get_plugin_name = [] { return "libde265, silent"; },
    .init_plugin = nullptr,
    .deinit_plugin = nullptr,
    .does_support_format =
        [](heif_compression_format format) { return format == heif_compression_HEVC ? kPriority : 0; },
    .new_decoder =
        [](void** decoder) {
          *decoder = hevc().de265_new_decoder();
          return *decoder ? done() : failed();
        },
    .free_decoder = [](void* decoder) { (void)hevc().de265_free_decoder(decoder); },
    .push_data =
        [](void* decoder, const void* bytes, std::size_t size) {
          const ImageBytes stream(static_cast<const std::uint8_t*>(bytes), size);
          return push(decoder, ByteView(stream)) ? done() : failed();
        },
    .decode_image = [](void* decoder, heif_image** result) { return decode(decoder, result); },
    .set_strict_decoding = [](void* /*decoder*/, int /*flag*/) {},
    .id_name = "quorvel-hevc",
};

}  // namespace

bool addSilentHEVCDecoder() {
  return heif().isComplete() && hevc().isComplete() && heif().heif_register_decoder_plugin(&kPlugin).code == 0;
}

}  // namespace quorvel
