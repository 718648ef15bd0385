#include <atomic>
#include <filesystem>

#include <gtest/gtest.h>
#include <tests/support/Crowd.h>
#include <tests/support/Images.h>
#include <tests/support/Row.h>
#include <tests/support/TemporaryFolder.h>

#include <quorvel/Extensions/UIKit/UIImage+Tools.h>
#include <quorvel/Platform/Foundation/NSBundle.h>
#include <quorvel/Platform/ImageIO/PNGWriter.h>

namespace quorvel {
namespace {

using test::ScreenScale;

/// A folder that is the main bundle for the time of a test.
class NamedImages : public testing::Test {
 protected:
  NamedImages() : before_(NSBundle::main()) { NSBundle::setMain(NSBundle::at(folder_.path())); }
  ~NamedImages() override { NSBundle::setMain(before_); }

  /// A picture of so many pixels each way.
  void write(const std::string& name, std::int64_t side) const {
    const auto file = encodePNG(test::places(side, side).bitmap());
    test::writeFile(pathOf(name), {reinterpret_cast<const char*>(file->bytes().data()), file->size()});
  }
  [[nodiscard]] std::string pathOf(const std::string& name) const { return folder_.path(name); }

 private:
  test::TemporaryFolder folder_;
  NSBundle before_;
};

TEST_F(NamedImages, TakesTheFormForTheScreen) {
  write("all.png", 1);
  write("all@2x.png", 4);
  write("all@3x.png", 9);
  write("outer.png", 1);
  write("outer@3x.png", 9);
  write("low.png", 1);
  write("high@2x.png", 4);
  const test::Row<StringView, double, std::size_t, double, test::Why> rows[] = {
      {u"all", 1, 1, 1, "exact"},
      {u"all", 2, 4, 2, "exact"},
      {u"all", 3, 9, 3, "exact"},
      {u"all", 1.5, 4, 2, "the next larger"},
      {u"all", 4, 9, 3, "the largest there is"},
      {u"all.png", 2, 4, 2, "with its extension"},
      {u"outer", 2, 9, 3, "no exact one: the next larger"},
      {u"low", 3, 1, 1, "none larger: the next smaller"},
      {u"high", 1, 4, 2, "none but a larger"},
      {u"high@2x", 1, 4, 2, "a name that says which"},
  };
  for (const auto& [name, screenScale, side, scale, why] : rows) {
    const ScreenScale screen(screenScale);
    const auto image = UIImage::named(name);
    ASSERT_TRUE(image) << why;
    EXPECT_EQ(image->bitmap().width(), side) << why;
    EXPECT_EQ(image->scale(), scale) << why;
  }
}

TEST_F(NamedImages, AnswersNilForOtherNames) {
  write("there.png", 2);
  write("folder/inside.png", 2);
  std::filesystem::create_directory(pathOf("odd.png"));
  test::writeFile(pathOf("broken.png"), "no picture");
  for (const StringView name : {StringView(u"missing"), StringView(u"folder/inside"), StringView(u"../there"),
                                StringView(u"odd"), StringView(u"broken"), StringView(u""), StringView(nil),
                                StringView(u"there\0.png", 10), StringView(u"\xD800"), StringView(u"there.gif")}) {
    EXPECT_FALSE(UIImage::named(name)) << name;
  }
  write("broken@2x.png", 2);
  EXPECT_TRUE(UIImage::named(u"broken")) << "what cannot be read is passed over";
}

TEST_F(NamedImages, AreDecodedOnceUntilTheFileChanges) {
  write("icon.png", 2);
  const auto first = UIImage::named(u"icon");
  EXPECT_EQ(UIImage::named(u"icon"), first) << "the same pixels, not only equal ones";
  write("icon.png", 3);
  EXPECT_EQ(UIImage::named(u"icon")->bitmap().width(), 3U);
  std::filesystem::remove(pathOf("icon.png"));
  EXPECT_FALSE(UIImage::named(u"icon"));
  write("one.png", 2);
  const auto one = UIImage::named(u"one");
  for (int i = 0; i < 70; ++i) {
    const std::string name = "many" + std::to_string(i);
    write(name + ".png", 1);
    ASSERT_TRUE(UIImage::named(String::fromUTF8(name))) << name;
    ASSERT_TRUE(i > 60 || UIImage::named(u"one") == one) << "asked for again and again, it stays";
  }
  for (int i = 0; i < 64; ++i) ASSERT_TRUE(UIImage::named(String::fromUTF8("many" + std::to_string(i))));
  EXPECT_NE(UIImage::named(u"one"), one) << "64 others came after it";
}

TEST_F(NamedImages, MayBeAskedForByManyThreads) {
  for (int i = 0; i < 4; ++i) write("icon" + std::to_string(i) + ".png", 8);
  std::atomic<int> found = 0;
  test::onThreads(4, [&found](int) {
    for (int i = 0; i < 200; ++i) {
      const auto image = UIImage::named(String::fromUTF8("icon" + std::to_string(i % 4)));
      if (image && image->bitmap().width() == 8) ++found;
    }
  });
  EXPECT_EQ(found, 800);
}

TEST_F(NamedImages, KeepsNoMoreThanItsBytes) {
  write("first.png", 3000);  // 36 MB decoded
  write("second.png", 3000);
  write("small.png", 1);
  const auto first = UIImage::named(u"first");
  const auto small = UIImage::named(u"small");
  EXPECT_EQ(UIImage::named(u"first"), first);
  EXPECT_EQ(UIImage::named(u"small"), small);
  const auto second = UIImage::named(u"second");
  EXPECT_EQ(UIImage::named(u"small"), small) << "room for both";
  EXPECT_EQ(UIImage::named(u"second"), second);
  EXPECT_NE(UIImage::named(u"first"), first) << "dropped, and decoded again";
}

TEST_F(NamedImages, StretchWithinTheirCaps) {
  const ScreenScale screen(1);
  write("button.png", 4);
  const auto image = UIImageTools::resizableImageNamed(u"button", {1, 1, 1, 1});
  ASSERT_TRUE(image);
  EXPECT_EQ(image->capInsets(), (UIEdgeInsets{1, 1, 1, 1}));
  const UIGraphicsImageContext canvas({10, 6});
  image->drawInRect({0, 0, 10, 6});
  EXPECT_EQ(test::pixel(*canvas.image(), 9, 5), test::place(3, 3)) << "corners keep their size";
  EXPECT_EQ(test::pixel(*canvas.image(), 3, 0), test::place(1, 0)) << "the middle tiles";
  EXPECT_FALSE(UIImageTools::resizableImageNamed(u"nothing", {}));
}

}  // namespace
}  // namespace quorvel
