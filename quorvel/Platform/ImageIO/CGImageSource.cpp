#include <sys/stat.h>

#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/ImageIO/CGImageSource.h>
#include <quorvel/Platform/ImageIO/ImageFile.h>
#include <quorvel/Platform/ImageIO/ImageProperties.h>
#include <quorvel/Platform/ImageIO/ImageSniff.h>
#include <quorvel/Platform/ImageIO/TurnedBitmap.h>

namespace quorvel {
namespace {

constexpr std::uint64_t kFirstStep = 4 * 1024;
constexpr std::uint64_t kLastStep = 64 * 1024;
constexpr std::uint64_t kGrowth = 4;

/// The same work, its progress from 0 to `share` of the whole.
ImageWork partOf(const ImageWork& work, double share) {
  ImageWork part{work.stop};
  if (work.progress) part.progress = [&work, share](double done) { work.progress(done * share); };
  return part;
}

}  // namespace

std::optional<CGImageSource> CGImageSource::begun(CGImageSource source) {
  const auto isKnown = [](const ImageFacts& facts) { return facts.format != ImageFormat::Unknown; };
  source.facts_ = sniff(source.bytes());
  source.readUntil(isKnown);
  return isKnown(source.facts_) ? std::optional(std::move(source)) : std::nullopt;
}

std::optional<CGImageSource> CGImageSource::withData(Data data) {
  if (data.size() > limits::kImageFileBytes) return std::nullopt;
  return begun(CGImageSource(std::move(data)));
}

std::optional<CGImageSource> CGImageSource::withURL(const NSURL& url) {
  FileDescriptor file = openImageFile(url);
  struct stat status{};
  if (!file.isOpen() || ::fstat(file.number(), &status) != 0) return std::nullopt;
  const auto size = static_cast<std::uint64_t>(status.st_size);
  if (size > limits::kImageFileBytes) return std::nullopt;
  return begun(CGImageSource(std::move(file), size));
}

ImageBytes CGImageSource::bytes() const { return data_.size() ? data_.bytes() : ImageBytes(read_); }

bool CGImageSource::readMore() {
  if (isWhole_) return false;
  std::uint64_t step = std::max(kFirstStep, kGrowth * read_.size());
  if (step > kLastStep) step = fileSize_;
  const std::uint64_t wanted = std::min(step, fileSize_);
  readOn(file_, wanted, read_);
  isWhole_ = wanted == fileSize_ || read_.size() < wanted;
  if (isWhole_) file_ = FileDescriptor();
  facts_ = sniff(read_);
  return true;
}

template <class IsEnough>
void CGImageSource::readUntil(IsEnough isEnough) {
  while (!isEnough(facts_) && readMore()) continue;
}

StringView CGImageSource::type() const { return typeIdentifier(facts_.format); }

PixelSize CGImageSource::pixelSize() {
  readUntil([](const ImageFacts& facts) { return facts.isComplete || facts.isSizeFinal(); });
  return facts_.frameCount > 0 ? PixelSize{facts_.width, facts_.height} : PixelSize{};
}

std::size_t CGImageSource::count() {
  readUntil([](const ImageFacts& facts) { return facts.isComplete; });
  return facts_.frameCount;
}

std::optional<Dictionary> CGImageSource::properties() {
  readUntil([](const ImageFacts& facts) { return facts.isComplete; });
  return imageProperties(bytes(), facts_);
}

const ImageFacts& CGImageSource::facts() {
  readUntil([](const ImageFacts&) { return false; });
  return facts_;
}

std::optional<CGImage> CGImageSource::thumbnail(double maxPixelSize, const ImageWork& work) {
  constexpr double kReading = 0.9;
  const UIImageOrientation orientation = orientationOfEXIF(facts().exifOrientation);
  const bool isUpright = orientation == UIImageOrientation::Up;
  auto pixels = readPixels(bytes(), facts_, thumbnailSize(decodedSize(facts_), maxPixelSize),
                           isUpright ? work : partOf(work, kReading));
  const auto turned = turnedBitmap(std::move(pixels), orientation, ImageWork{work.stop});
  if (!turned || (!isUpright && !work.goesOn(1))) return std::nullopt;
  return CGImage(turned);
}

std::optional<CGImage> CGImageSource::image(const ImageWork& work) {
  const PixelSize whole = decodedSize(facts());
  auto pixels = readPixels(bytes(), facts_, whole, work);
  return pixels ? std::optional(CGImage(std::move(pixels))) : std::nullopt;
}

}  // namespace quorvel
