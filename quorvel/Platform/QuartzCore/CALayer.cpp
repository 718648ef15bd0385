#include <quorvel/Platform/QuartzCore/CALayer.h>

namespace quorvel {

std::shared_ptr<CALayer> CALayer::make() { return std::shared_ptr<CALayer>(new CALayer()); }

void CALayer::setFrame(const CGRect& frame) {
  origin_ = {frame.x, frame.y};
  bounds_.width = frame.width;
  bounds_.height = frame.height;
}

void CALayer::setBounds(const CGRect& bounds) {
  origin_.x += (bounds_.width - bounds.width) / 2;
  origin_.y += (bounds_.height - bounds.height) / 2;
  bounds_ = bounds;
}

void CALayer::addSublayer(const std::shared_ptr<CALayer>& layer) {
  for (std::shared_ptr<CALayer> above = shared_from_this(); above; above = above->superlayer()) {
    if (above == layer) return;
  }
  if (!layer) return;
  layer->removeFromSuperlayer();
  sublayers_.push_back(layer);
  layer->superlayer_ = weak_from_this();
}

void CALayer::removeFromSuperlayer() {
  const std::shared_ptr<CALayer> above = superlayer();
  superlayer_.reset();
  // The superlayer may hold the last reference.
  if (above) std::erase_if(above->sublayers_, [self = shared_from_this()](const auto& it) { return it == self; });
}

void CALayer::renderInContext(CGContext& context) const {
  if (isHidden_ || !(opacity_ > 0)) return;
  if (!(opacity_ < 1)) return renderContents(context);
  context.saveGState();
  context.setAlpha(opacity_);
  const bool isApart = context.beginTransparencyLayer();
  renderContents(context);
  if (isApart) context.endTransparencyLayer();
  context.restoreGState();
}

void CALayer::renderContents(CGContext& context) const {
  if (backgroundColor_) {
    context.setFillColor(backgroundColor_->components());
    context.fillRect(bounds_);
  }
  if (delegate_) {
    context.saveGState();
    delegate_->drawLayer(context);
    context.restoreGState();
  }
  const std::vector<std::shared_ptr<CALayer>> layers = sublayers_;  // drawing may change the list
  for (const auto& layer : layers) {
    context.saveGState();
    context.translateCTM(layer->origin_.x - layer->bounds_.x, layer->origin_.y - layer->bounds_.y);
    layer->renderInContext(context);
    context.restoreGState();
  }
}

}  // namespace quorvel
