// HEIFDecoders: a decoder of HEVC for libheif that prints nothing.
// Not here: files (HEIFReader.h), what a stream declares (HEVCParameters.h).
#pragma once

namespace quorvel {

/// Gives libheif a decoder over the same libde265 as its own, and preferred to that. Parameters that
/// libde265 would print a line about do not reach it, nor do pictures beyond our limits. Decodes in the calling thread.
/// False where one of the libraries is missing.
bool addSilentHEVCDecoder();

}  // namespace quorvel
