// ImageFacts: what the first bytes and the chunks of an image file tell without a pixel being decoded.
// Not here: how they are read (ImageSniff.h), pixels (ImageReader.h), the properties dictionary (CGImageSource.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include <quorvel/Platform/CoreGraphics/CGContext.h>

namespace quorvel {

/// The bytes of a whole file; they must outlive what reads them.
using ImageBytes = std::span<const std::uint8_t>;

/// How the stored colours are to be read; of a palette the model of its colours.
enum class ImageColorModel : std::uint8_t { Unknown, Gray, RGB, CMYK, Lab };

enum class ImageFormat : std::uint8_t { Unknown, JPEG, PNG, APNG, GIF, WebP, TIFF, HEIC, AVIF, BMP, ICO, SVG, PDF };

struct ImageFacts {
  ImageFormat format = ImageFormat::Unknown;
  /// Two frames or more that are shown one after the other; pages of a TIFF are not.
  bool isAnimated = false;
  /// A JPEG of several scans, an interlaced PNG or GIF.
  bool isProgressive = false;
  /// Images in the container: frames, pages; 0 when unknown.
  std::size_t frameCount = 0;
  /// Of the first image as stored, before any orientation; 0 when unknown. For an animation, of its whole canvas.
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  /// EXIF's 1 to 8; 1 where the file says nothing or where its decoder turns the picture itself (HEIC, AVIF).
  std::uint8_t exifOrientation = 1;
  /// Of the whole first image at four bytes a pixel.
  std::uint64_t decodedBytes = 0;

  /// Where in the file a block of EXIF (from its "II" or "MM" on) and a colour profile lie in one piece; length 0:
  /// none, or in several pieces or packed.
  struct Place {
    std::size_t location = 0;
    std::size_t length = 0;
  };
  Place exif;
  Place profile;

  /// 0 when unknown. Of a palette, of its colours.
  std::uint8_t bitsPerComponent = 0;
  ImageColorModel colorModel = ImageColorModel::Unknown;
  /// Its pixels may be transparent.
  bool hasAlpha = false;
  /// The decoder turns the picture by a quarter itself (HEIC, AVIF): what it decodes has `height` columns.
  bool decoderSwapsSides = false;
  /// Nothing that these facts come from lay beyond the bytes: more bytes of the same file would not change them.
  bool isComplete = false;

  /// The size is that of a part, and the file may hold what counts more: a larger icon, a sequence's primary item.
  bool isSizeProvisional = false;

  /// There is an image and its sides are known, and more bytes of the same file would not change them.
  [[nodiscard]] bool isSizeFinal() const { return frameCount > 0 && width > 0 && height > 0 && !isSizeProvisional; }
};

/// The orientation that turns what EXIF's 1 to 8 describe upright; any other number is upright.
[[nodiscard]] constexpr UIImageOrientation orientationOfEXIF(unsigned number) {
  using enum UIImageOrientation;
  constexpr UIImageOrientation kOrientations[] = {Up,           Up,    UpMirrored,    Down, DownMirrored,
                                                  LeftMirrored, Right, RightMirrored, Left};
  return number < 9 ? kOrientations[number] : Up;
}

}  // namespace quorvel
