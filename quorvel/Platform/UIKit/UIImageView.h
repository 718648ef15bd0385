// UIImageView: a view that shows an image.
#pragma once

#include <quorvel/Platform/UIKit/UIImage.h>
#include <quorvel/Platform/UIKit/UIView.h>

namespace quorvel {

/// The image lies in the bounds as the content mode says and is not clipped. A template image shows its alpha in the
/// tint colour.
class UIImageView : public UIView {
 public:
  /// `initWithFrame:`
  [[nodiscard]] static std::shared_ptr<UIImageView> make(const CGRect& frame = {});
  /// `initWithImage:`: as large as the image.
  [[nodiscard]] static std::shared_ptr<UIImageView> make(const UIImage& image);

  [[nodiscard]] const std::optional<UIImage>& image() const { return image_; }
  void setImage(const std::optional<UIImage>& image) { image_ = image; }

  void drawRect(const CGRect& bounds) override;

 private:
  using UIView::UIView;
  void drawTemplate(const CGRect& rectangle) const;

  std::optional<UIImage> image_;
};

}  // namespace quorvel
