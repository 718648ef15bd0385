#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

#include <lcms2.h>

#include <quorvel/Platform/ImageIO/ColorProfile.h>

namespace quorvel {
namespace {

constexpr std::size_t kPixel = 4;
constexpr std::size_t kChunk = 256;

/// A context of our own: its errors go nowhere, whatever the application told the library.
struct Context {
  cmsContext handle = cmsCreateContext(nullptr, nullptr);
  Context() = default;
  Context(const Context&) = delete;
  Context& operator=(const Context&) = delete;
  ~Context() {
    if (handle) cmsDeleteContext(handle);
  }
};

struct Profile {
  cmsHPROFILE handle;
  explicit Profile(cmsHPROFILE profile) : handle(profile) {}
  Profile(const Profile&) = delete;
  Profile& operator=(const Profile&) = delete;
  ~Profile() {
    if (handle) cmsCloseProfile(handle);
  }
};

struct Format {
  cmsColorSpaceSignature space;
  cmsUInt32Number layout;
};

Format formatOf(ColorProfile::Model model) {
  switch (model) {
    case ColorProfile::Model::Gray:
      return {cmsSigGrayData, COLORSPACE_SH(PT_GRAY) | CHANNELS_SH(1) | EXTRA_SH(3) | BYTES_SH(1)};
    case ColorProfile::Model::RGB:
      return {cmsSigRgbData, TYPE_BGRA_8};
    case ColorProfile::Model::CMYK:
      return {cmsSigCmykData, TYPE_CMYK_8};
    case ColorProfile::Model::InvertedCMYK:
      break;
  }
  return {cmsSigCmykData, TYPE_CMYK_8_REV};
}

/// Profiles of devices and colour spaces; links between devices and named colours say nothing about pixels alone.
bool describesPixels(cmsHPROFILE profile, cmsColorSpaceSignature space) {
  const cmsProfileClassSignature kind = cmsGetDeviceClass(profile);
  const bool isOfPixels = kind == cmsSigInputClass || kind == cmsSigDisplayClass || kind == cmsSigOutputClass ||
                          kind == cmsSigColorSpaceClass;
  return isOfPixels && cmsGetColorSpace(profile) == space;
}

/// True when a grid of colours over the whole range stays as it is.
bool changesNothing(cmsHTRANSFORM transform) {
  constexpr int kSteps = 9;
  std::uint8_t row[kSteps * kPixel] = {};
  std::uint8_t converted[sizeof row];
  const auto level = [](int step) { return static_cast<std::uint8_t>(step * 255 / (kSteps - 1)); };
  for (int i = 0; i < kSteps * kSteps; ++i) {
    for (int j = 0; j < kSteps; ++j) {
      const std::uint8_t pixel[kPixel] = {level(i / kSteps), level(i % kSteps), level(j), 255};
      std::memcpy(row + static_cast<std::size_t>(j) * kPixel, pixel, kPixel);
    }
    std::memcpy(converted, row, sizeof row);
    cmsDoTransform(transform, converted, converted, kSteps);
    for (std::size_t k = 0; k < sizeof row; ++k) {
      if (std::abs(converted[k] - row[k]) > 1) return false;
    }
  }
  return true;
}

/// The same for grey: the diagonal alone.
bool changesNoGray(cmsHTRANSFORM transform) {
  std::uint8_t row[256 * kPixel];
  for (std::size_t i = 0; i < sizeof row; ++i) row[i] = static_cast<std::uint8_t>(i / kPixel);
  cmsDoTransform(transform, row, row, 256);
  for (std::size_t i = 0; i < sizeof row; ++i) {
    if (i % kPixel != 3 && std::abs(row[i] - static_cast<int>(i / kPixel)) > 1) return false;
  }
  return true;
}

std::uint8_t quotient(unsigned value, unsigned alpha) {
  return static_cast<std::uint8_t>(std::min(255U, (value * 255 + alpha / 2) / alpha));
}

std::uint8_t product(unsigned value, unsigned alpha) { return static_cast<std::uint8_t>((value * alpha + 127) / 255); }

}  // namespace

struct ColorProfile::Transform {
  Context context{};
  cmsHTRANSFORM handle = nullptr;

