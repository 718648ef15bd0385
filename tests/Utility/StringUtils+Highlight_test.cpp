#include <gtest/gtest.h>
#include <tests/support/Row.h>

#include <quorvel/Extensions/UIKit/UIColor+ColorWithHex.h>
#include <quorvel/Utility/StringUtils.h>

namespace quorvel {
namespace {

const UIColor kHighlight = UIColorWithHex::colorWithAlphaHex(0xFF157EFB);
const UIColor kBase = UIColorWithHex::colorWithAlphaHex(0xFF222222);

std::vector<NSRange> colored(const NSAttributedString& text, const UIColor& color) {
  std::vector<NSRange> ranges;
  for (const Span& span : text.spans()) {
    if (span.attributes[kForegroundColorAttribute] == Value(color)) ranges.push_back(span.range);
  }
  return ranges;
}

TEST(SearchKeywordInText, ColoursEveryKeywordLiterally) {
  const test::Row<StringView, StringView, std::vector<NSRange>, test::Why> rows[] = {
      {u"Hello world", u"WORLD, lo", {{3, 2}, {6, 5}}, "keywords between commas and spaces"},
      {u"abc", u" ,, ", {}, "empty pieces"},
      {u"abcd", u"abc,bcd", {{0, 4}}, "overlapping keywords"},
      {u"(a+)+$ aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa!", u"(a+)+$", {{0, 6}}, "a pattern as a keyword"},
  };
  for (const auto& [text, keywords, expected, why] : rows) {
    const auto result = StringUtils::searchKeywordInText(text, keywords, nil, nil);
    ASSERT_TRUE(result) << why;
    EXPECT_TRUE(result->isChangeable()) << why;
    EXPECT_EQ(colored(*result, kHighlight), expected) << why;
    EXPECT_EQ(StringView(result->string()), text) << why;
  }
}

TEST(SearchKeywordInText, ColoursFontsAndAbsentArguments) {
  const UIColor red = UIColor::redColor();
  EXPECT_FALSE(StringUtils::searchKeywordInText(nil, u"a", nil));
  const auto plain = StringUtils::searchKeywordInText(u"ab", nil, red, red);
  EXPECT_EQ(*plain, AttributedText(NSAttributedString(u"ab"))) << "read-only, no base colour";
  EXPECT_EQ(colored(*StringUtils::searchKeywordInText(u"ab", u"a", nil), kBase), (std::vector<NSRange>{{1, 1}}));
  EXPECT_EQ(colored(*StringUtils::searchKeywordInText(u"ab", u"a", red, nil), red), (std::vector<NSRange>{{1, 1}}));
  const auto font = StringUtils::searchKeywordInText(u"ab", u"b", nil, red, u"font");
  EXPECT_EQ(font.attributesAt(1), (Attributes{{kForegroundColorAttribute, red}, {kFontAttribute, u"font"}}));
  EXPECT_EQ(StringUtils::searchKeywordInText(u"ab", nil, nil, nil, nil).attributesAt(0), Attributes{});
  EXPECT_EQ(StringUtils::searchKeywordInText(nil, u"a", nil, nil, u"font").length(), 0U);
}

TEST(SearchKeywordInText, ManyKeywordsOnALongText) {
  std::u16string keywords;
  for (char16_t a = u'a'; a <= u'z'; ++a) {
    for (char16_t b = u'a'; b <= u'z'; ++b) keywords += std::u16string{a, b, u' '};
  }
  std::u16string text;
  while (text.size() < 50000) text += u"abcdefghijklmnopqrstuvwxyz-";
  const auto result = StringUtils::searchKeywordInText(text, keywords, nil, nil);
  EXPECT_EQ(colored(*result, kBase).size(), text.size() / 27) << "all but the hyphens";
}

TEST(AttributedStringForBaseString, ColoursOnePlace) {
  const test::Row<StringView, StringView, bool, std::vector<NSRange>, test::Why> rows[] = {
      {u"abcabc", u"BC", false, {{1, 2}}, "the first"},
      {u"abcabc", u"BC", true, {{4, 2}}, "the last"},
      {u"abcabc", u"x", false, {}, "none"},
      {u"abcabc", u"a.", true, {{3, 2}}, "an expression"},
      {u"abcabc", u"(", false, {}, "does not compile"},
      {u"a1", u"\\D", false, {{1, 1}}, "lower-casing turns \\D into \\d"},
      {u"\u0130a", u"A", false, {}, "lower-cased the letter lies beyond the text's length"},
      {u"\u0130ab", u"a", false, {{2, 1}}, "the range counts lower-cased units"},
      {u"\u0130\u0130", u"\u0307", true, {{1, 1}}, "inside what one letter becomes"},
      {u"ab", u"x*", true, {}, "an empty match"},
  };
  for (const auto& [text, point, backward, expected, why] : rows) {
    const auto result = StringUtils::attributedStringForBaseString(text, nil, point, nil, backward);
    ASSERT_TRUE(result && result->isChangeable()) << why;
    EXPECT_EQ(colored(*result, UIColor::redColor()), expected) << why;
    EXPECT_EQ(StringView(result->string()), text) << why;
  }
  EXPECT_EQ(StringUtils::attributedStringForBaseString(u"a", nil, u"", nil, false),
            AttributedText(NSAttributedString(u"a")));
  EXPECT_FALSE(StringUtils::attributedStringForBaseString(u"a", nil, nil, nil, false));
  EXPECT_FALSE(StringUtils::attributedStringForBaseString(u"", nil, u"a", nil, false));
  const auto other = StringUtils::attributedStringForBaseString(u"ab", UIColor::redColor(), u"b", kBase, false);
  EXPECT_EQ(colored(*other, kBase), (std::vector<NSRange>{{1, 1}}));
  EXPECT_EQ(colored(*other, UIColor::redColor()), (std::vector<NSRange>{{0, 1}}));
}

TEST(AttributedStringForBaseString, AnEvilTermLeavesTheBaseColour) {
  const std::u16string text(5000, u'a');
  for (const bool backward : {false, true}) {
    const auto result = StringUtils::attributedStringForBaseString(text, nil, u"(a|a)*b", nil, backward);
    EXPECT_EQ(colored(*result, UIColor::blackColor()), (std::vector<NSRange>{{0, 5000}}));
  }
}

}  // namespace
}  // namespace quorvel
