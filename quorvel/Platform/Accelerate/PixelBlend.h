// One premultiplied layer over another, in rows of pixels. Included by sources only.
#pragma once

#include <cstddef>
#include <cstdint>

namespace quorvel::pixels {

/// `under` beneath the row; a sum of channels above 255 counts as that.
void layUnder(const std::uint8_t* under, std::uint8_t* row, std::size_t count);
/// One pixel over each of the row.
void layOver(std::uint32_t pixel, std::uint8_t* row, std::size_t count);

}  // namespace quorvel::pixels
