#include <algorithm>
#include <cmath>

#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/ImageIO/GIFReader.h>
#include <quorvel/Platform/ImageIO/HEIFReader.h>
#include <quorvel/Platform/ImageIO/ImageReader.h>
#include <quorvel/Platform/ImageIO/JPEGReader.h>
#include <quorvel/Platform/ImageIO/PNGReader.h>
#include <quorvel/Platform/ImageIO/TIFFReader.h>
#include <quorvel/Platform/ImageIO/WebPReader.h>

namespace quorvel {
namespace {

/// The same work, which never tells less than before: where a file is damaged, readers begin again.
ImageWork rising(const ImageWork& work) {
  if (!work.progress) return work;
  return {work.stop, [&work, most = 0.0](double done) mutable { work.progress(most = std::max(most, done)); }};
}

}  // namespace

PixelSize thumbnailSize(PixelSize picture, double largestSide) {
  if (picture.width == 0 || picture.height == 0 || !(largestSide >= 1)) return {};
  const double longer = std::max(picture.width, picture.height);
  if (longer <= largestSide) return picture;
  const double factor = std::floor(largestSide) / longer;
  const auto side = [factor](std::uint32_t pixels) {
    return static_cast<std::uint32_t>(std::max(1.0, std::round(pixels * factor)));
  };
  return {side(picture.width), side(picture.height)};
}

std::shared_ptr<CGBitmap> readPixels(ImageBytes file, const ImageFacts& facts, PixelSize wanted,
                                     const ImageWork& told) {
  if (file.size() > limits::kImageFileBytes || wanted.width == 0 || wanted.height == 0) return nullptr;
  const PixelSize whole = decodedSize(facts);
  if (wanted.width > whole.width || wanted.height > whole.height) return nullptr;
  if (facts.width > limits::kImageSide || facts.height > limits::kImageSide) return nullptr;
  if (std::uint64_t{facts.width} * facts.height > limits::kImagePixels) return nullptr;
  const ImageWork work = rising(told);
  switch (facts.format) {
    case ImageFormat::JPEG:
      return readJPEG(file, facts, wanted, jpeg::decodedEighths({facts.width, facts.height}, wanted), work);
    case ImageFormat::PNG:
    case ImageFormat::APNG:
      return readPNG(file, facts, wanted, work);
    case ImageFormat::GIF:
      return readGIF(file, facts, wanted, work);
    case ImageFormat::WebP:
      return readWebP(file, facts, wanted, work);
    case ImageFormat::TIFF:
      return readTIFF(file, facts, wanted, work);
    case ImageFormat::HEIC:
    case ImageFormat::AVIF:
      return readHEIF(file, facts, wanted, work);
    default:
      return nullptr;
  }
}

}  // namespace quorvel
