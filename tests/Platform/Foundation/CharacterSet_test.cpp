#include <random>

#include <gtest/gtest.h>
#include <tests/support/RandomText.h>
#include <tests/support/Row.h>
#include <unicode/uchar.h>

#include <quorvel/Platform/Foundation/CharacterSet.h>
#include <quorvel/Platform/Foundation/Unicode.h>

namespace quorvel {
namespace {

constexpr char32_t kLastScalar = 0x10FFFF;

TEST(CharacterSet, StandardSetsAreTheGeneralCategoriesAndTheNamedControls) {
  const auto isOneOf = [](char32_t scalar, std::u32string_view others) {
    return others.find(scalar) != std::u32string_view::npos;
  };
  struct Row {
    const NSCharacterSet& set;
    std::uint32_t categories;
    std::u32string_view others;
    const char* name;
  };
  const Row rows[] = {
      {NSCharacterSet::whitespaceAndNewline(), U_GC_Z_MASK, U"\t\n\v\f\r\u0085", "whitespaceAndNewline"},
      {NSCharacterSet::whitespace(), U_GC_ZS_MASK, U"\t", "whitespace"},
      {NSCharacterSet::newline(), 0, U"\n\v\f\r\u0085\u2028\u2029", "newline"},
      {NSCharacterSet::control(), U_GC_CC_MASK | U_GC_CF_MASK, U"", "control"},
      {NSCharacterSet::nonBase(), U_GC_MN_MASK | U_GC_MC_MASK | U_GC_ME_MASK, U"", "nonBase"},
      {NSCharacterSet::decimalDigit(), U_GC_ND_MASK, U"", "decimalDigit"},
  };
  for (const auto& [set, categories, others, name] : rows) {
    const NSCharacterSet inverted = set.inverted();
    for (char32_t scalar = 0; scalar <= kLastScalar; ++scalar) {
      const bool isMember =
          (U_MASK(u_charType(static_cast<UChar32>(scalar))) & categories) != 0 || isOneOf(scalar, others);
      ASSERT_EQ(set.contains(scalar), isMember) << name << " U+" << std::hex << static_cast<unsigned>(scalar);
      ASSERT_NE(inverted.contains(scalar), isMember) << name << " U+" << std::hex << static_cast<unsigned>(scalar);
    }
    EXPECT_FALSE(inverted.contains(kLastScalar + 1)) << name << ": no set goes beyond the last scalar";
    EXPECT_FALSE(inverted.contains(0xFFFFFFFF)) << name;
  }
}

TEST(CharacterSet, TheInlineTestOfWhiteSpaceIsTheSet) {
  for (char32_t scalar = 0; scalar <= kLastScalar; ++scalar) {
    ASSERT_EQ(isWhitespaceOrNewline(scalar), NSCharacterSet::whitespaceAndNewline().contains(scalar))
        << std::hex << static_cast<unsigned>(scalar);
  }
}

TEST(CharacterSet, AddressSetsHoldLettersDigitsAndTheirPunctuationOnly) {
  const std::u16string_view user = u"!$&'()*+,-.;=_~";
  const std::u16string_view query = u"!$&'()*+,-./:;=?@_~";
  struct Row {
    const NSCharacterSet& set;
    std::u16string_view punctuation;
    const char* name;
  };
  const Row rows[] = {
      {NSCharacterSet::urlUserAllowed(), user, "user"},
      {NSCharacterSet::urlPasswordAllowed(), user, "password"},
      {NSCharacterSet::urlHostAllowed(), u"!$&'()*+,-.;=_~:[]", "host"},
      {NSCharacterSet::urlPathAllowed(), u"!$&'()*+,-./:=@_~", "path has no semicolon"},
      {NSCharacterSet::urlQueryAllowed(), query, "query"},
      {NSCharacterSet::urlFragmentAllowed(), query, "fragment"},
  };
  for (const auto& [set, punctuation, name] : rows) {
    for (char32_t scalar = 0; scalar <= kLastScalar; ++scalar) {
      const bool isAlphanumeric = scalar < 0x80 && u_isalnum(static_cast<UChar32>(scalar));
      const bool isPunctuation =
          scalar < 0x80 && punctuation.find(static_cast<char16_t>(scalar)) != std::u16string_view::npos;
      ASSERT_EQ(set.contains(scalar), isAlphanumeric || isPunctuation)
          << name << " U+" << std::hex << static_cast<unsigned>(scalar);
    }
  }
}

TEST(CharacterSet, AlgebraGoesByScalarInAllPlanes) {
  const auto set = [](StringView text) { return NSCharacterSet::withCharactersIn(text); };
  const NSCharacterSet mixed = set(u"a\u00E9\U0001F600\U0010FFFF");
  EXPECT_TRUE(mixed.contains(0x10FFFF));
  EXPECT_FALSE(mixed.contains(0xD83D)) << "a pair is one scalar, not its halves";
  EXPECT_FALSE(mixed.contains(0x1F601));
  EXPECT_FALSE(mixed.contains(U'e')) << "no canonical equivalence";
  EXPECT_TRUE(set(u"\xDE00\xD83D").contains(0xD83D)) << "halves in the wrong order are members themselves";

  const test::Row<NSCharacterSet, NSCharacterSet, test::Why> rows[] = {
      {mixed.removing(u"\U0001F600\U0010FFFFz"), set(u"\u00E9a"),
       "a plane that lost its members is as one that had none"},
      {mixed.removing(u""), mixed, "nothing to remove"},
      {mixed.unionWith(set(u"b\U0001F601")), set(u"ab\u00E9\U0001F600\U0001F601\U0010FFFF"), "union"},
      {mixed.intersectionWith(set(u"ab\U0001F600")), set(u"a\U0001F600"), "intersection"},
      {mixed.inverted().inverted(), mixed, "twice inverted"},
      {mixed.intersectionWith(mixed.inverted()), NSCharacterSet(), "nothing in common"},
      {set(nil), NSCharacterSet(), "nil has no characters"},
  };
  for (const auto& [made, expected, why] : rows) EXPECT_TRUE(made == expected) << why;
  EXPECT_FALSE(mixed == mixed.removing(u"\U0010FFFF"));
}

TEST(CharacterSet, FindStopsAtTheFirstScalarThatIsAMember) {
  std::mt19937 random(1);
  for (const StringView members : {StringView(u"\u00E9\u3099 \n"), StringView(u"\U0001F469e"), StringView(u"\xD83D"),
                                   StringView(u"\xDE00\uFFFF"), StringView(u"")}) {
    const NSCharacterSet set = NSCharacterSet::withCharactersIn(members);
    for (int round = 0; round < 500; ++round) {
      const std::u16string text = test::randomText(random, test::kHardPieces, random() % 20);
      std::size_t length = 0;
      std::size_t expected = 0;
      while (expected < text.size()) {
        std::size_t next = expected;
        if (set.contains(unicode::nextScalar(text, next))) break;
        expected = next;
      }
      const std::size_t found = set.find(text, 0, length);
      ASSERT_EQ(found, expected) << test::hex(text);
      if (found < text.size()) {
        ASSERT_EQ(length, unicode::isHighSurrogate(text[found]) && found + 1 < text.size() &&
                                  unicode::isLowSurrogate(text[found + 1])
                              ? 2U
                              : 1U);
      }
    }
  }
}

}  // namespace
}  // namespace quorvel
