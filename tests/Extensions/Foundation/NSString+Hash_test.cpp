#include <gtest/gtest.h>
#include <tests/support/Row.h>

#include <quorvel/Extensions/Foundation/NSString+Additions+Base64.h>
#include <quorvel/Extensions/Foundation/NSString+Hash.h>
#include <quorvel/Extensions/Foundation/NSString+URLEncoding.h>
#include <quorvel/Extensions/Foundation/String+Base64.h>

namespace quorvel {
namespace {

using Text = std::optional<String>;

TEST(NSStringHash, MD5IsOfTheUTF8BytesUpToAZero) {
  const test::Row<String, const char16_t*, test::Why> rows[] = {
      {u"abc", u"900150983cd24fb0d6963f7d28e17f72", "the standard's example"},
      {u"한글", u"52b8c54ab4ea672ee6cdfdfef0a31db4", "three bytes a syllable"},
      {std::u16string_view(u"abc\0def", 7), u"900150983cd24fb0d6963f7d28e17f72", "a zero ends the text"},
      {std::u16string(300, u'a'), u"4e5475d125a33c6190718e75adc1b704", "longer than the buffer on the stack"},
      {u"\xD800", u"9b759040321a408a5c7768b4511287a6", "an unpaired surrogate is U+FFFD"},
  };
  for (const auto& [text, digest, why] : rows) {
    EXPECT_EQ(hashMD5(text), std::u16string(digest)) << why;
    EXPECT_EQ(stringFromMD5(text), Text(std::u16string(digest))) << why;
  }
  EXPECT_EQ(stringFromMD5(u""), std::nullopt);
  EXPECT_EQ(stringFromMD5(nil), std::nullopt);
  EXPECT_EQ(hashMD5(u""), u"d41d8cd98f00b204e9800998ecf8427e");
}

TEST(NSStringHash, HMACIsOfTheWholeText) {
  const test::Row<String, String, const char16_t*, test::Why> rows[] = {
      {u"The quick brown fox jumps over the lazy dog", u"key", u"97yD9DBThCSxMpjmqm+xQ+9NWaFJRhdZl0edvC0aPNg=",
       "known"},
      {u"메시지", u"열쇠", u"BVQdAUOm3XhOT1WYycUUiXlFmLYjAsPr4TpLM60Ojn8=", "both in UTF-8"},
      {std::u16string_view(u"a\0b", 3), std::u16string_view(u"k\0y", 3),
       u"ILOjk+nw5gaukZVPH4cevVzZw6jybnsivq7SarSJGJE=", "a zero ends neither"},
      {u"", u"", u"thNnmggU2ex3L5XXeMNfxf8Wl8STcVZTxscSFEKSxa0=", "nothing under an empty key"},
      {std::u16string(300, u'm'), std::u16string(100, u'k'), u"CRQUDeZ6doBJj/eYCYLUWy+YHXF105ef7S4QBf4Ytqg=",
       "a key longer than a block, a text longer than the buffer"},
  };
  for (const auto& [text, key, code, why] : rows) {
    EXPECT_EQ(qv_HMAC_SHA256HashWithKey(text, key), Text(std::u16string(code))) << why;
  }
  EXPECT_EQ(qv_HMAC_SHA256HashWithKey(u"a", nil), std::nullopt);
  EXPECT_EQ(qv_HMAC_SHA256HashWithKey(nil, u"k"), std::nullopt);
  EXPECT_EQ(qv_HMAC_SHA256HashWithKey(u"a", u"\xDC00"), std::nullopt) << "no bytes of the key";
  EXPECT_EQ(qv_HMAC_SHA256HashWithKey(u"\xD800", u"k"), std::nullopt) << "no bytes of the text";
}

TEST(NSStringHash, Base64OfTextIsEscaped) {
  const test::Row<StringView, Text, Text, test::Why> rows[] = {
      {u"?>", u"Pz4%3D", u"%50%7A%34%3D", "padding is escaped"},
      {u"abc", u"YWJj", u"%59%57%4A%6A", "letters stay in one form only"},
      {u"", u"", u"", "nothing stays nothing"},
      {u"~~~\u007F\u007F", u"fn5%2Bf38%3D", u"%66%6E%35%2B%66%33%38%3D", "plus"},
      {u"???", u"Pz8%2F", u"%50%7A%38%2F", "slash"},
      {u"\xDC00", std::nullopt, std::nullopt, "no UTF-8"},
  };
  for (const auto& [text, escaped, allEscaped, why] : rows) {
    EXPECT_EQ(stringByEncodingBase64(text), escaped) << why;
    EXPECT_EQ(base64Encoded(text), allEscaped) << why;
  }
  EXPECT_EQ(stringByEncodingBase64(nil), std::nullopt);
}

TEST(NSStringHash, URLSafeBase64KeepsItsPadding) {
  const std::uint8_t bytes[] = {0xFB, 0xFF};
  EXPECT_EQ(NSStringAdditions::qv_URLSafeBase64StringWithData(Data(bytes)), Text(u"-_8="));
  EXPECT_EQ(NSStringAdditions::qv_URLSafeBase64StringWithData(Data()), Text(u""));
  EXPECT_EQ(NSStringAdditions::qv_URLSafeBase64StringWithData(nil), std::nullopt);
}

}  // namespace
}  // namespace quorvel
