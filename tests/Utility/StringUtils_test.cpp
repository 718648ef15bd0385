#include <random>

#include <gtest/gtest.h>
#include <tests/support/RandomText.h>

#include <quorvel/Platform/Foundation/CharacterSet.h>
#include <quorvel/Utility/StringUtils.h>

namespace quorvel {
namespace {

TEST(StringUtils, BlanknessHasFourNames) {
  struct Row {
    StringView text;
    bool isBlank;
    const char* why;
  };
  const Row rows[] = {
      {nil, true, "nil"},
      {u"", true, "empty"},
      {u" \n\t\u3000\u2029\u0085", true, "white space and newlines"},
      {u" a ", false, "a letter between"},
      {u"\u200B", false, "a zero-width space is no white space"},
      {u"\u180E", false, "nor is the Mongolian vowel separator"},
      {u"\x0000", false, "nor is NUL"},
      {u"\x001C", false, "nor is a file separator"},
      {u"\xD83D", false, "half of a pair"},
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
  struct Row {
    StringView first;
    StringView second;
    bool equals;
    bool equalsCaseInsensitive;
    const char* why;
  };
  const Row rows[] = {
      {nil, nil, true, true, "nil and nil"},
      {nil, u"", false, false, "nil is not the empty text"},
      {u"", u"", true, true, "empty"},
      {u"ABC", u"abc", false, true, "case"},
      {u"e\u0301", u"\u00E9", false, true, "composed and decomposed"},
      {u"e\u0301", u"\u00C9", false, true, "and with case"},
      {u"Stra\u00DFe", u"STRASSE", false, true, "full folding"},
      {u"a", u"a ", false, false, "nothing is trimmed"},
  };
  for (const auto& [first, second, equals, equalsCaseInsensitive, why] : rows) {
    EXPECT_EQ(StringUtils::equals(first, second), equals) << why;
    EXPECT_EQ(StringUtils::equals(second, first), equals) << why;
    EXPECT_EQ(StringUtils::equalsCaseInsensitive(first, second), equalsCaseInsensitive) << why;
  }
}

TEST(StringUtils, MatchesAnywhereIgnoringCase) {
  struct Row {
    StringView text;
    StringView pattern;
    bool matches;
    const char* why;
  };
  const Row rows[] = {
      {u"ABC", u"b", true, "no anchor, no case"},
      {u"ABC", u"^b", false, "an anchor of the caller's"},
      {u"ABC", u"(", false, "a pattern that does not compile"},
      {u"ABC", u"", false, "an empty pattern"},
      {u"ABC", nil, false, "a nil pattern"},
      {u"   ", u" ", false, "a blank text is not looked at"},
      {nil, u".*", false, "nor is nil"},
      {u"\U0001F600", u"^.$", true, "a pair is one character"},
      {u"Stra\u00DFe", u"STRASSE", true, "full folding"},
  };
  for (const auto& [text, pattern, matches, why] : rows) {
    EXPECT_EQ(StringUtils::matches(text, pattern), matches) << why;
    EXPECT_EQ(StringUtils::matchesResult(text, pattern).outcome == PatternOutcome::Match, matches) << why;
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
      {u"ABC", u"x", PatternOutcome::NoMatch, 0, "none"},
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

TEST(StringUtils, NumbersAreDigitsOfAnyScript) {
  struct Row {
    StringView text;
    bool isNumber;
    const char* why;
  };
  const Row rows[] = {
      {u"12345", true, "ASCII"},
      {u"12a", false, "a letter"},
      {u"-1", false, "a sign"},
      {u"1.5", false, "a point"},
      {u" 1", false, "white space before"},
      {u"", false, "empty"},
      {u"   ", false, "blank"},
      {nil, false, "nil"},
      {u"\u0661\u0662", true, "Arabic-Indic digits"},
      {u"\U0001D7D8", true, "a digit of two units"},
      {u"1\xD835", false, "half of one"},
      {u"\u00B2", false, "a superscript is no decimal digit"},
      {u"\u4E00", false, "nor is an ideograph"},
      {u"12\n", true, "a line terminator at the end"},
      {u"12\r\n", true, "CR LF is one"},
      {u"12\n\n", false, "two of them"},
      {u"12\n\r", false, "LF CR is two"},
      {u"\r\n", false, "nothing before it"},
      {u"1\v", true, "a vertical tab terminates a line"},
      {u"1\u0085", true, "so does NEL"},
  };
  for (const auto& [text, isNumber, why] : rows) EXPECT_EQ(StringUtils::isNumber(text), isNumber) << why;
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
  for (char32_t unit = 1; unit <= 0xFFFF; ++unit) {
    const char16_t text[] = {static_cast<char16_t>(unit), 0};
    ASSERT_EQ(StringUtils::isNumber(text), NSCharacterSet::decimalDigit().contains(unit)) << test::hex(text);
  }
}

TEST(StringUtils, CollectionsAreJoinedByCommas) {
  struct Row {
    std::optional<List> list;
    std::optional<String> text;
    const char* why;
  };
  const Row rows[] = {
      {nil, nil, "nil"},
      {List{}, nil, "no element"},
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
  struct Row {
    StringView format;
    std::optional<List> list;
    String text;
    const char* why;
  };
  const Row rows[] = {
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
