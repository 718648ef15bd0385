#include <algorithm>
#include <bit>
#include <cstring>

#include <tiffio.h>

#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/Foundation/LoadedLibrary.h>
#include <quorvel/Platform/ImageIO/EmbeddedProfile.h>
#include <quorvel/Platform/ImageIO/Inflater.h>
#include <quorvel/Platform/ImageIO/PixelRows.h>
#include <quorvel/Platform/ImageIO/PremultipliedRows.h>
#include <quorvel/Platform/ImageIO/TIFFReader.h>

namespace quorvel {
namespace {

constexpr std::size_t kPixel = 4;
/// Rows of a band, unless a strip or tile is higher.
constexpr std::uint32_t kBand = 64;

/// The functions of libtiff, found by name.
struct Functions : LoadedLibrary {
  // NOLINTBEGIN(readability-identifier-naming): the members are called as what they point at
  Functions() : LoadedLibrary("libtiff.so.6") {}
  QUORVEL_FUNCTION(TIFFOpenOptionsAlloc);
  QUORVEL_FUNCTION(TIFFOpenOptionsFree);
  QUORVEL_FUNCTION(TIFFOpenOptionsSetMaxSingleMemAlloc);
  QUORVEL_FUNCTION(TIFFOpenOptionsSetErrorHandlerExtR);
  QUORVEL_FUNCTION(TIFFOpenOptionsSetWarningHandlerExtR);
  QUORVEL_FUNCTION(TIFFClientOpenExt);
  QUORVEL_FUNCTION(TIFFClose);
  QUORVEL_FUNCTION(TIFFGetField);
  QUORVEL_FUNCTION(TIFFIsTiled);
  QUORVEL_FUNCTION(TIFFRGBAImageOK);
  QUORVEL_FUNCTION(TIFFRGBAImageBegin);
  QUORVEL_FUNCTION(TIFFRGBAImageGet);
  QUORVEL_FUNCTION(TIFFRGBAImageEnd);
  // NOLINTEND(readability-identifier-naming)
};

const Functions& functions() {
  static const Functions found;
  return found;
}

/// A file in memory, as libtiff reads it.
struct Source {
  ImageBytes file;
  std::size_t offset = 0;

