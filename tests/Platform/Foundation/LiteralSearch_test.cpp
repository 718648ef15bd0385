#include <random>

#include <gtest/gtest.h>
#include <tests/support/RandomText.h>
#include <unicode/uchar.h>
#include <unicode/uregex.h>
#include <unicode/ustring.h>

#include <quorvel/Platform/Foundation/CaseFolding.h>
#include <quorvel/Platform/Foundation/LiteralSearch.h>

namespace quorvel {
namespace {

std::u16string unitsOf(char32_t scalar) {
  if (scalar <= 0xFFFF) return {static_cast<char16_t>(scalar)};
  return {static_cast<char16_t>(0xD7C0 + (scalar >> 10)), static_cast<char16_t>(0xDC00 | (scalar & 0x3FF))};
}

std::vector<NSRange> rangesByICU(const std::u16string& needle, const std::u16string& text, bool ignoringCase) {
  UErrorCode status = U_ZERO_ERROR;
  std::uint32_t flags = UREGEX_LITERAL;
  if (ignoringCase) flags |= UREGEX_CASE_INSENSITIVE;
  URegularExpression* expression =
      uregex_open(needle.data(), static_cast<std::int32_t>(needle.size()), flags, nullptr, &status);
  uregex_setText(expression, text.data(), static_cast<std::int32_t>(text.size()), &status);
  std::vector<NSRange> ranges;
  while (uregex_findNext(expression, &status)) {
    const auto start = static_cast<std::uint64_t>(uregex_start(expression, 0, &status));
    ranges.push_back({start, static_cast<std::uint64_t>(uregex_end(expression, 0, &status)) - start});
  }
  EXPECT_TRUE(U_SUCCESS(status)) << u_errorName(status);
  uregex_close(expression);
  return ranges;
}

/// The text in a block of its exact size, so that a sanitizer sees a read past its end.
std::vector<NSRange> ranges(const std::u16string& needle, const std::u16string& text, bool ignoringCase) {
  const auto block = std::make_unique<char16_t[]>(text.size());
  std::copy(text.begin(), text.end(), block.get());
  return LiteralSearch(needle, ignoringCase).ranges(StringView(block.get(), text.size()));
}

bool agree(const std::u16string& needle, const std::u16string& text) {
  for (const bool ignoringCase : {true, false}) {
    if (ranges(needle, text, ignoringCase) == rangesByICU(needle, text, ignoringCase)) continue;
    ADD_FAILURE() << (ignoringCase ? "ignoring case" : "with case") << "\nneedle " << test::hex(needle) << "\ntext   "
                  << test::hex(text.substr(0, 80));
    return false;
  }
  return true;
}

/// Each scalar that changes when folded, everywhere in Unicode.
std::vector<char32_t> changedScalars() {
  std::vector<char32_t> scalars;
  for (char32_t scalar = 0; scalar <= 0x10FFFF; ++scalar) {
    const std::u16string source = unitsOf(scalar);
    char16_t out[8];
    UErrorCode status = U_ZERO_ERROR;
    const auto size = static_cast<std::size_t>(
        u_strFoldCase(out, 8, source.data(), static_cast<std::int32_t>(source.size()), U_FOLD_CASE_DEFAULT, &status));
    const CaseFolding::Fold* fold = CaseFolding::shared().find(scalar);
    const std::u16string_view folded(out, size);
    EXPECT_EQ(fold ? fold->folded().units() : std::u16string_view(source), folded)
        << std::hex << static_cast<std::uint32_t>(scalar);
    if (folded != source) scalars.push_back(scalar);
  }
  return scalars;
}

TEST(LiteralSearch, FoldsLikeICUAndFindsEveryCharacterUnderEveryForm) {
  const std::vector<char32_t> scalars = changedScalars();
  ASSERT_GT(scalars.size(), 1400U);
  for (const char32_t scalar : scalars) {
    const std::u16string source = unitsOf(scalar);
    const CaseFolding::Fold* known = CaseFolding::shared().find(scalar);
    ASSERT_NE(known, nullptr);
    const std::u16string folded(known->folded().units());
    // All that fold to the same beginning, once each, between characters that fold to nothing else.
    std::u16string text = u"-" + source + u"-" + folded + u"-";
    for (const CaseFolding::Fold& fold : CaseFolding::shared().beginningWith(folded[0])) {
      text += unitsOf(fold.scalar) + u"." + unitsOf(fold.scalar) + folded.substr(1);
    }
    for (const std::u16string& needle : {source, source + u"-", u"-" + source, folded.substr(0, 1), folded + u"."}) {
      if (!agree(needle, text)) return;
    }
  }
}

TEST(LiteralSearch, BrokenSurrogatesAreNoCharactersInsidePairs) {
  const std::u16string high = u"\xD83D";
  const std::u16string low = u"\xDE00";
  const std::u16string pair = high + low;
  for (const std::u16string& needle : {high, low, u"a" + high, low + u"a", high + u"a", low + high, high + high}) {
    for (const std::u16string& text :
         {pair, u"a" + pair + u"a", high + pair, low + pair + high, high + high + low + low + u"a" + high, low + low,
          u"a" + high + u"a" + low + u"a" + pair + low + u"a"}) {
      agree(needle, text);
      agree(needle, text + std::u16string(40, u'-') + text);
    }
  }
}

using namespace std::string_view_literals;

/// Texts made of few letters that share folds, so that near misses abound.
class RandomTexts {
 public:
  explicit RandomTexts(std::uint32_t seed) : random_(seed) {}
  std::u16string text(std::size_t most, std::size_t letters) {
    std::u16string result;
    const std::size_t size = random_() % (most + 1);
    const std::size_t from = random_() % std::size(kAlphabet);
    while (result.size() < size) result += kAlphabet[(from + random_() % letters) % std::size(kAlphabet)];
    return result;
  }
  std::uint32_t number(std::uint32_t below) { return static_cast<std::uint32_t>(random_() % below); }

