#include <gtest/gtest.h>
#include <tests/support/Images.h>
#include <tests/support/Row.h>

#include <quorvel/Extensions/UIKit/UIImageView+Tools.h>

namespace quorvel {
namespace {

using test::channelOf;
using test::pixel;
using test::ScreenScale;

UIImage halfRed() {
  return UIImage(test::picture(4, 2, [](std::size_t x, std::size_t) { return x < 2 ? 0x80800000 : 0xFFFF0000; }));
}

TEST(ImageWithViewScale, ShowsTheViewAtTheScreensScale) {
  const auto view = UIImageView::make(CGRect{30, 40, 4, 2});
  view->setImage(halfRed());
  view->setBackgroundColor(UIColor(1, 1, 1, 1));
  const test::Row<double, std::size_t> rows[] = {{0.5, 4}, {1, 4}, {2, 8}, {3, 12}};
  for (const auto& [scale, width] : rows) {
    const ScreenScale screen(scale);
    const auto image = imageWithViewScale(*view);
    ASSERT_TRUE(image) << scale;
    EXPECT_EQ(image->bitmap().width(), width) << scale;
    EXPECT_EQ(image->size(), (CGSize{4, 2})) << scale;
    EXPECT_EQ(pixel(*image, 0, 0), 0xFFFF7F7F) << "over the background";
    EXPECT_EQ(pixel(*image, width - 1, 0), 0xFFFF0000);
  }
  EXPECT_FALSE(imageWithViewScale(*UIImageView::make()));
}

TEST(ImageWithViewScaleWithTintColor, ShowsTheShapeAndChangesTheView) {
  const ScreenScale screen(1);
  const auto view = UIImageView::make(halfRed());
  const auto image = imageWithViewScaleWithTintColor(*view, UIColor(0, 0, 1, 0.5));
  ASSERT_TRUE(image);
  EXPECT_NEAR(channelOf(pixel(*image, 0, 0), 3), 64, 1);
  EXPECT_NEAR(channelOf(pixel(*image, 3, 1), 0), 128, 1);
  for (const std::size_t x : {0U, 3U}) EXPECT_EQ(channelOf(pixel(*image, x, 0), 2), 0) << "the image's red is gone";
  EXPECT_EQ(view->tintColor(), UIColor(0, 0, 1, 0.5));
  EXPECT_EQ(view->image()->renderingMode(), UIImageRenderingMode::AlwaysTemplate);

  const auto empty = UIImageView::make(CGRect{0, 0, 2, 2});
  const auto nothing = imageWithViewScaleWithTintColor(*empty, UIColor(0, 1, 0, 1));
  ASSERT_TRUE(nothing);
  EXPECT_EQ(pixel(*nothing, 0, 0), 0U);
  EXPECT_EQ(empty->tintColor(), UIColor(0, 1, 0, 1));
}

// 3 points in the middle of 4: the border covers half a pixel, a corner a quarter of one.
TEST(UIImageView, TintsBetweenPixelsAsItDraws) {
  const ScreenScale screen(1);
  const auto view = UIImageView::make(CGRect{0, 0, 4, 4});
  view->setContentMode(UIViewContentMode::Center);
  view->setImage(UIImage(test::flat(3, 3, 0xFFFFFFFF)));
  const auto plain = imageWithViewScale(*view);
  const auto tinted = imageWithViewScaleWithTintColor(*view, UIColor(1, 1, 1, 1));
  ASSERT_TRUE(plain && tinted);
  for (std::size_t i = 0; i < 16; ++i) EXPECT_EQ(pixel(*tinted, i % 4, i / 4), pixel(*plain, i % 4, i / 4)) << i;
  EXPECT_EQ(pixel(*tinted, 0, 1), 0x80808080);
  view->drawRect(view->bounds());  // without a context nothing is drawn
}

TEST(UIImageView, TintsTemplatesByTheirSuperview) {
  const ScreenScale screen(1);
  const auto parent = UIView::make({0, 0, 8, 4});
  const auto view = UIImageView::make(CGRect{2, 1, 4, 2});
  view->setImage(halfRed().withRenderingMode(UIImageRenderingMode::AlwaysTemplate));
  parent->addSubview(view);
  parent->setTintColor(UIColor(0, 1, 0, 1));
  const UIGraphicsImageContext canvas({8, 4});
  parent->layer()->renderInContext(*canvas.context());
  EXPECT_EQ(pixel(*canvas.image(), 5, 2), 0xFF00FF00);
  EXPECT_EQ(pixel(*canvas.image(), 2, 1), 0x80008000);
  EXPECT_EQ(pixel(*canvas.image(), 1, 1), 0U);
  EXPECT_EQ(UIGraphicsImageContext::current(), canvas.context()) << "the layer's context is put back";
}

}  // namespace
}  // namespace quorvel
