#include <quorvel/Extensions/UIKit/NSURL+Image.h>
#include <quorvel/Platform/ImageIO/CGImageSource.h>

namespace quorvel {

CGSize imageFileDimensionSize(const NSURL& url) {
  auto source = CGImageSource::withURL(url);
  if (!source) return {};
  const PixelSize size = source->pixelSize();
  return {static_cast<double>(size.width), static_cast<double>(size.height)};
}

}  // namespace quorvel
