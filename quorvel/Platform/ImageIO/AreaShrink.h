// AreaShrink: a picture made smaller while its rows come in, by the mean of the area that each pixel of the result
// covers. In whole numbers, so that all processors write the same bytes.
// Not here: decoding (ImageReader.h), scaling while drawing (CoreGraphics/CGContext.h).
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include <quorvel/Platform/ImageIO/ImageReader.h>

namespace quorvel {

/// Fed with the rows of a picture from the top; as soon as a row of the result is complete, it is written. Keeps one
/// row of sums, never the picture. A pixel of the result is the mean of what it covers, pixels in parts counted by
/// their part, rounded to the nearest: exact where heights in lowest terms are at most 128, else within 1/128 of a
/// level. One colour alone stays that colour.
class AreaShrink {
 public:
  /// Onto `result`, which must outlive this and have sides no larger than those of `source` (equal ones: a copy); nil
  /// when it has, and when there is no memory.
  [[nodiscard]] static std::optional<AreaShrink> make(PixelSize source, CGBitmap& result);
  /// The same with the rows of a decoder that has already brought the picture to so many eighths of its sides, rounded
  /// up: what their last column and row hold beyond the picture does not count.
  [[nodiscard]] static std::optional<AreaShrink> make(PixelSize picture, std::uint32_t eighths, CGBitmap& result);
  AreaShrink(AreaShrink&&) noexcept;
  AreaShrink& operator=(AreaShrink&&) noexcept;
  ~AreaShrink();

  /// The next row, as many pixels as the source is wide: premultiplied, blue, green, red, alpha. Rows beyond the
  /// source's height are left out.
  void addRow(const std::uint8_t* premultipliedBGRA);
  /// Rows of the result that are written.
  [[nodiscard]] std::uint32_t rowsDone() const;

 private:
  struct State;
  explicit AreaShrink(std::unique_ptr<State> state);

  std::unique_ptr<State> state_;
};

}  // namespace quorvel
