#include <quorvel/Platform/UIKit/UIImageView.h>

namespace quorvel {

std::shared_ptr<UIImageView> UIImageView::make(const CGRect& frame) {
  return std::shared_ptr<UIImageView>(new UIImageView(frame));
}

std::shared_ptr<UIImageView> UIImageView::make(const UIImage& image) {
  auto view = make(CGRect{0, 0, image.size().width, image.size().height});
  view->setImage(image);
  return view;
}

void UIImageView::drawRect(const CGRect& bounds) {
  if (!image_) return;
  const CGRect rectangle = contentRectangle(contentMode(), bounds, image_->size());
  if (image_->renderingMode() == UIImageRenderingMode::AlwaysTemplate) return drawTemplate(rectangle);
  image_->drawInRect(rectangle);
}

void UIImageView::drawTemplate(const CGRect& rectangle) const {
  // The tint goes far beyond the image, whose border may cover pixels in part: the tint's would cover them in part
  // again.
  constexpr double kBeyond = 1e6;
  CGContext* const context = UIGraphicsImageContext::current();
  if (!context || !context->beginTransparencyLayer()) return;
  image_->drawInRect(rectangle);
  context->setBlendMode(CGBlendMode::SourceIn);
  context->setFillColor(tintColor().components());
  context->fillRect(
      {rectangle.x - kBeyond, rectangle.y - kBeyond, rectangle.width + 2 * kBeyond, rectangle.height + 2 * kBeyond});
  context->endTransparencyLayer();
}

}  // namespace quorvel
