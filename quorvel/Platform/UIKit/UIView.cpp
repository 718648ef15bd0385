#include <algorithm>

#include <quorvel/Platform/UIKit/UIImage.h>
#include <quorvel/Platform/UIKit/UIView.h>

namespace quorvel {
namespace {

constexpr UIColor kSystemTint(0, 122 / 255.0, 1, 1);

/// Where the free space goes: 0 all behind, 0.5 both sides, 1 all before.
struct Anchor {
  double x;
  double y;
};
constexpr Anchor anchorOf(UIViewContentMode mode) {
  constexpr Anchor kAnchors[] = {{0.5, 0.5}, {0.5, 0.5}, {0.5, 0.5}, {0.5, 0.5}, {0.5, 0.5}, {0.5, 0}, {0.5, 1},
                                 {0, 0.5},   {1, 0.5},   {0, 0},     {1, 0},     {0, 1},     {1, 1}};
  return kAnchors[static_cast<std::size_t>(mode)];
}

}  // namespace

CGRect contentRectangle(UIViewContentMode mode, const CGRect& bounds, const CGSize& contents) {
  const bool fits = mode == UIViewContentMode::ScaleAspectFit;
  const bool fills = mode == UIViewContentMode::ScaleAspectFill;
  if (mode == UIViewContentMode::ScaleToFill || mode == UIViewContentMode::Redraw) return bounds;
  CGSize size = contents;
  if ((fits || fills) && contents.width > 0 && contents.height > 0) {
    const double x = bounds.width / contents.width;
    const double y = bounds.height / contents.height;
    const double factor = fits ? std::min(x, y) : std::max(x, y);
    size = {contents.width * factor, contents.height * factor};
  }
  const Anchor anchor = anchorOf(mode);
  return {bounds.x + (bounds.width - size.width) * anchor.x, bounds.y + (bounds.height - size.height) * anchor.y,
          size.width, size.height};
}

UIView::UIView(const CGRect& frame) : layer_(CALayer::make()) {
  layer_->setFrame(frame);
  layer_->setDelegate(this);
}

UIView::~UIView() {
  layer_->setDelegate(nullptr);
  for (const auto& view : subviews_) view->layer_->removeFromSuperlayer();
}

std::shared_ptr<UIView> UIView::make(const CGRect& frame) { return std::shared_ptr<UIView>(new UIView(frame)); }

void UIView::setFrame(const CGRect& frame) {
  const CGRect before = this->frame();
  layer_->setFrame(frame);
  if (before.width != frame.width || before.height != frame.height) setNeedsLayout();
}

void UIView::setBounds(const CGRect& bounds) {
  const CGRect before = this->bounds();
  layer_->setBounds(bounds);
  if (before != bounds) setNeedsLayout();
}

UIColor UIView::tintColor() const {
  if (tintColor_) return *tintColor_;
  for (auto view = superview(); view; view = view->superview()) {
    if (view->tintColor_) return *view->tintColor_;
  }
  return kSystemTint;
}

void UIView::addSubview(const std::shared_ptr<UIView>& view) {
  for (std::shared_ptr<UIView> above = shared_from_this(); above; above = above->superview()) {
    if (above == view) return;
  }
  if (!view) return;
  view->removeFromSuperview();
  subviews_.push_back(view);
  view->superview_ = weak_from_this();
  layer_->addSublayer(view->layer_);
  setNeedsLayout();
}

void UIView::removeFromSuperview() {
  const std::shared_ptr<UIView> above = superview();
  if (!above) return;
  const std::shared_ptr<UIView> self = shared_from_this();  // the superview may hold the last reference
  superview_.reset();
  std::erase(above->subviews_, self);
  layer_->removeFromSuperlayer();
  above->setNeedsLayout();
}

void UIView::layoutIfNeeded() {
  std::shared_ptr<UIView> top = shared_from_this();
  for (auto view = superview(); view; view = view->superview()) {
    if (view->needsLayout_) top = view;
  }
  top->layoutTree();
}

void UIView::layoutTree() {
  if (needsLayout_) {
    needsLayout_ = false;
    layoutSubviews();
  }
  const std::vector<std::shared_ptr<UIView>> views = subviews_;  // a layout may change the list
  for (const auto& view : views) view->layoutTree();
}

void UIView::drawLayer(CGContext& context) {
  const UIGraphicsPushedContext pushed(context);
  drawRect(bounds());
}

}  // namespace quorvel
