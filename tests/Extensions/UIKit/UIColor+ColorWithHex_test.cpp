#include <cmath>
#include <cstdlib>
#include <random>

#include <gtest/gtest.h>
#include <tests/support/Row.h>

#include <quorvel/Extensions/UIKit/UIColor+ColorWithHex.h>
#include <quorvel/Extensions/UIKit/UIColor+Common.h>
#include <quorvel/Extensions/UIKit/UIColor+Extension.h>

namespace quorvel {
namespace {

using namespace UIColorWithHex;

TEST(ColorWithHex, ByteOrders) {
  const double red = 0x34 / 255.0;
  EXPECT_EQ(colorWithHex(0x12345678), UIColor(red, 0x56 / 255.0, 0x78 / 255.0, 1));
  EXPECT_EQ(colorWithRGB(0x12345678U), colorWithHex(0x12345678));
  EXPECT_EQ(colorWithAlphaHex(0x80FF0000), UIColor(1, 0, 0, 128 / 255.0));
  EXPECT_EQ(colorWithAlphaHexRGBA(0x80FF0000), UIColor(128 / 255.0, 1, 0, 0));
  EXPECT_EQ(colorWithRGB(0x00FF00, 0.3), UIColor(0, 1, 0, 0.3));
  EXPECT_EQ(colorWithRGB(-1, 7), UIColor(1, 1, 1, 7)) << "alpha is not clamped, and -1 is white";
}

TEST(ColorWithHexString, ReadsAsTheCLibraryDoes) {
  const test::Row<StringView, std::uint32_t, test::Why> rows[] = {
      {u"#FF0000", 0xFF0000, "a leading number sign"},
      {u"F00", 0xF00, "no short form"},
      {u"0x", 0, "a prefix without digits"},
      {u"0xg", 0, "a prefix without digits"},
      {u"123456789ABCDEF0", 0x9ABCDEF0, "low 32 bits"},
      {u"FFFFFFFFFFFFFFFF", 0xFFFFFFFF, "beyond 64 bits: the largest integer"},
      {u"-FFFFFFFFFFFFFFFF", 0, "beyond 64 bits: the smallest integer"},
      {nil, 0, "no text"},
      {u"FF00\u00E9", 0, "not ASCII"},
  };
  for (const auto& [text, packed, why] : rows) {
    EXPECT_EQ(colorWithHexString(text), colorWithHex(packed)) << text << ": " << why;
    EXPECT_EQ(colorWithAlphaHexString(text), colorWithAlphaHex(packed)) << text << ": " << why;
    EXPECT_EQ(colorWithAlphaHexStringRGBA(text), colorWithAlphaHexRGBA(packed)) << text << ": " << why;
  }
}

TEST(ColorWithHexString, AgreesWithTheCLibraryOnWhatPeopleNeverType) {
  std::mt19937 random(7);
  constexpr std::string_view kLetters = "#0xX+-  \t\v09afAFgz";
  for (int i = 0; i < 100'000; ++i) {
    std::string text;
    for (std::size_t size = random() % 22; text.size() < size;) text += kLetters[random() % kLetters.size()];
    const char* behind = text.c_str() + (text.starts_with('#') ? 1 : 0);
    const auto packed = static_cast<std::uint32_t>(std::strtoll(behind, nullptr, 16));
    ASSERT_EQ(colorWithAlphaHexString(String::fromASCII(text)), colorWithAlphaHex(packed)) << '"' << text << '"';
  }
}

TEST(UIColorCommon, NamesAreTheSameObjectEachTime) {
  EXPECT_EQ(UIColor::Common::all().size(), 24U);
  EXPECT_EQ(&UIColor::Common::urlCopyBlue(), &UIColor::Common::urlCopyBlue());
  EXPECT_EQ(&UIColor::Common::urlCopyBlue(), &UIColor::Common::all().back().color) << "names and table in one order";
  EXPECT_EQ(UIColor::Common::selectedCellColor(), colorWithHex(0x333333));
  EXPECT_EQ(UIColor::Common::smsPurple(), UIColor(142 / 255.0, 142 / 255.0, 220 / 255.0, 1));
  for (const auto& [name, color] : UIColor::Common::all()) {
    EXPECT_EQ(color.alpha(), std::string_view(name) == "transparentWhiteColor" ? 136 / 255.0 : 1) << name;
  }
}

TEST(UIColorExtension, ComponentsAndSimilarity) {
  EXPECT_EQ(UIColorExtension::color(255, 0, 0), colorWithHex(0xFF0000));
  EXPECT_EQ(UIColorExtension::color(300, -1, 0, 0.5F), UIColor(300 / 255.0, -1 / 255.0, 0, 0.5));
  const test::Row<double, double, bool, test::Why> rows[] = {
      {0.1234561, 0.1234569, true, "cut, not rounded"},
      {0.1234569, 0.1234571, false, "the sixth decimal differs"},
      {0.5, 0.5000004, true, "beyond six decimals"},
      {0.5, 0.501, false, "far apart"},
      {-0.0000004, 0.0000004, true, "cut toward zero from both sides"},
      {1e300, 1e301, true, "both beyond 64 bits"},
      {std::nan(""), 0, true, "NaN counts as 0"},
      {INFINITY, 1e13, true, "infinity is the nearest end"},
  };
  for (const auto& [a, b, similar, why] : rows) {
    EXPECT_EQ(isSimilar(UIColor(a, 0, 0, 1), UIColor(b, 0, 0, 1)), similar) << why;
    EXPECT_EQ(isSimilar(UIColor(0, 0, 0, a), UIColor(0, 0, 0, b)), similar) << why;
  }
}

}  // namespace
}  // namespace quorvel
