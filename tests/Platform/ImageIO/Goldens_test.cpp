#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>

#include <gtest/gtest.h>
#include <tests/support/Images.h>
#include <tests/support/Pictures.h>

#include <quorvel/Extensions/UIKit/UIColor+CSSNames.h>
#include <quorvel/Extensions/UIKit/UIColor+Common.h>
#include <quorvel/Extensions/UIKit/UIColor+Companions.h>
#include <quorvel/Extensions/UIKit/UIImage+Color.h>
#include <quorvel/Extensions/UIKit/UIImage+Extension.h>
#include <quorvel/Extensions/UIKit/UIImage+ImageEffects.h>
#include <quorvel/Extensions/UIKit/UIImage+Resize.h>
#include <quorvel/Extensions/UIKit/UIImage+Tools.h>
#include <quorvel/Platform/CoreImage/CoreImage.h>
#include <quorvel/Platform/Foundation/WideKernels.h>
#include <quorvel/Platform/ImageIO/AreaShrink.h>

// Outputs that must stay as they are from one version to the next, on every processor: their hashes lie in a file,
// which QUORVEL_WRITE_GOLDENS=1 writes anew. Not here: what other tests compare with a rule bit by bit (decoders,
// turns, lines, grey).
namespace quorvel {
namespace {

using test::draw;
using test::Motif;
using test::Picture;

constexpr char kPath[] = QUORVEL_TEST_DATA "/image-goldens.txt";

/// FNV-1a of 64 bits.
class Hash {
 public:
  void add(std::span<const std::uint8_t> bytes) {
    for (const std::uint8_t byte : bytes) value_ = (value_ ^ byte) * 0x100000001B3;
  }
  void add(std::uint64_t number) {
    for (int i = 0; i < 8; ++i, number >>= 8) value_ = (value_ ^ (number & 0xFF)) * 0x100000001B3;
  }
  [[nodiscard]] std::string text() const {
    std::string digits(16, '0');
    for (unsigned i = 0; i < 16; ++i) digits[15 - i] = "0123456789abcdef"[value_ >> (4 * i) & 15];
    return digits;
  }

 private:
  std::uint64_t value_ = 0xCBF29CE484222325;
};

class Outputs {
 public:
  void add(const std::string& name, const Hash& hash) {
    EXPECT_TRUE(hashes.emplace(name, hash.text()).second) << "two outputs are called " << name;
  }
  void add(const std::string& name, const Picture& picture) {
    Hash hash;
    hash.add(picture.bytes);
    add(name, hash);
  }
  void add(const std::string& name, const CGBitmap* bitmap) {
    Hash hash;
    hash.add(bitmap ? bitmap->width() : 0);
    for (std::size_t y = 0; bitmap && y < bitmap->height(); ++y) hash.add({bitmap->row(y), 4 * bitmap->width()});
    EXPECT_TRUE(bitmap) << name;
    add(name, hash);
  }
  void add(const std::string& name, const std::optional<UIImage>& image) {
    add(name, image ? image->bitmap().sharedBitmap().get() : nullptr);
  }
  void add(const std::string& name, const UIColor& color) {
    const String text = hexTextRGBA(color);
    Hash hash;
    for (std::size_t i = 0; i < text.size(); ++i) hash.add(StringView(text)[i]);
    add(name, hash);
  }

