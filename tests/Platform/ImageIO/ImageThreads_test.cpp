#include <atomic>
#include <cstring>
#include <functional>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <tests/support/Images.h>
#include <tests/support/JPEGFiles.h>
#include <tests/support/PNGFiles.h>
#include <tests/support/TemporaryFolder.h>

#include <quorvel/Extensions/UIKit/NSURL+Image+Writing.h>
#include <quorvel/Extensions/UIKit/NSURL+Image.h>
#include <quorvel/Extensions/UIKit/UIColor+Common.h>
#include <quorvel/Extensions/UIKit/UIColor+Companions.h>
#include <quorvel/Extensions/UIKit/UIImage+Color.h>
#include <quorvel/Extensions/UIKit/UIImage+Extension.h>
#include <quorvel/Extensions/UIKit/UIImage+ImageEffects.h>
#include <quorvel/Extensions/UIKit/UIImage+Resize.h>
#include <quorvel/Extensions/UIKit/UIImage+Tools.h>
#include <quorvel/Platform/ImageIO/CGImageDestination.h>
#include <quorvel/Platform/ImageIO/CGImageSource.h>
#include <quorvel/Platform/ImageIO/PNGWriter.h>
#include <quorvel/Platform/ImageIO/TurnedBitmap.h>
#include <quorvel/Platform/UIKit/UIImagePNG.h>

