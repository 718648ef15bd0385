// PixelRows: where a reader puts its rows, from the top: straight into a result of the same size, or shrunk on the way.
// Included by sources only.
#pragma once

#include <memory>
#include <optional>

#include <quorvel/Platform/ImageIO/AreaShrink.h>

namespace quorvel {

class PixelRows {
 public:
  /// nil for sides that do not fit, for a result beyond the limits and without memory.
  [[nodiscard]] static std::optional<PixelRows> make(PixelSize source, PixelSize wanted);

  /// Where the next row of the source is to be written, in four bytes a pixel. All zero before the first.
  [[nodiscard]] std::uint8_t* room();
  /// Takes the row written there.
  void add();
  /// Takes a row that lies elsewhere.
  void add(const std::uint8_t* row);
  /// Rows of the source taken so far.
  [[nodiscard]] std::uint32_t count() const { return count_; }
  /// The picture, transparent below the last row; nullptr when there was none.
  [[nodiscard]] std::shared_ptr<CGBitmap> take();

 private:
  PixelRows(PixelSize source, std::shared_ptr<CGBitmap> result) : source_(source), result_(std::move(result)) {}

  PixelSize source_;
  std::shared_ptr<CGBitmap> result_;
  std::optional<AreaShrink> shrink_{};
  std::unique_ptr<std::uint8_t[]> row_{};
  std::uint32_t count_ = 0;
};

}  // namespace quorvel
