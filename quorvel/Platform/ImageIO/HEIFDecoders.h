// HEIFDecoders: decoders of HEVC and AV1 for libheif that print nothing.
// Not here: files (HEIFReader.h), what a stream of HEVC declares (HEVCParameters.h).
#pragma once

#include <quorvel/Platform/ImageIO/ImageFacts.h>

namespace quorvel {

/// Gives libheif decoders over libde265 and libaom, where they are, and preferred to its own. Those print: libde265
/// about some parameters, which do not reach it here, and libdav1d, which libheif takes for AV1, about all that is
/// damaged. Pictures beyond our limits do not reach the decoders either. They decode in the calling thread.
void addSilentDecoders();

/// False where one of the sequences of an AV1 stream declares a picture beyond our limits. Only where libaom is.
[[nodiscard]] bool isAV1WithinLimits(ImageBytes stream);

}  // namespace quorvel
