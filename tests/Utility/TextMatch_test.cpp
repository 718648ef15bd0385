#include <algorithm>
#include <memory>
#include <random>

#include <gtest/gtest.h>
#include <tests/support/NaiveMatch.h>
#include <tests/support/RandomText.h>

#include <quorvel/Utility/TextMatch.h>

namespace quorvel {
namespace {

using Ranges = std::vector<NSRange>;

constexpr MatchOptions kExact{};
constexpr MatchOptions kCase{.ignoresCase = true};
constexpr MatchOptions kAccents{.ignoresAccents = true};
constexpr MatchOptions kBoth{.ignoresCase = true, .ignoresAccents = true};
constexpr MatchOptions kWidth{.ignoresWidth = true};
constexpr MatchOptions kTyped{.ignoresCase = true, .partialHangul = true};

std::string shown(const Ranges& ranges) {
  std::string out;
  for (const NSRange range : ranges) {
    out += "[" + std::to_string(range.location) + "," + std::to_string(range.length) + "]";
  }
  return out;
}

MatchOptions optionsOf(unsigned bits) { return {(bits & 1) != 0, (bits & 2) != 0, (bits & 4) != 0, (bits & 8) != 0}; }

struct Row {
  StringView text;
  StringView term;
  const char* ranges;
  const char* why;
};

TEST(HangulMatch, TakesATermAsItIsTyped) {
  const Row rows[] = {
      {u"우리 한글", u"ㅎㄱ", "[3,2]", "initials"},
      {u"우리 한글", u"한ㄱ", "[3,2]", "an initial behind a syllable"},
      {u"우리 한글", u"ㅎ글", "[3,2]", "and before one"},
      {u"우리 한글", u"한그", "[3,2]", "no final yet"},
      {u"우리 한글", u"하글", "", "only the last syllable is half typed"},
      {u"한글 한길", u"한글", "[0,2]", "a whole term"},
      {u"ㅎㄱ 하고", u"ㅎㄱ", "[0,2][3,2]", "letters stand for themselves too"},
      {u"끝 글", u"ㄱ", "[2,1]", "a doubled consonant is another"},
      {u"가구 각 갃 가까 갂", u"각", "[0,2][3,1][5,1]", "a final moves on, or a second follows it"},
      {u"가ㄱ 가ㄲ", u"각", "[0,2]", "it moves to a letter as well"},
      {u"ㅗ ㅘ ㅚ ㅛ", u"ㅗ", "[0,1][2,1][4,1]", "vowel letters alike"},
      {u"ㅗa ㅘa", u"ㅗa", "[0,2]", "but at the end only"},
      {u"가수 ㄳ ㄱㅅ 각ㅅ", u"ㄳ", "[0,2][3,1][5,2][8,2]", "a letter of two keys is two"},
      {u"ㄳ", u"ㄱ", "", "no match ends within a letter"},
      {u"한글 한그 ", u"한그 ", "[3,3]", "a space ends the typing"},
      {u"각각각", u"ㄱㄱ", "[0,2]", "no overlap"},
      {u"\u1112\u1161\u11AB\u1100\u1173\u11AF", u"ㅎㄱ", "[0,6]", "decomposed syllables"},
      {u"한글", u"\u1112\u1161\u11AB\u1100\u1173", "[0,2]", "a decomposed term"},
      {u"한글", u"\u1112\u1100", "[0,2]", "conjoining letters by themselves"},
      {u"한\u302E글", u"ㅎㄱ", "", "a marked syllable is no plain one"},
      {u"\uD55C", u"\xD55C\xD83D", "", "an unpaired surrogate is itself"},
      {u"x", u"ㅎ", "", "nothing"},
      {u"", u"ㅎ", "", "an empty text"},
      {u"한", u"", "", "an empty term"},
      {nil, u"ㅎ", "", "a nil text"},
      {u"한", nil, "", "a nil term"},
  };
  for (const auto& [text, term, ranges, why] : rows) {
    EXPECT_EQ(shown(hangulMatch(text, term)), ranges) << text << " / " << term << ": " << why;
  }
}

TEST(MatchRanges, LeavesOutWhatDoesNotMatter) {
  const struct {
    MatchOptions options;
    Row row;
  } rows[] = {
      {kExact, {u"abcABC", u"ABC", "[3,3]", "as it stands"}},
      {kExact, {u"e\u0301 \u00E9 e", u"\u00E9", "[0,2][3,1]", "canonical equivalence"}},
      {kExact, {u"e\u0301 e", u"e", "[3,1]", "no range splits a sequence"}},
      {kExact, {u"\U0001F600", u"\xDE00", "", "nor a pair"}},
      {kExact, {u"\U0001F600", u"\xD83D", "", "at either half"}},
      {kExact, {u"\xDE00 \xD83D", u"\xD83D", "[2,1]", "unpaired halves are characters"}},
      {kExact, {u"한글", u"하", "", "a syllable is one"}},
      {kExact, {u"ㄳ", u"ㄱㅅ", "", "letters stay letters"}},
      {kCase, {u"Straße", u"s", "[0,1]", "of which none is found alone"}},
      {kCase, {u"ﬁx", u"ix", "", "is not split"}},
      {kCase, {u"İ", u"i", "", "which is more than i"}},
      {kCase, {u"Σίσυφος", u"ΣΥΦΟΣ", "[2,5]", "three forms of sigma"}},
      {kAccents, {u"Café Cafe\u0301 Cafe", u"Cafe", "[0,4][5,5][11,4]", "with the marks inside the range"}},
      {kAccents, {u"Cafe", u"Café", "[0,4]", "accents of the term do not matter either"}},
      {kAccents, {u"がか か\u3099", u"か", "[1,1]", "a sound mark is no accent"}},
      {kAccents, {u"øo", u"o", "[1,1]", "nor is a stroke"}},
      {kAccents, {u"≠=", u"=", "[0,1][1,1]", "but an overlay is"}},
      {kAccents, {u"\u05E9\u05C1\u05B8", u"\u05E9", "[0,3]", "Hebrew points"}},
      {kAccents, {u"ёлка й", u"елка", "[0,4]", "Cyrillic"}},
      {kAccents, {u"\u0301a", u"a", "[1,1]", "marks at the start belong to nothing"}},
      {kAccents, {u"a\u0301", u"\u0301", "", "accents alone are nothing"}},
      {kAccents, {u"E", u"é", "", "case still matters"}},
      {kAccents, {u"ᾳ", u"α", "[0,1]", "iota below is a mark"}},
      {kBoth, {u"İSTANBUL", u"istanbul", "[0,8]", "İ without its dot"}},
      {kBoth, {u"ᾳ ᾼ", u"α", "[0,1][2,1]", "also when case is ignored"}},
      {kExact, {u"ｶﾞ", u"ｶ", "[0,1]", "only where width is ignored"}},
      {kWidth, {u"\uFFE6100", u"\u20A9100", "[0,4]", "the won sign"}},
      {kTyped, {u"Trip 여행", u"TRIP ㅇㅎ", "[0,7]", "typed while case is ignored"}},
      {{.ignoresWidth = true, .partialHangul = true}, {u"한글", u"ﾾﾡ", "[0,2]", "half-width letters are letters"}},
      {{.ignoresAccents = true, .partialHangul = true}, {u"한\u302E글", u"ㅎㄱ", "[0,3]", "a tone mark is an accent"}},
  };
  for (const auto& [options, row] : rows) {
    EXPECT_EQ(shown(matchRanges(row.text, row.term, options)), row.ranges)
        << row.text << " / " << row.term << ": " << row.why;
    EXPECT_EQ(TextMatcher(row.term, options).hasMatch(row.text), *row.ranges != 0) << row.text << ": " << row.why;
  }
}

/// Each text in a block of its own size, so that a sanitizer sees a read past its end.
bool agree(const std::u16string& text, const std::u16string& term, MatchOptions options) {
  const auto block = std::make_unique<char16_t[]>(text.size());
  std::copy(text.begin(), text.end(), block.get());
  const Ranges found = matchRanges(StringView(block.get(), text.size()), term, options);
  const Ranges expected = test::NaiveMatch(term, options).ranges(text);
  EXPECT_EQ(shown(found), shown(expected))
      << "text " << test::hex(text) << "\nterm " << test::hex(term) << "\noptions " << options.ignoresCase
      << options.ignoresAccents << options.ignoresWidth << options.partialHangul;
  return found == expected;
}

/// Every syllable of two initials as a term, against all of that initial and all initials behind it.
TEST(HangulMatch, AgreesWithTheRuleOnWholeRows) {
  for (const char16_t first : {u'가', u'하'}) {
    std::u16string text;
    for (unsigned i = 0; i < 588; ++i) text += static_cast<char16_t>(first + i);
    for (unsigned i = 0; i < 588; i += 7) {
      for (unsigned initial = 0; initial < 19; initial += 2) {
        text += static_cast<char16_t>(first + i);
        text += static_cast<char16_t>(0xAC00 + initial * 588);
      }
    }
    for (unsigned i = 0; i < 588; i += first == u'가' ? 1 : 5) {
      const std::u16string term(1, static_cast<char16_t>(first + i));
      ASSERT_TRUE(agree(text, term, {.partialHangul = true}));
    }
  }
}

constexpr std::u16string_view kHangulPieces[] = {
    u"가", u"각", u"갂",     u"갃",     u"고",     u"과",     u"곽",     u"관",    u"나", u"난",
    u"낞", u"시", u"ㄱ",     u"ㅅ",     u"ㄳ",     u"ㄲ",     u"ㅗ",     u"ㅘ",    u"ㅏ", u"a",
    u"A",  u" ",  u"\u1100", u"\u1161", u"\u11A8", u"\u0301", u"\uFFA1", u"\uFFA3"};
constexpr std::u16string_view kWidePieces[] = {u"ｶ",  u"ﾞ",  u"ﾟ",  u"カ", u"ガ",     u"パ",     u"\u3099",
                                               u"Ａ", u"ａ", u"a",  u"A",  u"é",      u"\u3000", u" ",
                                               u"ﾡ",  u"ￂ",  u"ㅏ", u"ﾤ",  u"\u0301", u"가"};

TEST(MatchRanges, AgreesWithTheRuleOnHardTexts) {
  std::mt19937 random(7);
  for (int round = 0; round < 60'000; ++round) {
    const std::span<const std::u16string_view> alphabets[] = {test::kHardPieces, kHangulPieces, kWidePieces};
    const std::span<const std::u16string_view> all = alphabets[static_cast<std::size_t>(round) % 3];
    // A few pieces only, so that the term is there.
    std::vector<std::u16string_view> pieces;
    for (int i = 0; i < 4; ++i) pieces.push_back(all[random() % all.size()]);
    const std::u16string text = test::randomText(random, pieces, 1 + random() % 24);
    const std::u16string term = test::randomText(random, pieces, 1 + random() % 3);
    ASSERT_TRUE(agree(text, term, optionsOf(random() % 16)));
  }
}

TEST(MatchRanges, TakesTextsThatRepeatTheTermsBeginningInItsStride) {
  const std::u16string as(200'000, u'a');
  const std::u16string term(50'000, u'a');
  EXPECT_EQ(matchRanges(as, term + u"b", kCase), Ranges{});
  EXPECT_EQ(matchRanges(as, term, kCase).size(), 4U);
  std::u16string marked;
  for (int i = 0; i < 50'000; ++i) marked += u"a\u0323";
  EXPECT_EQ(matchRanges(marked, marked.substr(0, 50'001), kCase), Ranges{}) << "each place ends inside a sequence";
  const std::u16string consonants(100, u'ㄱ');
  EXPECT_EQ(hangulMatch(std::u16string(200'000, u'가'), consonants + u"나"), Ranges{});
  EXPECT_EQ(hangulMatch(std::u16string(200'000, u'가'), consonants).size(), 2'000U);
}

TEST(HangulMatch, TakesATermBeyondTheLimitAsItIs) {
  const std::u16string syllables(200, u'가');
  EXPECT_EQ(hangulMatch(syllables, std::u16string(128, u'ㄱ')).size(), 1U);
  EXPECT_EQ(hangulMatch(syllables, std::u16string(129, u'ㄱ')).size(), 0U);
  EXPECT_EQ(hangulMatch(syllables, std::u16string(129, u'가')).size(), 1U);
}

}  // namespace
}  // namespace quorvel
