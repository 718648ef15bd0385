#include <algorithm>
#include <iterator>
#include <utility>

#include <quorvel/Platform/QuartzCore/CALayer.h>

namespace quorvel {

/// A layer that was begun, and those above it that are still to be drawn, held since drawing may change the list.
struct CALayer::Begun {
  std::vector<std::shared_ptr<CALayer>> above;
  std::size_t next = 0;
  bool isApart = false;
};

std::shared_ptr<CALayer> CALayer::make() { return std::shared_ptr<CALayer>(new CALayer()); }

CALayer::~CALayer() {
  std::vector<std::shared_ptr<CALayer>> going = std::move(sublayers_);
  while (!going.empty()) {
    const std::shared_ptr<CALayer> layer = std::move(going.back());
    going.pop_back();
    // What goes with it gives up its own first, so that a deep tree takes no stack.
    if (layer.use_count() == 1) std::ranges::move(std::exchange(layer->sublayers_, {}), std::back_inserter(going));
  }
}

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
  if (!layer || layer.get() == this) return;
  // One without sublayers contains nobody, which spares the walk while a tree grows downwards.
  for (auto above = layer->sublayers_.empty() ? nullptr : superlayer(); above; above = above->superlayer()) {
    if (above == layer) return;
  }
  layer->removeFromSuperlayer();
  sublayers_.push_back(layer);
  layer->superlayer_ = weak_from_this();
}

void CALayer::removeFromSuperlayer() {
  const std::shared_ptr<CALayer> above = superlayer();
  if (!above) return;
  const std::shared_ptr<CALayer> self = shared_from_this();  // the superlayer may hold the last reference
  superlayer_.reset();
  const auto last = std::find(above->sublayers_.rbegin(), above->sublayers_.rend(), self);  // mostly the topmost
  above->sublayers_.erase(std::prev(last.base()));
}

void CALayer::renderInContext(CGContext& context) const {
  std::vector<Begun> begun;
  context.saveGState();
  begun.push_back(begin(context));
  while (!begun.empty()) {
    Begun& last = begun.back();
    if (last.next < last.above.size()) {
      const CALayer& layer = *last.above[last.next++];
      context.saveGState();
      context.translateCTM(layer.origin_.x - layer.bounds_.x, layer.origin_.y - layer.bounds_.y);
      begun.push_back(layer.begin(context));
    } else {
      if (last.isApart) context.endTransparencyLayer();
      context.restoreGState();
      begun.pop_back();
    }
  }
}

/// Draws what is the layer's own; what is above it follows, and then the end of the part that is drawn apart.
CALayer::Begun CALayer::begin(CGContext& context) const {
  Begun begun;
  if (isHidden_ || !(opacity_ > 0)) return begun;
  if (opacity_ < 1) {
    context.setAlpha(opacity_);
    begun.isApart = context.beginTransparencyLayer();
  }
  if (backgroundColor_) {
    context.setFillColor(backgroundColor_->components());
    context.fillRect(bounds_);
  }
  if (delegate_) {
    context.saveGState();
    delegate_->drawLayer(context);
    context.restoreGState();
  }
  begun.above = sublayers_;
  return begun;
}

}  // namespace quorvel
