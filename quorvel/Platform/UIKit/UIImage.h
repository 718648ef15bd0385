// UIImage: a picture with its size in points, and the stack of drawing contexts that make one.
// Not here: pixels (CoreGraphics/CGImage.h), files (ImageIO/CGImageSource.h).
#pragma once

#include <optional>

#include <quorvel/Platform/CoreGraphics/CGContext.h>
#include <quorvel/Platform/Foundation/String.h>

namespace quorvel {

enum class UIImageRenderingMode : std::uint8_t { Automatic = 0, AlwaysOriginal = 1, AlwaysTemplate = 2 };

/// A cheap, unchanging handle. It may be without a bitmap, and is then 0 by 0 points.
class UIImage {
 public:
  UIImage() = default;
  /// `imageWithCGImage:scale:orientation:`. A scale that is not positive counts as 1.
  explicit UIImage(CGImage bitmap, double scale = 1, UIImageOrientation orientation = UIImageOrientation::Up)
      : bitmap_(std::move(bitmap)), scale_(scale > 0 ? scale : 1), orientation_(orientation) {}

  /// `imageNamed:`: the image of that name in the main bundle's folder: NAME.png, or .jpg without one; a name that ends
  /// in ".png", ".jpg" or ".jpeg" is looked for as it is. Of NAME, NAME@2x and NAME@3x, of scale 1, 2 and 3, it is the
  /// one of the main screen's scale, else the next larger one, else the next smaller; one that is there but cannot be
  /// read is passed over. Decoded images are kept for the next call, at most 64 and 64 MiB of all threads, until the
  /// file changes. nil when there is none, and for a name with a slash.
  [[nodiscard]] static std::optional<UIImage> named(StringView name);

  /// In points, upright: the sides of the bitmap are swapped where the orientation turns it by a quarter.
  [[nodiscard]] CGSize size() const;
  /// Pixels for a point.
  [[nodiscard]] double scale() const { return scale_; }
  [[nodiscard]] const CGImage& bitmap() const { return bitmap_; }
  [[nodiscard]] UIImageOrientation orientation() const { return orientation_; }
  [[nodiscard]] UIImageRenderingMode renderingMode() const { return renderingMode_; }
  [[nodiscard]] const UIEdgeInsets& capInsets() const { return capInsets_; }

  /// `imageWithRenderingMode:`
  [[nodiscard]] UIImage withRenderingMode(UIImageRenderingMode mode) const;
  /// `resizableImageWithCapInsets:`: drawn larger, the parts within the insets keep their size and those between tile.
  [[nodiscard]] UIImage resizableWithCapInsets(const UIEdgeInsets& insets) const;

  /// `drawInRect:`: upright into the current context, which grows downwards; without one nothing is drawn.
  void drawInRect(const CGRect& rectangle) const;

  friend bool operator==(const UIImage&, const UIImage&) = default;

 private:
  CGImage bitmap_;
  double scale_ = 1;
  UIImageOrientation orientation_ = UIImageOrientation::Up;
  UIImageRenderingMode renderingMode_ = UIImageRenderingMode::Automatic;
  UIEdgeInsets capInsets_;
};

/// A drawing context that is the current one of its thread as long as it lives; contexts nest.
/// `UIGraphicsBeginImageContextWithOptions` and `UIGraphicsEndImageContext` in one: it closes on every way out.
class UIGraphicsImageContext {
 public:
  /// Not opaque, sides rounded up to whole pixels. A scale of 0 stands for the main screen's. Where the size is empty
  /// or beyond the limits of images, nothing is drawn and there is no image.
  explicit UIGraphicsImageContext(const CGSize& sizeInPoints, double scale = 1);
  UIGraphicsImageContext(const UIGraphicsImageContext&) = delete;
  UIGraphicsImageContext& operator=(const UIGraphicsImageContext&) = delete;
  ~UIGraphicsImageContext();

  /// `UIGraphicsGetCurrentContext`: of this thread, or nullptr.
  [[nodiscard]] static CGContext* current();
  /// `UIGraphicsGetImageFromCurrentImageContext`: what this context shows, at its scale.
  [[nodiscard]] std::optional<UIImage> image() const;
  /// nullptr as said above.
  [[nodiscard]] CGContext* context() const { return context_.get(); }
  [[nodiscard]] double scale() const { return scale_; }

 private:
  std::shared_ptr<CGContext> context_;
  double scale_;
  CGContext* outer_;
};

/// `UIGraphicsPushContext` and `UIGraphicsPopContext` in one: a context is the current one of its thread as long as
/// this lives.
class UIGraphicsPushedContext {
 public:
  explicit UIGraphicsPushedContext(CGContext& context);
  UIGraphicsPushedContext(const UIGraphicsPushedContext&) = delete;
  UIGraphicsPushedContext& operator=(const UIGraphicsPushedContext&) = delete;
  ~UIGraphicsPushedContext();

 private:
  CGContext* outer_;
};

}  // namespace quorvel
