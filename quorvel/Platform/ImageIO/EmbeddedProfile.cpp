#include <quorvel/Platform/ImageIO/ColorProfile.h>
#include <quorvel/Platform/ImageIO/EmbeddedProfile.h>

namespace quorvel {

void convertToSRGB(CGBitmap& picture, ImageBytes file, const ImageFacts& facts) {
  const auto& [location, length] = facts.profile;
  if (length == 0 || location > file.size() || length > file.size() - location) return;
  const ImageBytes bytes = file.subspan(location, length);
  auto profile = ColorProfile::make(bytes, ColorProfile::Model::RGB);
  if (!profile) profile = ColorProfile::make(bytes, ColorProfile::Model::Gray);
  if (!profile) return;
  for (std::size_t y = 0; y < picture.height(); ++y) profile->convertRow(picture.row(y), picture.width());
}

}  // namespace quorvel
