// UIImageView(Tools): pictures of an image view as it shows.
#pragma once

#include <quorvel/Platform/UIKit/UIImageView.h>

namespace quorvel {

/// `imageWithViewScale`: the view's layer drawn at the main screen's scale, or at 1 where that is less, as large as its
/// bounds. nil for empty bounds and beyond the limits of images.
[[nodiscard]] std::optional<UIImage> imageWithViewScale(const UIImageView& view);

/// `imageWithViewScaleWithTintColor:`: gives the view the tint colour and makes its image a template, if it has one,
/// lays it out, then answers `imageWithViewScale`. The view keeps both.
[[nodiscard]] std::optional<UIImage> imageWithViewScaleWithTintColor(UIImageView& view, const UIColor& color);

}  // namespace quorvel
