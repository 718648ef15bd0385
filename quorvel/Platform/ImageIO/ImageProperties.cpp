#include <memory>

#include <libdeflate.h>

#include <quorvel/Platform/ImageIO/EXIFProperties.h>
#include <quorvel/Platform/ImageIO/GIFBlocks.h>
#include <quorvel/Platform/ImageIO/ICCProfileName.h>
#include <quorvel/Platform/ImageIO/ImageProperties.h>
#include <quorvel/Platform/ImageIO/JPEGMarkers.h>
#include <quorvel/Platform/ImageIO/PNGChunks.h>
#include <quorvel/Platform/ImageIO/TIFFDirectory.h>

namespace quorvel {
namespace {

/// Profiles are mostly far smaller; a larger one keeps the name that its chunk gives it.
constexpr std::size_t kUnpackedProfileBytes = 1024 * 1024;

StringView colorModelText(ImageColorModel model) {
  switch (model) {
    case ImageColorModel::Gray:
      return kCGImagePropertyColorModelGray;
    case ImageColorModel::RGB:
      return kCGImagePropertyColorModelRGB;
    case ImageColorModel::CMYK:
      return kCGImagePropertyColorModelCMYK;
    case ImageColorModel::Lab:
      return kCGImagePropertyColorModelLab;
    case ImageColorModel::Unknown:
      break;
  }
  return nil;
}

std::optional<String> packedProfileName(ImageBytes packed) {
  const std::unique_ptr<libdeflate_decompressor, void (*)(libdeflate_decompressor*)> inflater(
      libdeflate_alloc_decompressor(), libdeflate_free_decompressor);
  const auto profile = std::make_unique_for_overwrite<std::uint8_t[]>(kUnpackedProfileBytes);
  std::size_t size = 0;
  if (!inflater || libdeflate_zlib_decompress(inflater.get(), packed.data(), packed.size(), profile.get(),
                                              kUnpackedProfileBytes, &size) != LIBDEFLATE_SUCCESS) {
    return std::nullopt;
  }
  return iccProfileName({profile.get(), size});
}

/// A chunk "iCCP" is a name, a NUL, the way of packing and the packed profile.
std::optional<String> pngProfileName(ByteView file) {
  constexpr std::uint64_t kLongestName = 79;
  const ByteView chunk(pngChunkBeforePixels(file, fourCharacters("iCCP")));
  const std::uint64_t end = chunk.find(0, 0);
  if (end == 0 || end > kLongestName || !chunk.has(end, 2)) {
    const bool isStandard = !pngChunkBeforePixels(file, fourCharacters("sRGB")).empty();
    return isStandard ? std::optional<String>(u"sRGB IEC61966-2.1") : std::nullopt;
  }
  const auto name = packedProfileName(chunk.part(end + 2));
  return name ? name : textOfBytes(chunk.part(0, end));
}

std::optional<String> profileName(ByteView file, const ImageFacts& facts) {
  if (facts.format == ImageFormat::PNG || facts.format == ImageFormat::APNG) return pngProfileName(file);
  if (facts.format == ImageFormat::JPEG) return iccProfileName(beginningOfJPEGProfile(file));
  return iccProfileName(file.part(facts.profile.location, facts.profile.length));
}

Dictionary gifProperties(ByteView file) {
  constexpr unsigned kFastest = 1;  // as viewers have it; what claims to be faster is shown slowly
  constexpr double kSlow = 0.1;
  const GIFTiming timing = gifTiming(file);
  const double delay = timing.firstDelay / 100.0;
  return {{kCGImagePropertyGIFDelayTime, timing.firstDelay > kFastest ? delay : kSlow},
          {kCGImagePropertyGIFUnclampedDelayTime, delay},
          {kCGImagePropertyGIFLoopCount, std::int64_t{timing.loopCount.value_or(1)}}};
}

void setDictionary(Dictionary& properties, StringView key, Dictionary values) {
  if (!values.isEmpty()) properties.set(key, std::move(values));
}

void addExif(ByteView file, const ImageFacts& facts, Dictionary& properties) {
  const bool isTIFF = facts.format == ImageFormat::TIFF;
  EXIFProperties exif = exifProperties(isTIFF ? file.part(0) : file.part(facts.exif.location, facts.exif.length));
  const auto orientation = exif.tiff[u"Orientation"].asNumber();
  const bool isApplied = facts.format == ImageFormat::HEIC || facts.format == ImageFormat::AVIF;
  const bool isStated = orientation && *orientation == Number(int{facts.exifOrientation});
  if (isStated && !isApplied) properties.set(kCGImagePropertyOrientation, std::int64_t{facts.exifOrientation});
  setDictionary(properties, kCGImagePropertyTIFFDictionary, std::move(exif.tiff));
  setDictionary(properties, kCGImagePropertyExifDictionary, std::move(exif.exif));
  setDictionary(properties, kCGImagePropertyGPSDictionary, std::move(exif.gps));
}

}  // namespace

std::optional<Dictionary> imageProperties(ImageBytes bytes, const ImageFacts& facts) {
  const bool hasImage = facts.frameCount > 0 || facts.format == ImageFormat::PDF;
  if (facts.format == ImageFormat::Unknown || !hasImage) return std::nullopt;
  const ByteView file(bytes);
  Dictionary properties;
  if (facts.width) properties.set(kCGImagePropertyPixelWidth, std::int64_t{facts.width});
  if (facts.height) properties.set(kCGImagePropertyPixelHeight, std::int64_t{facts.height});
  if (facts.bitsPerComponent) properties.set(kCGImagePropertyDepth, std::int64_t{facts.bitsPerComponent});
  properties.set(kCGImagePropertyColorModel, colorModelText(facts.colorModel));
  if (facts.hasAlpha) properties.set(kCGImagePropertyHasAlpha, true);
  properties.set(kCGImagePropertyProfileName, profileName(file, facts));
  addExif(file, facts, properties);
  if (facts.format == ImageFormat::GIF) properties.set(kCGImagePropertyGIFDictionary, gifProperties(file));
  return properties;
}

}  // namespace quorvel
