#include <quorvel/Extensions/UIKit/UIImage+Resize.h>

namespace quorvel {

std::optional<UIImage> UIImageResize::imageWithImage(const UIImage& image, const CGSize& scaledToSize) {
  const UIGraphicsImageContext canvas(scaledToSize, 0);
  image.drawInRect({0, 0, scaledToSize.width, scaledToSize.height});
  return canvas.image();
}

}  // namespace quorvel
