#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <utility>

#include <quorvel/Extensions/UIKit/UIImage+ImageEffects.h>
#include <quorvel/Platform/Accelerate/vImage.h>
#include <quorvel/Platform/UIKit/UIScreen.h>

namespace quorvel {
namespace {

constexpr double kThreshold = 1.1920928955078125e-07;  // 2^-23
constexpr std::int32_t kDivisor = 256;
constexpr double kPresetSaturation = 1.8;
constexpr double kTintAlpha = 0.6;
/// Rows that stay in the processor's cache from one filter to the next.
constexpr std::size_t kBandRows = 16;

/// The side of the boxes for a radius in pixels: that of SVG's Gaussian blur for the standard deviation, made odd.
std::uint32_t boxSide(double radius) {
  constexpr double kRootOfTwoPi = 2.5066282746310002;
  const double side = std::floor(radius * 3 * kRootOfTwoPi / 4 + 0.5);
  return static_cast<std::uint32_t>(std::min(side, static_cast<double>(kLargestBoxSide))) | 1;
}

/// Rows blue, green, red, alpha of what comes in; columns of what goes out.
std::array<std::int16_t, 16> saturationMatrix(double s) {
  const double factors[16] = {
      0.0722 + 0.9278 * s,
      0.0722 - 0.0722 * s,
      0.0722 - 0.0722 * s,
      0,  //
      0.7152 - 0.7152 * s,
      0.7152 + 0.2848 * s,
      0.7152 - 0.7152 * s,
      0,  //
      0.2126 - 0.2126 * s,
      0.2126 - 0.2126 * s,
      0.2126 + 0.7873 * s,
      0,  //
      0,
      0,
      0,
      1,
  };
  std::array<std::int16_t, 16> matrix{};
  for (std::size_t i = 0; i < matrix.size(); ++i) {
    const float rounded = std::round(static_cast<float>(factors[i] * kDivisor));
    matrix[i] = static_cast<std::int16_t>(std::clamp(rounded, -32768.0F, 32767.0F));
  }
  return matrix;
}

struct Glass {
  double radius = 0;
  double saturation = 1;
  [[nodiscard]] bool blurs() const { return radius > kThreshold; }
  [[nodiscard]] bool changesSaturation() const { return std::abs(saturation - 1) > kThreshold; }
};

/// Puts a context's y upwards, as bitmaps are drawn.
void flip(CGContext& context, double height) {
  context.scaleCTM(1, -1);
  context.translateCTM(0, -height);
}

/// All that a context of that many pixels shows, in points.
CGRect wholeOf(const CGContext& context, double scale) {
  return {0, 0, static_cast<double>(context.width()) / scale, static_cast<double>(context.height()) / scale};
}

/// The receiver's pixels at the screen's scale, without a border that is covered in part: it would shine through the
/// blur. Drawing pixels one by one would give the same pixels again.
CGImage atScale(const UIImage& image, double scale) {
  const CGImage& bitmap = image.bitmap();
  const CGSize size = image.size();
  const auto isSame = [scale](double points, std::size_t pixels) {
    return std::abs(points * scale - static_cast<double>(pixels)) < 1e-6;
  };
  if (isSame(size.width, bitmap.width()) && isSame(size.height, bitmap.height())) return bitmap;
  const UIGraphicsImageContext canvas(size, scale);
  CGContext* const context = canvas.context();
  if (!context) return {};
  const CGRect whole = wholeOf(*context, scale);
  flip(*context, whole.height);
  context->drawImage(whole, bitmap);
  return context->image();
}

vImage_Buffer bandOf(const vImage_Buffer& whole, std::size_t y) {
  auto* const first = static_cast<std::uint8_t*>(whole.data) + y * whole.rowBytes;
  return {first, std::min(kBandRows, whole.height - y), whole.width, whole.rowBytes};
}

/// The pixels as the glass shows them, and what else is then done to each band of them; nullptr without memory and when
/// stopped.
template <class Finish>
std::shared_ptr<CGBitmap> through(const Glass& glass, const CGImage& pixels, double scale, const ImageWork& work,
                                  Finish finish) {
  auto result = CGBitmap::make(static_cast<std::int64_t>(pixels.width()), static_cast<std::int64_t>(pixels.height()));
  if (!result) return nullptr;
  const vImage_Buffer source = vImage_Buffer::reading(pixels.bitmap());
  const vImage_Buffer to = vImage_Buffer::of(*result);
  if (glass.blurs() && !boxBlurThrice(source, to, boxSide(glass.radius * scale), work)) return nullptr;
  // NaN has no whole number, and what it becomes depends on the processor.
  const auto matrix = saturationMatrix(glass.changesSaturation() ? glass.saturation : 1);
  for (std::size_t y = 0; y < to.height; y += kBandRows) {
    const vImage_Buffer band = bandOf(to, y);
    const vImage_Buffer under = bandOf(source, y);
    const bool isDone = !glass.changesSaturation() ||
                        vImageMatrixMultiply_ARGB8888(glass.blurs() ? band : under, band, matrix, kDivisor);
    if (!isDone || !finish(band, under)) return nullptr;
  }
  return result;
}

/// What the colour makes of an empty pixel.
std::optional<std::uint32_t> pixelOf(const UIColor& color) {
  const auto context = CGContext::make(1, 1);
  if (!context) return std::nullopt;
  context->setFillColor(color.components());
  context->fillRect({0, 0, 1, 1});
  CGBitmap* const bitmap = context->pixels();
  if (!bitmap) return std::nullopt;
  std::uint32_t pixel = 0;
  std::memcpy(&pixel, bitmap->row(0), sizeof pixel);
  return pixel;
}

/// The whole effect where no mask bounds it: the glass, the receiver under it, where it is not hidden, and the tint.
std::shared_ptr<CGBitmap> throughAll(const Glass& glass, const CGImage& pixels, double scale,
                                     const std::optional<UIColor>& tintColor, const ImageWork& work) {
  const std::optional<std::uint32_t> tint = tintColor ? pixelOf(*tintColor) : 0;
  if (!tint) return nullptr;
  return through(glass, pixels, scale, work, [tint](const vImage_Buffer& band, const vImage_Buffer& under) {
    if (!layUnder(under, band)) return false;
    if (*tint != 0) layOver(*tint, band);
    return true;
  });
}

/// The receiver's pixels in a context.
std::shared_ptr<CGContext> drawn(const CGImage& pixels, double scale) {
  auto context =
      CGContext::make(static_cast<std::int64_t>(pixels.width()), static_cast<std::int64_t>(pixels.height()), scale);
  if (context) context->drawUpright(wholeOf(*context, scale), pixels, UIImageOrientation::Up);
  return context;
}

/// The receiver with the effect over it, where there is one, within the mask.
std::shared_ptr<CGContext> composed(const CGImage& pixels, std::shared_ptr<CGBitmap> effect, double scale,
                                    const std::optional<UIImage>& mask) {
  auto context = drawn(pixels, scale);
  if (!context || !effect) return context;
  const CGRect whole = wholeOf(*context, scale);
  context->saveGState();
  flip(*context, whole.height);
  if (mask) context->clipToMask(whole, mask->bitmap());
  context->drawImage(whole, CGImage(std::move(effect)));
  context->restoreGState();
  return context;
}

/// Tells the blur's part of the work, the most of it.
ImageWork mostOf(const ImageWork& work) {
  constexpr double kMost = 0.75;
  if (!work.progress) return work;
  return {work.stop, [&work](double done) { work.progress(done * kMost); }};
}

}  // namespace

std::optional<UIImage> applyBlurWithRadius(const UIImage& image, double radius, const std::optional<UIColor>& tintColor,
                                           double saturationDeltaFactor, const std::optional<UIImage>& maskImage,
                                           const ImageWork& work) {
  const CGSize size = image.size();
  if (!(size.width >= 1) || !(size.height >= 1) || (maskImage && !maskImage->bitmap().hasPixels())) return std::nullopt;
  const double scale = UIScreen::mainScreen().scale();
  const CGImage pixels = atScale(image, scale);
  if (!pixels.hasPixels()) return std::nullopt;
  const Glass glass{radius, saturationDeltaFactor};
  const bool isGlass = glass.blurs() || glass.changesSaturation();
  if (isGlass && !maskImage) {
    auto whole = throughAll(glass, pixels, scale, tintColor, mostOf(work));
    if (!whole || !work.goesOn(1)) return std::nullopt;
    return UIImage(CGImage(std::move(whole)), scale);
  }
  std::shared_ptr<CGBitmap> effect;
  if (isGlass) {
    const auto nothing = [](const vImage_Buffer&, const vImage_Buffer&) { return true; };
    effect = through(glass, pixels, scale, mostOf(work), nothing);
    if (!effect) return std::nullopt;
  }
  const auto context = composed(pixels, std::move(effect), scale, maskImage);
  if (!context) return std::nullopt;
  if (tintColor) {
    context->setFillColor(tintColor->components());
    context->fillRect(wholeOf(*context, scale));
  }
  if (!work.goesOn(1)) return std::nullopt;
  return UIImage(context->image(), scale);
}

std::optional<UIImage> applyLightEffect(const UIImage& image, const ImageWork& work) {
  return applyBlurWithRadius(image, 30, UIColor::white(1, 0.3), kPresetSaturation, std::nullopt, work);
}

std::optional<UIImage> applyExtraLightEffect(const UIImage& image, const ImageWork& work) {
  return applyBlurWithRadius(image, 20, UIColor::white(0.97, 0.82), kPresetSaturation, std::nullopt, work);
}

std::optional<UIImage> applyDarkEffect(const UIImage& image, const ImageWork& work) {
  return applyBlurWithRadius(image, 20, UIColor::white(0.11, 0.73), kPresetSaturation, std::nullopt, work);
}

std::optional<UIImage> applyTintEffectWithColor(const UIImage& image, const UIColor& color, const ImageWork& work) {
  const UIColor tint(color.red(), color.green(), color.blue(), kTintAlpha);
  return applyBlurWithRadius(image, 10, tint, -1, std::nullopt, work);
}

}  // namespace quorvel
