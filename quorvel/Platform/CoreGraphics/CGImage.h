// CGImage: pixels, premultiplied and in the memory order blue, green, red, alpha, shared and never changed.
// Not here: sizes in points (UIImage.h), drawing (CGContext.h), files (ImageIO/CGImageSource.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include <quorvel/Platform/CoreGraphics/CGGeometry.h>

namespace quorvel {

/// Memory for pixels: rows of four bytes a pixel, each row aligned to 64 bytes, all zero at first.
class CGBitmap {
 public:
  /// nullptr for a side of zero or less, or beyond `limits::kImageSide`, or more pixels than `limits::kImagePixels`,
  /// and when there is no memory.
  [[nodiscard]] static std::shared_ptr<CGBitmap> make(std::int64_t width, std::int64_t height);
  /// The same with bytes of any value, for those who write every row.
  [[nodiscard]] static std::shared_ptr<CGBitmap> makeUnset(std::int64_t width, std::int64_t height);
  [[nodiscard]] std::shared_ptr<CGBitmap> copy() const;

  CGBitmap(const CGBitmap&) = delete;
  CGBitmap& operator=(const CGBitmap&) = delete;
  ~CGBitmap();

  /// In pixels.
  [[nodiscard]] std::size_t width() const { return width_; }
  [[nodiscard]] std::size_t height() const { return height_; }
  [[nodiscard]] std::size_t bytesPerRow() const { return bytesPerRow_; }
  [[nodiscard]] std::uint8_t* data() { return data_; }
  [[nodiscard]] const std::uint8_t* data() const { return data_; }
  [[nodiscard]] std::uint8_t* row(std::size_t y) { return data_ + y * bytesPerRow_; }
  [[nodiscard]] const std::uint8_t* row(std::size_t y) const { return data_ + y * bytesPerRow_; }

 private:
  CGBitmap(std::size_t width, std::size_t height, std::size_t bytesPerRow, std::uint8_t* data)
      : width_(width), height_(height), bytesPerRow_(bytesPerRow), data_(data) {}

  std::size_t width_;
  std::size_t height_;
  std::size_t bytesPerRow_;
  std::uint8_t* data_;
};

/// A cheap handle to an unchanging bitmap, or to none.
class CGImage {
 public:
  CGImage() = default;
  /// The bitmap must not be changed any more.
  explicit CGImage(std::shared_ptr<const CGBitmap> bitmap) : bitmap_(std::move(bitmap)) {}

  /// False for an image without pixels.
  [[nodiscard]] bool hasPixels() const { return bitmap_ != nullptr; }
  [[nodiscard]] std::size_t width() const { return bitmap_ ? bitmap_->width() : 0; }
  [[nodiscard]] std::size_t height() const { return bitmap_ ? bitmap_->height() : 0; }
  /// Only of an image with pixels.
  [[nodiscard]] const CGBitmap& bitmap() const { return *bitmap_; }
  [[nodiscard]] const std::shared_ptr<const CGBitmap>& sharedBitmap() const { return bitmap_; }

  /// `CGImageCreateWithImageInRect`: the part within the rectangle, in pixels from the top left, its sides brought to
  /// whole pixels outwards and cut at the image's border; no image when nothing is left.
  [[nodiscard]] CGImage inRect(const CGRect& rectangle) const;
  /// True when every pixel has alpha 255.
  [[nodiscard]] bool isOpaque() const;

  friend bool operator==(const CGImage&, const CGImage&) = default;

 private:
  std::shared_ptr<const CGBitmap> bitmap_;
};

}  // namespace quorvel