  static tmsize_t read(thandle_t handle, void* to, tmsize_t size) {
    auto* const source = static_cast<Source*>(handle);
    const std::size_t left = source->file.size() - std::min(source->offset, source->file.size());
    const std::size_t count = std::min(static_cast<std::size_t>(std::max<tmsize_t>(size, 0)), left);
    if (count != 0) std::memcpy(to, source->file.data() + source->offset, count);
    source->offset += count;
    return static_cast<tmsize_t>(count);
  }
  static tmsize_t write(thandle_t /*handle*/, void* /*from*/, tmsize_t /*size*/) { return 0; }
  static toff_t seek(thandle_t handle, toff_t offset, int whence) {
    auto* const source = static_cast<Source*>(handle);
    if (whence == SEEK_CUR) offset += source->offset;
    if (whence == SEEK_END) offset += source->file.size();
    return source->offset = offset;
  }
  static int close(thandle_t /*handle*/) { return 0; }
  static toff_t size(thandle_t handle) { return static_cast<Source*>(handle)->file.size(); }
  static int map(thandle_t handle, void** base, toff_t* size) {
    const auto* const source = static_cast<Source*>(handle);
    *base = const_cast<std::uint8_t*>(source->file.data());
    *size = source->file.size();
    return 1;
  }
  static void unmap(thandle_t /*handle*/, void* /*base*/, toff_t /*size*/) {}
};

/// Says that a message is done with, so that it is not printed.
int swallow(TIFF* /*tiff*/, void* /*data*/, const char* /*module*/, const char* /*format*/, va_list /*values*/) {
  return 1;
}

/// Samples of grey, each with others beside it, of which the first may be its alpha. libtiff's own way takes those at
/// the right border of tiles from wrong places, multiplies none with its alpha, and loses the alpha of 16 bits.
void putGray(TIFFRGBAImage* image, std::uint32_t* to, std::uint32_t /*x*/, std::uint32_t /*y*/, std::uint32_t width,
             std::uint32_t height, std::int32_t pixelsBetween, std::int32_t wordsBetween, unsigned char* from) {
  const std::ptrdiff_t bytes = image->bitspersample / 8;
  const auto sample = [bytes](const std::uint8_t* at) -> std::uint32_t {
    std::uint16_t deep = 0;
    if (bytes == 1) return *at;
    std::memcpy(&deep, at, sizeof deep);
    return (deep * 255U + 32'895U) >> 16;
  };
  const std::ptrdiff_t step = bytes * image->samplesperpixel;
  const std::uint32_t flip = image->photometric == PHOTOMETRIC_MINISWHITE ? 0xFFFFFF : 0;
  for (; height > 0; --height, from += step * pixelsBetween, to += wordsBetween) {
    for (std::uint32_t x = 0; x < width; ++x, from += step, ++to) {
      *to = (sample(from) * 0x010101 ^ flip) | (image->alpha ? sample(from + bytes) : 255) << 24;
      if (image->alpha == EXTRASAMPLE_UNASSALPHA) *to = premultipliedPixel(*to);
    }
  }
}

/// The first page while it is read.
class Page {
 public:
  Page(const Functions& f, ImageBytes file) : f_(f), source_{file} {
    TIFFOpenOptions* const options = f.TIFFOpenOptionsAlloc();
    if (!options) return;
    f.TIFFOpenOptionsSetMaxSingleMemAlloc(options, static_cast<tmsize_t>(limits::kImageDecodedBytes));
    f.TIFFOpenOptionsSetErrorHandlerExtR(options, swallow, nullptr);
    f.TIFFOpenOptionsSetWarningHandlerExtR(options, swallow, nullptr);
    tiff_ = f.TIFFClientOpenExt("image", "r", &source_, Source::read, Source::write, Source::seek, Source::close,
                                Source::size, Source::map, Source::unmap, options);
    f.TIFFOpenOptionsFree(options);
    char message[1024];
    // Stops at an error, so that rows count only where they could be decoded.
    isBegun_ = tiff_ && f.TIFFRGBAImageOK(tiff_, message) && f.TIFFRGBAImageBegin(&image_, tiff_, 1, message);
    image_.req_orientation = image_.orientation;
    const bool isGray = image_.photometric == PHOTOMETRIC_MINISBLACK || image_.photometric == PHOTOMETRIC_MINISWHITE;
    if (isBegun_ && isGray && image_.isContig && image_.bitspersample >= 8) image_.put.contig = putGray;
  }
  Page(const Page&) = delete;
  Page& operator=(const Page&) = delete;
  ~Page() {
    if (isBegun_) f_.TIFFRGBAImageEnd(&image_);
    if (tiff_) f_.TIFFClose(tiff_);
  }

  [[nodiscard]] bool isReadable() const { return isBegun_; }
  [[nodiscard]] PixelSize size() const { return {image_.width, image_.height}; }
  [[nodiscard]] bool isOpaque() const { return image_.alpha == 0; }

  /// How many rows a strip or a row of tiles has, which are decoded together.
  [[nodiscard]] std::uint32_t unit() const {
    std::uint32_t high = 0;
    const ttag_t tag = f_.TIFFIsTiled(tiff_) ? TIFFTAG_TILELENGTH : TIFFTAG_ROWSPERSTRIP;
    if (!f_.TIFFGetField(tiff_, tag, &high) || high == 0) high = image_.height;
    return std::min(high, image_.height);
  }

  /// The rows from `top` on, premultiplied: alpha, blue, green, red in each word. False when they are damaged.
  [[nodiscard]] bool read(std::uint32_t top, std::uint32_t rows, std::uint32_t* to) {
    image_.row_offset = static_cast<int>(top);
    return f_.TIFFRGBAImageGet(&image_, to, image_.width, rows);
  }

 private:
  const Functions& f_;
  Source source_;
  TIFF* tiff_ = nullptr;
  TIFFRGBAImage image_{};
  bool isBegun_ = false;
};

/// Words of alpha, blue, green, red to pixels. A colour above its alpha, which no premultiplied pixel has, is brought
/// down to it.
void copySwapped(const std::uint32_t* from, std::size_t count, bool isOpaque, std::uint8_t* to) {
  if (isOpaque && std::endian::native == std::endian::little) {
    for (std::size_t i = 0; i < count; ++i) {
      const std::uint32_t pixel = (from[i] & 0xFF00FF00) | (from[i] >> 16 & 0xFF) | (from[i] & 0xFF) << 16;
      std::memcpy(to + kPixel * i, &pixel, sizeof pixel);
    }
    return;
  }
  for (std::size_t i = 0; i < count; ++i, to += kPixel) {
    const std::uint32_t alpha = from[i] >> 24;
    for (unsigned c = 0; c < 3; ++c) to[c] = static_cast<std::uint8_t>(std::min(from[i] >> (16 - 8 * c) & 0xFF, alpha));
    to[3] = static_cast<std::uint8_t>(alpha);
  }
}

/// Takes bands of whole strips; where one is damaged, its strips one by one. False when the work was stopped.
bool readBands(Page& page, PixelRows& result, const ImageWork& work) {
  const auto [width, height] = page.size();
  const std::uint32_t unit = page.unit();
  std::uint32_t band = std::min(unit * std::max(1U, kBand / unit), height);
  const std::uint64_t bytes = std::uint64_t{width} * band * kPixel;
  const RawBytes rows(bytes <= limits::kImageDecodedBytes ? static_cast<std::size_t>(bytes) : 0);
  if (!rows.get() || rows.size == 0) return false;
  auto* const pixels = reinterpret_cast<std::uint32_t*>(rows.get());
  for (std::uint32_t top = 0; top < height;) {
    const std::uint32_t count = std::min(band, height - top);
    if (!page.read(top, count, pixels)) {
      if (band == unit) return true;
      band = unit;
      continue;
    }
    for (std::uint32_t y = 0; y < count; ++y) {
      copySwapped(pixels + std::size_t{width} * y, width, page.isOpaque(), result.room());
      result.add();
    }
    top += count;
    if (!work.goesOn(static_cast<double>(top) / height)) return false;
  }
  return true;
}

}  // namespace

std::shared_ptr<CGBitmap> readTIFF(ImageBytes file, const ImageFacts& facts, PixelSize wanted, const ImageWork& work) {
  const Functions& f = functions();
  if (!f.isComplete()) return nullptr;
  Page page(f, file);
  if (!page.isReadable() || page.size() != PixelSize{facts.width, facts.height}) return nullptr;
  auto result = PixelRows::make(page.size(), wanted);
  if (!result || !readBands(page, *result, work)) return nullptr;
  auto picture = result->take();
  if (picture) convertToSRGB(*picture, file, facts);
  return picture;
}

}  // namespace quorvel
