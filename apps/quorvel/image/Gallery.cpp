#include <cmath>
#include <cstdio>
#include <numbers>

#include <apps/quorvel/Operation.h>
#include <apps/quorvel/OptionWords.h>
#include <apps/quorvel/Terminal.h>
#include <apps/quorvel/image/ContactSheet.h>
#include <apps/quorvel/image/Gallery.h>
#include <apps/quorvel/image/ImageActions.h>

#include <quorvel/Extensions/UIKit/UIColor+Common.h>
#include <quorvel/Extensions/UIKit/UIColor+HSL.h>
#include <quorvel/Extensions/UIKit/UIImage+Color.h>
#include <quorvel/Extensions/UIKit/UIImage+Extension.h>
#include <quorvel/Extensions/UIKit/UIImage+ImageEffects.h>
#include <quorvel/Extensions/UIKit/UIImage+Resize.h>
#include <quorvel/Extensions/UIKit/UIImage+Tools.h>
#include <quorvel/Platform/ImageIO/CGImageDestination.h>
#include <quorvel/Platform/ImageIO/PNGWriter.h>
#include <quorvel/Platform/ImageIO/TurnedBitmap.h>
#include <quorvel/Platform/UIKit/UIScreen.h>

namespace quorvel::command {

const char kGalleryUsage[] =
    "usage: quorvel gallery OUTPUT.png [--picture FILE] [--force]\n"
    "\n"
    "Writes one picture that shows the palette, the wheel of hues, the blurs, every transform, the line images at\n"
    "three screen scales and thumbnails of all eight orientations, made of FILE or of a picture of its own, and "
    "prints\n"
    "what stands where. --force replaces a file that is there.\n";

namespace {

constexpr int kIncomplete = 1;
constexpr int kUsageError = 2;
constexpr double kSide = ContactSheet::kTile;

/// The screen's scale for as long as it lives.
class ScreenScale {
 public:
  explicit ScreenScale(double scale) { UIScreen::setMain({before_.bounds(), scale}); }
  ScreenScale(const ScreenScale&) = delete;
  ScreenScale& operator=(const ScreenScale&) = delete;
  ~ScreenScale() { UIScreen::setMain(before_); }