namespace quorvel {
namespace {

/// What all threads share and only read.
struct Shared {
  UIImage image{test::picture(48, 36, [](std::size_t x, std::size_t y) {
    const std::size_t alpha = 255 - 5 * y;
    return alpha << 24 | (x * 5 * alpha / 255) << 16 | (x ^ y) * alpha / 255;
  })};
  UIImage shape{test::picture(24, 18, [](std::size_t x, std::size_t y) { return (x + y) * 6 << 24; })};
  Data png = encodePNG(image.bitmap().bitmap()).value_or(Data());
  Data jpeg{std::span<const std::uint8_t>(test::makeJPEG(test::photograph(40, 30)))};
  Data progressive{std::span<const std::uint8_t>(test::makeJPEG(test::photograph(40, 30), {.isProgressive = true}))};
};

using Pixels = std::string;
Pixels of(const CGBitmap* bitmap) {
  Pixels bytes;
  for (std::size_t y = 0; bitmap && y < bitmap->height(); ++y) {
    bytes.append(reinterpret_cast<const char*>(bitmap->row(y)), 4 * bitmap->width());
  }
  return bytes;
}
Pixels of(const std::optional<CGImage>& image) { return image ? of(image->sharedBitmap().get()) : Pixels(); }
Pixels of(const std::optional<UIImage>& image) { return image ? of(image->bitmap().sharedBitmap().get()) : Pixels(); }
Pixels of(const std::optional<Data>& data) {
  return data ? Pixels(data->bytes().begin(), data->bytes().end()) : Pixels();
}

Pixels decoded(const Data& data) {
  auto source = CGImageSource::withData(data);
  if (!source || !source->properties()) return {};
  return of(source->thumbnail(13)) + of(source->image());
}

Pixels drawn(const Shared& shared) {
  const UIGraphicsImageContext outer({30, 20}, 2);
  shared.image.drawInRect({1, 2, 10, 8});
  {
    const UIGraphicsImageContext inner({9, 9}, 1);
    shared.shape.drawInRect({0, 0, 9, 9});
    if (const auto image = inner.image()) {
      const UIGraphicsPushedContext pushed(*outer.context());
      image->drawInRect({15, 5, 9, 9});
    }
  }
  return of(outer.image());
}

/// Writes a file of its own, asks for its size and makes it smaller in its place.
Pixels onDisk(const Shared& shared, const std::string& folder) {
  static std::atomic<int> count = 0;
  const std::string path = folder + "/" + std::to_string(count++) + ".jpg";
  const auto url = NSURL::fileURLWithPath(String::fromUTF8Replacing(path));
  auto destination = CGImageDestination::withURL(*url, kUTTypeJPEG, 1);
  if (!destination) return {};
  destination->addImage(shared.image.bitmap());
  if (!destination->finalize() || !resizeImageAtPixel(*url, 20)) return {};
  return test::readFile(path);
}

/// What a file says is remembered for the whole process, so that the threads meet there.
Pixels named(const Shared&, const std::string& folder) {
  const auto url = NSURL::fileURLWithPath(String::fromUTF8Replacing(folder + "/shared.png"));
  auto source = CGImageSource::withURL(*url);
  return source ? of(source->thumbnail(10)) : Pixels();
}

struct Work {
  const char* name;
  std::function<Pixels(const Shared&, const std::string& folder)> run;
};
const Work kWorks[] = {
    {"PNG", [](const Shared& s, auto&) { return decoded(s.png); }},
    {"JPEG", [](const Shared& s, auto&) { return decoded(s.jpeg); }},
    {"progressive JPEG", [](const Shared& s, auto&) { return decoded(s.progressive); }},
    {"writing PNG", [](const Shared& s, auto&) { return of(UIImagePNGRepresentation(s.image)); }},
    {"writing JPEG", [](const Shared& s, auto&) { return of(encodeJPEG(s.image.bitmap().bitmap())); }},
    {"files", onDisk},
    {"one file", named},
    {"drawing", [](const Shared& s, auto&) { return drawn(s); }},
    {"light", [](const Shared& s, auto&) { return of(applyLightEffect(s.image)); }},
    {"blur in a shape",
     [](const Shared& s, auto&) { return of(applyBlurWithRadius(s.image, 4, UIColor(1, 0, 0, 0.2), 1.5, s.shape)); }},
    {"Gaussian", [](const Shared& s, auto&) { return of(UIImageTools::blurWithCoreImage(s.shape)); }},
    {"crop", [](const Shared& s, auto&) { return of(cropImageWithSize(s.image, {3, 3, 20, 20})); }},
    {"resize", [](const Shared& s, auto&) { return of(resizeImage(s.image, {20, 10}, 1)); }},
    {"scaled to size", [](const Shared& s, auto&) { return of(UIImageResize::imageWithImage(s.image, {70, 50})); }},
    {"limited length", [](const Shared& s, auto&) { return of(scaledImageLimitedLength(s.image, 400)); }},
    {"grey", [](const Shared& s, auto&) { return of(convertToGrayscale(s.image)); }},
    {"alpha", [](const Shared& s, auto&) { return of(imageWithAlpha(s.image, 0.3)); }},
    {"tint", [](const Shared& s,
                auto&) { return of(maskRenderedImageWithTintColor(s.shape, UIColor::Common::brandGreenColor())); }},
    {"masked", [](const Shared& s, auto&) { return of(maskedImageWithColor(s.shape, *colorFromCSS(u"teal"))); }},
    {"lines",
     [](const Shared&, auto&) {
       return of(UIImageColor::linedImageWithSize({9, 7}, UIColor::redColor(), nil, 2, LinePositionLeft));
     }},
    {"turned",
     [](const Shared& s, auto&) {
       return of(turnedBitmap(s.image.bitmap().sharedBitmap(), UIImageOrientation::LeftMirrored).get());
     }},
};

TEST(ImageThreads, AnswerWhatOneThreadAnswers) {
  constexpr int kThreads = 8;
  constexpr int kRounds = 3;
  const test::TemporaryFolder folder;
  const Shared shared;
  test::writeFile(folder.path("shared.png"), of(std::optional(shared.png)));
  // The threads run first: what is made at its first use is made by all of them at once.
  std::vector<Pixels> results[kThreads];
  std::atomic<int> waiting = kThreads;
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([&, thread] {
      --waiting;
      while (waiting > 0) std::this_thread::yield();
      for (int round = 0; round < kRounds; ++round) {
        for (const Work& work : kWorks) results[thread].push_back(work.run(shared, folder.path()));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (std::size_t i = 0; i < std::size(kWorks); ++i) {
    const Pixels alone = kWorks[i].run(shared, folder.path());
    EXPECT_FALSE(alone.empty()) << kWorks[i].name;
    for (int run = 0; run < kThreads * kRounds; ++run) {
      const std::size_t at = static_cast<std::size_t>(run / kThreads) * std::size(kWorks) + i;
      EXPECT_TRUE(results[run % kThreads][at] == alone) << kWorks[i].name << ", thread " << run % kThreads;
    }
  }
}

}  // namespace
}  // namespace quorvel
