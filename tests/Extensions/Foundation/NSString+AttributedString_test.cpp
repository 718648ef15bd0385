#include <random>

#include <gtest/gtest.h>
#include <tests/support/Row.h>

#include <quorvel/Extensions/Foundation/NSMutableAttributedString+Highlight.h>
#include <quorvel/Extensions/Foundation/NSString+AttributedString.h>
#include <quorvel/Extensions/Foundation/String+Attributed.h>
#include <quorvel/Platform/Foundation/NSRegularExpression.h>

namespace quorvel {
namespace {

const Attributes kBold{{u"bold", true}};
const Attributes kPlain{{u"plain", true}};

std::vector<NSRange> having(const NSAttributedString& text, StringView name) {
  std::vector<NSRange> ranges;
  for (const Span& span : text.spans()) {
    if (span.attributes.find(name)) ranges.push_back(span.range);
  }
  return ranges;
}

TEST(MakeTitleAttributedString, ParksTheLineFeedWithTheContent) {
  const auto result = makeTitleAttributedString(u"Title\nBo\ndy", kBold, kPlain);
  EXPECT_TRUE(result.isChangeable());
  EXPECT_EQ(result.spans(), (std::vector<Span>{{{0, 5}, kBold}, {{5, 6}, kPlain}}));
  EXPECT_EQ(makeTitleAttributedString(u"\nBody", kBold, kPlain).spans(), (std::vector<Span>{{{0, 5}, kPlain}}));
  EXPECT_EQ(makeTitleAttributedString(u"No\rBreak\u2028", kBold, kPlain),
            AttributedText(NSAttributedString(u"No\rBreak\u2028", kPlain)))
      << "only a line feed breaks";
}

TEST(AttributedStringForKeywordHighlights, ColoursGroupOne) {
  const test::Row<StringView, StringView, std::vector<NSRange>, test::Why> rows[] = {
      {u"abbbc", u"b+", {{1, 3}}, "the keyword is an expression"},
      {u"ab", u"x)(b", {}, "the first group, not the match"},
      {u"ab", u"b)|(a", {{1, 1}}, "a match in which the group took no part"},
      {u"ab", u"", {}, "empty matches"},
  };
  for (const auto& [text, keyword, expected, why] : rows) {
    const auto result = attributedStringForKeywordHighlights(text, keyword, UIColor::redColor());
    EXPECT_TRUE(result.isChangeable()) << why;
    EXPECT_EQ(having(result, kForegroundColorAttribute), expected) << why;
  }
  for (const StringView keyword : {StringView(u"("), StringView(nil)}) {
    EXPECT_EQ(attributedStringForKeywordHighlights(u"a(", keyword, UIColor::redColor()),
              AttributedText(NSAttributedString(u"a(")));
  }
  const auto evil = attributedStringForKeywordHighlights(std::u16string(2000, u'a'), u"(a|a)*b", UIColor::redColor());
  EXPECT_TRUE(having(evil, kForegroundColorAttribute).empty());
}

TEST(Highlight, KeywordsAreLiteralAndPatternsAreNot) {
  NSMutableAttributedString keyword(u"abc a.c");
  EXPECT_EQ(&highlightKeyword(keyword, u"A.C", kBold), &keyword);
  EXPECT_EQ(having(keyword, u"bold"), (std::vector<NSRange>{{4, 3}}));
  NSMutableAttributedString pattern(u"abc a.c");
  EXPECT_EQ(having(highlightPattern(pattern, u"A.C", kBold), u"bold"), (std::vector<NSRange>{{0, 3}, {4, 3}}));
  NSMutableAttributedString unchanged(u"abc");
  highlightKeyword(unchanged, nil, kBold);
  highlightKeyword(unchanged, u"", kBold);
  highlightPattern(unchanged, nil, kBold);
  highlightPattern(unchanged, u"(", kBold);
  highlightPattern(unchanged, u"(a|a)*(a|a)*x", kBold);
  EXPECT_EQ(unchanged, NSMutableAttributedString(u"abc"));
}

TEST(Highlight, KeywordsFindWhatTheEscapedPatternFinds) {
  std::mt19937 random(11);
  constexpr std::u16string_view kAlphabet = u"aA.*[]{}()\\^$|/-#&?+ \nsSß\u017Fi\u0130\u0307\xD83D\xDE00";
  const auto textOf = [&](std::size_t most) {
    std::u16string text;
    for (std::size_t i = random() % most + 1; i > 0; --i) text += kAlphabet[random() % kAlphabet.size()];
    return text;
  };
  for (int round = 0; round < 5000; ++round) {
    const std::u16string keyword = textOf(3);
    const std::u16string text = textOf(40) + keyword;
    NSMutableAttributedString byKeyword(text);
    NSMutableAttributedString byPattern(text);
    highlightKeyword(byKeyword, keyword, kBold);
    highlightPattern(byPattern, NSRegularExpression::escapedPattern(keyword), kBold);
    ASSERT_EQ(byKeyword.spans(), byPattern.spans()) << String(keyword);
  }
}

TEST(Highlight, PlusJoinsWithoutChangingItsOperands) {
  const NSMutableAttributedString left(u"ab", kBold);
  const NSMutableAttributedString right(u"cd");
  const auto sum = left + right;
  EXPECT_EQ(sum.string(), String(u"abcd"));
  EXPECT_EQ(having(sum, u"bold"), (std::vector<NSRange>{{0, 2}}));
  EXPECT_EQ(left, NSMutableAttributedString(u"ab", kBold));
  EXPECT_EQ((right + right).spans().size(), 1U);
}

TEST(StringAttributed, CoversTheWholeText) {
  EXPECT_EQ(attributed(u"ab"), attributed(u"ab", nil));
  EXPECT_EQ(attributed(u"ab", kBold).spans(), (std::vector<Span>{{{0, 2}, kBold}}));
  EXPECT_EQ(mutableAttributed(u"ab", kBold), attributedString(u"ab", kBold));
  EXPECT_EQ(mutableAttributed(u"", kBold).spans().size(), 0U);
}

}  // namespace
}  // namespace quorvel
