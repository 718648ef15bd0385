#include <random>

#include <gtest/gtest.h>
#include <tests/support/RandomText.h>
#include <unicode/uchar.h>
#include <unicode/unorm2.h>
#include <unicode/ustring.h>

#include <quorvel/Platform/Foundation/Comparison.h>
#include <quorvel/Platform/Foundation/PlainUnits.h>
#include <quorvel/Platform/Foundation/Unicode.h>

namespace quorvel {
namespace {

// Form D, or with case ignored form D of the folded form D; ICU's own comparison is not to be asked, because it errs on
// unpaired surrogates.
std::u16string formOf(std::u16string_view text, bool ignoresCase) {
  UErrorCode status = U_ZERO_ERROR;
  const auto decomposed = [&status](std::u16string_view part) {
    std::u16string form(part.size() * 4 + 1, u'\0');
    form.resize(static_cast<std::size_t>(unorm2_normalize(unorm2_getNFDInstance(&status), part.data(),
                                                          static_cast<std::int32_t>(part.size()), form.data(),
                                                          static_cast<std::int32_t>(form.size()), &status)));
    return form;
  };
  std::u16string form = decomposed(text);
  if (!ignoresCase) return form;
  std::u16string folded(form.size() * 3 + 1, u'\0');
  folded.resize(
      static_cast<std::size_t>(u_strFoldCase(folded.data(), static_cast<std::int32_t>(folded.size()), form.data(),
                                             static_cast<std::int32_t>(form.size()), U_FOLD_CASE_DEFAULT, &status)));
  return decomposed(folded);
}

std::weak_ordering orderByForms(std::u16string_view a, std::u16string_view b, bool ignoresCase) {
  return formOf(a, ignoresCase).compare(formOf(b, ignoresCase)) <=> 0;
}

// The search as its rule has it: every range between boundaries.

bool isBoundaryByRule(std::u16string_view text, std::size_t index) {
  if (index == 0 || index == text.size()) return true;
  if (U16_IS_TRAIL(text[index]) && U16_IS_LEAD(text[index - 1])) return false;
  std::size_t at = index;
  const auto scalar = static_cast<UChar32>(unicode::nextScalar(text, at));
  const auto before = static_cast<UChar32>(unicode::previousScalar(text, at = index));
  const int type = u_getIntPropertyValue(scalar, UCHAR_GRAPHEME_CLUSTER_BREAK);
  const int previous = u_getIntPropertyValue(before, UCHAR_GRAPHEME_CLUSTER_BREAK);
  if (type == U_GCB_V) return previous != U_GCB_L && previous != U_GCB_V && previous != U_GCB_LV;
  if (type == U_GCB_T) {
    return previous != U_GCB_V && previous != U_GCB_T && previous != U_GCB_LV && previous != U_GCB_LVT;
  }
  return (U_GET_GC_MASK(scalar) & U_GC_M_MASK) == 0;
}

NSRange rangeByRule(std::u16string_view text, std::u16string_view needle, bool ignoresCase) {
  if (needle.empty()) return NSRange::notFound();
  const std::u16string wanted = formOf(needle, ignoresCase);
  for (std::size_t start = 0; start < text.size(); ++start) {
    if (!isBoundaryByRule(text, start)) continue;
    for (std::size_t end = start + 1; end <= text.size(); ++end) {
      if (!isBoundaryByRule(text, end)) continue;
      if (formOf(text.substr(start, end - start), ignoresCase) == wanted) return {start, end - start};
    }
  }
  return NSRange::notFound();
}

TEST(Comparison, NilIsBeforeTheEmptyText) {
  const StringView empty = u"";
  const StringView ten = u"10";
  const StringView nine = u"9";
  for (const auto compare : {&compareCanonical, &caseInsensitiveCompare}) {
    EXPECT_TRUE(compare(nil, nil) == 0 && compare(nil, empty) < 0 && compare(empty, nil) > 0);
    EXPECT_TRUE(compare(ten, nine) < 0) << "by unit, not by number";
  }
  EXPECT_TRUE(isCanonicallyEqual(nil, nil));
  EXPECT_FALSE(isCanonicallyEqual(nil, u""));
}

TEST(Comparison, OrdersHardTextsByTheirForms) {
  std::mt19937 random(5);
  for (int round = 0; round < 100'000; ++round) {
    const std::u16string shared = test::randomText(random, test::kHardPieces, random() % 12);
    const std::u16string a = shared + test::randomText(random, test::kHardPieces, random() % 4);
    const std::u16string b = shared + test::randomText(random, test::kHardPieces, random() % 4);
    ASSERT_TRUE(compareCanonical(a, b) == orderByForms(a, b, false)) << test::hex(a) << "/ " << test::hex(b);
    ASSERT_EQ(isCanonicallyEqual(a, b), orderByForms(a, b, false) == 0) << test::hex(a) << "/ " << test::hex(b);
    ASSERT_TRUE(caseInsensitiveCompare(a, b) == orderByForms(a, b, true)) << test::hex(a) << "/ " << test::hex(b);
  }
}

TEST(Comparison, OrdersPairsOfSyllablesByTheirForms) {
  std::mt19937 random(6);
  const auto syllable = [&random] { return static_cast<char16_t>(0xAC00 + random() % 60); };
  for (int round = 0; round < 100'000; ++round) {
    const char16_t next[] = {u'a', u'\uAC00', u'\u4E00', u'\u11A8', u'\u0301'};
    std::u16string a{u'x', syllable()};
    std::u16string b{u'x', syllable()};
    if (random() % 4 != 0) a += next[random() % 5];
    if (random() % 4 != 0) b += next[random() % 5];
    ASSERT_TRUE(compareCanonical(a, b) == orderByForms(a, b, false)) << test::hex(a) << "/ " << test::hex(b);
  }
}

TEST(Comparison, PlainUnitsNeedNoCharacterData) {
  for (char32_t unit = 0; unit <= 0xFFFF; ++unit) {
    const auto u = static_cast<char16_t>(unit);
    const auto code = static_cast<UChar32>(unit);
    const auto shown = [code] { return std::to_string(code); };
    const std::u16string eight(8, u);
    const auto units = vector::Units::load(eight.data());
    ASSERT_EQ(plain::Composed::has(units).lanesSet().all(), plain::Composed::has(u)) << shown();
    ASSERT_EQ(plain::Caseless::has(units).lanesSet().all(), plain::Caseless::has(u)) << shown();
    char16_t folded[8];
    plain::SimpleFold::fold(units).store(folded);
    ASSERT_EQ(folded[7], plain::SimpleFold::fold(u)) << shown();
    if (unicode::isSurrogate(unit)) continue;
    UErrorCode status = U_ZERO_ERROR;
    char16_t full[4];
    const std::int32_t size = u_strFoldCase(full, 4, &u, 1, U_FOLD_CASE_DEFAULT, &status);
    const bool isFoldSimple = size == 1 && full[0] == folded[0];
    ASSERT_TRUE(isFoldSimple || folded[0] == u) << shown() << ": what is folded is folded fully";
    ASSERT_TRUE(isFoldSimple || !plain::Caseless::has(u)) << shown();
    const bool isComposed = u_getIntPropertyValue(code, UCHAR_NFC_QUICK_CHECK) == UNORM_YES &&
                            (U_GET_GC_MASK(code) & U_GC_M_MASK) == 0 && u_getCombiningClass(code) == 0;
    ASSERT_TRUE(isComposed || !(plain::Composed::has(u) || plain::Caseless::has(u))) << shown();
  }
}

TEST(CanonicalSearch, NeitherFindsNothingNorLooksIntoNil) {
  const StringView text = u"a\r\nb";
  const StringView lineFeed = u"\n";
  for (const auto find : {&rangeOfString, &rangeOfStringCaseInsensitive}) {
    EXPECT_FALSE(find(text, text.sub(0, 0)).isFound());
    EXPECT_FALSE(find(nil, text).isFound());
    EXPECT_FALSE(find(text, nil).isFound());
    EXPECT_EQ(find(text, lineFeed), (NSRange{2, 1})) << "CR LF is no sequence";
  }
}

TEST(CanonicalSearch, FindsTheFirstRangeOfTheRule) {
  std::mt19937 random(7);
  int found = 0;
  for (int round = 0; round < 60'000; ++round) {
    // A few pieces a round, so that they meet often.
    std::u16string_view pieces[5];
    for (auto& piece : pieces) piece = test::kHardPieces[random() % std::size(test::kHardPieces)];
    const std::u16string text = test::randomText(random, pieces, random() % 9);
    const std::u16string needle = test::randomText(random, pieces, 1 + random() % 3);
    const NSRange exact = rangeOfString(text, needle);
    const NSRange caseless = rangeOfStringCaseInsensitive(text, needle);
    ASSERT_EQ(exact, rangeByRule(text, needle, false)) << test::hex(text) << "in which " << test::hex(needle);
    ASSERT_EQ(caseless, rangeByRule(text, needle, true)) << test::hex(text) << "in which " << test::hex(needle);
    found += static_cast<int>(exact.isFound()) + static_cast<int>(caseless.isFound());
  }
  EXPECT_GT(found, 10'000) << "texts in which nothing is found try nothing";
}

TEST(CanonicalSearch, FindsEveryUnitByItsCaseForms) {
  for (char32_t unit = 0; unit <= 0xFFFF; ++unit) {
    const auto code = static_cast<UChar32>(unit);
    if (unicode::isSurrogate(unit)) continue;
    const std::u16string text{u'-', static_cast<char16_t>(unit), u'-'};
    for (const UChar32 form : {u_toupper(code), u_tolower(code), u_foldCase(code, U_FOLD_CASE_DEFAULT)}) {
      const std::u16string needle{static_cast<char16_t>(form)};
      ASSERT_EQ(rangeOfStringCaseInsensitive(text, needle), rangeByRule(text, needle, true))
          << test::hex(text) << "in which " << test::hex(needle);
      ASSERT_EQ(rangeOfString(text, needle), rangeByRule(text, needle, false))
          << test::hex(text) << "in which " << test::hex(needle);
    }
  }
}

TEST(CanonicalSearch, InLongTextsWithManyNearHitsIsLinear) {
  const auto repeated = [](std::u16string_view piece, std::size_t count) {
    std::u16string text;
    for (std::size_t i = 0; i < count; ++i) text += piece;
    return text;
  };
  const std::u16string text = repeated(u"a\u0301", 200'000);
  const std::u16string needle = repeated(u"a\u0301", 100'000) + u"a";
  EXPECT_FALSE(rangeOfString(text, needle).isFound()) << "each literal hit would split the letter at its end";
  EXPECT_FALSE(rangeOfStringCaseInsensitive(text, needle).isFound());
  const NSRange end{200'000, 200'001};
  EXPECT_EQ(rangeOfString(text + u"a", needle), end) << "only the last splits nothing";
  EXPECT_EQ(rangeOfStringCaseInsensitive(repeated(u"\u00C1", 200'000) + u"A", needle), (NSRange{100'000, 100'001}));
  EXPECT_TRUE(rangeOfString(u"a" + repeated(u"\u0301", 100'000), u"b" + repeated(u"\u0301", 10)) ==
              NSRange::notFound());
}

}  // namespace
}  // namespace quorvel
