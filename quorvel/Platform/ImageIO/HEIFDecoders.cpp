#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <new>
#include <type_traits>

#include <aom/aom_decoder.h>
#include <aom/aomdx.h>
#include <libde265/de265.h>
#include <libheif/heif.h>
#include <libheif/heif_plugin.h>

#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/Foundation/LoadedLibrary.h>
#include <quorvel/Platform/ImageIO/HEIFDecoders.h>
#include <quorvel/Platform/ImageIO/HEVCParameters.h>

namespace quorvel {
namespace {

constexpr int kPluginVersion = 3;
/// The library's own have 100.
constexpr int kPriority = 200;
constexpr std::uint64_t kLengthBytes = 4;

/// The functions of the libraries, found by name.
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
};
struct AV1Functions : LoadedLibrary {
  AV1Functions() : LoadedLibrary("libaom.so.3") {}
  QUORVEL_FUNCTION(aom_codec_av1_dx);
  QUORVEL_FUNCTION(aom_codec_dec_init_ver);
  QUORVEL_FUNCTION(aom_codec_peek_stream_info);
  QUORVEL_FUNCTION(aom_codec_decode);
  QUORVEL_FUNCTION(aom_codec_get_frame);
  QUORVEL_FUNCTION(aom_codec_destroy);
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

const AV1Functions& av1() {
  static const AV1Functions found;
  return found;
}

heif_error done() { return {heif_error_Ok, heif_suberror_Unspecified, "Success"}; }
heif_error failed() { return {heif_error_Decoder_plugin_error, heif_suberror_Unspecified, "damaged stream"}; }

/// A picture that a decoder holds. Samples of more than eight bits lie in two bytes.
struct Decoded {
  struct Plane {
    const std::uint8_t* bytes = nullptr;
    int bytesPerRow = 0;
    int width = 0;
    int height = 0;
    int depth = 0;
  };
  std::array<Plane, 3> planes{};
  heif_chroma chroma = heif_chroma_monochrome;
  bool isFullRange = false;
  std::uint16_t primaries = 0;
  std::uint16_t transfer = 0;
  std::uint16_t matrix = 0;
};

bool copyPlane(const Decoded::Plane& from, heif_image* to, heif_channel channel) {
  if (heif().heif_image_add_plane(to, channel, from.width, from.height, from.depth).code != 0) return false;
  int toStride = 0;
  std::uint8_t* target = heif().heif_image_get_plane(to, channel, &toStride);
  const std::uint8_t* source = from.bytes;
  if (!source || !target) return false;
  const std::size_t rowBytes = static_cast<std::size_t>(from.width) * (from.depth > 8 ? 2 : 1);
  for (int y = 0; y < from.height; ++y, source += from.bytesPerRow, target += toStride) {
    std::memcpy(target, source, rowBytes);
  }
  return true;
}

void copyColors(const Decoded& from, heif_image* to) {
  const std::unique_ptr<heif_color_profile_nclx, decltype(heif().heif_nclx_color_profile_free)> colors(
      heif().heif_nclx_color_profile_alloc(), heif().heif_nclx_color_profile_free);
  if (!colors) return;
  colors->full_range_flag = from.isFullRange;
  heif().heif_nclx_color_profile_set_color_primaries(colors.get(), from.primaries);
  heif().heif_nclx_color_profile_set_transfer_characteristics(colors.get(), from.transfer);
  heif().heif_nclx_color_profile_set_matrix_coefficients(colors.get(), from.matrix);
  heif().heif_image_set_nclx_color_profile(to, colors.get());
}

/// nullptr for what libheif does not take.
heif_image* copied(const Decoded& from) {
  const bool isGray = from.chroma == heif_chroma_monochrome;
  const heif_colorspace space = isGray ? heif_colorspace_monochrome : heif_colorspace_YCbCr;
  heif_image* to = nullptr;
  if (heif().heif_image_create(from.planes[0].width, from.planes[0].height, space, from.chroma, &to).code != 0) {
    return nullptr;
  }
  bool isWhole = copyPlane(from.planes[0], to, heif_channel_Y);
  isWhole =
      isWhole &&
      (isGray || (copyPlane(from.planes[1], to, heif_channel_Cb) && copyPlane(from.planes[2], to, heif_channel_Cr)));
  if (!isWhole) return heif().heif_image_release(to), nullptr;
  copyColors(from, to);
  return to;
}

Decoded decodedOf(const de265_image* picture) {
  const HEVCFunctions& f = hevc();
  const auto number = [picture](auto get) { return static_cast<std::uint16_t>(get(picture)); };
  const de265_chroma chroma = f.de265_get_chroma_format(picture);
  Decoded decoded;
  for (int i = 0; i < (chroma == de265_chroma_mono ? 1 : 3); ++i) {
    Decoded::Plane& plane = decoded.planes[static_cast<std::size_t>(i)];
    plane.bytes = f.de265_get_image_plane(picture, i, &plane.bytesPerRow);
    plane.width = f.de265_get_image_width(picture, i);
    plane.height = f.de265_get_image_height(picture, i);
    plane.depth = f.de265_get_bits_per_pixel(picture, i);
  }
  // Both libraries count the formats of chroma alike, but for none.
  if (chroma != de265_chroma_mono) decoded.chroma = static_cast<heif_chroma>(chroma);
  decoded.isFullRange = f.de265_get_image_full_range_flag(picture) != 0;
  decoded.primaries = number(f.de265_get_image_colour_primaries);
  decoded.transfer = number(f.de265_get_image_transfer_characteristics);
  decoded.matrix = number(f.de265_get_image_matrix_coefficients);
  return decoded;
}

/// As the stream holds it, which may be none that the type knows.
template <class Enumeration>
std::uint16_t numberOf(const Enumeration& member) {
  std::underlying_type_t<Enumeration> number;
  std::memcpy(&number, &member, sizeof number);
  return static_cast<std::uint16_t>(number);
}

Decoded decodedOf(const aom_image_t& picture) {
  Decoded decoded;
  for (std::size_t i = 0; i < (picture.monochrome ? 1 : 3); ++i) {
    const unsigned acrossShift = i == 0 ? 0 : picture.x_chroma_shift;
    const unsigned downShift = i == 0 ? 0 : picture.y_chroma_shift;
    decoded.planes[i] = {picture.planes[i], picture.stride[i],
                         static_cast<int>((picture.d_w + acrossShift) >> acrossShift),
                         static_cast<int>((picture.d_h + downShift) >> downShift), static_cast<int>(picture.bit_depth)};
  }
  if (!picture.monochrome) {
    decoded.chroma = picture.y_chroma_shift   ? heif_chroma_420
                     : picture.x_chroma_shift ? heif_chroma_422
                                              : heif_chroma_444;
  }
  decoded.isFullRange = picture.range == AOM_CR_FULL_RANGE;
  decoded.primaries = numberOf(picture.cp);
  decoded.transfer = numberOf(picture.tc);
  decoded.matrix = numberOf(picture.mc);
  return decoded;
}

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

heif_error decode(de265_decoder_context* decoder, heif_image** result) {
  *result = nullptr;
  if (hevc().de265_flush_data(decoder) != DE265_OK) return failed();
  int more = 1;
  while (more && !*result) {
    more = 0;
    if (hevc().de265_decode(decoder, &more) != DE265_OK) break;
    if (const de265_image* const picture = hevc().de265_get_next_picture(decoder)) *result = copied(decodedOf(picture));
  }
  return *result ? done() : failed();
}

/// The type of the unit at `at`, and past its end; false where it is none that tells its length.
bool nextUnit(ByteView stream, std::uint64_t& at, unsigned& type) {
  const unsigned head = stream.u8(at);
  type = head >> 3 & 15;
  at += head & 4 ? 2 : 1;
  if (at >= stream.size() || !(head & 2)) return false;
  std::uint64_t length = 0;
  for (unsigned shift = 0; shift < 56; shift += 7) {
    const std::uint64_t byte = stream.u8(at++);
    length |= (byte & 0x7F) << shift;
    if (byte < 0x80) return at += length, stream.has(at - length, length);
  }
  return false;
}

void freeDecoder(void* decoder) {
  auto* const codec = static_cast<aom_codec_ctx_t*>(decoder);
  av1().aom_codec_destroy(codec);
  delete codec;
}

heif_error makeDecoder(void** decoder) {
  *decoder = nullptr;
  const aom_codec_dec_cfg_t plain{.threads = 1, .w = 0, .h = 0, .allow_lowbitdepth = 1};
  auto codec = std::unique_ptr<aom_codec_ctx_t>(new (std::nothrow) aom_codec_ctx_t{});
  if (!codec || av1().aom_codec_dec_init_ver(codec.get(), av1().aom_codec_av1_dx(), &plain, 0,
                                             AOM_DECODER_ABI_VERSION) != AOM_CODEC_OK) {
    return failed();
  }
  *decoder = codec.release();
  return done();
}

heif_error decode(aom_codec_ctx_t* decoder, heif_image** result) {
  aom_codec_iter_t next = nullptr;
  const aom_image_t* const picture = av1().aom_codec_get_frame(decoder, &next);
  const bool isDeep = picture && (picture->fmt & AOM_IMG_FMT_HIGHBITDEPTH) != 0;
  *result = picture && isDeep == (picture->bit_depth > 8) ? copied(decodedOf(*picture)) : nullptr;
  return *result ? done() : failed();
}

constexpr heif_decoder_plugin kHEVC = {
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

constexpr heif_decoder_plugin kAV1 = {
    .plugin_api_version = kPluginVersion,
    .get_plugin_name = [] { return "libaom, silent"; },
    .init_plugin = nullptr,
    .deinit_plugin = nullptr,
    .does_support_format =
        [](heif_compression_format format) { return format == heif_compression_AV1 ? kPriority : 0; },
    .new_decoder = makeDecoder,
    .free_decoder = freeDecoder,
    .push_data =
        [](void* decoder, const void* bytes, std::size_t size) {
          const ImageBytes stream(static_cast<const std::uint8_t*>(bytes), size);
          auto* const codec = static_cast<aom_codec_ctx_t*>(decoder);
          const bool isDecoded = isAV1WithinLimits(stream) &&
                                 av1().aom_codec_decode(codec, stream.data(), stream.size(), nullptr) == AOM_CODEC_OK;
          return isDecoded ? done() : failed();
        },
    .decode_image = [](void* decoder,
                       heif_image** result) { return decode(static_cast<aom_codec_ctx_t*>(decoder), result); },
    .set_strict_decoding = [](void* /*decoder*/, int /*flag*/) {},
    .id_name = "quorvel-av1",
};

}  // namespace

bool isAV1WithinLimits(ImageBytes bytes) {
  const ByteView stream(bytes);
  constexpr unsigned kSequence = 1;
  unsigned type = 0;
  std::uint64_t at = 0;
  for (std::uint64_t start = 0; start < stream.size(); start = at) {
    const bool goesOn = nextUnit(stream, at, type);
    aom_codec_stream_info_t info{};
    const ImageBytes unit = stream.part(start);
    if (type == kSequence &&
        av1().aom_codec_peek_stream_info(av1().aom_codec_av1_dx(), unit.data(), unit.size(), &info) == AOM_CODEC_OK) {
      if (info.w > limits::kImageSide || info.h > limits::kImageSide) return false;
      if (std::int64_t{info.w} * info.h > limits::kImagePixels) return false;
    }
    if (!goesOn) return true;
  }
  return true;
}

void addSilentDecoders() {
  if (!heif().isComplete()) return;
  if (hevc().isComplete()) heif().heif_register_decoder_plugin(&kHEVC);
  if (av1().isComplete()) heif().heif_register_decoder_plugin(&kAV1);
}

}  // namespace quorvel
