// PNGFilters: the five filters of PNG's rows, undone and applied. Included by sources only.
#pragma once

#include <cstddef>
#include <cstdint>

namespace quorvel {

/// Writes `size` bytes to `to`: `from` without its filter, which is 0 to 4. `above` is the row before, or zeros; `step`
/// bytes lie between a sample and the one to its left. Up to three bytes past each end are read, and past that of `to`
/// written. `to` may begin a byte before `from`: where the filter's number stands.
void undoPNGFilter(std::uint8_t filter, const std::uint8_t* from, const std::uint8_t* above, std::uint8_t* to,
                   std::size_t size, std::size_t step);

/// The other way: writes `size` bytes to `to`. Nothing past the ends is touched.
void applyPNGFilter(std::uint8_t filter, const std::uint8_t* from, const std::uint8_t* above, std::uint8_t* to,
                    std::size_t size, std::size_t step);

}  // namespace quorvel
