#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>

#include <gtest/gtest.h>
#include <libdeflate.h>
#include <tests/support/ImageFiles.h>
#include <tests/support/Images.h>
#include <tests/support/PNGFiles.h>
#include <tests/support/Pictures.h>
#include <webp/encode.h>

#include <quorvel/Extensions/UIKit/UIColor+CSSNames.h>
#include <quorvel/Extensions/UIKit/UIColor+Common.h>
#include <quorvel/Extensions/UIKit/UIColor+Companions.h>
#include <quorvel/Extensions/UIKit/UIColor+HSL.h>
#include <quorvel/Extensions/UIKit/UIImage+Color.h>
#include <quorvel/Extensions/UIKit/UIImage+Extension.h>
#include <quorvel/Extensions/UIKit/UIImage+ImageEffects.h>
#include <quorvel/Extensions/UIKit/UIImage+Resize.h>
#include <quorvel/Extensions/UIKit/UIImage+Tools.h>
#include <quorvel/Platform/CoreImage/CoreImage.h>
#include <quorvel/Platform/Foundation/WideKernels.h>
#include <quorvel/Platform/ImageIO/AreaShrink.h>
#include <quorvel/Platform/ImageIO/CGImageSource.h>
#include <quorvel/Platform/ImageIO/PNGWriter.h>
#include <quorvel/Platform/ImageIO/TurnedBitmap.h>

