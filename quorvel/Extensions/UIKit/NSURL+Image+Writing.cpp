#include <quorvel/Extensions/UIKit/NSURL+Image+Writing.h>
#include <quorvel/Platform/ImageIO/CGImageDestination.h>
#include <quorvel/Platform/ImageIO/CGImageSource.h>

namespace quorvel {

bool resizeImageAtPixel(const NSURL& url, double largestSide) {
  auto source = CGImageSource::withURL(url);
  const auto thumbnail = source ? source->thumbnail(largestSide) : std::nullopt;
  return thumbnail && writeToCGImageFile(url, *thumbnail);
}

bool writeToCGImageFile(const NSURL& url, const CGImage& bitmap) {
  auto writer = CGImageDestination::withURL(url, kUTTypeJPEG, 1);
  if (!writer) return false;
  writer->addImage(bitmap);
  return writer->finalize();
}

}  // namespace quorvel
