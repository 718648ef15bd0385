// Two pictures of one size as the kernels take them. Included by sources only.
#pragma once

#include <vector>

#include <quorvel/Platform/Accelerate/PixelBand.h>
#include <quorvel/Platform/Accelerate/vImage.h>

namespace quorvel::pixels {

/// Pixels that the kernels read at once in a row.
inline constexpr std::size_t kLeastWidth = 4;

struct PixelView {
  const std::uint8_t* source;
  std::size_t sourceRowBytes;
  std::uint8_t* destination;
  std::size_t destinationRowBytes;
  std::size_t width;
  std::size_t height;
  std::size_t paddedWidth;  // readable pixels of a source row, at least `kLeastWidth`
};

/// The view of two buffers of one size; a source that is too narrow for the kernels is copied into `narrow`.
[[nodiscard]] inline PixelView viewOf(const vImage_Buffer& source, const vImage_Buffer& destination,
                                      std::vector<std::uint8_t>& narrow) {
  PixelView view{static_cast<const std::uint8_t*>(source.data),
                 source.rowBytes,
                 static_cast<std::uint8_t*>(destination.data),
                 destination.rowBytes,
                 source.width,
                 source.height,
                 source.width};
  if (source.width >= kLeastWidth) return view;
  narrow.resize(source.height * kLeastWidth * 4);
  for (std::size_t y = 0; y < source.height; ++y) {
    std::memcpy(narrow.data() + y * kLeastWidth * 4, view.source + y * source.rowBytes, source.width * 4);
  }
  view.source = narrow.data();
  view.sourceRowBytes = kLeastWidth * 4;
  view.paddedWidth = kLeastWidth;
  return view;
}

}  // namespace quorvel::pixels
