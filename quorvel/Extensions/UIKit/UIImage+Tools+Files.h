// UIImage(Tools), files: small images straight from files.
// Not here: the family's operations on images (UIImage+Tools.h).
#pragma once

#include <quorvel/Platform/Foundation/String.h>
#include <quorvel/Platform/UIKit/UIImage.h>

namespace quorvel::UIImageTools {

/// `imageWithFilePath:thumbMaxSize:`: the first image of the file, decoded so that its longer side is at most
/// `thumbMaxSize` pixels, turned upright by its orientation, never enlarged. Scale 1, orientation up. nil for a nil
/// path, a largest side below 1, a file that cannot be read or is no image, and one beyond the limits of LIMITS.md.
[[nodiscard]] std::optional<UIImage> imageWithFilePath(StringView path, std::int64_t thumbMaxSize);

}  // namespace quorvel::UIImageTools
