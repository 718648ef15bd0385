// NSData(ImageDetect): whether bytes are an image of the kinds that are shown at once.
// Not here: files (NSURL+ImageDetect.h).
#pragma once

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

/// `isImageData`: true when the bytes begin as `isPNG` or `isJPG` say; only the first five are looked at. Images of
/// other formats are false.
[[nodiscard]] bool isImageData(const Data& data);

}  // namespace quorvel
