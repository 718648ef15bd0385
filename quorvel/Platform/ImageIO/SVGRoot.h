// SVGRoot: the outermost element of an SVG, as far as it tells a size.
// Not here: drawing one.
#pragma once

#include <quorvel/Platform/ImageIO/ByteView.h>

namespace quorvel {

/// What of a file is looked at.
inline constexpr std::size_t kSVGBytes = 64 * 1024;

/// UTF-8 whose first element is "svg", with any prefix, behind what XML allows before it: a byte order mark, white
/// space, processing instructions, comments and a document type. It must end within the first `kSVGBytes`.
[[nodiscard]] bool isSVGFile(ByteView file);
/// "width" and "height" in px, or in units of a fixed length at 96 px an inch; what is missing or relative comes from
/// "viewBox". Rounded to whole pixels; 0 where neither tells it.
void readSVGFacts(ByteView file, ImageFacts& facts);

}  // namespace quorvel
