#include <cmath>

#include <quorvel/Extensions/UIKit/UIImage+Extension.h>
#include <quorvel/Platform/UIKit/UIImagePNG.h>

namespace quorvel {
namespace {

constexpr int kMostHalvings = 32;

/// Sides are rounded up to whole points, and stay at one.
bool isSmaller(const CGSize& size, const CGSize& than) { return size.width < than.width || size.height < than.height; }

}  // namespace

std::optional<UIImage> scaledImage(const UIImage& image, double factor) {
  const CGSize size{std::ceil(image.size().width * factor), std::ceil(image.size().height * factor)};
  if (!(size.width > 0) || !(size.height > 0)) return std::nullopt;
  const UIGraphicsImageContext canvas(size, image.scale());
  image.drawInRect({0, 0, size.width, size.height});
  return canvas.image();
}

std::optional<UIImage> scaledImageLimitedLength(const UIImage& image, std::int64_t limitedLength) {
  UIImage result = image;
  for (int halvings = 0;; ++halvings) {
    const auto file = UIImagePNGRepresentation(result);
    if (!file) return std::nullopt;
    if (static_cast<std::int64_t>(file->size()) <= limitedLength || halvings == kMostHalvings) return result;
    auto half = scaledImage(result, 0.5);
    if (!half) return std::nullopt;
    if (!isSmaller(half->size(), result.size())) return result;
    result = std::move(*half);
  }
}

}  // namespace quorvel
