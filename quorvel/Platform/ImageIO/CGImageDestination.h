// CGImageDestination: pixels written as a JPEG file.
// Not here: reading (CGImageSource.h), the operations on file locations (Extensions/UIKit/NSURL+Image+Writing.h).
#pragma once

#include <optional>
#include <string>

#include <quorvel/Platform/CoreGraphics/CGImage.h>
#include <quorvel/Platform/Foundation/NSURL.h>

namespace quorvel {

/// `kUTTypeJPEG`
inline constexpr char16_t kUTTypeJPEG[] = u"public.jpeg";

/// What a writer takes unless it is told otherwise.
inline constexpr double kJPEGQuality = 0.8;

/// The bitmap as a baseline JPEG file: YCbCr with the chroma at half the sides (4:2:0), Huffman tables made for the
/// picture up to `kOptimisedPixels`, no profile (sRGB) and no properties. JPEG has no alpha: the premultiplied levels
/// are written, which is how the picture lies over black. `quality` is 0 to 1; what lies outside counts as the nearer
/// end, no number as the least. nil when there is no memory.
[[nodiscard]] std::optional<Data> encodeJPEG(const CGBitmap& bitmap, double quality = kJPEGQuality);
/// Tables for a picture take its coefficients in memory, three bytes a pixel; larger ones get the standard's tables.
inline constexpr std::size_t kOptimisedPixels = 25'000'000;

/// A writer to one place.
class CGImageDestination {
 public:
  /// `CGImageDestinationCreateWithURL`: nil for what is no file URL, a type other than `kUTTypeJPEG`, and any count of
  /// images but 1. Nothing is opened yet.
  [[nodiscard]] static std::optional<CGImageDestination> withURL(const NSURL& url, StringView type, std::size_t count);
  /// `CGImageDestinationAddImage`: the image that is written; the last one counts.
  void addImage(const CGImage& image) { image_ = image; }
  /// `CGImageDestinationFinalize`: writes the file in quality `kJPEGQuality`, so that the place holds the old file or
  /// the new one, whole, whenever the process ends. Mode, owner and attributes of an old file stay, a new one is 0600;
  /// a link stays and what it names is replaced. False when nothing was written: no image was added or it has no
  /// pixels, a folder that is missing, a full disk.
  [[nodiscard]] bool finalize() const;

 private:
  explicit CGImageDestination(std::string path) : path_(std::move(path)) {}

  std::string path_;
  CGImage image_;
};

}  // namespace quorvel
