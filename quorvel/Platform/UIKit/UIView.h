// UIView: a rectangle on the screen that lays out the views in it and shows through its layer.
// Not here: pictures (UIImageView.h), drawing order and opacity (QuartzCore/CALayer.h).
#pragma once

#include <memory>
#include <vector>

#include <quorvel/Platform/QuartzCore/CALayer.h>

namespace quorvel {

/// How contents lie in the bounds; the numbers are the platform's. Another number counts as `ScaleToFill`.
enum class UIViewContentMode : std::uint8_t {
  ScaleToFill = 0,
  ScaleAspectFit = 1,
  ScaleAspectFill = 2,
  Redraw = 3,
  Center = 4,
  Top = 5,
  Bottom = 6,
  Left = 7,
  Right = 8,
  TopLeft = 9,
  TopRight = 10,
  BottomLeft = 11,
  BottomRight = 12,
};

/// The superview owns its subviews. Used by one thread at a time.
class UIView : public std::enable_shared_from_this<UIView>, private CALayerDelegate {
 public:
  /// `initWithFrame:`
  [[nodiscard]] static std::shared_ptr<UIView> make(const CGRect& frame = {});
  UIView(const UIView&) = delete;
  UIView& operator=(const UIView&) = delete;
  ~UIView() override;

  [[nodiscard]] const std::shared_ptr<CALayer>& layer() const { return layer_; }
  /// In the superview's coordinates; another size asks for a layout.
  [[nodiscard]] CGRect frame() const { return layer_->frame(); }
  void setFrame(const CGRect& frame);
  /// In its own coordinates; another size keeps the frame's centre.
  [[nodiscard]] const CGRect& bounds() const { return layer_->bounds(); }
  void setBounds(const CGRect& bounds);

  [[nodiscard]] const std::optional<UIColor>& backgroundColor() const { return layer_->backgroundColor(); }
  void setBackgroundColor(const std::optional<UIColor>& color) { layer_->setBackgroundColor(color); }
  [[nodiscard]] double alpha() const { return layer_->opacity(); }
  void setAlpha(double alpha) { layer_->setOpacity(alpha); }
  [[nodiscard]] bool isHidden() const { return layer_->isHidden(); }
  void setHidden(bool hidden) { layer_->setHidden(hidden); }
  [[nodiscard]] UIViewContentMode contentMode() const { return contentMode_; }
  void setContentMode(UIViewContentMode mode) { contentMode_ = mode; }

  /// `tintColor`: its own, else that of the nearest superview that has one, else the platform's blue (0, 122, 255).
  [[nodiscard]] UIColor tintColor() const;
  /// nil to inherit again.
  void setTintColor(const std::optional<UIColor>& color) { tintColor_ = color; }

  /// From the bottom to the top.
  [[nodiscard]] const std::vector<std::shared_ptr<UIView>>& subviews() const { return subviews_; }
  [[nodiscard]] std::shared_ptr<UIView> superview() const { return superview_.lock(); }
  /// Puts a view on top, taken from its superview if it has one. A view that contains this one, and nullptr, are left
  /// alone.
  void addSubview(const std::shared_ptr<UIView>& view);
  void removeFromSuperview();

  void setNeedsLayout() { needsLayout_ = true; }
  /// `layoutIfNeeded`: lays out what asked for it, from the highest superview that did downwards, else in this view.
  void layoutIfNeeded();
  /// `layoutSubviews`: sets the frames of the subviews; for subclasses.
  virtual void layoutSubviews() {}
  /// `drawRect:`: draws the bounds into the current context (UIImage.h); for subclasses.
  virtual void drawRect(const CGRect& /*bounds*/) {}

 protected:
  explicit UIView(const CGRect& frame);

 private:
  void drawLayer(CGContext& context) override;
  void giveUpSubviews(std::vector<std::shared_ptr<UIView>>& to);

  std::shared_ptr<CALayer> layer_;
  std::vector<std::shared_ptr<UIView>> subviews_;
  std::weak_ptr<UIView> superview_;
  std::optional<UIColor> tintColor_;
  UIViewContentMode contentMode_ = UIViewContentMode::ScaleToFill;
  bool needsLayout_ = true;
};

/// Where contents of a size lie within bounds.
[[nodiscard]] CGRect contentRectangle(UIViewContentMode mode, const CGRect& bounds, const CGSize& contents);

}  // namespace quorvel
