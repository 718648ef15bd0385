#include <algorithm>

#include <quorvel/Extensions/UIKit/UIImage+Tools.h>
#include <quorvel/Platform/CoreImage/CoreImage.h>
#include <quorvel/Platform/UIKit/UIScreen.h>

namespace quorvel {
namespace {

constexpr double kScreenScale = 0;  // stands for the main screen's

CGRect wholeOf(const UIImage& image) { return {0, 0, image.size().width, image.size().height}; }

/// What `draw(context)` draws into a context of the size, whose y grows upwards.
template <class Draw>
std::optional<UIImage> drawnFlipped(const CGSize& size, double scale, Draw draw) {
  const UIGraphicsImageContext canvas(size, scale);
  CGContext* const context = canvas.context();
  if (!context) return std::nullopt;
  context->scaleCTM(1, -1);
  context->translateCTM(0, -size.height);
  draw(*context);
  return canvas.image();
}

/// Whole points towards zero, or none where there are more than an image may have.
std::int64_t wholePoints(double points) { return points < 1e9 ? static_cast<std::int64_t>(points) : 0; }

}  // namespace

std::optional<UIImage> cropImageWithSize(const UIImage& image, const CGRect& rectangle) {
  const double scale = image.scale();
  const CGImage piece = image.bitmap().inRect(
      {rectangle.x * scale, rectangle.y * scale, rectangle.width * scale, rectangle.height * scale});
  if (!piece.hasPixels()) return std::nullopt;
  return UIImage(piece, scale);
}

std::optional<UIImage> resizeImage(const UIImage& image, const CGSize& size, double scale) {
  const CGSize scaled{size.width * scale, size.height * scale};
  const UIGraphicsImageContext canvas(scaled);
  image.drawInRect({0, 0, scaled.width, scaled.height});
  return canvas.image();
}

std::optional<UIImage> resizeImage(const UIImage& image, const CGSize& size) {
  return resizeImage(image, size, std::max(2.0, UIScreen::mainScreen().scale()));
}

std::optional<UIImage> convertToGrayscale(const UIImage& image) {
  const CGSize size{static_cast<double>(wholePoints(image.size().width)),
                    static_cast<double>(wholePoints(image.size().height))};
  const auto context = CGContext::make(wholePoints(size.width), wholePoints(size.height));
  if (!context) return std::nullopt;
  context->scaleCTM(1, -1);
  context->translateCTM(0, -size.height);
  context->drawImage({0, 0, size.width, size.height}, image.bitmap());
  CGBitmap* const pixels = context->pixels();
  if (!pixels || !convertToGray(vImage_Buffer::of(*pixels), vImage_Buffer::of(*pixels))) return std::nullopt;
  return UIImage(context->image());
}

UIImage renderingModeTemplate(const UIImage& image) {
  return image.withRenderingMode(UIImageRenderingMode::AlwaysTemplate);
}

std::optional<UIImage> imageWithAlpha(const UIImage& image, double alpha) {
  return drawnFlipped(image.size(), kScreenScale, [&](CGContext& context) {
    context.setBlendMode(CGBlendMode::Multiply);
    context.setAlpha(alpha);
    context.drawImage(wholeOf(image), image.bitmap());
  });
}

std::optional<UIImage> maskRenderedImageWithTintColor(const UIImage& image, const UIColor& color) {
  return drawnFlipped(image.size(), kScreenScale, [&](CGContext& context) {
    context.clipToMask(wholeOf(image), image.bitmap());
    context.setFillColor(color.components());
    context.fillRect(wholeOf(image));
  });
}

std::optional<UIImage> UIImageTools::imageWithColor(const UIColor& color) {
  const UIGraphicsImageContext canvas({1, 1});
  if (!canvas.context()) return std::nullopt;
  canvas.context()->setFillColor(color.components());
  canvas.context()->fillRect({0, 0, 1, 1});
  return canvas.image();
}

std::optional<UIImage> UIImageTools::resizableImageNamed(StringView name, const UIEdgeInsets& capInsets) {
  const auto image = UIImage::named(name);
  return image ? std::optional(image->resizableWithCapInsets(capInsets)) : std::nullopt;
}

std::optional<UIImage> UIImageTools::blurWithCoreImage(const UIImage& source, const ImageWork& work) {
  const CGImage& pixels = source.bitmap();
  const auto blurred =
      CGBitmap::make(static_cast<std::int64_t>(pixels.width()), static_cast<std::int64_t>(pixels.height()));
  if (!blurred ||
      !CoreImage::clampedGaussianBlur(vImage_Buffer::reading(pixels.bitmap()), vImage_Buffer::of(*blurred), work)) {
    return std::nullopt;
  }
  return drawnFlipped(source.size(), 1, [&](CGContext& context) {
    context.drawImage(wholeOf(source), CGImage(blurred));
    context.setFillColor({1, 1, 1, 0.2});
    context.fillRect(wholeOf(source));
  });
}

}  // namespace quorvel
