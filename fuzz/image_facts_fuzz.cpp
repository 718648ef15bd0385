// Bytes as an image file: facts, properties, the handle and the families answer, facts of a beginning are never
// contradicted by those of the whole, and places lie within the bytes.
#include <fuzz/FuzzInput.h>

#include <quorvel/Extensions/UIKit/NSData+ImageDetect.h>
#include <quorvel/Extensions/UIKit/NSData+ImageFormat.h>
#include <quorvel/Platform/ImageIO/CGImageSource.h>
#include <quorvel/Platform/ImageIO/ImageProperties.h>
#include <quorvel/Platform/ImageIO/ImageSniff.h>

using namespace quorvel;
using fuzz::require;

namespace {

bool isInside(const ImageFacts::Place& place, std::size_t size) {
  return place.location <= size && place.length <= size - place.location;
}

void requireSound(const ImageFacts& facts, std::size_t size) {
  require(isInside(facts.exif, size) && isInside(facts.profile, size), "blocks lie within the file");
  require(facts.exifOrientation >= 1 && facts.exifOrientation <= 8, "there are eight orientations");
  require(facts.frameCount <= size, "a frame takes a byte at least");
  require(!facts.isAnimated || facts.frameCount > 1, "an animation has frames");
  require(facts.format != ImageFormat::Unknown || facts.frameCount == 0, "no frames of nothing");
}

void requireAgreement(const ImageFacts& part, const ImageFacts& whole) {
  if (part.isSizeFinal()) {
    require(part.width == whole.width && part.height == whole.height, "a size that is known stays");
  }
  if (!part.isComplete) return;
  require(part.format == whole.format && part.frameCount == whole.frameCount, "complete facts stay");
  require(part.exif.location == whole.exif.location && part.exif.length == whole.exif.length, "so does EXIF");
  require(part.exifOrientation == whole.exifOrientation && part.hasAlpha == whole.hasAlpha, "and the rest");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  // The first two bytes say where the file is cut.
  if (size < 2) return 0;
  const std::size_t cut = std::size_t{bytes[0]} * 256 + bytes[1];
  const ImageBytes file(bytes + 2, size - 2);
  const ImageFacts facts = sniff(file);
  requireSound(facts, file.size());
  // In a block of its own, so that the sanitizer sees what reads on.
  const std::vector<std::uint8_t> beginning(file.begin(),
                                            file.begin() + static_cast<std::ptrdiff_t>(std::min(cut, file.size())));
  const ImageFacts part = sniff(beginning);
  requireSound(part, beginning.size());
  requireAgreement(part, facts);
  (void)imageProperties(beginning, part);

  const Data data(file);
  require(metadata(data) == imageProperties(file, facts), "one dictionary by either way");
  require(isAnimatedGIF(data) == (facts.format == ImageFormat::GIF && facts.isAnimated), "and one count of frames");
  require(isImageData(data) == (isPNG(data) || isJPG(data)), "two kinds are shown at once");
  if (auto source = CGImageSource::withData(data)) {
    require(source->pixelSize() == PixelSize{facts.width, facts.height}, "and one size");
    require(source->type() == typeIdentifier(facts.format), "and one type");
  } else {
    require(facts.format == ImageFormat::Unknown, "what has a format has a source");
  }
  return 0;
}