 private:
  static constexpr auto kAlphabet = test::pieces<82>(
      u"s|S|\u017F|ß|\u1E9E|t|T|\uFB05|\uFB06|f|F|i|\uFB00|\uFB01|\uFB03|l|\uFB02|\uFB04|I|\u0130|"
      u"\u0131|\u0307|j|\u01F0|\u030C|J|k|K|\u212A|\u00E5|\u212B|\u00C5|n|\u0149|\u02BC|N|\u03B9|"
      u"\u0390|\u1FD3|\u0308|\u0301|\u0345|\u1FBE|\u0399|\u03B1|\u1FB3|\u1FBC|\u1FB7|\u0342|\u1FB6|"
      u"\u03C9|\u03C2|\u03C3|\u03A3|\u0432|\u1C80|\u0412|\u13A0|\uAB70|\u13F8|\u13F0|\uAB70|\xD801|"
      u"\xDC00|\xDC28|\xD83D|\xDE00|-|\U00010400|\U00010428|\U0001E900|\U0001E922|회|의|a|A|\u1E9A|"
      u"\u02BE|\u0587|\u0565|\u0582| "sv);
  std::mt19937 random_;
};

TEST(LiteralSearch, AgreesWithICUOnRandomTexts) {
  RandomTexts random(20170714);
  for (int round = 0; round < 40000; ++round) {
    const std::size_t letters = 2 + random.number(round % 4 == 0 ? 90 : 8);
    std::u16string text = random.text(round % 8 == 0 ? 120 : 30, letters);
    std::u16string needle = random.text(1 + random.number(6), letters);
    if (random.number(2) && !text.empty())
      needle = text.substr(random.number(static_cast<std::uint32_t>(text.size())), 1 + random.number(5));
    if (needle.empty()) continue;
    if (!agree(needle, text)) return;
  }
}

TEST(LiteralSearch, RepeatedBeginningsTakeLinearTimeAndStayExact) {
  RandomTexts random(7);
  for (int round = 0; round < 60; ++round) {
    std::u16string piece = random.text(4, 3);
    if (piece.empty()) continue;
    std::u16string needle;
    for (int i = 0; i < 300; ++i) needle += piece;
    std::u16string text;
    for (int i = 0; i < 1000; ++i) text += i % 350 == 340 ? u"~" : piece;
    if (!agree(needle + u"x", text + needle + u"X")) return;
    if (!agree(needle, text)) return;
  }
  // Far into a text of repeated beginnings, what one character folds to is neither begun nor ended within.
  const std::u16string as(300, u'a');
  for (const std::u16string& needle : {as + u"s", as + u"ss", u"s" + as, u"sa" + as + u"s"}) {
    for (const std::u16string_view border : {u"ß", u"s", u"ßs", u"sß"}) {
      std::u16string text = as + as + as;
      for (int i = 0; i < 3; ++i) text += std::u16string(border) + as + as;
      if (!agree(needle, text)) return;
    }
  }
  std::u16string sas;
  for (int i = 0; i < 100; ++i) sas += u"sa";
  EXPECT_TRUE(agree(sas + u"sab", sas + sas + sas + u"xßa" + sas + u"b" + u"-" + sas + u"sab"));
  // Comparing at each place would take 2^31 steps for each search here.
  const std::u16string text(std::size_t{1} << 18, u'a');
  const std::u16string needle(std::size_t{1} << 14, u'A');
  EXPECT_TRUE(LiteralSearch(needle + u"b", true).ranges(text).empty());
  EXPECT_EQ(LiteralSearch(needle, true).ranges(text).size(), 16U);
}

}  // namespace
}  // namespace quorvel
