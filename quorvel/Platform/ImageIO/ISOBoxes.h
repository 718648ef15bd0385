// ISOBoxes: what the boxes of a HEIC or AVIF say about its primary image (ISO/IEC 14496-12, 23008-12).
// Not here: pixels (ImageReader.h).
#pragma once

#include <quorvel/Platform/ImageIO/ByteView.h>

namespace quorvel {

/// The file begins with a file type box. Many that do are films: the facts' format then stays unknown.
[[nodiscard]] bool isISOFile(ByteView file);

/// The format by the major brand where that names a codec, otherwise, when any brand is one of images, by the primary
/// item, by the item that it is a grid or a view of, or by the compatible brands. The size is the primary item's after
/// its clean aperture and before its rotation; of a sequence alone, the track's. A box of meta data that is cut says
/// nothing but the format.
void readISOFacts(ByteView file, ImageFacts& facts);

}  // namespace quorvel
