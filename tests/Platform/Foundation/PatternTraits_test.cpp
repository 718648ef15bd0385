#include <random>

#include <gtest/gtest.h>

#include <quorvel/Platform/Foundation/NSRegularExpression.h>
#include <quorvel/Platform/Foundation/PatternTraits.h>

namespace quorvel {

TEST(PatternTraits, LiteralPrefix) {
  const struct {
    StringView pattern;
    StringView expected;
    const char* why;
  } rows[] = {
      {u"zzz\\s+\\d", u"zzz", "up to a class"},
      {u"a\\.b-\uAC00[x]", u"a.b-\uAC00", "an escaped mark stands for itself"},
      {u"ab\\Qc", u"ab", "an escaped letter is a command"},
      {u"ab\\", u"ab", "an escape without its character"},
  };
  for (const auto& row : rows) EXPECT_EQ(StringView(literalPrefix(row.pattern)), row.expected) << row.why;
}

// An empty group before a pattern keeps its meaning, and hides what it begins with.
TEST(PatternTraits, ThePrefixChangesNoMatch) {
  constexpr StringView kPieces[] = {u"s",         u"S",  u"ss", u"k",    u"\\.", u"i",   u"\uAC00",
                                    u"[s\u00DF]", u"s?", u"k+", u".",    u"\\s", u"\\b", u"(s)",
                                    u"f",         u"fi", u"$",  u"s{2}", u"|",   u"^",   u"(?i)"};
  constexpr StringView kCharacters[] = {u"s", u"S", u"\u00DF", u"\u017F", u"k",      u"\u212A", u".",
                                        u"i", u"f", u"\uFB01", u"\u0130", u"\uAC00", u" ",      u"\u0307"};
  std::mt19937 random(7);
  const auto joined = [&random](const auto& pieces, std::size_t count) {
    std::u16string text;
    for (std::size_t i = 0; i < count; ++i) text += pieces[random() % std::size(pieces)].units();
    return text;
  };
  using Options = NSRegularExpression::Options;
  for (int round = 0; round < 4000; ++round) {
    const std::u16string pattern = joined(kPieces, 1 + random() % 5);
    for (const Options options : {Options::None, Options::CaseInsensitive}) {
      const auto plain = NSRegularExpression::withPattern(pattern, options);
      const auto hidden = NSRegularExpression::withPattern(u"(?:)" + pattern, options);
      ASSERT_EQ(plain.has_value(), hidden.has_value());
      for (int i = 0; plain && i < 8; ++i) {
        const std::u16string text = joined(kCharacters, random() % 12);
        ASSERT_EQ(plain->matchRanges(text), hidden->matchRanges(text)) << String(pattern) << " in " << String(text);
      }
    }
  }
}

}  // namespace quorvel
