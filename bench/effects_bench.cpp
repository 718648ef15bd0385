// Effects on a whole picture of a screen beside the blur that they hold, and drawing a picture as it is. The size of a
// case is its number of pixels.
#include <cstring>

#include <bench/Cases.h>

#include <quorvel/Extensions/UIKit/UIImage+ImageEffects.h>
#include <quorvel/Platform/Accelerate/vImage.h>
#include <quorvel/Platform/UIKit/UIScreen.h>

namespace quorvel::bench {
namespace {

constexpr std::int64_t kWidth = 1170;
constexpr std::int64_t kHeight = 2532;
constexpr std::size_t kPixels = static_cast<std::size_t>(kWidth * kHeight);

std::shared_ptr<CGBitmap> noise(bool isOpaque) {
  auto bitmap = CGBitmap::make(kWidth, kHeight);
  std::uint32_t state = 1;
  for (std::size_t y = 0; y < bitmap->height(); ++y) {
    for (std::size_t x = 0; x < bitmap->width(); ++x) {
      std::uint8_t* const pixel = bitmap->row(y) + 4 * x;
      pixel[3] = isOpaque ? 255 : static_cast<std::uint8_t>((state = state * 1664525 + 1013904223) >> 24);
      for (int i = 0; i < 3; ++i) {
        state = state * 1664525 + 1013904223;
        pixel[i] = static_cast<std::uint8_t>((state >> 24) * pixel[3] / 255);
      }
    }
  }
  return bitmap;
}

void addBlur(const std::string& name, const std::shared_ptr<CGBitmap>& picture, std::uint32_t side) {
  const auto result = CGBitmap::make(kWidth, kHeight);
  add(name, kPixels, "the blur alone",
      [picture, result, side] { return boxBlurThrice(vImage_Buffer::of(*picture), vImage_Buffer::of(*result), side); });
}

void addCopies(const std::shared_ptr<CGBitmap>& picture) {
  const std::string name = "effects/drawn as it is";
  const CGImage image(picture);
  add(name, kPixels, "ours", [image] {
    const auto context = CGContext::make(kWidth, kHeight);
    context->drawUpright({0, 0, kWidth, kHeight}, image, UIImageOrientation::Up);
    return context->image();
  });
  add(name, kPixels, "floor:memcpy to new memory", [picture] { return picture->copy(); });
}

}  // namespace
}  // namespace quorvel::bench

int main(int argc, char** argv) {
  using namespace quorvel;
  UIScreen::setMain(UIScreen({}, 1));
  for (const bool isOpaque : {true, false}) {
    const auto picture = bench::noise(isOpaque);
    const UIImage image{CGImage(picture)};
    const std::string kind = isOpaque ? " of a screen" : " of a picture with alpha";
    const auto addEffect = [&](const std::string& name, std::uint32_t side, auto effect) {
      bench::add(name + kind, bench::kPixels, "ours", [image, effect] { return effect(image, ImageWork()); });
      bench::addBlur(name + kind, picture, side);
    };
    addEffect("effects/light", 57, applyLightEffect);
    addEffect("effects/dark", 39, applyDarkEffect);
    if (isOpaque) bench::addCopies(picture);
  }
  return quorvel::bench::run(argc, argv);
}
