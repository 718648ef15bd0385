#include <algorithm>

#include <libheif/heif.h>

#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/Foundation/LoadedLibrary.h>
#include <quorvel/Platform/ImageIO/EmbeddedProfile.h>
#include <quorvel/Platform/ImageIO/HEIFDecoders.h>
#include <quorvel/Platform/ImageIO/HEIFReader.h>
#include <quorvel/Platform/ImageIO/PixelRows.h>
#include <quorvel/Platform/ImageIO/PremultipliedRows.h>

namespace quorvel {
namespace {

constexpr std::size_t kPixel = 4;
constexpr std::uint32_t kBand = 64;
/// The library squares it.
constexpr int kLongestSide = 10'000;
static_assert(std::int64_t{kLongestSide} * kLongestSide <= limits::kImagePixels);

/// The functions of libheif, found by name.
struct Functions : LoadedLibrary {
  // NOLINTBEGIN(readability-identifier-naming): the members are called as what they point at
  Functions() : LoadedLibrary("libheif.so.1") { addSilentDecoders(); }
  QUORVEL_FUNCTION(heif_context_alloc);
  QUORVEL_FUNCTION(heif_context_free);
  QUORVEL_FUNCTION(heif_context_set_maximum_image_size_limit);
  QUORVEL_FUNCTION(heif_context_read_from_memory_without_copy);
  QUORVEL_FUNCTION(heif_context_get_primary_image_handle);
  QUORVEL_FUNCTION(heif_image_handle_release);
  QUORVEL_FUNCTION(heif_image_handle_get_width);
  QUORVEL_FUNCTION(heif_image_handle_get_height);
  QUORVEL_FUNCTION(heif_image_handle_has_alpha_channel);
  QUORVEL_FUNCTION(heif_image_handle_is_premultiplied_alpha);
  QUORVEL_FUNCTION(heif_decode_image);
  QUORVEL_FUNCTION(heif_image_release);
  QUORVEL_FUNCTION(heif_image_get_width);
  QUORVEL_FUNCTION(heif_image_get_height);
  QUORVEL_FUNCTION(heif_image_get_plane_readonly);
  // NOLINTEND(readability-identifier-naming)
};

const Functions& functions() {
  static const Functions found;
  return found;
}

/// Red, green, blue and perhaps alpha to blue, green, red, alpha.
template <std::size_t kBytes>
void copyPixels(const std::uint8_t* from, std::size_t count, std::uint8_t* to) {
  for (std::size_t x = 0; x < count; ++x) {
    to[kPixel * x] = from[kBytes * x + 2];
    to[kPixel * x + 1] = from[kBytes * x + 1];
    to[kPixel * x + 2] = from[kBytes * x];
    to[kPixel * x + 3] = kBytes == 4 ? from[kBytes * x + 3] : 255;
  }
}

/// A file's primary image, first known by its handle, then decoded.
class PrimaryImage {
 public:
  PrimaryImage(const Functions& f, ImageBytes file) : f_(f), context_(f.heif_context_alloc()) {
    if (!context_) return;
    f.heif_context_set_maximum_image_size_limit(context_, kLongestSide);
    if (f.heif_context_read_from_memory_without_copy(context_, file.data(), file.size(), nullptr).code != 0) return;
    if (f.heif_context_get_primary_image_handle(context_, &handle_).code != 0) handle_ = nullptr;
  }
  PrimaryImage(const PrimaryImage&) = delete;
  PrimaryImage& operator=(const PrimaryImage&) = delete;
  ~PrimaryImage() {
    if (image_) f_.heif_image_release(image_);
    if (handle_) f_.heif_image_handle_release(handle_);
    if (context_) f_.heif_context_free(context_);
  }

  /// Turned as the file says; 0 by 0 when there is none.
  [[nodiscard]] PixelSize size() const {
    if (!handle_) return {};
    return {static_cast<std::uint32_t>(std::max(0, f_.heif_image_handle_get_width(handle_))),
            static_cast<std::uint32_t>(std::max(0, f_.heif_image_handle_get_height(handle_)))};
  }

  /// False when it cannot be, or has another size than its handle said.
  [[nodiscard]] bool decode() {
    hasAlpha_ = f_.heif_image_handle_has_alpha_channel(handle_);
    width_ = size().width;
    const heif_chroma order = hasAlpha_ ? heif_chroma_interleaved_RGBA : heif_chroma_interleaved_RGB;
    if (!decode(order)) return false;
    plane_ = f_.heif_image_get_plane_readonly(image_, heif_channel_interleaved, &bytesPerRow_);
    const PixelSize declared = size();
    return plane_ && f_.heif_image_get_width(image_, heif_channel_interleaved) == static_cast<int>(declared.width) &&
           f_.heif_image_get_height(image_, heif_channel_interleaved) == static_cast<int>(declared.height);
  }

  void copyRow(std::uint32_t y, std::uint8_t* to) const {
    const std::uint8_t* const from = plane_ + std::size_t{y} * static_cast<std::size_t>(bytesPerRow_);
    if (hasAlpha_) {
      copyPixels<4>(from, width_, to);
      finishAlpha(to, width_);
    } else {
      copyPixels<3>(from, width_, to);
    }
  }

 private:
  [[nodiscard]] bool decode(heif_chroma order) {
    const heif_error error = f_.heif_decode_image(handle_, &image_, heif_colorspace_RGB, order, nullptr);
    if (error.code != 0) image_ = nullptr;
    return image_ != nullptr;
  }

  void finishAlpha(std::uint8_t* row, std::size_t count) const {
    if (!f_.heif_image_handle_is_premultiplied_alpha(handle_)) return premultiplyRow(row, count);
    // A lossy codec leaves colours above their alpha, which no premultiplied pixel has.
    for (std::size_t i = 0; i < kPixel * count; ++i) row[i] = std::min(row[i], row[i | 3]);
  }
  const Functions& f_;
  heif_context* context_;
  heif_image_handle* handle_ = nullptr;
  heif_image* image_ = nullptr;
  const std::uint8_t* plane_ = nullptr;
  int bytesPerRow_ = 0;
  std::size_t width_ = 0;
  bool hasAlpha_ = false;
};

}  // namespace

std::shared_ptr<CGBitmap> readHEIF(ImageBytes file, const ImageFacts& facts, PixelSize wanted, const ImageWork& work) {
  const Functions& f = functions();
  const std::uint64_t bytes = std::uint64_t{facts.width} * facts.height * kPixel;
  if (!f.isComplete() || bytes > limits::kImageDecodedBytes) return nullptr;
  PrimaryImage image(f, file);
  // The library's quarter turns are in its sides already, the facts' may be those before.
  const PixelSize size = image.size();
  const PixelSize stored = {facts.width, facts.height};
  if (size != stored && size != PixelSize{facts.height, facts.width}) return nullptr;
  auto result = PixelRows::make(size, wanted);
  if (!result || !image.decode() || work.stop.stop_requested()) return nullptr;
  for (std::uint32_t y = 0; y < size.height; ++y) {
    image.copyRow(y, result->room());
    result->add();
    if (y % kBand == kBand - 1 && !work.goesOn((y + 1.0) / size.height)) return nullptr;
  }
  auto picture = result->take();
  if (picture) convertToSRGB(*picture, file, facts);
  return picture;
}

}  // namespace quorvel
