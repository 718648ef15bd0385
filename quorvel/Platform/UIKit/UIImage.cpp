#include <algorithm>
#include <cmath>
#include <utility>

#include <quorvel/Platform/UIKit/UIImage.h>
#include <quorvel/Platform/UIKit/UIScreen.h>

namespace quorvel {
namespace {

// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): the innermost context of each thread
thread_local CGContext* currentContext = nullptr;

/// Whole pixels for a side, rounded up but for what arithmetic alone adds; 0 where there are none.
std::int64_t pixels(double points, double scale) {
  constexpr double kMost = 1e9;
  const double exact = points * scale;
  return exact > 0 ? static_cast<std::int64_t>(std::ceil(std::min(exact, kMost) - 1e-6)) : 0;
}

/// The three parts of one side: what keeps its size, what tiles, what keeps its size.
struct Parts {
  double edges[4];
  Parts(double length, double before, double after)
      : edges{0, std::clamp(before, 0.0, length),
              std::max(length - std::max(after, 0.0), std::clamp(before, 0.0, length)), length} {}
  [[nodiscard]] double start(int index) const { return edges[index]; }
  [[nodiscard]] double length(int index) const { return edges[index + 1] - edges[index]; }
};

/// Nine parts of an upright bitmap; `scale` is its pixels for a point.
void drawStretched(CGContext& context, const CGRect& rectangle, const CGImage& bitmap, double scale,
                   const UIEdgeInsets& insets) {
  const CGSize size{static_cast<double>(bitmap.width()) / scale, static_cast<double>(bitmap.height()) / scale};
  const Parts fromX(size.width, insets.left, insets.right);
  const Parts fromY(size.height, insets.top, insets.bottom);
  const Parts toX(rectangle.width, insets.left, insets.right);
  const Parts toY(rectangle.height, insets.top, insets.bottom);
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 3; ++column) {
      const CGSize tile{fromX.length(column), fromY.length(row)};
      const CGImage part = bitmap.inRect({std::round(fromX.start(column) * scale), std::round(fromY.start(row) * scale),
                                          std::round(tile.width * scale), std::round(tile.height * scale)});
      context.drawTiled(
          {rectangle.x + toX.start(column), rectangle.y + toY.start(row), toX.length(column), toY.length(row)}, part,
          tile);
    }
  }
}

}  // namespace

CGSize UIImage::size() const {
  const double width = static_cast<double>(bitmap_.width()) / scale_;
  const double height = static_cast<double>(bitmap_.height()) / scale_;
  return swapsSides(orientation_) ? CGSize{height, width} : CGSize{width, height};
}

UIImage UIImage::withRenderingMode(UIImageRenderingMode mode) const {
  UIImage result = *this;
  result.renderingMode_ = mode;
  return result;
}

UIImage UIImage::resizableWithCapInsets(const UIEdgeInsets& insets) const {
  UIImage result = *this;
  result.capInsets_ = insets;
  return result;
}

void UIImage::drawInRect(const CGRect& rectangle) const {
  CGContext* const context = UIGraphicsImageContext::current();
  if (!context) return;
  const bool isStretched = capInsets_ != UIEdgeInsets{} && CGSize{rectangle.width, rectangle.height} != size();
  if (!isStretched || orientation_ != UIImageOrientation::Up) {
    context->drawUpright(rectangle, bitmap_, orientation_);
    return;
  }
  if (!(rectangle.width > 0) || !(rectangle.height > 0)) return;  // no parts
  drawStretched(*context, rectangle, bitmap_, scale_, capInsets_);
}

UIGraphicsImageContext::UIGraphicsImageContext(const CGSize& sizeInPoints, double scale)
    : scale_(scale == 0 ? UIScreen::mainScreen().scale() : scale), outer_(currentContext) {
  context_ = CGContext::make(pixels(sizeInPoints.width, scale_), pixels(sizeInPoints.height, scale_), scale_);
  currentContext = context_.get();
}

UIGraphicsImageContext::~UIGraphicsImageContext() { currentContext = outer_; }

CGContext* UIGraphicsImageContext::current() { return currentContext; }

UIGraphicsPushedContext::UIGraphicsPushedContext(CGContext& context)
    : outer_(std::exchange(currentContext, &context)) {}
UIGraphicsPushedContext::~UIGraphicsPushedContext() { currentContext = outer_; }

std::optional<UIImage> UIGraphicsImageContext::image() const {
  if (!context_) return std::nullopt;
  return UIImage(context_->image(), scale_);
}

}  // namespace quorvel