// Outputs that must stay as they are from one version to the next, on every processor: their hashes lie in a file,
// which QUORVEL_WRITE_GOLDENS=1 writes anew. Nothing here depends on the version of a codec: JPEG is left out, and of
// PNG files what counts is what was packed, not how.
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
      EXPECT_TRUE(convertToGray(source.buffer(), result.buffer()));
      outputs.add(named("gray", motif, width, height), result);
    }
  }
  Picture source = draw(Motif::Noise, 61, 40);
  for (const auto& [boxHeight, boxWidth] : {std::pair(1U, 9U), {9U, 1U}, {5U, 15U}, {99U, 3U}}) {
    Picture result(50, 30);
    EXPECT_TRUE(
        vImageBoxConvolve_ARGB8888(source.buffer(), result.buffer(), 6, 5, boxHeight, boxWidth, kvImageEdgeExtend));
    outputs.add(named("box", boxHeight, boxWidth), result);
  }
  constexpr std::int16_t kMatrices[][16] = {
      {256, 0, 0, 0, 0, 256, 0, 0, 0, 0, 256, 0, 0, 0, 0, 256},
      {445, -22, -22, 0, -220, 247, -220, 0, -21, -21, 446, 0, 0, 0, 0, 256},
      {32767, -32768, 1, 7, -32768, 32767, 3, 0, 5, 5, 5, 5, -1, -1, -1, -1},
  };
  for (std::size_t i = 0; i < std::size(kMatrices); ++i) {
    for (const std::int32_t divisor : {1, 256, 1000}) {
      Picture result(61, 40);
      EXPECT_TRUE(vImageMatrixMultiply_ARGB8888(source.buffer(), result.buffer(), kMatrices[i], divisor));
      outputs.add(named("matrix", i, divisor), result);
    }
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

void addTurns(Outputs& outputs) {
  for (const auto& [width, height] : kSizes) {
    const auto bitmap = bitmapOf(draw(Motif::Noise, width, height));
    for (unsigned exif = 1; exif <= 8; ++exif) {
      outputs.add(named("turned", width, height, exif), turnedBitmap(bitmap, orientationOfEXIF(exif)).get());
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

void addLines(Outputs& outputs) {
  const UIColor color(0.2, 0.4, 0.6, 1);
  for (const int scale : {1, 2, 3}) {
    const test::ScreenScale screen(scale);
    for (std::int64_t position = LinePositionBottom; position <= LinePositionRight; ++position) {
      for (const int width : {1, 4}) {
        outputs.add(named("line", scale, position, width),
                    UIImageColor::linedImageWithSize({12, 9}, color, UIColor(1, 1, 1, 0.5), width,
                                                     static_cast<LinePosition>(position)));
      }
    }
    for (const bool under : {false, true}) {
      outputs.add(named("line.thin", scale, under), UIImageColor::lineImageWithColor(color, under));
      outputs.add(named("line.background", scale, under), UIImageColor::lineImageWithBackgroundColor(color, under));
      outputs.add(named("line.hex", scale, under), UIImageColor::lineImageWithAlpahHexColor(0x80FF4020, under));
    }
    outputs.add(named("color", scale), UIImageColor::imageWithColor(color, {5, 4}));
  }
}

void addColors(Outputs& outputs) {
  for (const double hue : {0.0, 1.0 / 12, 0.3, 0.51, 2.0 / 3, 0.9, 1.0}) {
    for (const double saturation : {0.0, 0.4, 1.0}) {
      for (const double lightness : {0.2, 0.5, 0.77}) {
        const UIColor color = UIColorHSL::colorWithHue(hue, saturation, lightness, 0.8);
        const auto name =
            named("hsl", std::lround(100 * hue), std::lround(100 * saturation), std::lround(100 * lightness));
        outputs.add(name, color);
        outputs.add(name + ".spun", spin(color, 77));
      }
    }
  }
  Hash names;
  for (const auto& [name, rgb] : kCSSNames) {
    const auto color = colorFromCSS(String::fromUTF8Replacing(name));
    EXPECT_TRUE(color) << name;
    for (const double part : {color->red(), color->green(), color->blue()}) {
      names.add(static_cast<std::uint64_t>(std::lround(255 * part)));
    }
  }
  outputs.add("css.names", names);
  for (const char* text : {"#1a2b3c", "#1a2b3c4d", "#f80", "rgb(10 20 30 / 50%)", "rgba(10,20,30,.25)",
                           "hsl(210 50% 40%)", "hsla(-30deg,100%,25%,0.5)", "hsl(0.25turn 10% 90%)", "transparent"}) {
    const auto color = colorFromCSS(String::fromUTF8Replacing(text));
    ASSERT_TRUE(color) << text;
    std::string name = named("css", text);
    std::ranges::replace(name, ' ', '_');
    outputs.add(name, *color);
  }
  for (const auto& [name, color] : UIColor::Common::all()) outputs.add(named("palette", name), color);
  for (const int lightness : {0, 30, 50, 70, 100}) {
    outputs.add(named("readable", lightness),
                readableOn(UIColor(1, 0.4, 0.1, 1), UIColor::white(lightness / 100.0, 1)));
  }
}

/// Everything of a PNG file but how its rows are packed.
void addPNG(Outputs& outputs, const std::string& name, const CGBitmap& bitmap) {
  const auto data = encodePNG(bitmap);
  ASSERT_TRUE(data) << name;
  const auto file = data->bytes();
  Hash hash;
  std::vector<std::uint8_t> packedRows;
  for (std::size_t at = 8; at + 12 <= file.size();) {
    std::size_t size = 0;
    for (std::size_t i = at; i < at + 4; ++i) size = size << 8 | file[i];
    const auto body = file.subspan(at + 4, size + 4);
    if (std::memcmp(body.data(), "IDAT", 4) != 0) {
      hash.add(body);
    } else {
      packedRows.insert(packedRows.end(), body.begin() + 4, body.end());
    }
    at += size + 12;
  }
  std::vector<std::uint8_t> rows((8 * bitmap.width() + 1) * bitmap.height());
  std::size_t size = 0;
  libdeflate_decompressor* const inflater = libdeflate_alloc_decompressor();
  EXPECT_EQ(libdeflate_zlib_decompress(inflater, packedRows.data(), packedRows.size(), rows.data(), rows.size(), &size),
            LIBDEFLATE_SUCCESS);
  libdeflate_free_decompressor(inflater);
  hash.add({rows.data(), size});
  outputs.add(name, hash);
}

void addWrittenPNGs(Outputs& outputs) {
  for (const Motif motif : test::kMotifs)
    addPNG(outputs, named("png", motif), imageOf(motif, 70, 40).bitmap().bitmap());
  const auto of = [](auto colorAt) { return test::picture(19, 11, colorAt); };
  const std::pair<const char*, CGImage> kinds[] = {
      {"one", of([](auto, auto) { return 0xFF102030; })},
      {"two", of([](auto x, auto y) { return (x ^ y) & 1 ? 0xFF102030 : 0xFF908070; })},
      {"sixteen", of([](auto x, auto) { return 0xFF000000 | (x & 15) * 0x0F0103; })},
      {"gray", of([](auto x, auto y) { return 0xFF000000 | (x * 11 + y) * 0x010101; })},
      {"gray-alpha", of([](auto x, auto y) { return (x * 11 + y) * 0x01010101; })},
      {"clear", of([](auto, auto) { return 0; })},
  };
  for (const auto& [name, image] : kinds) addPNG(outputs, named("png.kind", name), image.bitmap());
}

template <class Bytes>
void addDecoded(Outputs& outputs, const std::string& name, const Bytes& file) {
  auto source = CGImageSource::withData(Data(std::span<const std::uint8_t>(file)));
  ASSERT_TRUE(source) << name;
  const auto whole = source->image();
  const auto small = source->thumbnail(9);
  outputs.add(name, whole ? whole->sharedBitmap().get() : nullptr);
  outputs.add(name + ".thumb", small ? small->sharedBitmap().get() : nullptr);
}

/// 32 grey levels at random over the whole screen or a part of it, in codes of a byte that are never packed.
test::FileBytes gifOf(std::uint16_t width, std::uint16_t height, bool isInterlaced) {
  test::ByteWriter writer(true);
  writer.text("GIF89a").u16(width + 3).u16(height + 2).u8(0xF6).u16(0);
  for (unsigned i = 0; i < 128; ++i) writer.u8(2 * i).u8(255 - i).u8(i * i);
  writer.add(test::gifControl(0, true)).u8(0x2C).u16(2).u16(1).u16(width).u16(height).u8(isInterlaced ? 0x40 : 0).u8(7);
  std::mt19937 random(width);
  for (std::size_t left = std::size_t{width} * height; left > 0;) {
    const std::size_t count = std::min<std::size_t>(left, 100);
    writer.u8(count + 1).u8(0x80);
    for (std::size_t i = 0; i < count; ++i) writer.u8(random() & 127);
    left -= count;
  }
  return writer.u8(1).u8(0x81).u8(0).u8(0x3B).file;
}

void addDecodes(Outputs& outputs) {
  constexpr std::pair<unsigned, unsigned> kKinds[] = {{0, 1},  {0, 4}, {0, 8},  {0, 16}, {2, 8},
                                                      {2, 16}, {4, 8}, {4, 16}, {6, 8},  {6, 16}};
  for (const auto& [color, depth] : kKinds) {
    for (const bool isInterlaced : {false, true}) {
      test::PNGSpec spec;
      spec.width = 37;
      spec.height = 21;
      spec.color = color;
      spec.depth = depth;
      spec.isInterlaced = isInterlaced;
      addDecoded(outputs, named("decode.png", color, depth, isInterlaced), test::pngFile(spec));
    }
  }
  for (const bool isInterlaced : {false, true}) {
    addDecoded(outputs, named("decode.gif", isInterlaced), gifOf(41, 23, isInterlaced));
  }
  for (const Motif motif : {Motif::Noise, Motif::Slope}) {
    const Picture picture = draw(motif, 45, 31);
    std::uint8_t* out = nullptr;
    const std::size_t size = WebPEncodeLosslessBGRA(picture.bytes.data(), 45, 31, 45 * 4, &out);
    addDecoded(outputs, named("decode.webp", motif), std::vector<std::uint8_t>(out, out + size));
    WebPFree(out);
  }
}

std::map<std::string, std::string> hashesOfAll() {
  Outputs outputs;
  for (const auto add :
       {addFilters, addShrinks, addTurns, addEffects, addTransforms, addLines, addColors, addWrittenPNGs, addDecodes}) {
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
  EXPECT_GE(golden.size(), 300U);
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
