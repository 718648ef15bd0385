#include <random>

#include <gtest/gtest.h>
#include <tests/support/Row.h>

#include <quorvel/Platform/Foundation/Base64.h>
#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes bytesOf(std::string_view text) { return {text.begin(), text.end()}; }

TEST(Base64, EncodesTheStandardsExamples) {
  const test::Row<const char*, const char16_t*> rows[] = {
      {"", u""}, {"f", u"Zg=="}, {"foo", u"Zm9v"}, {"foobar", u"Zm9vYmFy"}};
  for (const auto& [bytes, text] : rows) {
    EXPECT_EQ(base64EncodedString(bytesOf(bytes)), std::u16string(text));
    EXPECT_EQ(decodeBase64(std::u16string(text)), bytesOf(bytes)) << bytes;
  }
}

/// One bit string cut into sixes, digit by digit.
std::u16string plainlyEncoded(const Bytes& bytes, std::u16string_view digits) {
  std::u16string text;
  for (std::size_t bit = 0; bit < bytes.size() * 8; bit += 6) {
    unsigned value = 0;
    for (std::size_t k = bit; k < bit + 6; ++k) {
      value = value * 2 + (k / 8 < bytes.size() ? unsigned{bytes[k / 8]} >> (7 - k % 8) & 1U : 0U);
    }
    text += digits[value];
  }
  while (text.size() % 4 != 0) text += u'=';
  return text;
}

TEST(Base64, VectorsAndTablesAnswerAlikeAtEveryLength) {
  const std::u16string standard = u"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  const std::u16string urlSafe = standard.substr(0, 62) + u"-_";
  std::mt19937 random(1);
  Bytes bytes;
  for (std::size_t length = 0; length < 400; ++length) {
    // Exactly as long as it is, so that a sanitizer sees a read beyond the end.
    const Bytes exact(bytes);
    const String text = base64EncodedString(exact);
    ASSERT_EQ(text, plainlyEncoded(bytes, standard)) << length;
    const String safe = base64EncodedString(exact, Base64Alphabet::URLSafe);
    ASSERT_EQ(safe, plainlyEncoded(bytes, urlSafe)) << length;
    std::string ascii(base64Length(length), '?');
    encodeBase64(exact, ascii.data());
    ASSERT_EQ(String::fromASCII(ascii), text) << length;
    ASSERT_EQ(decodeBase64(text), bytes) << length;
    ASSERT_EQ(decodeBase64(safe, Base64Alphabet::URLSafe), bytes) << length;
    bytes.push_back(static_cast<std::uint8_t>(random()));
  }
}

TEST(Base64, RefusesWhatNoEncoderWrites) {
  const test::Row<const char16_t*, test::Why> rows[] = {
      {u"Z", "a single digit"},
      {u"Zg=", "half of the padding"},
      {u"Z===", "a single digit, padded"},
      {u"Zg==Zg==", "padding inside"},
      {u"Zh==", "unused bits after one byte"},
      {u"Zm9=", "unused bits after two bytes"},
      {u"Zm9v\n", "a line feed at the end"},
      {u"-_8=", "the other alphabet"},
      {u"Zm9\u0176", "a unit whose low byte is a digit"},
      {u"\u015Ag==", "such a unit in the last group"},
      {u"Zm9\uFF56", "a full-width digit"},
      {u"Zm9@Zm9v", "no digit, with whole groups after it"},
  };
  for (const auto& [text, why] : rows) EXPECT_EQ(decodeBase64(std::u16string(text)), std::nullopt) << why;
  EXPECT_EQ(decodeBase64(u"+/8=", Base64Alphabet::URLSafe), std::nullopt) << "the standard alphabet";
  EXPECT_EQ(decodeBase64(u"-_8=", Base64Alphabet::URLSafe), (Bytes{0xFB, 0xFF}));
}

}  // namespace
}  // namespace quorvel
