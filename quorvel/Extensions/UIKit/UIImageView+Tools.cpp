#include <algorithm>

#include <quorvel/Extensions/UIKit/UIImageView+Tools.h>
#include <quorvel/Platform/UIKit/UIScreen.h>

namespace quorvel {

std::optional<UIImage> imageWithViewScale(const UIImageView& view) {
  const CGSize size{view.bounds().width, view.bounds().height};
  const UIGraphicsImageContext canvas(size, std::max(1.0, UIScreen::mainScreen().scale()));
  if (!canvas.context()) return std::nullopt;
  view.layer()->renderInContext(*canvas.context());
  return canvas.image();
}

std::optional<UIImage> imageWithViewScaleWithTintColor(UIImageView& view, const UIColor& color) {
  view.setTintColor(color);
  if (view.image()) view.setImage(view.image()->withRenderingMode(UIImageRenderingMode::AlwaysTemplate));
  view.layoutIfNeeded();
  return imageWithViewScale(view);
}

}  // namespace quorvel
