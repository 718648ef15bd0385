// CGImageSource: the handle over the bytes or the file of an image.
// Not here: what is read from single formats (ImageSniff.h, ImageProperties.h, ImageReader.h), writing files.
#pragma once

#include <quorvel/Platform/CoreGraphics/CGImage.h>
#include <quorvel/Platform/CoreGraphics/ImageWork.h>
#include <quorvel/Platform/Foundation/GuardedFile.h>
#include <quorvel/Platform/Foundation/NSURL.h>
#include <quorvel/Platform/ImageIO/ImageReader.h>

namespace quorvel {

/// Reads each byte of a file once: first 4 KiB, then up to 16 and 64 KiB, then the whole, each step only when a
/// question could not be answered yet. `pixelSize` and `type` stop as soon as they are known. The file stays open until
/// the whole was read. Used by one thread at a time.
class CGImageSource {
 public:
  /// `CGImageSourceCreateWithData`: nil when the bytes are no image, or more than `limits::kImageFileBytes`.
  [[nodiscard]] static std::optional<CGImageSource> withData(Data data);
  /// `CGImageSourceCreateWithURL`: the same of a file. Symbolic links are followed; nil also for a URL that is not of a
  /// file, for anything but a regular file, which is not even opened, and for one that cannot be read.
  [[nodiscard]] static std::optional<CGImageSource> withURL(const NSURL& url);

  /// `CGImageSourceGetType`: the uniform type identifier, "public.jpeg".
  [[nodiscard]] StringView type() const;
  /// `CGImageSourceGetCount`: frames or pages; 0 when unknown, as of a PDF.
  [[nodiscard]] std::size_t count();
  /// What `properties` says under `kCGImagePropertyPixelWidth` and `kCGImagePropertyPixelHeight`, 0 for what is
  /// missing, and where there are no properties.
  [[nodiscard]] PixelSize pixelSize();
  /// `CGImageSourceCopyPropertiesAtIndex` of the first image; nil when there is none.
  [[nodiscard]] std::optional<Dictionary> properties();
  /// All facts, of the whole file.
  [[nodiscard]] const ImageFacts& facts();

  /// `CGImageSourceCreateThumbnailAtIndex` of the first image, turned upright, from the full picture, its longer side
  /// at most `maxPixelSize` pixels and never enlarged. nil as `readPixels` says.
  [[nodiscard]] std::optional<CGImage> thumbnail(double maxPixelSize, const ImageWork& work = {});
  /// `CGImageSourceCreateImageAtIndex`: the first image in its whole size, not turned.
  [[nodiscard]] std::optional<CGImage> image(const ImageWork& work = {});

 private:
  explicit CGImageSource(Data data) : data_(std::move(data)), isWhole_(true) {}
  CGImageSource(FileDescriptor file, std::uint64_t size) : file_(std::move(file)), fileSize_(size) {}

  [[nodiscard]] ImageBytes bytes() const;
  bool readMore();
  template <class IsEnough>
  void readUntil(IsEnough isEnough);
  [[nodiscard]] static std::optional<CGImageSource> begun(CGImageSource source);

  Data data_;
  FileDescriptor file_;
  std::uint64_t fileSize_ = 0;
  std::vector<std::uint8_t> read_;
  bool isWhole_ = false;
  ImageFacts facts_;
};

}  // namespace quorvel
