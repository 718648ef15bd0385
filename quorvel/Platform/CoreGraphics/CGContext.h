// CGContext: drawing into a bitmap with a transformation, a fill colour, blending and a mask. One thread at a time.
// Not here: the stack of current contexts (UIKit/UIGraphics.h).
#pragma once

#include <quorvel/Platform/CoreGraphics/CGImage.h>
#include <quorvel/Platform/UIKit/UIColor.h>

namespace quorvel {

enum class CGBlendMode : std::uint8_t {
  Normal = 0,
  Multiply = 1,
  SourceIn = 18,
  SourceAtop = 20,
  DestinationOver = 21
};

/// How the pixels of a file lie in the upright picture; the numbers are the platform's, not those of EXIF. Another
/// number counts as `Up`.
enum class UIImageOrientation : std::uint8_t {
  Up = 0,
  Down = 1,
  Left = 2,
  Right = 3,
  UpMirrored = 4,
  DownMirrored = 5,
  LeftMirrored = 6,
  RightMirrored = 7,
};
/// True when the upright picture is as wide as the stored one is high.
[[nodiscard]] constexpr bool swapsSides(UIImageOrientation orientation) {
  return orientation <= UIImageOrientation::RightMirrored && (static_cast<unsigned>(orientation) & 2U) != 0;
}

class CGContext {
 public:
  /// A context of so many pixels whose first user unit lies at the top left and is `scale` pixels long; nullptr beyond
  /// the limits of images and for a scale that is not positive.
  [[nodiscard]] static std::shared_ptr<CGContext> make(std::int64_t width, std::int64_t height, double scale = 1);
  /// A context over pixels that belong to nobody else; nullptr without them.
  [[nodiscard]] static std::shared_ptr<CGContext> over(std::shared_ptr<CGBitmap> bitmap, double scale = 1);
  CGContext(const CGContext&) = delete;
  CGContext& operator=(const CGContext&) = delete;
  ~CGContext();

  /// `CGContextSaveGState`, `CGContextRestoreGState`: transformation, colour, alpha, blending and mask. A restore
  /// without a save does nothing.
  void saveGState();
  void restoreGState();
  /// `CGContextBeginTransparencyLayer`, `CGContextEndTransparencyLayer`: what is drawn between them is drawn apart, and
  /// then over what was there as one, with the alpha, blending and mask in force at the beginning. They nest, each with
  /// a state of its own; an end without a beginning does nothing. False without memory, and where the layers under way
  /// would come to more than 1 GiB: all then goes on as before.
  bool beginTransparencyLayer();
  void endTransparencyLayer();
  /// `CGContextScaleCTM`, `CGContextTranslateCTM`
  void scaleCTM(double x, double y);
  void translateCTM(double x, double y);
  void setBlendMode(CGBlendMode mode);
  /// `CGContextSetAlpha`: for what is drawn from now on, 0 to 1.
  void setAlpha(double alpha);
  /// Opaque black at first. Components are limited to 0 to 1, NaN is 0.
  void setFillColor(const ColorRGBA& color);

  void fillRect(const CGRect& rectangle);
  /// `CGContextDrawImage`: the image's bottom row lies at the rectangle's smaller y, so that it stands upright where y
  /// grows upwards: after scaling by (1, -1) and moving by (0, -height). Made smaller, a pixel is the mean of the area
  /// that it covers.
  void drawImage(const CGRect& rectangle, const CGImage& image);
  /// The image upright where y grows downwards, turned as its orientation says.
  void drawUpright(const CGRect& rectangle, const CGImage& image, UIImageOrientation orientation);
  /// The image over and over from the rectangle's top left on, each of the given size, upright where y grows downwards.
  void drawTiled(const CGRect& rectangle, const CGImage& image, const CGSize& tile);
  /// `CGContextClipToMask`: from now on only where the image has alpha, weighted by it; it lies as `drawImage` puts it.
  /// Outside of the rectangle nothing is drawn. Masks combine.
  void clipToMask(const CGRect& rectangle, const CGImage& mask);

  /// What was drawn so far. It is not copied before the context is drawn into again.
  [[nodiscard]] CGImage image();
  /// The pixels, to be read and changed until the next call of the context; nullptr without memory.
  [[nodiscard]] CGBitmap* pixels();
  [[nodiscard]] std::size_t width() const;
  [[nodiscard]] std::size_t height() const;

 private:
  struct Drawing;
  explicit CGContext(std::unique_ptr<Drawing> drawing);

  std::unique_ptr<Drawing> drawing_;
};

}  // namespace quorvel
