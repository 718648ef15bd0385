// NSURL(ImageDetect): whether a file is an image of the kinds that are shown at once.
#pragma once

#include <quorvel/Platform/Foundation/NSURL.h>

namespace quorvel {

/// `isImage`: `isImageData` of the first 10 bytes of the regular file that a file URL names. False when it cannot be
/// read, and for every other URL without a look at anything.
[[nodiscard]] bool isImage(const NSURL& url);

}  // namespace quorvel
