#include <quorvel/Platform/ImageIO/PNGWriter.h>
#include <quorvel/Platform/UIKit/UIImagePNG.h>

namespace quorvel {

std::optional<Data> UIImagePNGRepresentation(const UIImage& image) {
  const CGImage& stored = image.bitmap();
  if (!stored.hasPixels()) return std::nullopt;
  if (image.orientation() == UIImageOrientation::Up) return encodePNG(stored.bitmap());
  const bool swaps = swapsSides(image.orientation());
  const std::size_t width = swaps ? stored.height() : stored.width();
  const std::size_t height = swaps ? stored.width() : stored.height();
  const auto context = CGContext::make(static_cast<std::int64_t>(width), static_cast<std::int64_t>(height));
  if (!context) return std::nullopt;
  context->drawUpright({0, 0, static_cast<double>(width), static_cast<double>(height)}, stored, image.orientation());
  const CGBitmap* const upright = context->pixels();
  return upright ? encodePNG(*upright) : std::nullopt;
}

}  // namespace quorvel
