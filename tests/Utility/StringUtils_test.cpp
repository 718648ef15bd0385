#include <random>

#include <gtest/gtest.h>
#include <tests/support/RandomText.h>
#include <tests/support/Row.h>

#include <quorvel/Platform/Foundation/CharacterSet.h>
#include <quorvel/Utility/StringUtils.h>

namespace quorvel {
namespace {

TEST(StringUtils, BlanknessHasFourNames) {
  const test::Row<StringView, bool, test::Why> rows[] = {
      {nil, true, "nil"},
      {u"", true, "empty"},
      {u" \n\t\u3000\u2029\u0085", true, "white space and newlines"},
      {u" a ", false, "a letter between"},
      {u"\u200B", false, "a zero-width space is no white space"},
      {u"\x001C", false, "nor is a file separator"},
  };
  for (const auto& [text, isBlank, why] : rows) {
    EXPECT_EQ(StringUtils::isEmpty(text), isBlank) << why;
    EXPECT_EQ(StringUtils::isBlank(text), isBlank) << why;
    EXPECT_NE(StringUtils::isNotEmpty(text), isBlank) << why;
    EXPECT_NE(StringUtils::isNotBlank(text), isBlank) << why;
    EXPECT_EQ(StringUtils::trim(text).isEmpty(), isBlank) << why;
    EXPECT_EQ(StringUtils::trim(text).isNil(), text.isNil()) << why;
  }
}

class DashIsEmpty : public StringUtils {
 public:
  static bool isEmpty(StringView text) { return text == StringView(u"-"); }
};

TEST(StringUtils, NegationsAskTheClassThatIsAsked) {
  EXPECT_FALSE(DashIsEmpty::isNotEmpty<DashIsEmpty>(u"-"));
  EXPECT_TRUE(DashIsEmpty::isNotEmpty<DashIsEmpty>(u" "));
  EXPECT_TRUE(DashIsEmpty::isNotBlank<DashIsEmpty>(u"-")) << "isBlank was not replaced";
}

TEST(StringUtils, EqualityIsLiteralUnlessCaseIsIgnored) {
  const test::Row<StringView, StringView, bool, bool, test::Why> rows[] = {
      {nil, nil, true, true, "nil and nil"},
      {nil, u"", false, false, "nil is not the empty text"},
      {u"ABC", u"abc", false, true, "case"},
      {u"e\u0301", u"\u00E9", false, true, "composed and decomposed"},
      {u"a", u"a ", false, false, "nothing is trimmed"},
  };
  for (const auto& [first, second, equals, equalsCaseInsensitive, why] : rows) {
    EXPECT_EQ(StringUtils::equals(first, second), equals) << why;
    EXPECT_EQ(StringUtils::equals(second, first), equals) << why;
    EXPECT_EQ(StringUtils::equalsCaseInsensitive(first, second), equalsCaseInsensitive) << why;
  }
}

TEST(StringUtils, MatchesResultTellsWhyThereIsNone) {
  const std::u16string many(40, u'a');
  const struct {
    StringView text;
    StringView pattern;
    PatternOutcome outcome;
    std::uint64_t offset;
    const char* why;
  } rows[] = {
      {u"ABC", u"b", PatternOutcome::Match, 0, "a match"},
      {u"ABC", u"^b", PatternOutcome::NoMatch, 0, "an anchor of the caller's"},
      {u" ", u" ", PatternOutcome::NoMatch, 0, "a blank text matches nothing"},
      {nil, u"b", PatternOutcome::NoMatch, 0, "nor does a nil one"},
      {u"ABC", u"\U0001F600[b-a]", PatternOutcome::BadPattern, 6, "units, not the five characters"},
      {u" ", u"a(b", PatternOutcome::BadPattern, 3, "told for a blank text too"},
      {u"ABC", u"", PatternOutcome::BadPattern, 0, "an empty pattern"},
      {u"ABC", nil, PatternOutcome::BadPattern, 0, "a nil one"},
      {many, u"(a+)+$b", PatternOutcome::LimitReached, 0, "work without end"},
  };
  for (const auto& [text, pattern, outcome, offset, why] : rows) {
    const PatternResult result = StringUtils::matchesResult(text, pattern);
    EXPECT_EQ(result.outcome, outcome) << why;
    EXPECT_EQ(result.offset, offset) << why;
    EXPECT_EQ(*result.reason != 0, outcome == PatternOutcome::BadPattern) << why;
    EXPECT_EQ(StringUtils::matches(text, pattern), outcome == PatternOutcome::Match) << why;
  }
}

TEST(StringUtils, IsNumberAnswersAsItsExpression) {
  constexpr std::u16string_view kPieces[] = {u"1",      u"9",      u"\u0660", u"\u0669", u"\U0001D7FF", u"\xD835",
                                             u"\xDFFF", u"\n",     u"\r",     u"\v",     u"\f",         u"\u0085",
                                             u"\u2028", u"\u2029", u" ",      u"\u00B9", u"\u0301",     u"/",
                                             u":",      u"\u065F", u"\x001C"};
  std::mt19937 random(1);
  int numbers = 0;
  for (int round = 0; round < 20'000; ++round) {
    const std::u16string text = test::randomText(random, kPieces, random() % 5);
    const bool isNumber = StringUtils::isNumber(text);
    ASSERT_EQ(isNumber, StringUtils::matches(text, u"^\\d+$")) << test::hex(text);
    numbers += isNumber ? 1 : 0;
  }
  EXPECT_GT(numbers, 1'000);
  EXPECT_FALSE(StringUtils::isNumber(nil));
  for (char32_t unit = 1; unit <= 0xFFFF; ++unit) {
    const char16_t text[] = {static_cast<char16_t>(unit), 0};
    ASSERT_EQ(StringUtils::isNumber(text), NSCharacterSet::decimalDigit().contains(unit)) << test::hex(text);
  }
}

TEST(StringUtils, CollectionsAreJoinedByCommas) {
  const test::Row<std::optional<List>, std::optional<String>, test::Why> rows[] = {
      {nil, std::nullopt, "nil"},
      {List{}, std::nullopt, "no element"},
      {List{7}, u"7", "one"},
      {List{1, 22, 3}, u"1,22,3", "no space"},
      {List{u"a,b", u"", u"\uD55C"}, u"a,b,,\uD55C", "nothing is escaped, empty texts stay"},
      {List{0.1, -0.0, 1e21, true, UINT64_MAX}, u"0.1,-0,1e+21,1,18446744073709551615", "numbers of every kind"},
      {List{null, List{}}, u"<null>,(\n)", "other values by their description"},
  };
  for (const auto& [list, text, why] : rows) {
    EXPECT_EQ(StringUtils::collectionToCommaDelimitedString(list), text) << why;
  }
}

TEST(StringUtils, FormatsTakeTwentyOneObjects) {
  List many;
  for (int i = 0; i < 25; ++i) many.append(i);
  std::u16string format;
  for (int i = 0; i < 23; ++i) format += u"%@ ";
  const test::Row<StringView, std::optional<List>, String, test::Why> rows[] = {
      {u"%@-%@", List{u"a"}, u"a-(null)", "a missing object"},
      {u"%2$@ %1$@", List{u"a", 2}, u"2 a", "positions"},
      {u"%@", nil, u"(null)", "a nil list is an empty one"},
      {nil, List{1}, u"", "a nil format"},
      {u"100%% %@", List{null}, u"100% <null>", "the null marker"},
      {u"%21$@ %22$@", many, u"20 (null)", "the 22nd is not passed"},
      {format, many, u"0 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20 (null) (null) ", "nor in order"},
  };
  for (const auto& [written, list, text, why] : rows) {
    EXPECT_EQ(StringUtils::stringWithFormat(written, list), text) << why;
  }
}

}  // namespace
}  // namespace quorvel
