#include <cerrno>
#include <filesystem>

#include <apps/quorvel/Operation.h>
#include <apps/quorvel/image/ImageActions.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <quorvel/Extensions/UIKit/UIImage+Color.h>
#include <quorvel/Extensions/UIKit/UIImage+Extension.h>
#include <quorvel/Extensions/UIKit/UIImage+ImageEffects.h>
#include <quorvel/Extensions/UIKit/UIImage+Tools.h>
#include <quorvel/Platform/Foundation/FileReplacer.h>
#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/ImageIO/CGImageDestination.h>
#include <quorvel/Platform/ImageIO/PNGWriter.h>

namespace quorvel::command {
namespace {

namespace fs = std::filesystem;

std::optional<UIImage> blurred(const ImageOptions& options, const UIImage& image, const std::optional<UIImage>& mask,
                               const ImageWork& work) {
  constexpr double kRadius = 30;
  constexpr double kSaturation = 1.8;
  if (options.isGaussian) return UIImageTools::blurWithCoreImage(image, work);
  if (options.isOwnBlur()) {
    return applyBlurWithRadius(image, options.radius.value_or(kRadius), options.color,
                               options.saturation.value_or(kSaturation), mask, work);
  }
  switch (options.preset.value_or(BlurPreset::Light)) {
    case BlurPreset::Light:
      return applyLightEffect(image, work);
    case BlurPreset::ExtraLight:
      return applyExtraLightEffect(image, work);
    case BlurPreset::Dark:
      return applyDarkEffect(image, work);
  }
  return {};
}

std::optional<UIImage> cropped(const CGRect& rectangle, const UIImage& image) {
  const auto part = cropImageWithSize(image, rectangle);
  return part && part->bitmap().hasPixels() ? part : std::nullopt;
}

std::optional<UIImage> apply(const ImageOptions& options, const UIImage& image, const std::optional<UIImage>& mask,
                             const ImageWork& work) {
  switch (options.action) {
    case ImageAction::Blur:
      return blurred(options, image, mask, work);
    case ImageAction::Tint:
      return applyTintEffectWithColor(image, *options.color, work);
    case ImageAction::Gray:
      return convertToGrayscale(image);
    case ImageAction::Crop:
      return cropped(options.rectangle, image);
    case ImageAction::Mask:
      return maskedImageWithColor(image, *options.color);
    case ImageAction::Fit:
      return scaledImageLimitedLength(image, static_cast<std::int64_t>(options.number));
    case ImageAction::Thumb:
    case ImageAction::Resize:
    case ImageAction::Info:
      break;
  }
  return image;
}

bool isFolder(const std::string& path) {
  std::error_code ignored;
  return fs::is_directory(path, ignored);
}

/// In whatever case: cameras write .JPG.
std::optional<OutputFormat> formatOfExtension(std::string extension) {
  for (char& letter : extension) letter = letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + 32) : letter;
  if (extension == ".png") return OutputFormat::PNG;
  if (extension == ".jpg" || extension == ".jpeg") return OutputFormat::JPEG;
  return std::nullopt;
}

std::string reasonOf(int number) { return FileError{number}.description().toUTF8Replacing(); }

/// Made by nobody else meanwhile, with the mode that the user's files have.
std::string writeNew(const std::string& path, std::string_view bytes) {
  const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (file < 0)
    return errno == EEXIST ? joined({path, " is there already (--force)"}) : joined({path, ": ", reasonOf(errno)});
  while (!bytes.empty()) {
    const ssize_t written = ::write(file, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) break;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  const int failure = bytes.empty() ? 0 : errno;
  if (::close(file) == 0 && failure == 0) return {};
  const std::string reason = reasonOf(failure ? failure : errno);
  ::unlink(path.c_str());
  return joined({path, ": ", reason});
}

mode_t modeOfNewFiles() {
  const mode_t mask = ::umask(0);
  ::umask(mask);
  return 0666 & ~mask;
}

}  // namespace

MadeImage make(const ImageOptions& options, CGImageSource& source, const std::optional<UIImage>& mask,
               const ImageWork& work) {
  const bool isReduced = options.action == ImageAction::Thumb || options.action == ImageAction::Resize;
  const double side = isReduced ? options.number : static_cast<double>(limits::kImageSide);
  const auto picture = source.thumbnail(side, work);
  if (!picture) return {{}, "damaged, too large, or in a format that is not read here"};
  const auto made = apply(options, UIImage(*picture), mask, work);
  if (made) return {made->bitmap(), {}};
  return {{},
          options.action == ImageAction::Crop ? "nothing of the picture lies there" : "nothing could be made of it"};
}

std::optional<CGImageSource> sourceAt(const std::string& path) {
  if (const auto name = String::fromUTF8(path)) {
    const auto url = NSURL::fileURLWithPath(*name);
    return url ? CGImageSource::withURL(*url) : nil;
  }
  // A name that is not UTF-8, as archives from elsewhere bring along, is none for a URL.
  const auto bytes = files::readAll(files::openRegularFile(path, files::Links::Followed), limits::kImageFileBytes);
  if (!bytes) return nil;
  return CGImageSource::withData(Data({reinterpret_cast<const std::uint8_t*>(bytes->data()), bytes->size()}));
}

std::optional<Data> encoded(const CGImage& picture, OutputFormat format) {
  return format == OutputFormat::PNG ? encodePNG(picture.bitmap()) : encodeJPEG(picture.bitmap());
}

Output outputFor(const ImageOptions& options, const std::string& file) {
  const bool isNamed = !options.output.empty() && !isFolder(options.output);
  const auto byName = isNamed ? formatOfExtension(fs::path(options.output).extension().string()) : std::nullopt;
  const auto usual = options.action == ImageAction::Resize ? OutputFormat::JPEG : OutputFormat::PNG;
  const OutputFormat format = options.format.value_or(byName.value_or(usual));
  if (isNamed) return {options.output, format};
  const fs::path source(file);
  const std::string name =
      joined({source.stem().string(), "-", nameOf(options.action), format == OutputFormat::PNG ? ".png" : ".jpg"});
  const fs::path folder = options.output.empty() ? source.parent_path() : fs::path(options.output);
  return {(folder / name).string(), format};
}

std::string write(const std::string& path, const Data& bytes, bool replaces) {
  const auto span = bytes.bytes();
  if (!replaces) return writeNew(path, {reinterpret_cast<const char*>(span.data()), span.size()});
  const FileReplacement how{.links = FileReplacement::Links::Followed,
                            .metadata = FileReplacement::Metadata::Kept,
                            .mode = modeOfNewFiles(),
                            .attributes = {}};
  const FileError error = replaceFile(path, span, how);
  return error ? joined({path, ": ", error.description().toUTF8Replacing()}) : std::string();
}

}  // namespace quorvel::command
