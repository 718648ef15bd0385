#include <random>

#include <gtest/gtest.h>
#include <tests/support/RandomText.h>
#include <tests/support/Row.h>

#include <quorvel/Extensions/Foundation/NSString+Additions+Cleaning.h>
#include <quorvel/Platform/Foundation/NSJSONSerialization.h>
#include <quorvel/Platform/Foundation/Unicode.h>
#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {
namespace {

using Clean = String (*)(const String&);

TEST(Cleaning, TextsOfTheRules) {
  using namespace std::string_view_literals;
  const test::Row<Clean, std::u16string_view, std::u16string_view, test::Why> rows[] = {
      {stringByRemovingNewLineCharacters, u"a\nb\r\nc", u"a b\r c", "line feeds alone"},
      {stringByRemovingNewLineCharacters, u"\n\n0123456\u2028\x85\n", u"  0123456\u2028\x85 ", "at both ends"},
      {stringByRemovingEmojiCharacters, u"\uD7FF\xD800\xDFFF\uEFFF\uF000", u"\uD7FF\uF000", "the borders"},
      {qv_stringEscapedForJavasacript, u"", u"", "empty"},
      {qv_stringEscapedForJavasacript, u"/\xD83D", u"/\xD83D", "an unpaired half: the receiver"},
      {qv_stringEscapedForJavasacript, u"/", u"\\/", "one character"},
  };
  for (const auto& [clean, text, expected, why] : rows) EXPECT_EQ(clean(String(text)), String(expected)) << why;
}

/// What needs no change is the same block of units.
TEST(Cleaning, SharesWhatDoesNotChange) {
  const String plain = u"plain words, \u2764 한글 and &quot;more&quot;;";
  for (const Clean clean : {&stringByRemovingNewLineCharacters, &stringByRemovingEmojiCharacters,
                            &qv_removeToEscapedSymbol, &qv_stringEscapedForJavasacript}) {
    const String text = clean == &qv_stringEscapedForJavasacript ? String(u"plain words, 한글 '&'") : plain;
    EXPECT_EQ(clean(text).data(), text.data());
  }
  const String unmarked = u"no markup: \"' 한글";
  EXPECT_EQ(qv_appendToEscapedSymbol(unmarked).data(), unmarked.data());
  EXPECT_EQ(truncatedStringWithMaxLength(unmarked, unmarked.size()).data(), unmarked.data());
}

TEST(Cleaning, Truncates) {
  const test::Row<std::u16string_view, std::uint64_t, std::u16string_view> rows[] = {
      {u"abcdef", 3, u"abc..."},    {u"abcdef", 6, u"abcdef"},          {u"abcdef", 0, u"..."}, {u"", 0, u""},
      {u"abc", UINT64_MAX, u"abc"}, {u"\xD83D\xDE00", 1, u"\xD83D..."},
  };
  for (const auto& [text, max, expected] : rows) {
    EXPECT_EQ(truncatedStringWithMaxLength(String(text), max), String(expected)) << String(text) << " " << max;
  }
}

std::u16string replaced(std::u16string text, std::u16string_view target, std::u16string_view replacement) {
  for (std::size_t at = 0; (at = text.find(target, at)) != text.npos; at += replacement.size()) {
    text.replace(at, target.size(), replacement);
  }
  return text;
}

/// One pass over blocks against the rules' replacements one after the other.
TEST(Cleaning, AgreesWithReplacementsInTurn) {
  constexpr std::u16string_view kPieces[] = {u"&",    u"<",   u">",    u";",       u"&lt;",   u"&gt;",   u"&amp;",
                                             u"amp;", u"lt;", u"한글", u"abcdefg", u"\xD83D", u"\xDE00", u"\uE000"};
  std::mt19937 random(7);
  for (int round = 0; round < 4000; ++round) {
    const std::u16string text = test::randomText(random, kPieces, random() % 24);
    std::u16string escaped = replaced(replaced(replaced(text, u"&", u"&amp;"), u"<", u"&lt;"), u">", u"&gt;");
    ASSERT_EQ(qv_appendToEscapedSymbol(text), String(escaped)) << test::hex(text);
    ASSERT_EQ(qv_removeToEscapedSymbol(String(escaped)), String(text)) << test::hex(text);
    std::u16string restored = replaced(replaced(replaced(text, u"&lt;", u"<"), u"&gt;", u">"), u"&amp;", u"&");
    ASSERT_EQ(qv_removeToEscapedSymbol(text), String(restored)) << test::hex(text);
    std::u16string kept;
    for (const char16_t unit : text) {
      if (static_cast<unsigned>(static_cast<char16_t>(unit + 0x2800)) >> 11 >= 3) kept += unit;
    }
    ASSERT_EQ(stringByRemovingEmojiCharacters(text), String(kept)) << test::hex(text);
  }
}

TEST(Cleaning, ScriptTextReadsBackAsJSON) {
  std::mt19937 random(11);
  for (int round = 0; round < 2000; ++round) {
    const String text = test::randomText(random, test::kHardPieces, random() % 12);
    if (!unicode::isWellFormed(text)) continue;
    StringBuilder json;
    json.append(u"[\"");
    json.append(qv_stringEscapedForJavasacript(text));
    json.append(u"\"]");
    ASSERT_EQ(NSJSONSerialization::parse(json.view()), Value(List{text})) << test::hex(StringView(text).units());
  }
}

}  // namespace
}  // namespace quorvel
