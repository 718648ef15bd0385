#include <algorithm>
#include <array>
#include <iterator>
#include <list>
#include <mutex>
#include <string>
#include <unordered_map>

#include <sys/stat.h>

#include <quorvel/Platform/Foundation/NSBundle.h>
#include <quorvel/Platform/ImageIO/CGImageSource.h>
#include <quorvel/Platform/UIKit/UIImage.h>
#include <quorvel/Platform/UIKit/UIScreen.h>

namespace quorvel {
namespace {

constexpr std::size_t kMostKept = 64;
constexpr std::size_t kMostKeptBytes = 64 * 1024 * 1024;

std::size_t bytesOf(const UIImage& image) {
  const CGImage& pixels = image.bitmap();
  return pixels.hasPixels() ? pixels.bitmap().bytesPerRow() * pixels.height() : 0;
}

/// What tells one state of a file from another.
struct FileState {
  std::int64_t seconds = 0;
  std::int64_t nanoseconds = 0;
  std::int64_t size = 0;
  std::uint64_t number = 0;
  friend bool operator==(const FileState&, const FileState&) = default;
};

std::optional<FileState> stateOf(const std::string& path) {
  struct stat status{};
  if (::stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  return FileState{status.st_mtim.tv_sec, status.st_mtim.tv_nsec, status.st_size, status.st_ino};
}

/// The images that were decoded last, of all threads.
class Kept {
 public:
  std::optional<UIImage> find(const std::string& path, const FileState& state) {
    const std::lock_guard guard(mutex_);
    const auto known = places_.find(path);
    if (known == places_.end() || known->second->state != state) return std::nullopt;
    entries_.splice(entries_.begin(), entries_, known->second);
    return known->second->image;
  }
  void keep(const std::string& path, const FileState& state, const UIImage& image) {
    const std::lock_guard guard(mutex_);
    if (const auto known = places_.find(path); known != places_.end()) drop(known->second);
    if (bytesOf(image) > kMostKeptBytes) return;
    entries_.push_front({path, state, image});
    places_.emplace(path, entries_.begin());
    bytes_ += bytesOf(image);
    while (entries_.size() > kMostKept || bytes_ > kMostKeptBytes) drop(std::prev(entries_.end()));
  }

 private:
  struct Entry {
    std::string path;
    FileState state;
    UIImage image;
  };
  void drop(std::list<Entry>::iterator entry) {
    bytes_ -= bytesOf(entry->image);
    places_.erase(entry->path);
    entries_.erase(entry);
  }

  std::mutex mutex_;
  std::size_t bytes_ = 0;
  std::list<Entry> entries_;  // the one used last comes first
  std::unordered_map<std::string, std::list<Entry>::iterator> places_;
};

Kept& kept() {
  static Kept images;
  return images;
}

std::optional<UIImage> decoded(const std::string& path, double scale) {
  const auto url = NSURL::fileURLWithPath(String::fromUTF8(path));
  auto source = url ? CGImageSource::withURL(*url) : std::nullopt;
  if (!source) return std::nullopt;
  auto bitmap = source->image();
  if (!bitmap) return std::nullopt;
  return UIImage(std::move(*bitmap), scale, orientationOfEXIF(source->facts().exifOrientation));
}

std::optional<UIImage> imageAt(const std::string& path, double scale) {
  const auto state = stateOf(path);
  if (!state) return std::nullopt;
  if (auto image = kept().find(path, *state)) return image;
  auto image = decoded(path, scale);
  if (image) kept().keep(path, *state, *image);
  return image;
}

struct Form {
  double scale;
  std::string_view mark;
};

/// The forms of an image, the best for the screen first.
std::array<Form, 3> formsFor(double screenScale) {
  std::array<Form, 3> forms{{{1, ""}, {2, "@2x"}, {3, "@3x"}}};
  std::ranges::sort(forms, [screenScale](const Form& a, const Form& b) {
    const bool fitsA = a.scale >= screenScale;
    const bool fitsB = b.scale >= screenScale;
    if (fitsA != fitsB) return fitsA;
    return fitsA ? a.scale < b.scale : a.scale > b.scale;
  });
  return forms;
}

/// A name may bring a mark of its own.
double scaleNamed(std::string_view stem) { return stem.ends_with("@3x") ? 3 : stem.ends_with("@2x") ? 2 : 1; }

std::optional<UIImage> bestForm(const std::string& stem, std::string_view extension, double screenScale) {
  for (const Form& form : formsFor(screenScale)) {
    std::string path = stem;
    path.append(form.mark);
    const double named = scaleNamed(path);
    if (auto image = imageAt(path.append(extension), named)) return image;
  }
  return std::nullopt;
}

}  // namespace

std::optional<UIImage> UIImage::named(StringView name) {
  const std::optional<std::string> text = String(name).toUTF8();
  constexpr std::string_view kForbidden("/\0", 2);
  if (!text || text->empty() || text->find_first_of(kForbidden) != text->npos) return std::nullopt;
  const std::string path = std::string(NSBundle::main().path()) + "/" + *text;
  const double screenScale = UIScreen::mainScreen().scale();
  for (const std::string_view extension : {".png", ".jpg", ".jpeg"}) {
    if (!text->ends_with(extension)) continue;
    return bestForm(path.substr(0, path.size() - extension.size()), extension, screenScale);
  }
  auto image = bestForm(path, ".png", screenScale);
  return image ? image : bestForm(path, ".jpg", screenScale);
}

}  // namespace quorvel