  std::map<std::string, std::string> hashes;
};

/// Words and numbers with blanks, dots for what parts the columns of the file.
template <class... Parts>
std::string named(const Parts&... parts) {
  std::ostringstream name;
  name.imbue(std::locale::classic());
  const char* between = "";
  ((name << between << parts, between = "."), ...);
  return name.str();
}

std::shared_ptr<CGBitmap> bitmapOf(const Picture& picture) {
  auto bitmap = CGBitmap::make(static_cast<std::int64_t>(picture.width), static_cast<std::int64_t>(picture.height));
  for (std::size_t y = 0; y < picture.height; ++y) {
    std::memcpy(bitmap->row(y), picture.bytes.data() + y * picture.rowBytes, 4 * picture.width);
  }
  return bitmap;
}

/// Premultiplied, so that it is a picture and not only bytes.
UIImage imageOf(Motif motif, std::size_t width, std::size_t height) {
  Picture picture = draw(motif, width, height);
  for (std::size_t i = 0; i < picture.bytes.size(); i += 4) {
    const unsigned alpha = picture.bytes[i + 3];
    for (std::size_t c = 0; c < 3; ++c) {
      picture.bytes[i + c] = static_cast<std::uint8_t>(picture.bytes[i + c] * alpha / 255);
    }
  }
  return UIImage(CGImage(bitmapOf(picture)));
}

constexpr std::pair<std::size_t, std::size_t> kSizes[] = {{1, 1}, {7, 5}, {33, 64}, {130, 67}};

void addFilters(Outputs& outputs) {
  for (const auto& [width, height] : kSizes) {
    for (const Motif motif : {Motif::Noise, Motif::Extremes, Motif::Corner}) {
      Picture source = draw(motif, width, height, 12);
      Picture result(width, height);
      for (const std::uint32_t side : {1U, 3U, 9U, 31U, 57U, 401U}) {
        EXPECT_TRUE(boxBlurThrice(source.buffer(), result.buffer(), side));
        outputs.add(named("box3", motif, width, height, side), result);
      }
      EXPECT_TRUE(CoreImage::clampedGaussianBlur(source.buffer(), result.buffer()));
      outputs.add(named("gaussian", motif, width, height), result);
    }
  }
  Picture source = draw(Motif::Noise, 61, 40);
  for (const auto& [boxHeight, boxWidth] : {std::pair(1U, 9U), {9U, 1U}, {5U, 15U}, {99U, 3U}}) {
    Picture result(50, 30);
    EXPECT_TRUE(
        vImageBoxConvolve_ARGB8888(source.buffer(), result.buffer(), 6, 5, boxHeight, boxWidth, kvImageEdgeExtend));
    outputs.add(named("box", boxHeight, boxWidth), result);
  }
}

void addShrinks(Outputs& outputs) {
  for (const Motif motif : {Motif::Noise, Motif::Extremes}) {
    const Picture picture = draw(motif, 203, 151);
    for (const PixelSize size :
         {PixelSize{203, 151}, PixelSize{202, 150}, PixelSize{101, 75}, PixelSize{100, 74}, PixelSize{67, 50},
          PixelSize{203, 1}, PixelSize{1, 151}, PixelSize{13, 149}, PixelSize{29, 7}, PixelSize{1, 1}}) {
      const auto result = CGBitmap::make(size.width, size.height);
      auto shrink = AreaShrink::make({203, 151}, *result);
      for (std::size_t y = 0; y < 151; ++y) shrink->addRow(picture.bytes.data() + y * picture.rowBytes);
      outputs.add(named("shrink", motif, size.width, size.height), result.get());
    }
    for (const std::uint32_t eighths : {1U, 2U, 4U, 7U}) {
      const Picture reduced = draw(motif, (203 * eighths + 7) / 8, (151 * eighths + 7) / 8);
      const auto result = CGBitmap::make(20, 15);
      auto shrink = AreaShrink::make({203, 151}, eighths, *result);
      for (std::size_t y = 0; y < reduced.height; ++y) shrink->addRow(reduced.bytes.data() + y * reduced.rowBytes);
      outputs.add(named("eighths", motif, eighths), result.get());
    }
  }
}

void addEffects(Outputs& outputs) {
  const UIImage mask = imageOf(Motif::Steps, 60, 45);
  const UIColor green(0.1, 0.8, 0.3, 0.5);
  for (const Motif motif : test::kMotifs) {
    const UIImage image = imageOf(motif, 60, 45);
    outputs.add(named("effect.light", motif), applyLightEffect(image));
    outputs.add(named("effect.extra-light", motif), applyExtraLightEffect(image));
    outputs.add(named("effect.dark", motif), applyDarkEffect(image));
    outputs.add(named("effect.tint", motif), applyTintEffectWithColor(image, green));
    outputs.add(named("effect.masked", motif), applyBlurWithRadius(image, 5, green, 1.3, mask));
    outputs.add(named("effect.saturation", motif), applyBlurWithRadius(image, 0, nil, 3, nil));
    outputs.add(named("effect.gaussian", motif), UIImageTools::blurWithCoreImage(image));
  }
}

/// Shrunk by our own means or moved by whole pixels; what the drawing library interpolates is its own.
void addTransforms(Outputs& outputs) {
  for (const Motif motif : {Motif::Noise, Motif::Corner}) {
    const UIImage image = imageOf(motif, 60, 44);
    outputs.add(named("transform.crop", motif), cropImageWithSize(image, {3, 5, 40, 50}));
    outputs.add(named("transform.resize", motif), resizeImage(image, {15, 11}, 2));
    outputs.add(named("transform.scaled-to-size", motif), UIImageResize::imageWithImage(image, {20, 22}));
    outputs.add(named("transform.half", motif), scaledImage(image, 0.5));
    outputs.add(named("transform.gray", motif), convertToGrayscale(image));
    outputs.add(named("transform.alpha", motif), imageWithAlpha(image, 0.4));
    outputs.add(named("transform.tinted", motif), maskRenderedImageWithTintColor(image, UIColor(1, 0.5, 0, 1)));
    outputs.add(named("transform.masked", motif), maskedImageWithColor(image, UIColor(0, 0.5, 1, 0.5)));
  }
}

/// Colours that are written down by hand.
void addColors(Outputs& outputs) {
  Hash names;
  for (const auto& [name, rgb] : kCSSNames) {
    for (const unsigned shift : {16U, 8U, 0U}) names.add(std::uint64_t{rgb >> shift & 0xFF});
  }
  outputs.add("css.names", names);
  for (const auto& [name, color] : UIColor::Common::all()) outputs.add(named("palette", name), color);
}

std::map<std::string, std::string> hashesOfAll() {
  Outputs outputs;
  for (const auto add : {addFilters, addShrinks, addEffects, addTransforms, addColors}) {
    add(outputs);
  }
  return outputs.hashes;
}

void compare(const std::map<std::string, std::string>& hashes, const char* how) {
  std::map<std::string, std::string> golden;
  std::ifstream file(kPath);
  for (std::string name, hash; file >> name >> hash;) golden[name] = hash;
  for (const auto& [name, hash] : golden) {
    const auto found = hashes.find(name);
    if (found == hashes.end() || found->second != hash) ADD_FAILURE() << name << " is another " << how;
  }
  for (const auto& [name, hash] : hashes) EXPECT_TRUE(golden.contains(name)) << name << " is new";
  EXPECT_GE(golden.size(), 190U);
}

TEST(Goldens, OutputsStayAsTheyAreOnEveryProcessor) {
  const auto hashes = hashesOfAll();
  if (std::getenv("QUORVEL_WRITE_GOLDENS")) {
    std::ofstream file(kPath);
    for (const auto& [name, hash] : hashes) file << name << ' ' << hash << '\n';
  }
  compare(hashes, wide::isAvailable() ? "with wide kernels" : "");
  wide::setEnabled(false);
  compare(hashesOfAll(), "with portable code");
  wide::setEnabled(true);
}

}  // namespace
}  // namespace quorvel
