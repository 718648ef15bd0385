#include <random>

#include <gtest/gtest.h>
#include <tests/support/RandomText.h>

#include <quorvel/Extensions/Foundation/NSString+TextSearch.h>
#include <quorvel/Platform/Foundation/StringOperations.h>

namespace quorvel {
namespace {

using NSStringTextSearch::isFirstLetterJamo;
using NSStringTextSearch::isSearchableString;
using NSStringTextSearch::removeInvaildSearchStr;

TEST(TextSearch, JamoAreTwoRanges) {
  for (char32_t unit = 0; unit <= 0xFFFF; ++unit) {
    const bool isJamo = (unit >= 0x1100 && unit <= 0x11FF) || (unit >= 0x3131 && unit <= 0x318E);
    const char16_t text[] = {static_cast<char16_t>(unit), u'a', 0};
    const char16_t behind[] = {u'a', static_cast<char16_t>(unit), 0};
    ASSERT_EQ(isFirstLetterJamo(text), isJamo) << test::hex(text);
    ASSERT_FALSE(isFirstLetterJamo(behind)) << test::hex(behind);
    ASSERT_EQ(isSearchableString(behind), !isJamo && !isWhitespaceOrNewline(unit)) << test::hex(behind);
  }
}

// The rule as it is written, one pass after another.
std::u16string removedByPasses(std::u16string text) {
  if (text.size() < 2) return text;
  while (true) {
    text = std::u16string(trimmed(text, NSCharacterSet::whitespaceAndNewline()).units());
    if (isSearchableString(text)) return text;
    if (text.size() >= 2) text.pop_back();
    if (text.size() < 2) return text;
  }
}

TEST(TextSearch, CleansAsThePassesDo) {
  constexpr std::u16string_view kPieces[] = {u"\u3131", u"\u1161", u" ", u"\n", u"\uD55C", u"a", u"\xD83D", u"\u3130"};
  std::mt19937 random(1);
  for (int round = 0; round < 50'000; ++round) {
    const std::u16string text = test::randomText(random, kPieces, random() % 9);
    ASSERT_EQ(StringView(*removeInvaildSearchStr(text)).units(), removedByPasses(text)) << test::hex(text);
  }
  EXPECT_EQ(removeInvaildSearchStr(u" a"), u"a") << "trimmed although not searchable";
  EXPECT_FALSE(removeInvaildSearchStr(nil));
  EXPECT_FALSE(isFirstLetterJamo(u""));
  for (const StringView text : {StringView(nil), StringView(u""), StringView(u"a"), StringView(u" a")}) {
    EXPECT_FALSE(isSearchableString(text)) << text;
  }
}

TEST(TextSearch, AMillionLettersGoAtOnce) {
  std::u16string text(1'000'000, u'\u3131');
  for (std::size_t i = 0; i < text.size(); i += 3) text[i] = u' ';
  EXPECT_EQ(removeInvaildSearchStr(u"ab" + text), u"ab");
  EXPECT_EQ(removeInvaildSearchStr(text), u"\u3131");
}

TEST(TextSearch, LettersAreUnits) {
  EXPECT_EQ(stringArrayOfEachLetters(u"ab"), (List{u"a", u"b"}));
  EXPECT_EQ(stringArrayOfEachLetters(u"\uD55C\U0001F600"), (List{u"\uD55C", u"\xD83D", u"\xDE00"}));
  EXPECT_EQ(stringArrayOfEachLetters(u""), List{});
  EXPECT_EQ(stringArrayOfEachLetters(nil), List{});
}

}  // namespace
}  // namespace quorvel
