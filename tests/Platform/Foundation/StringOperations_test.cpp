#include <random>

#include <gtest/gtest.h>
#include <tests/support/RandomText.h>
#include <tests/support/Row.h>
#include <unicode/ubrk.h>
#include <unicode/ustring.h>

#include <quorvel/Platform/Foundation/StringOperations.h>
#include <quorvel/Platform/Foundation/Unicode.h>

namespace quorvel {
namespace {

TEST(Trimming, TakesMembersFromBothEndsForEveryUnit) {
  const NSCharacterSet& set = NSCharacterSet::whitespaceAndNewline();
  for (char32_t unit = 0; unit <= 0xFFFF; ++unit) {
    const auto u = static_cast<char16_t>(unit);
    const std::u16string text{u, u, u'x', u, u'x', u};
    const StringView expected = set.contains(unit) ? StringView(text).sub(2, 3) : StringView(text);
    ASSERT_TRUE(trimmedOfWhitespace(text).isSameAs(expected)) << std::hex << static_cast<unsigned>(unit);
    ASSERT_TRUE(trimmed(text, set).isSameAs(expected)) << std::hex << static_cast<unsigned>(unit);
    ASSERT_EQ(isBlankText(StringView(&text[0], 2)), set.contains(unit)) << std::hex << static_cast<unsigned>(unit);
  }
}

TEST(Trimming, AsksForScalarsAndKeepsNil) {
  const test::Row<StringView, StringView, StringView, test::Why> rows[] = {
      {u"\U0001F600ab\U0001F600", u"\U0001F600", u"ab", "a pair is trimmed whole"},
      {u"\U0001F600", u"\xD83D\u0020\xDE00", u"\U0001F600", "halves in the set do not take a pair apart"},
      {u"\xDE00\xD83D", u"\xD83D\u0020\xDE00", u"", "halves that make no pair are members"},
      {u"aaa", u"a", u"", "nothing is left"},
      {u"", u"a", u"", "empty"},
  };
  for (const auto& [text, members, expected, why] : rows) {
    const StringView result = trimmed(text, NSCharacterSet::withCharactersIn(members));
    EXPECT_EQ(result, expected) << why;
    EXPECT_FALSE(result.isNil()) << why;
  }
  EXPECT_TRUE(trimmed(nil, NSCharacterSet::control()).isNil());
  EXPECT_TRUE(trimmedOfWhitespace(nil).isNil());
  EXPECT_FALSE(trimmedOfWhitespace(u" ").isNil());
}

TEST(Pieces, SplitAndJoinKeepEmptyOnes) {
  const auto shown = [](const std::vector<StringView>& pieces) { return joined(pieces, u"|"); };
  const test::Row<StringView, StringView, StringView, StringView, test::Why> rows[] = {
      {u"a,b", u",", u"a|b", u"a|b", "one separator"},
      {u",a,,b,", u",", u"|a||b|", u"|a||b|", "empty pieces at the ends and between"},
      {u"", u",", u"", u"", "the empty text is one piece"},
      {u"aaa", u"aa", u"|a", u"|||", "string hits do not overlap"},
      {u"a\r\nb", u"\r\n", u"a|b", u"a||b", "the set has two members"},
      {u"x\U0001F600y\xD83Dz", u"\xD83D", u"x|\xDE00y|z", u"x\U0001F600y|z", "by unit against by scalar"},
      {u"abc", u"", u"abc", u"abc", "nothing separates"},
      {u"e\u0301", u"\u00E9", u"e\u0301", u"e\u0301", "literal"},
  };
  for (const auto& [text, separator, byString, bySet, why] : rows) {
    EXPECT_EQ(shown(componentsSeparatedBy(text, separator)), String(byString)) << why;
    EXPECT_EQ(shown(componentsSeparatedBy(text, NSCharacterSet::withCharactersIn(separator))), String(bySet)) << why;
    if (!separator.isEmpty()) {
      EXPECT_EQ(joined(componentsSeparatedBy(text, separator), separator), String(text)) << why << ": back again";
      EXPECT_EQ(replacingOccurrences(text, separator, u"|"), String(byString)) << why;
      EXPECT_EQ(replacingCharacters(text, NSCharacterSet::withCharactersIn(separator), u"|"), String(bySet)) << why;
    }
  }
  EXPECT_EQ(joined({}, u","), u"");
  EXPECT_EQ(componentsSeparatedBy(nil, u",").size(), 1U);
}

TEST(Replacing, SharesWhatItDoesNotChange) {
  const String text = u"a text that is not inline";
  const auto isShared = [&text](const String& result) { return result.data() == text.data(); };
  EXPECT_TRUE(isShared(replacingOccurrences(text, u"zz", u"y")));
  EXPECT_TRUE(isShared(replacingOccurrences(text, u"", u"y")));
  EXPECT_TRUE(isShared(replacingCharacters(text, NSCharacterSet::control(), u"y")));
  EXPECT_TRUE(isShared(lowercased(text)));
  EXPECT_FALSE(isShared(uppercased(text)));
  EXPECT_EQ(replacingOccurrences(text, u" ", u""), u"atextthatisnotinline");
  EXPECT_EQ(replacingCharacters(u",,", NSCharacterSet::withCharactersIn(u","), u""), u"");
}

TEST(LiteralSearch, StaysLinearOnTextsThatRepeat) {
  const std::u16string text(2'000'000, u'a');
  std::u16string needle(1'000'000, u'a');
  for (const std::size_t other : {std::size_t{0}, needle.size() / 2, needle.size() - 1}) {
    needle[other] = u'b';
    EXPECT_EQ(unicode::findLiteral(text, needle), unicode::kInvalid);
    needle[other] = u'a';
  }
  // The first hit lies where the search has long changed its way.
  std::u16string late = text;
  late[1'500'000] = u'b';
  std::u16string wanted(1'000, u'a');
  wanted[990] = u'b';
  EXPECT_EQ(unicode::findLiteral(late, wanted), 1'500'000U - 990);
  EXPECT_EQ(unicode::findLiteral(late, wanted, 1'500'000U - 989), unicode::kInvalid);
}

TEST(LiteralSearch, FindsTheFirstPlaceForEveryLengthAndStart) {
  std::mt19937 random(2);
  for (int round = 0; round < 20'000; ++round) {
    std::u16string text;
    for (std::size_t i = random() % 60; i > 0; --i) text += random() % 3 == 0 ? u'b' : u'a';
    const std::u16string needle = text.substr(random() % (text.size() + 1), random() % 20);
    const std::size_t from = random() % (text.size() + 2);
    const std::size_t expected = text.find(needle, from);
    ASSERT_EQ(unicode::findLiteral(text, needle, from), expected)
        << test::hex(text) << "in which " << test::hex(needle) << "from " << from;
  }
}

using Mapping = std::int32_t (*)(UChar*, std::int32_t, const UChar*, std::int32_t, const char*, UErrorCode*);

std::u16string mapped(Mapping mapping, std::u16string_view text) {
  std::u16string out(text.size() * 3 + 1, u'\0');
  UErrorCode status = U_ZERO_ERROR;
  out.resize(static_cast<std::size_t>(mapping(out.data(), static_cast<std::int32_t>(out.size()), text.data(),
                                              static_cast<std::int32_t>(text.size()), "", &status)));
  return out;
}

TEST(CaseMapping, OfEveryScalarAmongOthersIsUnicodes) {
  for (char32_t scalar = 0; scalar <= 0x10FFFF; ++scalar) {
    StringBuilder out;
    out.append(u"Az ");
    out.appendScalar(scalar);
    out.append(u" Q \uAC00b \u3042");
    const String text = out.finish();
    const std::u16string_view units = StringView(text).units();
    ASSERT_EQ(StringView(lowercased(text)).units(), mapped(u_strToLower, units)) << test::hex(units);
    ASSERT_EQ(StringView(uppercased(text)).units(), mapped(u_strToUpper, units)) << test::hex(units);
  }
}

TEST(CaseMapping, OfMixedTextsIsUnicodes) {
  std::mt19937 random(3);
  for (int round = 0; round < 20'000; ++round) {
    const std::u16string text = test::randomText(random, test::kHardPieces, random() % 30);
    ASSERT_EQ(StringView(lowercased(StringView(text))).units(), mapped(u_strToLower, text)) << test::hex(text);
    ASSERT_EQ(StringView(uppercased(StringView(text))).units(), mapped(u_strToUpper, text)) << test::hex(text);
  }
  EXPECT_EQ(lowercased(nil), u"");
  EXPECT_EQ(uppercased(nil), u"");
}

std::size_t clustersByIterator(std::u16string_view text) {
  UErrorCode status = U_ZERO_ERROR;
  UBreakIterator* iterator =
      ubrk_open(UBRK_CHARACTER, "", text.data(), static_cast<std::int32_t>(text.size()), &status);
  std::size_t count = 0;
  while (ubrk_next(iterator) != UBRK_DONE) ++count;
  ubrk_close(iterator);
  return count;
}

TEST(Clusters, CountWhatReadersSee) {
  const test::Row<StringView, std::size_t, test::Why> rows[] = {
      {u"", 0, "empty"},
      {nil, 0, "nil"},
      {u"a\r\nb", 3, "CR LF is one"},
      {u"\U0001F1F0\U0001F1F7\U0001F1FA", 2, "a flag and half a flag"},
      {u"\U0001F468\u200D\U0001F469\u200D\U0001F467", 1, "a family"},
  };
  for (const auto& [text, count, why] : rows) EXPECT_EQ(countOfClusters(text), count) << why;
}

TEST(Clusters, OfEveryUnitBesideOthersAreTheIterators) {
  for (char32_t unit = 0; unit <= 0xFFFF; ++unit) {
    const auto u = static_cast<char16_t>(unit);
    const std::u16string text = {u'a', u, u, u'\uAC00', u, u'\uAC01', u'a', u'b', u, u'\u3042', u'\u00E9'};
    ASSERT_EQ(countOfClusters(text), clustersByIterator(text)) << test::hex(text);
  }
}

TEST(Clusters, OfMixedTextsAreTheIterators) {
  std::mt19937 random(4);
  for (int round = 0; round < 20'000; ++round) {
    const std::u16string text = test::randomText(random, test::kHardPieces, random() % 30);
    ASSERT_EQ(countOfClusters(text), clustersByIterator(text)) << test::hex(text);
  }
}

}  // namespace
}  // namespace quorvel
