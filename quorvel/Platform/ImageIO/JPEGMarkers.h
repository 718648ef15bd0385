// JPEGMarkers: the marker segments of a JPEG up to its first scan (ITU-T T.81, annex B).
// Not here: pixels (ImageReader.h).
#pragma once

#include <quorvel/Platform/ImageIO/ByteView.h>

namespace quorvel {

[[nodiscard]] bool isJPEGFile(ByteView file);
/// Size, components and scans from the frame and the first scan header, EXIF from APP1, the profile from APP2 when it
/// is in one piece.
void readJPEGFacts(ByteView file, ImageFacts& facts);

/// The profile, or what of it stands in its first piece; empty when there is none.
[[nodiscard]] ImageBytes beginningOfJPEGProfile(ByteView file);

}  // namespace quorvel
