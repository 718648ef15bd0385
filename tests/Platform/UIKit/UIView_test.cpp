#include <gtest/gtest.h>
#include <tests/support/Images.h>
#include <tests/support/Row.h>
#include <tests/support/SmallStack.h>

#include <quorvel/Platform/UIKit/UIImageView.h>

namespace quorvel {
namespace {

using test::channelOf;
using test::pixel;

constexpr UIColor kRed(1, 0, 0, 1);
constexpr UIColor kBlue(0, 0, 1, 1);

/// A row of its subviews, each as wide; counts its layouts.
class Shelf : public UIView {
 public:
  static std::shared_ptr<Shelf> make(const CGRect& frame) { return std::shared_ptr<Shelf>(new Shelf(frame)); }
  int layouts = 0;
  void layoutSubviews() override {
    ++layouts;
    const double width = bounds().width / static_cast<double>(subviews().size());
    for (std::size_t i = 0; i < subviews().size(); ++i) {
      subviews()[i]->setFrame({width * static_cast<double>(i), 0, width, bounds().height});
    }
  }

 private:
  using UIView::UIView;
};

UIImage rendered(const UIView& view, double scale = 1) {
  const UIGraphicsImageContext canvas({view.bounds().width, view.bounds().height}, scale);
  view.layer()->renderInContext(*canvas.context());
  return *canvas.image();
}

TEST(UIView, IsInOneSuperviewAndNeverInItself) {
  const auto first = UIView::make();
  const auto second = UIView::make();
  auto child = UIView::make();
  const std::weak_ptr<UIView> watch = child;
  first->addSubview(child);
  second->addSubview(child);
  EXPECT_TRUE(first->subviews().empty());
  EXPECT_TRUE(first->layer()->sublayers().empty());
  EXPECT_EQ(child->superview(), second);
  child->addSubview(second);
  child->addSubview(child);
  child->addSubview(nullptr);
  EXPECT_TRUE(child->subviews().empty());
  child.reset();
  ASSERT_FALSE(watch.expired()) << "the superview owns it";
  watch.lock()->removeFromSuperview();
  EXPECT_TRUE(watch.expired());
  EXPECT_TRUE(second->layer()->sublayers().empty());
}

TEST(UIView, TakesItsLayersWithItWhenItGoes) {
  const auto layer = CALayer::make();
  auto view = UIView::make({0, 0, 2, 2});
  const auto child = UIView::make({0, 0, 1, 1});
  view->addSubview(child);
  layer->addSublayer(view->layer());
  view.reset();
  EXPECT_EQ(child->layer()->superlayer(), nullptr);
  const auto context = CGContext::make(2, 2);
  layer->renderInContext(*context);  // the layer outlives the view that drew it
  EXPECT_EQ(child->superview(), nullptr);
}

TEST(UIView, LaysOutWhatAskedForItFromTheTop) {
  const auto outer = Shelf::make({0, 0, 100, 20});
  const auto inner = Shelf::make({});
  const auto leaf = UIView::make();
  outer->addSubview(UIView::make());
  outer->addSubview(inner);
  inner->addSubview(leaf);
  leaf->layoutIfNeeded();
  EXPECT_EQ(leaf->frame(), (CGRect{0, 0, 50, 20})) << "asked at the bottom, laid out from the top";
  EXPECT_EQ(outer->layouts, 1);
  EXPECT_EQ(inner->layouts, 1);
  outer->layoutIfNeeded();
  EXPECT_EQ(inner->layouts, 1) << "nothing asked for it";
  outer->setFrame({5, 5, 100, 20});
  EXPECT_EQ((outer->layoutIfNeeded(), outer->layouts), 1) << "moved, not resized";
  outer->setFrame({5, 5, 60, 20});
  outer->layoutIfNeeded();
  EXPECT_EQ(leaf->frame().width, 30);
  outer->setBounds({0, 0, 100, 40});
  EXPECT_EQ(outer->frame(), (CGRect{-15, -5, 100, 40})) << "bounds grow around the centre";
}

TEST(UIView, InheritsItsTint) {
  const auto top = UIView::make();
  const auto middle = UIView::make();
  const auto leaf = UIView::make();
  top->addSubview(middle);
  middle->addSubview(leaf);
  EXPECT_EQ(leaf->tintColor(), UIColor(0, 122 / 255.0, 1, 1));
  top->setTintColor(kRed);
  EXPECT_EQ(leaf->tintColor(), kRed);
  middle->setTintColor(kBlue);
  EXPECT_EQ(leaf->tintColor(), kBlue);
  middle->setTintColor(std::nullopt);
  EXPECT_EQ(leaf->tintColor(), kRed);
}

TEST(CALayer, DrawsFromTheBottomToTheTop) {
  const auto view = UIView::make({7, 7, 4, 4});
  view->setBackgroundColor(kRed);
  const auto child = UIView::make({1, 1, 2, 2});
  child->setBackgroundColor(kBlue);
  view->addSubview(child);
  const UIImage twice = rendered(*view, 2);
  EXPECT_EQ(pixel(twice, 1, 1), 0xFFFF0000) << "its own frame's origin does not count";
  EXPECT_EQ(pixel(twice, 2, 2), 0xFF0000FF);
  EXPECT_EQ(pixel(twice, 6, 6), 0xFFFF0000);
  child->setHidden(true);
  EXPECT_EQ(pixel(rendered(*view), 1, 1), 0xFFFF0000);
  child->setHidden(false);
  child->setBounds({1, 1, 2, 2});  // scrolled: what is at 1, 1 in it comes to its frame's corner
  const auto grandchild = UIView::make({2, 2, 1, 1});
  grandchild->setBackgroundColor(UIColor(0, 1, 0, 1));
  child->addSubview(grandchild);
  EXPECT_EQ(pixel(rendered(*view), 2, 2), 0xFF00FF00);
  EXPECT_EQ(pixel(rendered(*view), 1, 1), 0xFF0000FF);
}

/// Goes when it has been drawn.
class Flash : public UIView {
 public:
  static std::shared_ptr<Flash> make(const CGRect& frame) { return std::shared_ptr<Flash>(new Flash(frame)); }
  void drawRect(const CGRect&) override { removeFromSuperview(); }

