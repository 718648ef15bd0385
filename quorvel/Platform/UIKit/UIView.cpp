#include <algorithm>
#include <iterator>
#include <utility>

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
  const bool isKnown = mode <= UIViewContentMode::BottomRight;
  if (mode == UIViewContentMode::ScaleToFill || mode == UIViewContentMode::Redraw || !isKnown) return bounds;
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
  std::vector<std::shared_ptr<UIView>> going;
  giveUpSubviews(going);
  while (!going.empty()) {
    const std::shared_ptr<UIView> view = std::move(going.back());
    going.pop_back();
    // What goes with it gives up its own first, so that a deep tree takes no stack.
    if (view.use_count() == 1) view->giveUpSubviews(going);
  }
}

/// To the end of `to`; their layers leave this view's, which may go on without it.
void UIView::giveUpSubviews(std::vector<std::shared_ptr<UIView>>& to) {
  for (auto view = subviews_.rbegin(); view != subviews_.rend(); ++view) (*view)->layer_->removeFromSuperlayer();
  std::ranges::move(std::exchange(subviews_, {}), std::back_inserter(to));
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
  if (!view || view.get() == this) return;
  // One without subviews contains nobody, which spares the walk while a tree grows downwards.
  for (auto above = view->subviews_.empty() ? nullptr : superview(); above; above = above->superview()) {
    if (above == view) return;
  }
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
  std::vector<std::shared_ptr<UIView>> waiting{std::move(top)};
  while (!waiting.empty()) {
    const std::shared_ptr<UIView> view = std::move(waiting.back());
    waiting.pop_back();
    if (std::exchange(view->needsLayout_, false)) view->layoutSubviews();
    waiting.insert(waiting.end(), view->subviews_.rbegin(), view->subviews_.rend());
  }
}

void UIView::drawLayer(CGContext& context) {
  const UIGraphicsPushedContext pushed(context);
  drawRect(bounds());
}

}  // namespace quorvel
