// NSURL(Image): the image in the file that a URL names.
// Not here: whether it is one (NSURL+ImageDetect.h).
#pragma once

#include <quorvel/Platform/CoreGraphics/CGGeometry.h>
#include <quorvel/Platform/Foundation/NSURL.h>

namespace quorvel {

/// `imageFileDimensionSize`: width and height of the file's first image in pixels, as stored, whatever its orientation;
/// of an animation those of its canvas. 0 by 0 when they are unknown, when the file holds no image, such as a GIF
/// without a frame, and when it cannot be read. No more of it is read than it takes, and nothing is decoded.
[[nodiscard]] CGSize imageFileDimensionSize(const NSURL& url);

}  // namespace quorvel
