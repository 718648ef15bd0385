// The pictures that `quorvel image` makes, and their files.
#pragma once

#include <apps/quorvel/image/ImageOptions.h>

#include <quorvel/Platform/CoreGraphics/ImageWork.h>
#include <quorvel/Platform/ImageIO/CGImageSource.h>
#include <quorvel/Platform/UIKit/UIImage.h>

namespace quorvel::command {

struct MadeImage {
  CGImage picture;
  std::string error;  // why there is none; empty otherwise
};

/// The picture of a file as the options want it; `mask` is that of --mask.
[[nodiscard]] MadeImage make(const ImageOptions& options, CGImageSource& source, const std::optional<UIImage>& mask,
                             const ImageWork& work);

/// The image file at a path; nil when it is none.
[[nodiscard]] std::optional<CGImageSource> sourceAt(const std::string& path);

/// The bytes of a file of it; nil without memory.
[[nodiscard]] std::optional<Data> encoded(const CGImage& picture, OutputFormat format);

/// Where the picture of a file goes, and in which format.
struct Output {
  std::string path;
  OutputFormat format = OutputFormat::PNG;
};
[[nodiscard]] Output outputFor(const ImageOptions& options, const std::string& file);

/// Writes a new file, or with `replaces` in the place of one. An error text, or an empty one; a file that is there is
/// then as it was.
[[nodiscard]] std::string write(const std::string& path, const Data& bytes, bool replaces);

}  // namespace quorvel::command