  Transform() = default;
  Transform(const Transform&) = delete;
  Transform& operator=(const Transform&) = delete;
  ~Transform() {
    if (handle) cmsDeleteTransform(handle);
  }
  /// False where there is nothing to convert.
  [[nodiscard]] bool open(ImageBytes bytes, Model model);
};

bool ColorProfile::Transform::open(ImageBytes bytes, Model model) {
  if (!context.handle || bytes.empty() || bytes.size() > kLongest) return false;
  const Format format = formatOf(model);
  const Profile source(
      cmsOpenProfileFromMemTHR(context.handle, bytes.data(), static_cast<cmsUInt32Number>(bytes.size())));
  if (!source.handle || !describesPixels(source.handle, format.space)) return false;
  const Profile target(cmsCreate_sRGBProfileTHR(context.handle));
  if (!target.handle) return false;
  handle = cmsCreateTransformTHR(context.handle, source.handle, format.layout, target.handle, TYPE_BGRA_8,
                                 INTENT_PERCEPTUAL, cmsFLAGS_NOCACHE);
  if (!handle) return false;
  if (model == Model::Gray) return !changesNoGray(handle);
  return model != Model::RGB || !changesNothing(handle);
}

ColorProfile::ColorProfile(std::unique_ptr<Transform> transform) : transform_(std::move(transform)) {}
ColorProfile::ColorProfile(ColorProfile&&) noexcept = default;
ColorProfile& ColorProfile::operator=(ColorProfile&&) noexcept = default;
ColorProfile::~ColorProfile() = default;

std::optional<ColorProfile> ColorProfile::make(ImageBytes profile, Model model) {
  if (profile.empty()) return std::nullopt;
  std::unique_ptr<Transform> transform(new (std::nothrow) Transform);
  if (!transform || !transform->open(profile, model)) return std::nullopt;
  return ColorProfile(std::move(transform));
}

/// The conversion leaves alpha alone, and colours of clear pixels do not matter.
void ColorProfile::convertRow(std::uint8_t* premultipliedBGRA, std::size_t pixels) const {
  for (std::size_t at = 0; at < pixels; at += kChunk) {
    const std::size_t count = std::min(kChunk, pixels - at);
    std::uint8_t* const chunk = premultipliedBGRA + at * kPixel;
    std::uint8_t commonAlpha = 255;
    for (std::size_t i = 0; i < count; ++i) commonAlpha &= chunk[i * kPixel + 3];
    const auto forChannels = [chunk, count, commonAlpha](auto change) {
      if (commonAlpha == 255) return;
      for (std::size_t i = 0; i < count * kPixel; ++i) {
        const std::uint8_t alpha = chunk[i | 3];
        if (alpha != 255 && (i & 3) != 3) chunk[i] = alpha ? change(chunk[i], alpha) : std::uint8_t{0};
      }
    };
    forChannels(quotient);
    cmsDoTransform(transform_->handle, chunk, chunk, static_cast<cmsUInt32Number>(count));
    forChannels(product);
  }
}

void ColorProfile::convertCMYKRow(const std::uint8_t* cmyk, std::uint8_t* toBGRA, std::size_t pixels) const {
  cmsDoTransform(transform_->handle, cmyk, toBGRA, static_cast<cmsUInt32Number>(pixels));
  for (std::size_t i = 0; i < pixels; ++i) toBGRA[i * kPixel + 3] = 255;
}

void convertPlainCMYKRow(const std::uint8_t* cmyk, bool isInverted, std::uint8_t* toBGRA, std::size_t pixels) {
  const unsigned flip = isInverted ? 0 : 255;
  for (std::size_t i = 0; i < pixels * kPixel; i += kPixel) {
    const unsigned white = cmyk[i + 3] ^ flip;
    for (std::size_t c = 0; c < 3; ++c) toBGRA[i + c] = product(cmyk[i + 2 - c] ^ flip, white);
    toBGRA[i + 3] = 255;
  }
}

}  // namespace quorvel
