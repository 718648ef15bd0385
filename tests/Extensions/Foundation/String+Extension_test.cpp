#include <random>

#include <gtest/gtest.h>
#include <tests/support/BundleFolder.h>
#include <tests/support/RandomText.h>
#include <tests/support/Row.h>

#include <quorvel/Extensions/Foundation/String+Extension.h>
#include <quorvel/Platform/Foundation/StringOperations.h>

namespace quorvel {
namespace {

TEST(StringExtension, TrimmedStringOfMixedTextsFollowsTheSteps) {
  constexpr std::u16string_view kPieces[] = {u"\u00A0", u" ",          u"\n",     u"\x0001", u"\u200B",
                                             u"x",      u"\U000E0001", u"\u3000", u"\xD800", u"\xDC00"};
  std::mt19937 random(1);
  for (int round = 0; round < 20'000; ++round) {
    const std::u16string text = test::randomText(random, kPieces, random() % 12);
    std::u16string without;
    for (const char16_t unit : text) {
      if (unit != 0xA0) without += unit;
    }
    const StringView expected =
        trimmed(trimmed(without, NSCharacterSet::whitespaceAndNewline()), NSCharacterSet::control());
    const std::optional<String> result = trimmedString(text);
    ASSERT_EQ(result.has_value(), !expected.isEmpty()) << test::hex(text);
    if (result) {
      ASSERT_EQ(StringView(*result), expected) << test::hex(text);
    }
  }
  EXPECT_EQ(trimmedString(nil), std::nullopt);
}

TEST(StringExtension, BlankTextsAreEqualAndOthersWhenTrimmed) {
  const test::Row<StringView, StringView, bool, test::Why> rows[] = {
      {nil, nil, true, "nil"},
      {nil, u"   ", true, "nil and a blank text"},
      {u"\u00A0", u"", true, "a no-break space is blank"},
      {u"a", u" ", false, "one is blank"},
      {u"  abc\u00A0", u"abc", true, "trimmed"},
      {u"\u00E9", u" e\u0301", true, "canonically"},
      {u"a", u"A", false, "case"},
      {u"\x0007", u"\x0007", false, "trimmed to nothing, but not blank"},
      {u"\x0007", u" ", false, "only one is blank"},
  };
  for (const auto& [lhs, rhs, isEqual, why] : rows) {
    EXPECT_EQ(StringExtension::isEqualString(lhs, rhs), isEqual) << why;
    EXPECT_EQ(StringExtension::isEqualString(rhs, lhs), isEqual) << why;
  }
  EXPECT_TRUE(StringExtension::isEmpty(nil));
  EXPECT_FALSE(StringExtension::isNotEmpty(u"\u2028"));
  EXPECT_TRUE(StringExtension::isNotEmpty(u"\x0007"));
  EXPECT_EQ(StringExtension::nonBreakSpace(), u"\u00A0");
}

TEST(StringExtension, MeasuresClustersAndUnits) {
  const StringView flag = u"\U0001F1F0\U0001F1F7";
  EXPECT_EQ(count(flag), 1U);
  EXPECT_EQ(length(flag), 4U);
  EXPECT_EQ(nsRange(flag), (NSRange{0, 4}));
  EXPECT_EQ(nsRange(nil), (NSRange{0, 0}));
}

TEST(StringExtension, RangesIgnoreCaseByLowerCase) {
  const test::Row<StringView, StringView, NSRange, NSRange, test::Why> rows[] = {
      {u"Hello", u"LL", NSRange::notFound(), {2, 2}, "case"},
      {u"\u0130x", u"X", NSRange::notFound(), {2, 1}, "units of the lower-cased receiver, which is longer"},
      {u"\u0130x", u"x", {1, 1}, {2, 1}, "or of the receiver"},
      {u"Stra\u00DFe", u"STRASSE", NSRange::notFound(), NSRange::notFound(), "lower case is no folding"},
      {u"ABe\u0301", u"\u00C9", NSRange::notFound(), {2, 2}, "canonically"},
      {nil, u"a", NSRange::notFound(), NSRange::notFound(), "nil"},
  };
  for (const auto& [text, string, exact, ignoring, why] : rows) {
    EXPECT_EQ(nsRangeOf(text, string, false), exact) << why;
    EXPECT_EQ(nsRangeOf(text, string, true), ignoring) << why;
  }
}

TEST(StringExtension, SubstringsStayInsideTheText) {
  const StringView text = u"abc";
  const test::Row<std::int64_t, StringView, StringView, test::Why> rows[] = {
      {1, u"bc", u"a", "inside"},
      {3, u"", u"abc", "the length"},
      {4, u"abc", u"abc", "past the end: the receiver"},
  };
  for (const auto& [index, from, to, why] : rows) {
    EXPECT_EQ(nsSubstringFrom(text, index), from) << why;
    EXPECT_EQ(nsSubstringTo(text, index), to) << why;
  }
  EXPECT_TRUE(nsSubstringFrom(text, 1).data() == text.data() + 1) << "a view";
  EXPECT_DEATH(static_cast<void>(nsSubstringFrom(text, -1)), "from:");
  EXPECT_DEATH(static_cast<void>(nsSubstringTo(text, -1)), "to:");
}

TEST(StringExtension, CharactersAreRemovedAndReplacedByScalar) {
  std::mt19937 random(2);
  for (int round = 0; round < 5'000; ++round) {
    const std::u16string text = test::randomText(random, test::kHardPieces, random() % 25);
    const std::u16string characters = test::randomText(random, test::kHardPieces, random() % 7);
    std::vector<StringView> pieces = componentsSeparatedBy(text, NSCharacterSet::withCharactersIn(characters));
    std::erase_if(pieces, [](StringView piece) { return piece.isEmpty(); });
    ASSERT_EQ(separatedBy(text, characters), joined(pieces, u""))
        << test::hex(text) << "without " << test::hex(characters);
    ASSERT_EQ(replacingCharacters(text, characters, u" / "), joined(pieces, u" / "))
        << test::hex(text) << "without " << test::hex(characters);
  }
  EXPECT_EQ(separatedEmptyCharacters(u"a\r\n\tb c"), u"a\nb c") << "line feeds and spaces stay";
  const String text = u"a text that is not inline";
  EXPECT_EQ(separatedBy(text, u"#").data(), text.data()) << "shared";
}

TEST(StringExtension, ContainmentIgnoresCase) {
  EXPECT_TRUE(containsCaseInsensitive(u"Hello", u"LL"));
  EXPECT_TRUE(containsCaseInsensitive(u"STRASSE", u"stra\u00DF"));
  EXPECT_FALSE(containsCaseInsensitive(u"Hello", u""));
  EXPECT_FALSE(containsCaseInsensitive(nil, u"a"));
}

using Localized = test::BundleFolder;

TEST_F(Localized, TablesAreAskedInTheirOrder) {
  write("Localizable.strings",
        "\"hello\" = \"Hallo\"; \"same\" = \"same\"; \"\u00E9\" = \"e\u0301\"; \"n\" = \"%@: %d\";");
  write("NoTranslation.strings", "\"same\" = \"second\"; \"\u00E9\" = \"other\"; \"hello\" = \"not reached\";");
  write("Localizable_dev.strings", "\"dev\" = \"third\"; \"same\" = \"not reached\";");
  NSBundle::setMain(NSBundle::at(folder_.string()));
  const test::Row<String, StringView, test::Why> rows[] = {
      {u"hello", u"Hallo", "the default table first"},
      {u"same", u"second", "a text like its key counts as none"},
      {u"nowhere", u"nowhere", "the key itself"},
      {u"", u"", "an empty key"},
  };
  for (const auto& [key, text, why] : rows) EXPECT_EQ(localized(key), String(text)) << why;
  EXPECT_EQ(localizedFormat(u"n", {u"a", 7}), u"a: 7");
  EXPECT_EQ(localizedFormat(u"%d of %d", {1, 2}), u"1 of 2") << "a key without an entry is the format";
}

}  // namespace
}  // namespace quorvel
