#include <atomic>
#include <chrono>

#include <gtest/gtest.h>
#include <tests/support/Crowd.h>
#include <tests/support/Row.h>

#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/Foundation/Log.h>
#include <quorvel/Platform/Foundation/NSRegularExpression.h>

namespace quorvel {
namespace {

using Options = NSRegularExpression::Options;
using Outcome = NSRegularExpression::Outcome;

std::u16string repeated(std::u16string_view piece, std::size_t count) {
  std::u16string result;
  for (std::size_t i = 0; i < count; ++i) result += piece;
  return result;
}

TEST(NSRegularExpression, FindsWhatICUFinds) {
  const test::Row<StringView, Options, StringView, std::vector<NSRange>, test::Why> rows[] = {
      {u"^\\d+$", Options::None, u"12\n", {{0, 2}}, "$ stands before a final line terminator"},
      {u"^\\d+$", Options::None, u"1\n2", {}, "and ^ only at the start of the text"},
      {u".", Options::None, u"\U0001F600\nx", {{0, 2}, {3, 1}}, "a dot takes a pair whole and no line terminator"},
      {u"x*", Options::None, u"\U0001F600x", {{0, 0}, {2, 1}, {3, 0}}, "empty matches step over a pair"},
      {u"a.c", Options::Literal, u"abc a.c A.C", {{4, 3}}, "literal"},
      {u"a.c", Options::CaseInsensitiveLiteral, u"abc a.c A.C", {{4, 3}, {8, 3}}, "literal, ignoring case"},
      {u"(b)|(a)", Options::None, u"ab", {{0, 1}, {1, 1}}, "alternatives"},
      {u"\xD83D", Options::None, u"\U0001F600", {}, "half a pair is no character"},
      {u"e", Options::None, u"\u00E9e\u0301", {{1, 1}}, "no canonical equivalence"},
  };
  for (const auto& [pattern, options, text, expected, why] : rows) {
    const auto expression = NSRegularExpression::withPattern(pattern, options);
    ASSERT_TRUE(expression) << why;
    EXPECT_EQ(expression->matchRanges(text), expected) << why;
    EXPECT_EQ(expression->hasMatch(text), !expected.empty()) << why;
    std::vector<NSRange> wholes;
    for (const auto& match : expression->matches(text)) wholes.push_back(match[0]);
    EXPECT_EQ(wholes, expected) << why;
  }
}

TEST(NSRegularExpression, GroupsAndRegions) {
  const auto expression = NSRegularExpression::withPattern(u"(a)|(b)", Options::None);
  ASSERT_EQ(expression->groupCount(), 2U);
  const auto matches = expression->matches(u"ab");
  ASSERT_EQ(matches.size(), 2U);
  EXPECT_FALSE(matches[0][2].isFound()) << "a group that took no part";
  EXPECT_EQ(expression->groupRanges(u"ab", 2), (std::vector<NSRange>{NSRange::notFound(), {1, 1}}));
  for (const Options options : {Options::None, Options::Literal, Options::CaseInsensitiveLiteral}) {
    const auto letter = NSRegularExpression::withPattern(u"a", options);
    EXPECT_EQ(letter->firstMatch(u"abca", {1, 3}), (NSRange{3, 1}));
    EXPECT_FALSE(letter->firstMatch(u"abca", {1, 2})) << "not beyond the range";
    EXPECT_FALSE(letter->firstMatch(u"a", {5, UINT64_MAX - 9})) << "a range outside the text";
  }
}

TEST(NSRegularExpression, RefusesPatterns) {
  const test::Row<std::u16string, test::Why> rows[] = {
      {u"", "empty"},
      {u"(", "open group"},
      {u"[a", "open set"},
      {u"\\", "nothing escaped"},
      {u"(?<=a+)b", "look-behind without bound"},
      {repeated(u"(", 100) + u"a" + repeated(u")", 100), "nested too deep"},
      {repeated(u"[", 30000), "sets beyond all bounds"},
      {repeated(u"\\p{L}", 13000), "half a minute of compilation"},
      {repeated(u"()*", 21000), "quadratic compilation"},
      {std::u16string(limits::kRegularExpressionPattern + 1, u'a'), "too long"},
  };
  for (const auto& [pattern, why] : rows) {
    for (const Options options : {Options::None, Options::CaseInsensitive}) {
      PatternError error;
      EXPECT_FALSE(NSRegularExpression::withPattern(pattern, options, &error)) << why;
      EXPECT_STRNE(error.reason, "") << why;
    }
  }
  PatternError error;
  EXPECT_FALSE(NSRegularExpression::withPattern(nil, Options::None, &error));
  EXPECT_FALSE(NSRegularExpression::withPattern(u"", Options::CaseInsensitiveLiteral));
  EXPECT_FALSE(NSRegularExpression::withPattern(u"\U0001F600\n\U0001F600a)", Options::None, &error));
  EXPECT_EQ(error.offset, 7U) << "units, not characters, and over lines";
  EXPECT_TRUE(NSRegularExpression::withPattern(repeated(u"(", 99) + u"a" + repeated(u")", 99), Options::None));
}

TEST(NSRegularExpression, TemplatesAndEscapes) {
  const auto pair = NSRegularExpression::withPattern(u"(\\w)(\\d)?", Options::None);
  const test::Row<StringView, StringView, StringView, test::Why> rows[] = {
      {u"a1", u"$2-$1", u"1-a", "groups"},
      {u"a1", u"$10", u"a0", "the longest number that exists"},
      {u"a1", u"$9x", u"x", "no group has that number"},
      {u"a1", u"$0$0", u"a1a1", "the whole match"},
      {u"a", u"[$2]", u"[]", "a group that took no part"},
      {u"a", u"\\$1\\\\", u"$1\\", "escapes"},
      {u"a", u"$ $x$", u"$ $x$", "a $ without digits stays"},
      {u"---", u"x", u"---", "no match"},
  };
  for (const auto& [text, replacement, expected, why] : rows) {
    EXPECT_EQ(StringView(pair->replacingMatches(text, replacement)), expected) << why;
  }
  const auto literal = NSRegularExpression::withPattern(u"a", Options::CaseInsensitiveLiteral);
  EXPECT_EQ(literal->replacingMatches(u"bAb", u"<$0>"), String(u"b<A>b"));
  const auto empty = NSRegularExpression::withPattern(u"x*", Options::None);
  EXPECT_EQ(empty->replacingMatches(u"\U0001F600", u"-"), String(u"-\U0001F600-")) << "empty matches";
  EXPECT_EQ(NSRegularExpression::escapedPattern(u"a*b?+[(){}^$|\\./]-#&"),
            String(u"a\\*b\\?\\+\\[\\(\\)\\{\\}\\^\\$\\|\\\\\\.\\/]-#&"));
}

std::atomic<int> lineCount{0};

TEST(NSRegularExpression, EvilPatternsEndAtTheDeadlineWithoutAMatch) {
  const std::u16string patterns[] = {u"(a+)+[b]",
                                     u"(.*)*x",
                                     u"((a{1,9})*)*b",
                                     u"a*a*a*a*b",
                                     u"(?>[^x]*)y|a(?>[^x]*)y",
                                     u"(?<!(a{1,90}){1,90})a*a*c",
                                     u"(a*)(a*)\\2\\1b",
                                     repeated(u"(", 99) + u"a*" + repeated(u")*", 99) + u"b",
                                     repeated(u"(a?)", 1500) + u"b",
                                     repeated(u"()", 32000)};
  lineCount = 0;
  setLogSink([](LogLevel, std::string_view) { ++lineCount; });
  int limited = 0;
  for (const std::u16string& pattern : patterns) {
    const auto expression = NSRegularExpression::withPattern(pattern, Options::CaseInsensitive);
    ASSERT_TRUE(expression) << pattern.size();
    for (const std::size_t size : {std::size_t{1000}, std::size_t{100000}}) {
      const std::u16string text(size, u'a');
      const auto start = std::chrono::steady_clock::now();
      Outcome outcome = Outcome::Complete;
      const auto ranges = expression->matchRanges(text, &outcome);
      const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
      EXPECT_LT(seconds.count(), 4.0) << String(pattern).toUTF8Replacing().substr(0, 40) << " on " << size;
      if (outcome == Outcome::Complete) continue;
      ++limited;
      EXPECT_TRUE(ranges.empty()) << "none at all";
    }
  }
  setLogSink(nullptr);
  EXPECT_GT(limited, 5);
  EXPECT_EQ(lineCount, limited) << "one line each";
  const auto expression = NSRegularExpression::withPattern(u"(a|a)*b", Options::None);
  EXPECT_TRUE(expression->hasMatch(u"aab")) << "a limit leaves no trace in the expression";
  EXPECT_EQ(expression->replacingMatches(std::u16string(1000, u'a'), u"-"), String(std::u16string(1000, u'a')));
}

TEST(NSRegularExpression, BackReferencesReadLongTextsInPieces) {
  const auto twins = NSRegularExpression::withPattern(u"(.)\\1", Options::CaseInsensitive);
  // Pairs of surrogates on every alignment to the pieces' borders.
  for (std::size_t shift = 0; shift < 4; ++shift) {
    const std::u16string text = repeated(u"x", shift) + repeated(u"\U0001F600\U0001F600aA", 800);
    std::vector<NSRange> expected;
    for (std::size_t i = 0; i + 1 < shift; i += 2) expected.push_back({i, 2});
    for (std::size_t i = shift; i < text.size(); i += 6) {
      expected.push_back({i, 4});
      expected.push_back({i + 4, 2});
    }
    EXPECT_EQ(twins->matchRanges(text), expected) << shift;
  }
}

TEST(NSRegularExpression, OneExpressionServesManyThreads) {
  const auto expression = NSRegularExpression::withPattern(u"(\\w+)@(\\w+)", Options::CaseInsensitive);
  std::atomic<int> wrong{0};
  test::onThreads(8, [&](int t) {
    const auto count = static_cast<std::size_t>(t + 1);
    const std::u16string text = repeated(u"ab@cd ", count);
    for (std::size_t i = 0; i < 200; ++i) {
      const auto own = NSRegularExpression::withPattern(repeated(u"a", i % 90 + 1) + u"+", Options::None);
      if (!own->hasMatch(std::u16string(100, u'a'))) ++wrong;
      if (expression->matches(text).size() != count) ++wrong;
    }
  });
  EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace quorvel
