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
/// Into so many parts a file is cut, between which the work is asked and rows are taken while they are in the cache. To
/// go on costs more where the picture is packed without loss.
constexpr std::size_t kParts = 64;
constexpr std::size_t kLosslessParts = 16;
/// The file, the picture that the decoder keeps of what is packed without loss, and what it is decoded into.
constexpr std::uint64_t kLosslessBytes = std::uint64_t{280} * 1024 * 1024;

std::uint64_t bytesOf(PixelSize size) { return std::uint64_t{size.width} * size.height * kPixel; }

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
  [[nodiscard]] bool isLossless() const { return features.format == 2; }
  /// With room for a result of that size.
  [[nodiscard]] bool fitsInMemory(std::uint64_t resultBytes) const {
    return !isLossless() || bytes.size() + bytesOf(size()) + resultBytes <= kLosslessBytes;
  }
  /// Where the decoder's own means are those of premultiplied pixels. Above half the sides ours are faster, which are
  /// those of colours too that are stored at half the sides, but take the whole picture's memory.
  [[nodiscard]] bool shrinksWellTo(PixelSize wanted) const {
    const bool isSmall = wanted.width <= size().width / 2 && wanted.height <= size().height / 2;
    if (!isLossless()) return isSmall && !features.has_alpha;
    return isSmall || !fitsInMemory(bytesOf(size()) + bytesOf(wanted));
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

std::optional<WebPDecoderConfig> configFor(const Picture& picture, CGBitmap& to) {
  WebPDecoderConfig config;
  if (!WebPInitDecoderConfig(&config)) return std::nullopt;
  config.output.colorspace = MODE_bgrA;
  config.output.is_external_memory = 1;
  config.output.u.RGBA = {to.data(), static_cast<int>(to.bytesPerRow()), to.bytesPerRow() * to.height()};
  if (picture.size() != PixelSize{static_cast<std::uint32_t>(to.width()), static_cast<std::uint32_t>(to.height())}) {
    config.options.use_scaling = 1;
    config.options.scaled_width = static_cast<int>(to.width());
    config.options.scaled_height = static_cast<int>(to.height());
  }
  return config;
}

/// Decodes into the whole of `to`, which may be smaller, and calls `take(rows)` with how many rows there are so far
/// from the top whenever there may be more. Answers that number at the end; 0 too when the work was stopped.
template <class Take>
std::size_t decode(const Picture& picture, CGBitmap& to, const ImageWork& work, Take take) {
  std::optional<WebPDecoderConfig> config = configFor(picture, to);
  if (!config) return 0;
  const std::unique_ptr<WebPIDecoder, DeleteDecoder> decoder(WebPIDecode(nullptr, 0, &*config));
  if (!decoder) return 0;
  const std::size_t parts = picture.isLossless() ? kLosslessParts : kParts;
  VP8StatusCode status = VP8_STATUS_SUSPENDED;
  std::size_t rows = 0;
  for (std::size_t part = 1; part <= parts && status == VP8_STATUS_SUSPENDED; ++part) {
    status = WebPIUpdate(decoder.get(), picture.bytes.data(), picture.bytes.size() * part / parts);
    if (!work.goesOn(static_cast<double>(part) / static_cast<double>(parts))) return 0;
    int last = 0;
    if (!WebPIDecGetRGB(decoder.get(), &last, nullptr, nullptr, nullptr) || last <= 0) continue;
    rows = std::min(static_cast<std::size_t>(last), to.height());
    take(rows);
  }
  return rows;
}

void clearBelow(CGBitmap& bitmap, std::size_t rows) {
  std::memset(bitmap.row(0) + rows * bitmap.bytesPerRow(), 0, (bitmap.height() - rows) * bitmap.bytesPerRow());
}

std::shared_ptr<CGBitmap> readDirectly(const Picture& picture, PixelSize wanted, const ImageWork& work) {
  auto result = CGBitmap::make(wanted.width, wanted.height);
  if (!result) return nullptr;
  const std::size_t rows = decode(picture, *result, work, [](std::size_t /*rows*/) {});
  if (rows == 0) return nullptr;
  clearBelow(*result, rows);
  return result;
}

/// The rows of a picture within its canvas.
class CanvasRows {
 public:
  CanvasRows(const Picture& picture, const CGBitmap& bitmap, PixelSize canvas, PixelRows& to)
      : picture_(picture), bitmap_(bitmap), canvas_(canvas), to_(to) {}

  /// The rows of the picture before `end` that have not been taken, after what is above it.
  void takeTo(std::size_t end) {
    while (to_.count() < picture_.top) addEmpty();
    while (to_.count() - picture_.top < end) addRow(bitmap_.row(to_.count() - picture_.top));
  }
  void finish() {
    while (to_.count() < canvas_.height) addEmpty();
  }

 private:
  void addEmpty() {
    std::memset(to_.room(), 0, canvas_.width * kPixel);
    to_.add();
  }
  void addRow(const std::uint8_t* row) {
    if (bitmap_.width() == canvas_.width) return to_.add(row);
    std::uint8_t* const room = to_.room();
    std::memset(room, 0, canvas_.width * kPixel);
    std::memcpy(room + picture_.left * kPixel, row, bitmap_.width() * kPixel);
    to_.add();
  }

  const Picture& picture_;
  const CGBitmap& bitmap_;
  PixelSize canvas_;
  PixelRows& to_;
};

/// The whole picture, put on its canvas row by row.
std::shared_ptr<CGBitmap> readOntoCanvas(const Picture& picture, PixelSize canvas, PixelSize wanted,
                                         const ImageWork& work) {
  auto result = PixelRows::make(canvas, wanted);
  const auto whole = CGBitmap::make(picture.size().width, picture.size().height);
  if (!result || !whole) return nullptr;
  CanvasRows rows(picture, *whole, canvas, *result);
  if (decode(picture, *whole, work, [&rows](std::size_t end) { rows.takeTo(end); }) == 0) return nullptr;
  rows.finish();
  return result->take();
}

}  // namespace

std::shared_ptr<CGBitmap> readWebP(ImageBytes file, const ImageFacts& facts, PixelSize wanted, const ImageWork& work) {
  const PixelSize canvas = {facts.width, facts.height};
  if (bytesOf(canvas) > limits::kImageDecodedBytes) return nullptr;
  std::optional<Picture> picture(Picture{file});
  if (!readFeatures(file, picture->features)) return nullptr;
  const bool isAnimated = picture->features.has_animation;
  if (isAnimated) picture = firstFrame(file, facts);
  if (!picture || (!isAnimated && picture->size() != canvas)) return nullptr;
  const bool isDirect = !isAnimated && (wanted == canvas || picture->shrinksWellTo(wanted));
  if (!picture->fitsInMemory(bytesOf(wanted) + (isDirect ? 0 : bytesOf(picture->size())))) return nullptr;
  auto result = isDirect ? readDirectly(*picture, wanted, work) : readOntoCanvas(*picture, canvas, wanted, work);
  if (result) convertToSRGB(*result, file, facts);
  return result;
}

}  // namespace quorvel