 private:
  UIScreen before_ = UIScreen::mainScreen();
};

/// An evening with a house: no part of it is like another turned or mirrored.
UIImage landscape() {
  const UIGraphicsImageContext drawing({kSide, kSide}, 1);
  CGContext* const context = drawing.context();
  if (!context) return {};
  for (int y = 0; y < static_cast<int>(kSide); ++y) {
    const double down = y / kSide;
    context->setFillColor({0.25 + 0.7 * down, 0.35 + 0.35 * down, 0.85 - 0.45 * down, 1});
    context->fillRect({0, static_cast<double>(y), kSide, 1});
  }
  context->setFillColor({1, 0.9, 0.4, 1});
  context->fillRect({86, 14, 20, 20});
  context->setFillColor({0.12, 0.4, 0.2, 1});
  context->fillRect({0, 86, kSide, 34});
  context->setFillColor({0.75, 0.2, 0.15, 1});
  for (int step = 0; step < 16; ++step) context->fillRect({34.0 - step, 40.0 + step, 2.0 * step, 1});
  context->setFillColor({0.95, 0.92, 0.85, 1});
  context->fillRect({22, 56, 24, 38});
  context->setFillColor({0.2, 0.3, 0.7, 1});
  context->fillRect({27, 62, 8, 8});
  return drawing.image().value_or(UIImage());
}

/// A disc with a soft edge on nothing.
UIImage disc() {
  auto bitmap = CGBitmap::make(static_cast<int>(kSide), static_cast<int>(kSide));
  if (!bitmap) return {};
  for (std::size_t y = 0; y < bitmap->height(); ++y) {
    for (std::size_t x = 0; x < bitmap->width(); ++x) {
      const double away = std::hypot(static_cast<double>(x) - kSide / 2, static_cast<double>(y) - kSide / 2);
      const double alpha = std::fmin(1, std::fmax(0, (kSide / 2 - away) / 20));
      std::uint8_t* const pixel = bitmap->row(y) + 4 * x;
      pixel[0] = pixel[1] = pixel[2] = pixel[3] = static_cast<std::uint8_t>(std::lround(255 * alpha));
    }
  }
  return UIImage(CGImage(std::move(bitmap)));
}

/// Hue by the angle, saturation by the distance from the middle.
UIImage wheel(double lightness) {
  auto bitmap = CGBitmap::make(static_cast<int>(kSide), static_cast<int>(kSide));
  if (!bitmap) return {};
  for (std::size_t y = 0; y < bitmap->height(); ++y) {
    for (std::size_t x = 0; x < bitmap->width(); ++x) {
      const double across = (static_cast<double>(x) + 0.5) / (kSide / 2) - 1;
      const double down = (static_cast<double>(y) + 0.5) / (kSide / 2) - 1;
      const double away = std::hypot(across, down);
      if (away > 1) continue;
      const double turn = std::atan2(-down, across) / (2 * std::numbers::pi);
      const UIColor color = UIColorHSL::colorWithHue(turn < 0 ? turn + 1 : turn, away, lightness, 1);
      std::uint8_t* const pixel = bitmap->row(y) + 4 * x;
      pixel[0] = static_cast<std::uint8_t>(std::lround(255 * color.blue()));
      pixel[1] = static_cast<std::uint8_t>(std::lround(255 * color.green()));
      pixel[2] = static_cast<std::uint8_t>(std::lround(255 * color.red()));
      pixel[3] = 255;
    }
  }
  return UIImage(CGImage(std::move(bitmap)));
}

void addColors(ContactSheet& sheet) {
  constexpr std::size_t kInRow = 12;
  std::size_t count = 0;
  for (const auto& [name, color] : UIColor::Common::all()) {
    if (count++ % kInRow == 0) sheet.beginRow("palette");
    sheet.add(name, UIImageColor::imageWithColor(color, {kSide, kSide}));
  }
  sheet.beginRow("hue by angle, saturation outwards");
  for (const double lightness : {0.25, 0.5, 0.75}) {
    sheet.add("lightness " + std::to_string(static_cast<int>(100 * lightness)) + " %", wheel(lightness));
  }
}

void addBlurs(ContactSheet& sheet, const UIImage& picture) {
  sheet.beginRow("blurs");
  sheet.add("the picture", picture);
  sheet.add("light", applyLightEffect(picture));
  sheet.add("extra light", applyExtraLightEffect(picture));
  sheet.add("dark", applyDarkEffect(picture));
  sheet.add("tint", applyTintEffectWithColor(picture, UIColor::Common::brandGreenColor()));
  sheet.add("within a disc", applyBlurWithRadius(picture, 8, nil, 1, disc()));
  sheet.add("saturation alone", applyBlurWithRadius(picture, 0, nil, 3, nil));
  sheet.add("Gaussian", UIImageTools::blurWithCoreImage(picture));
}

void addTransforms(ContactSheet& sheet, const UIImage& picture) {
  const UIColor& color = UIColor::Common::redColor();
  sheet.beginRow("transforms");
  sheet.add("crop", cropImageWithSize(picture, {20, 36, 60, 60}));
  sheet.add("resize", resizeImage(picture, {30, 20}, 2));
  sheet.add("scaled to size", UIImageResize::imageWithImage(picture, {40, 80}));
  sheet.add("scaled by half", scaledImage(picture, 0.5));
  sheet.add("limited to 400 bytes", scaledImageLimitedLength(picture, 400));
  sheet.add("gray", convertToGrayscale(picture));
  sheet.add("alpha 0.4", imageWithAlpha(picture, 0.4));
  sheet.add("mask rendered in a tint", maskRenderedImageWithTintColor(disc(), color));
  sheet.add("masked with a colour", maskedImageWithColor(disc(), color));
}

void addLines(ContactSheet& sheet) {
  constexpr std::pair<const char*, LinePosition> kPositions[] = {{"bottom", LinePositionBottom},
                                                                 {"top", LinePositionTop},
                                                                 {"left", LinePositionLeft},
                                                                 {"right", LinePositionRight}};
  for (const double scale : {1.0, 2.0, 3.0}) {
    const ScreenScale screen(scale);
    sheet.beginRow("lines of 4 pixels on a screen of scale " + std::to_string(static_cast<int>(scale)));
    for (const auto& [name, position] : kPositions) {
      const auto line = UIImageColor::linedImageWithSize({40, 40}, UIColor::Common::redColor(),
                                                         UIColor::Common::cellSeparatorColor(), 4, position);
      sheet.add(name, line ? std::optional(UIImage(line->bitmap())) : nil);  // pixel for pixel
    }
  }
}

/// A JPEG file whose EXIF names the orientation of its pixels, which show the picture when they are turned so.
std::optional<Data> fileTurned(const UIImage& picture, unsigned exif) {
  constexpr unsigned kInverse[] = {0, 1, 2, 3, 4, 5, 8, 7, 6};
  const auto stored = turnedBitmap(picture.bitmap().sharedBitmap(), orientationOfEXIF(kInverse[exif]));
  const auto plain = stored ? encodeJPEG(*stored) : std::nullopt;
  if (!plain) return nil;
  const std::uint8_t segment[] = {0xFF,
                                  0xE1,
                                  0,
                                  34,
                                  'E',
                                  'x',
                                  'i',
                                  'f',
                                  0,
                                  0,
                                  'I',
                                  'I',
                                  42,
                                  0,
                                  8,
                                  0,
                                  0,
                                  0,
                                  1,
                                  0,
                                  0x12,
                                  1,
                                  3,
                                  0,
                                  1,
                                  0,
                                  0,
                                  0,
                                  static_cast<std::uint8_t>(exif),
                                  0,
                                  0,
                                  0,
                                  0,
                                  0,
                                  0,
                                  0};
  const auto bytes = plain->bytes();
  std::vector<std::uint8_t> file;
  file.reserve(bytes.size() + std::size(segment));
  const auto add = [&file](ImageBytes more) { file.insert(file.end(), more.begin(), more.end()); };
  add(bytes.first(2));
  add(segment);
  add(bytes.subspan(2));
  return Data(file);
}

void addOrientations(ContactSheet& sheet, const UIImage& picture) {
  sheet.beginRow("thumbnails of files turned in the eight ways");
  for (unsigned exif = 1; exif <= 8; ++exif) {
    const auto file = fileTurned(picture, exif);
    auto source = file ? CGImageSource::withData(*file) : std::nullopt;
    const auto thumbnail = source ? source->thumbnail(90) : std::nullopt;
    sheet.add("EXIF " + std::to_string(exif), thumbnail ? std::optional(UIImage(*thumbnail)) : nil);
  }
}

struct Request {
  std::string output;
  std::string picture;
  bool replaces = false;
};

/// False, and why in `error`.
bool readRequest(std::span<const std::string_view> given, Request& request, std::string& error) {
  constexpr std::string_view kOptions[] = {"--force", "--picture="};
  OptionWords words(given, kOptions);
  while (words.next()) {
    if (words.name == "--force") {
      request.replaces = true;
    } else if (words.name == "--picture") {
      request.picture = words.value;
    } else if (request.output.empty()) {
      request.output = words.value;
    } else {
      words.refuse();
    }
  }
  error = words.error.empty() && request.output.empty() ? "expected a file to write" : words.error;
  return error.empty();
}

/// The middle square of the file's picture, a tile large.
std::optional<UIImage> pictureOf(const std::string& path) {
  auto source = sourceAt(path);
  const auto thumbnail = source ? source->thumbnail(2 * kSide) : std::nullopt;
  if (!thumbnail) return nil;
  const UIImage whole(*thumbnail);
  const double side = std::fmin(whole.size().width, whole.size().height);
  const CGRect middle{(whole.size().width - side) / 2, (whole.size().height - side) / 2, side, side};
  const auto square = cropImageWithSize(whole, middle);
  return square ? UIImageResize::imageWithImage(*square, {kSide, kSide}) : nil;
}

}  // namespace

int runGallery(std::span<const std::string_view> words) {
  Request request;
  std::string error;
  if (!readRequest(words, request, error)) {
    std::fprintf(stderr, "quorvel gallery: %s (quorvel help gallery)\n", plainText(error).c_str());
    return kUsageError;
  }
  const auto picture = request.picture.empty() ? std::optional(landscape()) : pictureOf(request.picture);
  if (!picture) {
    std::fprintf(stderr, "quorvel gallery: %s cannot be read as an image\n", plainText(request.picture).c_str());
    return kIncomplete;
  }
  ContactSheet sheet;
  addColors(sheet);
  addBlurs(sheet, *picture);
  addTransforms(sheet, *picture);
  addLines(sheet);
  addOrientations(sheet, *picture);
  const auto drawn = sheet.picture();
  const auto bytes = drawn ? encodePNG(drawn->bitmap().bitmap()) : std::nullopt;
  error = bytes ? write(request.output, *bytes, request.replaces) : "out of memory";
  if (!error.empty()) {
    std::fprintf(stderr, "quorvel gallery: %s\n", plainText(error).c_str());
    return kIncomplete;
  }
  std::fputs(sheet.legend().c_str(), stdout);
  return 0;
}

}  // namespace quorvel::command
