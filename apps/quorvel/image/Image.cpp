#include <cstdio>
#include <filesystem>
#include <set>

#include <apps/quorvel/Operation.h>
#include <apps/quorvel/Progress.h>
#include <apps/quorvel/Terminal.h>
#include <apps/quorvel/image/Image.h>
#include <apps/quorvel/image/ImageActions.h>
#include <apps/quorvel/image/ImageInfo.h>

#include <quorvel/Extensions/Foundation/NSNumber+HumanReadable.h>
#include <quorvel/Extensions/UIKit/NSURL+Image+Writing.h>
#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/Foundation/NSJSONSerialization.h>

namespace quorvel::command {
namespace {

constexpr int kIncomplete = 1;
constexpr int kUsageError = 2;

/// Why a file is no image that is read.
std::string refusal(const std::string& path) {
  FileError error;
  const FileDescriptor file = files::openRegularFile(path, files::Links::Followed, &error);
  if (!file.isOpen()) return error.description().toUTF8Replacing();
  return "no image, or more than 64 MiB";
}

/// One for each file, however it is written.
std::string wholePath(const std::string& path) {
  std::error_code error;
  const auto whole = std::filesystem::weakly_canonical(path, error);
  return error ? path : whole.string();
}

/// One file after another; what went wrong with one is told and counted.
class Run {
 public:
  explicit Run(const ImageOptions& options) : options_(options) {}

  int all() {
    if (!options_.mask.empty() && !readMask()) return kIncomplete;
    for (std::size_t i = 0; i < options_.files.size(); ++i) {
      position_ = i;
      one(options_.files[i]);
      progress_.clear();
    }
    return status_;
  }

 private:
  [[nodiscard]] bool readMask() {
    auto source = sourceAt(options_.mask);
    const auto picture = source ? source->thumbnail(static_cast<double>(limits::kImageSide)) : std::nullopt;
    if (!picture) return fail(options_.mask, source ? "damaged or too large" : refusal(options_.mask)), false;
    mask_ = UIImage(*picture);
    return true;
  }

  void one(const std::string& file) {
    auto source = sourceAt(file);
    if (!source) return fail(file, refusal(file));
    if (options_.action == ImageAction::Info) return tell(file, *source);
    if (options_.inPlace) return resizeInPlace(file);
    const MadeImage made = make(options_, *source, mask_, work(file));
    if (!made.error.empty()) return fail(file, made.error);
    const Output output = outputFor(options_, file);
    const auto bytes = encoded(made.picture, output.format);
    if (!bytes) return fail(file, "out of memory");
    if (options_.action == ImageAction::Fit && output.format == OutputFormat::PNG &&
        static_cast<double>(bytes->size()) > options_.number) {
      return fail(file, joined({"takes ", std::to_string(bytes->size()), " bytes when it cannot shrink any more"}));
    }
    if (!made_.insert(wholePath(output.path)).second) return fail(file, output.path + " was made of another file");
    if (const std::string error = write(output.path, *bytes, options_.replaces); !error.empty()) {
      return fail(file, error);
    }
    report(file, output.path, made.picture, bytes->size());
  }

  void resizeInPlace(const std::string& file) {
    const auto name = String::fromUTF8(file);
    if (!name) return fail(file, "only a file whose name is UTF-8 is resized in its place");
    const auto location = NSURL::fileURLWithPath(*name);
    if (!location || !resizeImageAtPixel(*location, options_.number)) return fail(file, "cannot be read or replaced");
    auto source = sourceAt(file);
    if (!source) return fail(file, refusal(file));
    Dictionary record;
    const PixelSize size = source->pixelSize();
    record.set(u"file", String::fromUTF8Replacing(file));
    record.set(u"output", String::fromUTF8Replacing(file));
    record.set(u"width", std::int64_t{size.width});
    record.set(u"height", std::int64_t{size.height});
    if (options_.json) return print(record);
    std::printf("%s  %u x %u\n", plainText(file).c_str(), size.width, size.height);
  }

  void tell(const std::string& file, CGImageSource& source) {
    if (options_.json) return print(infoRecord(file, source));
    std::fputs(infoText(file, source).c_str(), stdout);
  }

  void report(const std::string& file, const std::string& output, const CGImage& picture, std::size_t bytes) {
    progress_.clear();
    if (options_.json) {
      Dictionary record;
      record.set(u"file", String::fromUTF8Replacing(file));
      record.set(u"output", String::fromUTF8Replacing(output));
      record.set(u"width", static_cast<std::int64_t>(picture.width()));
      record.set(u"height", static_cast<std::int64_t>(picture.height()));
      record.set(u"bytes", static_cast<std::int64_t>(bytes));
      return print(record);
    }
    const String size = humanReadableSize(Number(static_cast<std::int64_t>(bytes)));
    std::printf("%s  %zu x %zu, %s\n", plainText(output).c_str(), picture.width(), picture.height(),
                size.toUTF8Replacing().c_str());
  }

  void fail(const std::string& file, const std::string& reason) {
    progress_.clear();
    status_ = kIncomplete;
    if (!options_.json) {
      std::fprintf(stderr, "quorvel image: %s: %s\n", plainText(file).c_str(), plainText(reason).c_str());
      return;
    }
    Dictionary record;
    record.set(u"file", String::fromUTF8Replacing(file));
    record.set(u"error", String::fromUTF8Replacing(reason));
    print(record);
  }

  static void print(const Dictionary& record) {
    const std::string line = NSJSONSerialization::writeFragmentUTF8(record, 0).value_or("") + "\n";
    std::fwrite(line.data(), 1, line.size(), stdout);
    std::fflush(stdout);
  }

  [[nodiscard]] ImageWork work(const std::string& file) {
    ImageWork work;
    work.progress = [this, name = plainText(file)](double done) {
      const double part = (static_cast<double>(position_) + done) / static_cast<double>(options_.files.size());
      progress_.showPart(name, part);
    };
    return work;
  }

  const ImageOptions& options_;
  std::optional<UIImage> mask_;
  std::set<std::string> made_;  // a file is not replaced by another one's picture, --force or not
  Progress progress_;
  std::size_t position_ = 0;
  int status_ = 0;
};

}  // namespace

int runImage(std::span<const std::string_view> words) {
  ImageOptions options;
  std::string error;
  if (!readImageOptions(words, options, error)) {
    std::fprintf(stderr, "quorvel image: %s (quorvel help image)\n", plainText(error).c_str());
    return kUsageError;
  }
  return Run(options).all();
}

}  // namespace quorvel::command