 private:
  using UIView::UIView;
};

TEST(CALayer, DrawsWhatChangesTheTreeMeanwhile) {
  const auto view = UIView::make({0, 0, 3, 1});
  for (const double x : {0, 1, 2}) {
    const auto flash = Flash::make({x, 0, 1, 1});
    flash->setBackgroundColor(kRed);
    view->addSubview(flash);
  }
  const UIImage image = rendered(*view);
  for (const std::size_t x : {0U, 1U, 2U}) EXPECT_EQ(pixel(image, x, 0), 0xFFFF0000) << x;
  EXPECT_TRUE(view->subviews().empty());
}

TEST(CALayer, IsTranslucentAsOnePicture) {
  const auto view = UIView::make({0, 0, 2, 2});
  view->setBackgroundColor(UIColor(1, 1, 1, 1));
  const auto group = UIView::make({0, 0, 2, 2});
  group->setBackgroundColor(kRed);
  const auto above = UIView::make({0, 0, 1, 2});
  above->setBackgroundColor(kBlue);
  group->addSubview(above);
  group->setAlpha(0.5);
  view->addSubview(group);
  const UIImage image = rendered(*view);
  EXPECT_NEAR(channelOf(pixel(image, 0, 0), 2), 127, 1) << "red does not shine through blue";
  EXPECT_NEAR(channelOf(pixel(image, 0, 0), 0), 255, 1);
  EXPECT_NEAR(channelOf(pixel(image, 1, 1), 2), 255, 1);
  above->setAlpha(0.5);
  EXPECT_NEAR(channelOf(pixel(rendered(*view), 0, 0), 2), 191, 2) << "layers nest";
  group->setAlpha(0);
  EXPECT_EQ(pixel(rendered(*view), 0, 0), 0xFFFFFFFF);
}

/// Each holds the next; the last is red.
void lookAtADeepTree() {
  constexpr int kDepth = 100'000;
  std::shared_ptr<UIView> top = UIView::make({0, 0, 1, 1});
  top->setBackgroundColor(kRed);
  for (int i = 0; i < kDepth / 2; ++i) {
    const auto above = UIView::make({0, 0, 1, 1});
    above->addSubview(top);
    top = above;
  }
  std::shared_ptr<UIView> leaf = UIView::make();
  top->addSubview(leaf);  // and downwards, beside them
  for (int i = 0; i < kDepth / 2; ++i) {
    const auto below = Shelf::make({0, 0, 1, 1});
    leaf->addSubview(below);
    leaf = below;
  }
  leaf->setTintColor(kBlue);
  top->layoutIfNeeded();
  EXPECT_EQ(std::static_pointer_cast<Shelf>(leaf)->layouts, 1);
  EXPECT_EQ(pixel(rendered(*top), 0, 0), 0xFFFF0000);
  for (auto view = top; !view->subviews().empty(); view = view->subviews()[0]) view->setAlpha(0.9999);
  top->setAlpha(0.5);
  EXPECT_NEAR(channelOf(pixel(rendered(*top), 0, 0), 2), 127, 1) << "one layer apart in another";
  leaf = nullptr;
  const std::shared_ptr<CALayer> layers = top->layer();
  top = nullptr;
  EXPECT_TRUE(layers->sublayers().empty());
}

void dropDeepLayers() {
  auto top = CALayer::make();
  const auto kept = top;
  for (int i = 0; i < 100'000; ++i) {
    const auto above = CALayer::make();
    above->addSublayer(top);
    top = above;
  }
  top = nullptr;
  EXPECT_EQ(kept->superlayer(), nullptr);
}

TEST(UIView, DepthTakesNoStack) {
  test::onSmallStack(lookAtADeepTree);
  test::onSmallStack(dropDeepLayers);
}

TEST(ContentRectangle, FollowsTheMode) {
  using enum UIViewContentMode;
  const CGRect bounds{10, 20, 40, 20};
  const CGSize contents{10, 10};
  const test::Row<UIViewContentMode, CGRect> rows[] = {
      {ScaleToFill, bounds},
      {Redraw, bounds},
      {ScaleAspectFit, {20, 20, 20, 20}},
      {ScaleAspectFill, {10, 10, 40, 40}},
      {Center, {25, 25, 10, 10}},
      {Top, {25, 20, 10, 10}},
      {Bottom, {25, 30, 10, 10}},
      {Left, {10, 25, 10, 10}},
      {Right, {40, 25, 10, 10}},
      {TopLeft, {10, 20, 10, 10}},
      {TopRight, {40, 20, 10, 10}},
      {BottomLeft, {10, 30, 10, 10}},
      {BottomRight, {40, 30, 10, 10}},
      {static_cast<UIViewContentMode>(13), bounds},
      {static_cast<UIViewContentMode>(255), bounds},
  };
  for (const auto& [mode, expected] : rows) {
    EXPECT_EQ(contentRectangle(mode, bounds, contents), expected) << static_cast<int>(mode);
  }
  EXPECT_EQ(contentRectangle(ScaleAspectFit, bounds, {0, 0}), (CGRect{30, 30, 0, 0})) << "nothing to scale";
}

}  // namespace
}  // namespace quorvel
