#include <gtest/gtest.h>
#include <tests/support/Row.h>

#include <quorvel/Extensions/Foundation/NSDictionary+URL.h>
#include <quorvel/Extensions/Foundation/NSDictionary+UrlEncoding.h>
#include <quorvel/Extensions/Foundation/NSString+Additions+Parameters.h>
#include <quorvel/Extensions/Foundation/NSString+Query.h>
#include <quorvel/Extensions/Foundation/NSString+URLEncoding.h>
#include <quorvel/Extensions/Foundation/String+URLEncoding.h>
#include <quorvel/Platform/Foundation/PercentEncoding.h>
#include <quorvel/Platform/Foundation/Unicode.h>

namespace quorvel {
namespace {

std::optional<String> forced(const String& text) { return stringByEncodingCharacterSet(text); }
std::optional<String> marksKept(const String& text) { return urlEncodedString(text, false); }
std::optional<String> urlCharactersKept(const String& text) { return urlEncodedString(text, true); }
std::optional<String> queryValue(const String& text) {
  return NSStringAdditions::qv_percentEscapedQueryStringValueFromStringWithEncoding(text, 4);
}

struct Encoder {
  std::optional<String> (*encode)(const String&);
  NSCharacterSet kept;
  const char* name;
};

/// Each encoder against the same set built from the platform's, as the rules tell it.
std::vector<Encoder> encoders() {
  using Set = NSCharacterSet;
  const Set all = Set::urlUserAllowed()
                      .unionWith(Set::urlPasswordAllowed())
                      .unionWith(Set::urlHostAllowed())
                      .unionWith(Set::urlPathAllowed())
                      .unionWith(Set::urlQueryAllowed())
                      .unionWith(Set::urlFragmentAllowed());
  const Set common = Set::urlUserAllowed()
                         .intersectionWith(Set::urlPasswordAllowed())
                         .intersectionWith(Set::urlHostAllowed())
                         .intersectionWith(Set::urlPathAllowed())
                         .intersectionWith(Set::urlQueryAllowed())
                         .intersectionWith(Set::urlFragmentAllowed());
  return {
      {forced, forceEncodingCharacterSet(nil), "stringByEncodingCharacterSet"},
      {stringByURLEncoding, all, "stringByURLEncoding"},
      {urlEncodeString, common.removing(u"!$&'()*+,;"), "urlEncodeString"},
      {marksKept, Set::nonBase(), "urlEncodedString(false)"},
      {urlCharactersKept, Set::nonBase().unionWith(all), "urlEncodedString(true)"},
      {queryValue, Set::withCharactersIn(u":/?&=;+!@#$()',*").inverted(), "qv_percentEscaped"},
  };
}

TEST(URLEncoding, EveryScalarThroughEachEncoderAndBack) {
  const std::vector<Encoder> all = encoders();
  for (std::uint32_t first = 0; first < 0x110000; first += 0x800) {
    if (first == 0xD800) continue;
    StringBuilder builder;
    for (char32_t scalar = first; scalar < first + 0x800; ++scalar) {
      if (scalar != u'%') builder.appendScalar(scalar);
    }
    const String text = builder.finish();
    for (const auto& [encode, kept, name] : all) {
      const std::optional<String> encoded = encode(text);
      ASSERT_EQ(encoded, addingPercentEncoding(text, kept)) << name << " from " << first;
      ASSERT_EQ(urlDecodeString(*encoded), text) << name << " from " << first;
    }
  }
}

TEST(URLEncoding, TextsOfTheRules) {
  const String unpaired = std::u16string(1, char16_t{0xD800});
  const test::Row<String, const char16_t*> rows[] = {
      {stringByEncodingCharacterSet(u"a b&c=d"), u"a%20b%26c%3Dd"},
      {stringByEncodingCharacterSet(u"x-y_z.~`\t\n한"), u"x-y_z.~`\t\n한"},
      {stringByEncodingCharacterSet(u"\\\"%{}^|<>"), u"%5C%22%25%7B%7D%5E%7C%3C%3E"},
      {*urlEncodeString(u"a+b=c d/~._-"), u"a%2Bb=c%20d%2F~._-"},
      {*stringByURLEncoding(u"a b#c/?:@[]"), u"a%20b%23c/?:@[]"},
      {urlEncodedString(u"abc", false), u"%61%62%63"},
      {urlEncodedString(u"e\u0301 \U0001D165", false), u"%65\u0301%20\U0001D165"},
      {urlEncodedString(u"a b", true), u"a%20b"},
      {urlEncodedString(unpaired, true), u""},
      {urlDecoded(u"%ED%95%9C+"), u"한+"},
      {stringByDecodingPercentChars(u"100%"), u"100%"},
      {removeControlCharacterSet(u"a\t\tb\r\nc\u200Bd"), u"a  b \nc d"},
      {removeWhiteCharacterSet(u"a\t\u00A0 \n\u3000b"), u"a   \n b"},
      {urlEncode(u"a b"), u"a%20b"},
      {urlEncode(nil), u"%28null%29"},
      {urlEncodedString(Dictionary{{u"a b", 1}, {2, true}, {u"c", u"=&"}}), u"a%20b=1&2=1&c=%3D%26"},
      {urlEncodedString(Dictionary{}), u""},
      {NSStringAdditions::qv_parameterStringWithKey(u"q", u"a&b=c d%"), u"q=a%26b%3Dc d%"},
      {NSStringAdditions::qv_parameterStringWithKey(u"q", 5), u"q=5"},
      {NSStringAdditions::qv_parameterStringWithKey(nil, unpaired), u"%28null%29=(null)"},
      {*NSStringAdditions::qv_parameterStringWithArray(List{u"a=1", u"b=2", 3}), u"a=1&b=2&3"},
  };
  for (const auto& [result, expected] : rows) EXPECT_EQ(result, String(std::u16string(expected)));
  EXPECT_EQ(stringByEncodingCharacterSet(unpaired), unpaired);
  EXPECT_EQ(stringByURLEncoding(unpaired), std::nullopt);
  EXPECT_EQ(urlEncodeString(unpaired), std::nullopt);
  EXPECT_EQ(urlDecodeString(u"100%"), std::nullopt);
  EXPECT_EQ(NSStringAdditions::qv_percentEscapedQueryStringValueFromStringWithEncoding(nil, 4), std::nullopt);
  EXPECT_EQ(NSStringAdditions::qv_parameterStringWithArray(List{}), std::nullopt);
  EXPECT_EQ(NSStringAdditions::qv_parameterStringWithArray(nil), std::nullopt);
}

TEST(QueryString, Builds) {
  const test::Row<Dictionary, const char16_t*> rows[] = {
      {{{u"a", u"x y"}}, u"?a=x%20y"},
      {{{u"n", 5}, {u"t", true}, {u"f", -2.5}}, u"?n=5&t=1&f=-2.5"},
      {{{u"list", List{1, 2}}}, u"?"},
      {{{u"a", 1}, {u"l", List{}}}, u"?a=1&"},
      {{{u"a", 1}, {u"l", null}, {u"b", 2}}, u"?a=1&&b=2"},
      {{{u"k&", u"a=b"}}, u"?k%26=a=b"},
      {{{u"", u""}}, u"?="},
  };
  for (const auto& [record, text] : rows) EXPECT_EQ(*queryString(record), String(std::u16string(text)));
  EXPECT_EQ(queryString({}), std::nullopt);
}

TEST(QueryString, BothParsers) {
  const test::Row<const char16_t*, Dictionary, Dictionary> rows[] = {
      {u"a=1&b=2&a=3", {{u"a", u"3"}, {u"b", u"2"}}, {{u"a", u"3"}, {u"b", u"2"}}},
      {u"a=&=b", {{u"a", u""}, {u"", u"b"}}, {{u"a", u""}, {u"", u"b"}}},
      {u"a=1=2&c&==&", {}, {}},
      {u"", {}, {}},
      {u"?a=1", {{u"?a", u"1"}}, {{u"?a", u"1"}}},
      {u"x=a+b%2B", {{u"x", u"a+b+"}}, {{u"x", u"a b+"}}},
      {u"k%20=v%21", {{u"k ", u"v!"}}, {{u"k%20", u"v!"}}},
      {u"x=100%", {{u"x", u"100%"}}, {{u"x", u"100%"}}},
      {u"%3D=%26", {{u"=", u"&"}}, {{u"%3D", u"&"}}},
  };
  for (const auto& [text, parsed, lenient] : rows) {
    const String query = std::u16string(text);
    EXPECT_EQ(parseQuery(query), parsed) << query;
    EXPECT_EQ(parameterInfo(query), lenient) << query;
  }
}

TEST(QueryString, ReadsBackWhatItBuilds) {
  const Dictionary record{
      {u"한글 key", u"값 & more?"}, {u"emoji", u"\U0001F600"}, {u"plus+", u"1+1"}, {u"%41", u"100%"}};
  const String query = *queryString(record);
  EXPECT_EQ(parseQuery(StringView(query).sub(1)), record);
}

}  // namespace
}  // namespace quorvel
