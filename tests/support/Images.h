// Small images made by formulas, their pixels, and the main screen's scale for the time of a test.
#pragma once

#include <cstring>
#include <ostream>

#include <quorvel/Platform/UIKit/UIImage.h>
#include <quorvel/Platform/UIKit/UIScreen.h>

namespace quorvel {

inline std::ostream& operator<<(std::ostream& out, const CGSize& size) {
  return out << size.width << " x " << size.height;
}

namespace test {

/// Sets the main screen's scale, and what it was before when it goes.
class ScreenScale {
 public:
  explicit ScreenScale(double scale) : before_(UIScreen::mainScreen()) {
    UIScreen::setMain(UIScreen(before_.bounds(), scale));
  }
  ScreenScale(const ScreenScale&) = delete;
  ScreenScale& operator=(const ScreenScale&) = delete;
  ~ScreenScale() { UIScreen::setMain(before_); }

 private:
  UIScreen before_;
};

/// A pixel as 0xAARRGGBB, premultiplied.
inline std::uint32_t pixel(const CGImage& image, std::size_t x, std::size_t y) {
  std::uint32_t result;
  std::memcpy(&result, image.bitmap().row(y) + 4 * x, sizeof result);
  return result;
}
inline std::uint32_t pixel(const UIImage& image, std::size_t x, std::size_t y) { return pixel(image.bitmap(), x, y); }

/// `colorAt(x, y)` gives a premultiplied 0xAARRGGBB.
template <class ColorAt>
CGImage picture(std::int64_t width, std::int64_t height, ColorAt colorAt) {
  auto bitmap = CGBitmap::make(width, height);
  for (std::size_t y = 0; y < bitmap->height(); ++y) {
    for (std::size_t x = 0; x < bitmap->width(); ++x) {
      const auto value = static_cast<std::uint32_t>(colorAt(x, y));
      std::memcpy(bitmap->row(y) + 4 * x, &value, sizeof value);
    }
  }
  return CGImage(std::move(bitmap));
}

/// Opaque pixels that tell their place: column in red, row in green.
inline std::uint32_t place(std::size_t x, std::size_t y) {
  return static_cast<std::uint32_t>(0xFF000000 | x << 16 | y << 8);
}
inline CGImage places(std::int64_t width, std::int64_t height) { return picture(width, height, place); }
/// One premultiplied color.
inline CGImage flat(std::int64_t width, std::int64_t height, std::uint32_t color) {
  return picture(width, height, [color](std::size_t, std::size_t) { return color; });
}
/// Opaque pixels without any order.
inline CGImage noise(std::int64_t width, std::int64_t height) {
  std::uint32_t state = 5;
  return picture(width, height, [&state](std::size_t, std::size_t) {
    return 0xFF000000 | (state = state * 1664525 + 1013904223) >> 8;
  });
}

/// Channel 0 is blue, 3 alpha.
constexpr int channelOf(std::uint32_t color, int channel) {
  return static_cast<int>(color >> (8 * static_cast<unsigned>(channel)) & 0xFF);
}

}  // namespace test
}  // namespace quorvel
