#include <quorvel/Extensions/UIKit/UIImage+Tools+Files.h>
#include <quorvel/Platform/ImageIO/CGImageSource.h>

namespace quorvel::UIImageTools {

std::optional<UIImage> imageWithFilePath(StringView path, std::int64_t thumbMaxSize) {
  const auto url = NSURL::fileURLWithPath(path);
  auto source = url ? CGImageSource::withURL(*url) : std::nullopt;
  const auto thumbnail = source ? source->thumbnail(static_cast<double>(thumbMaxSize)) : std::nullopt;
  return thumbnail ? std::optional(UIImage(*thumbnail)) : std::nullopt;
}

}  // namespace quorvel::UIImageTools
