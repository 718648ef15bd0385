#include <algorithm>
#include <cstring>

#include <webp/decode.h>
#include <webp/demux.h>

#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/ImageIO/EmbeddedProfile.h>
#include <quorvel/Platform/ImageIO/PixelRows.h>
#include <quorvel/Platform/ImageIO/WebPReader.h>

namespace quorvel {
namespace {

constexpr std::size_t kPixel = 4;
/// Into so many parts a file is cut, between which the work is asked.
constexpr std::size_t kParts = 16;
constexpr std::uint32_t kBand = 64;

struct DeleteDecoder {
  void operator()(WebPIDecoder* decoder) const { WebPIDelete(decoder); }
};
struct DeleteDemuxer {
  void operator()(WebPDemuxer* demuxer) const { WebPDemuxDelete(demuxer); }
};

/// What is to be decoded, and where it lies on its canvas.
struct Picture {
  ImageBytes bytes;
  WebPBitstreamFeatures features{};
  std::uint32_t left = 0;
  std::uint32_t top = 0;

  [[nodiscard]] PixelSize size() const {
    return {static_cast<std::uint32_t>(features.width), static_cast<std::uint32_t>(features.height)};
  }
  /// Where the decoder's own means are those of premultiplied pixels, and where colours are stored at half the sides,
  /// below those.
  [[nodiscard]] bool shrinksWellTo(PixelSize wanted) const {
    if (features.format == 2) return true;
    return !features.has_alpha && wanted.width <= size().width / 2 && wanted.height <= size().height / 2;
  }
};

bool readFeatures(ImageBytes bytes, WebPBitstreamFeatures& features) {
  return WebPGetFeatures(bytes.data(), bytes.size(), &features) == VP8_STATUS_OK;
}

std::optional<Picture> firstFrame(ImageBytes file, const ImageFacts& facts) {
  const WebPData data{file.data(), file.size()};
  WebPDemuxState state = WEBP_DEMUX_PARSING_HEADER;
  const std::unique_ptr<WebPDemuxer, DeleteDemuxer> demuxer(WebPDemuxPartial(&data, &state));
  if (!demuxer || state < WEBP_DEMUX_PARSED_HEADER) return std::nullopt;
  if (WebPDemuxGetI(demuxer.get(), WEBP_FF_CANVAS_WIDTH) != facts.width ||
      WebPDemuxGetI(demuxer.get(), WEBP_FF_CANVAS_HEIGHT) != facts.height) {
    return std::nullopt;
  }
  WebPIterator frame{};
  if (!WebPDemuxGetFrame(demuxer.get(), 1, &frame)) return std::nullopt;
  Picture picture{{frame.fragment.bytes, frame.fragment.size}};
  picture.left = static_cast<std::uint32_t>(frame.x_offset);
  picture.top = static_cast<std::uint32_t>(frame.y_offset);
  WebPDemuxReleaseIterator(&frame);
  if (!readFeatures(picture.bytes, picture.features)) return std::nullopt;
  // The container may only say where the frame lies, not how large it is.
  const auto [width, height] = picture.size();
  if (picture.left + width > facts.width || picture.top + height > facts.height) return std::nullopt;
  return picture;
}

/// Decodes into the whole of `to`, which may be smaller. Answers how many rows there were, from the top; 0 too when the
/// work was stopped.
std::size_t decode(const Picture& picture, CGBitmap& to, const ImageWork& work) {
  WebPDecoderConfig config;
  if (!WebPInitDecoderConfig(&config)) return 0;
  config.output.colorspace = MODE_bgrA;
  config.output.is_external_memory = 1;
  config.output.u.RGBA = {to.data(), static_cast<int>(to.bytesPerRow()), to.bytesPerRow() * to.height()};
  if (picture.size() != PixelSize{static_cast<std::uint32_t>(to.width()), static_cast<std::uint32_t>(to.height())}) {
    config.options.use_scaling = 1;
    config.options.scaled_width = static_cast<int>(to.width());
    config.options.scaled_height = static_cast<int>(to.height());
  }
  const std::unique_ptr<WebPIDecoder, DeleteDecoder> decoder(WebPIDecode(nullptr, 0, &config));
  if (!decoder) return 0;
  VP8StatusCode status = VP8_STATUS_SUSPENDED;
  for (std::size_t part = 1; part <= kParts && status == VP8_STATUS_SUSPENDED; ++part) {
    status = WebPIUpdate(decoder.get(), picture.bytes.data(), picture.bytes.size() * part / kParts);
    if (!work.goesOn(static_cast<double>(part) / kParts)) return 0;
  }
  int rows = 0;
  if (!WebPIDecGetRGB(decoder.get(), &rows, nullptr, nullptr, nullptr) || rows < 0) return 0;
  return std::min(static_cast<std::size_t>(rows), to.height());
}

void clearBelow(CGBitmap& bitmap, std::size_t rows) {
  std::memset(bitmap.row(0) + rows * bitmap.bytesPerRow(), 0, (bitmap.height() - rows) * bitmap.bytesPerRow());
}

std::shared_ptr<CGBitmap> readDirectly(const Picture& picture, PixelSize wanted, const ImageWork& work) {
  auto result = CGBitmap::make(wanted.width, wanted.height);
  if (!result) return nullptr;
  const std::size_t rows = decode(picture, *result, work);
  if (rows == 0) return nullptr;
  clearBelow(*result, rows);
  return result;
}

/// The whole picture, put on its canvas row by row.
std::shared_ptr<CGBitmap> readOntoCanvas(const Picture& picture, PixelSize canvas, PixelSize wanted,
                                         const ImageWork& work) {
  const auto [width, height] = picture.size();
  auto result = PixelRows::make(canvas, wanted);
  const auto whole = CGBitmap::make(width, height);
  if (!result || !whole) return nullptr;
  const std::size_t rows = decode(picture, *whole, {work.stop, {}});
  if (rows == 0) return nullptr;
  for (std::uint32_t y = 0; y < canvas.height; ++y) {
    std::uint8_t* const row = result->room();
    std::memset(row, 0, canvas.width * kPixel);
    if (y >= picture.top && y - picture.top < rows) {
      std::memcpy(row + picture.left * kPixel, whole->row(y - picture.top), width * kPixel);
    }
    result->add();
    if (y % kBand == kBand - 1 && !work.goesOn((y + 1.0) / canvas.height)) return nullptr;
  }
  return result->take();
}

}  // namespace

std::shared_ptr<CGBitmap> readWebP(ImageBytes file, const ImageFacts& facts, PixelSize wanted, const ImageWork& work) {
  const PixelSize canvas = {facts.width, facts.height};
  // The decoder keeps the whole picture where it is packed without loss.
  if (std::uint64_t{canvas.width} * canvas.height * kPixel > limits::kImageDecodedBytes) return nullptr;
  std::optional<Picture> picture(Picture{file});
  if (!readFeatures(file, picture->features)) return nullptr;
  const bool isAnimated = picture->features.has_animation;
  if (isAnimated) picture = firstFrame(file, facts);
  if (!picture || (!isAnimated && picture->size() != canvas)) return nullptr;
  const bool isDirect = !isAnimated && (wanted == canvas || picture->shrinksWellTo(wanted));
  auto result = isDirect ? readDirectly(*picture, wanted, work) : readOntoCanvas(*picture, canvas, wanted, work);
  if (result) convertToSRGB(*result, file, facts);
  return result;
}

}  // namespace quorvel
