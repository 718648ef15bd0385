#include <cstdio>

#include <gtest/gtest.h>
#include <tests/support/IllFormedUTF8.h>
#include <tests/support/Row.h>

#include <quorvel/Platform/Foundation/PercentEncoding.h>
#include <quorvel/Platform/Foundation/Unicode.h>

namespace quorvel {
namespace {

constexpr PercentAllowed kLetters = PercentAllowed::only("abc");
constexpr PercentAllowed kAllButPercent = PercentAllowed::allBut("%");

/// All scalars from `first` on, `count` code points.
String scalarsFrom(char32_t first, char32_t count) {
  StringBuilder out;
  for (char32_t scalar = first; scalar < first + count; ++scalar) {
    if (!unicode::isSurrogate(scalar)) out.appendScalar(scalar);
  }
  return out.finish();
}

/// The bytes, each as an escape unless it is among those that are kept.
std::string escapesOf(std::string_view bytes, std::string_view kept = {}) {
  std::string result;
  for (const char byte : bytes) {
    char escape[4];
    std::snprintf(escape, sizeof escape, "%%%02X", static_cast<unsigned char>(byte));
    kept.find(byte) == kept.npos ? result.append(escape) : result.append(1, byte);
  }
  return result;
}

TEST(PercentEncoding, EveryScalarThereAndBack) {
  const NSCharacterSet letters = NSCharacterSet::withCharactersIn(u"abc");
  for (std::uint32_t first = 0; first < 0x110000; first += 0x1000) {
    const String text = scalarsFrom(first, 0x1000);
    const std::optional<String> byTable = addingPercentEncoding(text, kLetters);
    ASSERT_TRUE(byTable);
    ASSERT_EQ(*byTable, String::fromASCII(escapesOf(text.toUTF8().value_or(""), "abc"))) << first;
    ASSERT_EQ(addingPercentEncoding(text, letters), byTable) << first;
    ASSERT_EQ(removingPercentEncoding(*byTable), text) << first;
    const std::optional<String> kept = addingPercentEncoding(text, kAllButPercent);
    ASSERT_TRUE(kept);
    ASSERT_EQ(kept->size(), text.size() + (first == 0 ? 2 : 0)) << first;
    ASSERT_EQ(removingPercentEncoding(*kept), text) << first;
  }
}

TEST(PercentEncoding, TextsThatNeedNoChangeAreShared) {
  const String letters = u"abcabcabcabcabcabc";
  EXPECT_EQ(addingPercentEncoding(letters, kLetters)->data(), letters.data());
  EXPECT_EQ(removingPercentEncoding(letters)->data(), letters.data());
}

TEST(PercentEncoding, LengthsAroundVectorsAndSmallBuffers) {
  for (std::size_t size = 0; size < 150; ++size) {
    for (std::size_t changed = 0; changed < size; ++changed) {
      std::u16string units(size, u'a');
      units[changed] = changed % 2 == 0 ? u' ' : u'\uD55C';
      const String text(units);
      const std::optional<String> encoded = addingPercentEncoding(text, kLetters);
      ASSERT_EQ(*encoded, String::fromASCII(escapesOf(text.toUTF8().value_or(""), "abc"))) << size << ", " << changed;
      ASSERT_EQ(removingPercentEncoding(*encoded), text) << size << ", " << changed;
    }
  }
}

TEST(PercentEncoding, UnpairedSurrogatesHaveNoBytes) {
  const std::u16string texts[] = {
      {0xD800},       {0xDC00},         {u'a', 0xD83D},
      {0xD83D, u'a'}, {0xDE00, 0xD83D}, std::u16string(20, u'a') + char16_t{0xDBFF} + std::u16string(20, u'b')};
  for (const std::u16string& text : texts) {
    EXPECT_EQ(addingPercentEncoding(text, kLetters), std::nullopt);
    EXPECT_EQ(addingPercentEncoding(text, kAllButPercent), std::nullopt);
    EXPECT_EQ(addingPercentEncoding(text, NSCharacterSet::control().inverted()), std::nullopt);
    EXPECT_EQ(removingPercentEncoding(text), std::nullopt);
  }
}

// decoded: nullptr: nil
TEST(PercentEncoding, DecodesValidUTF8Only) {
  const test::Row<const char*, const char*, test::Why> rows[] = {
      {"a+b", "a+b", "plus stays"},
      {"%ed%95%9c%ED%95%9C", "한한", "digits of either case"},
      {"%EF%BB%BFx", "\xEF\xBB\xBFx", "a decoded U+FEFF stays"},
      {"%2541", "%41", "decoded once only"},
      {"한%20글", "한 글", "text around escapes stays"},
      {"100%", nullptr, "no digits"},
      {"%4", nullptr, "one digit"},
      {"%G0", nullptr, "no hexadecimal digit"},
      {"%0G", nullptr, "no hexadecimal digit"},
      {"%%41", nullptr, "a percent sign is no digit"},
      {"%é1", nullptr, "beyond ASCII"},
      {"%一1", nullptr, "beyond 8 bits"},
      {"%ED%95%20", nullptr, "cut off by a space"},
      {"%ED한", nullptr, "text does not continue an escape"},
  };
  for (const auto& [text, decoded, why] : rows) {
    const std::optional<String> result = removingPercentEncoding(*String::fromUTF8(text));
    ASSERT_EQ(result.has_value(), decoded != nullptr) << text << ": " << why;
    if (decoded) {
      EXPECT_EQ(result->toUTF8Replacing(), decoded) << why;
    }
  }
  for (const std::string_view bad : test::kIllFormedUTF8) {
    const std::string escapes = escapesOf(bad);
    EXPECT_EQ(removingPercentEncoding(String::fromASCII(escapes)), std::nullopt) << escapes;
    EXPECT_EQ(removingPercentEncoding(String::fromASCII("%41" + escapes + "%20")), std::nullopt) << escapes;
  }
  EXPECT_EQ(*removingPercentEncoding(u"%00"), String(StringView(u"\0")));
}

TEST(RemovingPercentEncoding, PlainTextBeforeBrokenEscapesFits) {
  for (const std::size_t plain : {8U, 60U, 119U, 1000U}) {
    for (const std::size_t percents : {1U, 30U, 59U, 500U}) {
      const std::u16string text = std::u16string(plain, u'a') + std::u16string(percents, u'%');
      EXPECT_EQ(removingPercentEncoding(text), std::nullopt) << plain << " and " << percents;
    }
  }
}

}  // namespace
}  // namespace quorvel
