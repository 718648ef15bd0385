// HEVCParameters: what the units of an HEVC stream (ITU-T H.265) declare of their picture.
// Not here: decoding (HEIFDecoders.h).
#pragma once

#include <quorvel/Platform/ImageIO/ByteView.h>

namespace quorvel {

enum class HEVCUnit : std::uint8_t {
  Other,
  /// Of a further layer or without a whole header: no part of the picture.
  Foreign,
  SoundParameters,
  /// A sequence parameter set beyond 7.3.2.2 and 7.4.3.2 of the standard up to its transform sizes, or of a picture
  /// beyond our limits.
  UnsoundParameters,
};

/// Of a unit without its length or start mark.
[[nodiscard]] HEVCUnit kindOfHEVCUnit(ImageBytes unit);

}  // namespace quorvel
