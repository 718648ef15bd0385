#include <quorvel/Extensions/UIKit/UIColor+ColorWithHex.h>
#include <quorvel/Extensions/UIKit/UIImage+Color.h>
#include <quorvel/Platform/UIKit/UIScreen.h>

namespace quorvel {
namespace {

constexpr double kScreenScale = 0;  // stands for the main screen's
constexpr CGSize kPoint{1, 1};
constexpr double kHairline = 1;

CGRect wholeOf(const CGSize& size) { return {0, 0, size.width, size.height}; }

std::optional<CGRect> lineRectangle(const CGSize& size, double thickness, LinePosition position) {
  switch (position) {
    case LinePositionBottom:
      return CGRect{0, size.height - thickness, size.width, thickness};
    case LinePositionTop:
      return CGRect{0, 0, size.width, thickness};
    case LinePositionLeft:
      return CGRect{0, 0, thickness, size.height};
    case LinePositionRight:
      return CGRect{size.width - thickness, 0, thickness, size.height};
  }
  return std::nullopt;
}

}  // namespace

std::optional<UIImage> maskedImageWithColor(const UIImage& image, const UIColor& color) {
  const UIGraphicsImageContext canvas(image.size(), image.scale());
  if (!canvas.context()) return std::nullopt;
  image.drawInRect(wholeOf(image.size()));
  canvas.context()->setFillColor(color.components());
  canvas.context()->setBlendMode(CGBlendMode::SourceAtop);
  canvas.context()->fillRect(wholeOf(image.size()));
  return canvas.image();
}

std::optional<UIImage> maskedImageWithAlpahHexColor(const UIImage& image, std::uint32_t argb) {
  return maskedImageWithColor(image, UIColorWithHex::colorWithAlphaHex(argb));
}

std::optional<UIImage> UIImageColor::imageWithColor(const UIColor& color, const CGSize& size) {
  const UIGraphicsImageContext canvas(size, kScreenScale);
  if (!canvas.context()) return std::nullopt;
  canvas.context()->setFillColor(color.components());
  canvas.context()->fillRect(wholeOf(size));
  return canvas.image();
}

std::optional<UIImage> UIImageColor::imageWithColor(const UIColor& color) { return imageWithColor(color, kPoint); }

std::optional<UIImage> UIImageColor::linedImageWithSize(const CGSize& size, const std::optional<UIColor>& color,
                                                        const std::optional<UIColor>& backgroundColor,
                                                        double borderWidth, LinePosition position) {
  const double scale = UIScreen::mainScreen().scale();
  const UIGraphicsImageContext canvas(size, scale);
  CGContext* const context = canvas.context();
  if (!context) return std::nullopt;
  if (backgroundColor) {
    context->setFillColor(backgroundColor->components());
    context->fillRect(wholeOf(size));
  }
  if (color) context->setFillColor(color->components());
  if (const auto line = lineRectangle(size, borderWidth / scale, position)) context->fillRect(*line);
  return canvas.image();
}

std::optional<UIImage> UIImageColor::linedImageWithSize(const CGSize& size, const std::optional<UIColor>& color,
                                                        const std::optional<UIColor>& backgroundColor,
                                                        double borderWidth, bool under) {
  return linedImageWithSize(size, color, backgroundColor, borderWidth, under ? LinePositionBottom : LinePositionTop);
}

std::optional<UIImage> UIImageColor::lineImageWithColor(const std::optional<UIColor>& color, bool under) {
  return linedImageWithSize(kPoint, color, std::nullopt, kHairline, under);
}

std::optional<UIImage> UIImageColor::lineImageWithBackgroundColor(const std::optional<UIColor>& color, bool under) {
  return linedImageWithSize(kPoint, color, color, kHairline, under);
}

std::optional<UIImage> UIImageColor::lineImageWithAlpahHexColor(std::uint32_t argb, bool under) {
  return lineImageWithColor(UIColorWithHex::colorWithAlphaHex(argb), under);
}

}  // namespace quorvel
