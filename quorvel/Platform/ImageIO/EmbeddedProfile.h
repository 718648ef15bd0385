// EmbeddedProfile: a whole picture brought to sRGB by the profile that its file holds in one piece. Included by sources
// only; readers that convert row by row use ColorProfile.h.
#pragma once

#include <quorvel/Platform/CoreGraphics/CGImage.h>
#include <quorvel/Platform/ImageIO/ImageFacts.h>

namespace quorvel {

/// Does nothing where the facts know of no profile and where it is not one for grey or colours.
void convertToSRGB(CGBitmap& picture, ImageBytes file, const ImageFacts& facts);

}  // namespace quorvel
