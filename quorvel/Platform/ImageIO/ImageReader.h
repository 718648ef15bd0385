// ImageReader: pixels out of image files, one function for each format behind one that chooses.
// Not here: what a file is (ImageSniff.h), turning by the orientation and handles (CGImageSource.h).
#pragma once

#include <memory>

#include <quorvel/Platform/CoreGraphics/CGImage.h>
#include <quorvel/Platform/CoreGraphics/ImageWork.h>
#include <quorvel/Platform/ImageIO/ImageFacts.h>

namespace quorvel {

/// Sides in pixels.
struct PixelSize {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  friend constexpr bool operator==(const PixelSize&, const PixelSize&) = default;
};

/// The size of a picture brought to a longer side of at most `largestSide` pixels, never enlarged, sides rounded to the
/// nearest and at least 1. 0 by 0 when a side is 0 or `largestSide` is below 1 or no number.
[[nodiscard]] PixelSize thumbnailSize(PixelSize picture, double largestSide);

/// The whole first image as its reader gives it: as stored, but with the quarter turn that its decoder makes itself.
[[nodiscard]] constexpr PixelSize decodedSize(const ImageFacts& facts) {
  return facts.decoderSwapsSides ? PixelSize{facts.height, facts.width} : PixelSize{facts.width, facts.height};
}

/// `readPixels`: the first image of a file, premultiplied, in sRGB, as `decodedSize` says (not turned), with
/// exactly the sides `wanted`: the whole size, or a smaller one, to which it is shrunk by the mean of the area that
/// each pixel covers. The file is decoded no larger than that takes where its format allows.
///
/// A damaged file gives what could be decoded above transparent or grey pixels when at least a row could, as viewers
/// show it, otherwise nullptr; so do limits exceeded (checked before memory is taken), a format without a reader, a
/// plug-in that is missing, `wanted` beyond the picture, and a stopped work. Nothing is printed.
[[nodiscard]] std::shared_ptr<CGBitmap> readPixels(ImageBytes file, const ImageFacts& facts, PixelSize wanted,
                                                   const ImageWork& work = {});

}  // namespace quorvel
