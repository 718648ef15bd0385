// CALayer: a rectangle of a tree that draws itself into a context: background, contents, the layers above it.
// Not here: transformations, animation, borders and shadows; laying out (UIKit/UIView.h).
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include <quorvel/Platform/CoreGraphics/CGContext.h>

namespace quorvel {

/// Draws a layer's contents; the context grows downwards and has the coordinates of the layer's bounds.
class CALayerDelegate {
 public:
  virtual ~CALayerDelegate() = default;
  /// `drawLayer:inContext:`
  virtual void drawLayer(CGContext& context) = 0;
};

/// The superlayer owns its sublayers. Used by one thread at a time.
class CALayer : public std::enable_shared_from_this<CALayer> {
 public:
  [[nodiscard]] static std::shared_ptr<CALayer> make();
  CALayer(const CALayer&) = delete;
  CALayer& operator=(const CALayer&) = delete;
  ~CALayer();

  /// In the coordinates of the superlayer's bounds.
  [[nodiscard]] CGRect frame() const { return {origin_.x, origin_.y, bounds_.width, bounds_.height}; }
  void setFrame(const CGRect& frame);
  /// In its own coordinates. Another size leaves the frame's centre where it is.
  [[nodiscard]] const CGRect& bounds() const { return bounds_; }
  void setBounds(const CGRect& bounds);

  [[nodiscard]] const std::optional<UIColor>& backgroundColor() const { return backgroundColor_; }
  void setBackgroundColor(const std::optional<UIColor>& color) { backgroundColor_ = color; }
  /// 0 to 1, of the layer and all above it as one picture.
  [[nodiscard]] double opacity() const { return opacity_; }
  void setOpacity(double opacity) { opacity_ = opacity; }
  [[nodiscard]] bool isHidden() const { return isHidden_; }
  void setHidden(bool hidden) { isHidden_ = hidden; }
  /// Not owned: it must be unset before it goes.
  void setDelegate(CALayerDelegate* delegate) { delegate_ = delegate; }

  /// From the bottom to the top.
  [[nodiscard]] const std::vector<std::shared_ptr<CALayer>>& sublayers() const { return sublayers_; }
  [[nodiscard]] std::shared_ptr<CALayer> superlayer() const { return superlayer_.lock(); }
  /// Puts a layer on top, taken from its superlayer if it has one. A layer that contains this one, and nullptr, are
  /// left alone.
  void addSublayer(const std::shared_ptr<CALayer>& layer);
  void removeFromSuperlayer();

  /// `renderInContext:`: what shows of the layer and all above it, with the context's coordinates as those of its
  /// bounds. A hidden layer draws nothing.
  void renderInContext(CGContext& context) const;

 private:
  struct Begun;
  CALayer() = default;
  [[nodiscard]] Begun begin(CGContext& context) const;

  CGPoint origin_;
  CGRect bounds_;
  std::optional<UIColor> backgroundColor_;
  double opacity_ = 1;
  bool isHidden_ = false;
  CALayerDelegate* delegate_ = nullptr;
  std::vector<std::shared_ptr<CALayer>> sublayers_;
  std::weak_ptr<CALayer> superlayer_;
};

}  // namespace quorvel
