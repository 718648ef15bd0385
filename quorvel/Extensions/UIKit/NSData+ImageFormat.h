// NSData(ImageFormat): what image bytes are.
// Not here: all formats and their facts (Platform/ImageIO/ImageSniff.h), files (NSURL+ImageDetect.h, NSURL+Image.h).
#pragma once

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

/// `isJPG`: true for 5 bytes or more that begin with FF D8 FF and one of DB, E0, E1, E2, E3, E8. Other JPEGs are false.
///
///     FF D8 FF E0 00   // true
///     FF D8 FF EE 00   // false
[[nodiscard]] bool isJPG(const Data& data);

/// `isPNG`: true for 5 bytes or more that begin with 89 50 4E 47; the rest of PNG's mark is not compared.
[[nodiscard]] bool isPNG(const Data& data);

/// `isAnimatedGIF`: true for a GIF of two frames or more; they are counted without a pixel being decoded.
[[nodiscard]] bool isAnimatedGIF(const Data& data);

/// `metadata`: the properties of the first image, as `imageProperties` says; nil when the bytes hold none.
[[nodiscard]] std::optional<Dictionary> metadata(const Data& data);

}  // namespace quorvel
