#include <gtest/gtest.h>
#include <tests/support/Row.h>

#include <quorvel/Extensions/Foundation/NSString+Additions+Conversion.h>
#include <quorvel/Extensions/Foundation/NSString+Badge.h>

namespace quorvel {

// number: 0 for nil
TEST(Conversion, IntegerNumberObject) {
  const test::Row<StringView, std::int64_t> rows[] = {
      {u"42abc", 42},
      {u"0", 0},
      {u"abc", 0},
      {nil, 0},
  };
  for (const auto& [text, number] : rows) EXPECT_EQ(integerNumberObject(text).value_or(0), number) << String(text);
  EXPECT_EQ(integerNumberObject(u"00"), std::nullopt);
}

// expected: nullptr for no badge
TEST(Conversion, Badge) {
  const test::Row<const char16_t*, const char16_t*> rows[] = {
      {u"N", u"N"},     {u"!", u"!"},     {u"1", u"1"},     {u"99", u"99"},   {u"100", u"99+"},
      {u"007", u"007"}, {u" 5x", u" 5x"}, {u"0", nullptr},  {u"-1", nullptr}, {u"abc", nullptr},
      {u"", nullptr},   {u"n", nullptr},  {u"N ", nullptr}, {u"!!", nullptr}, {u"99999999999999999999", u"99+"},
      {u"99+", u"99+"},
  };
  for (const auto& [text, expected] : rows) {
    const auto badge = expected ? std::optional<String>(std::u16string(expected)) : std::nullopt;
    EXPECT_EQ(badgeValue(std::u16string(text)), badge) << String(std::u16string(text));
  }
}

TEST(Conversion, FlagsAndValues) {
  for (const bool flag : {false, true}) {
    EXPECT_EQ(qv_boolValueOfYN(NSStringAdditions::qv_valueOfYN(flag)), flag);
    EXPECT_EQ(NSStringAdditions::qv_valueOfString(flag), flag ? String(u"true") : String(u"false"));
  }
  EXPECT_TRUE(qv_boolValueOfYN(u"y"));
  for (const StringView text : {StringView(u"yes"), StringView(u"true"), StringView(u""), StringView(u"Y "),
                                StringView(u"\uFF39"), StringView(u"Y\u0301"), StringView(nil)}) {
    EXPECT_FALSE(qv_boolValueOfYN(text)) << String(text);
  }
  EXPECT_EQ(NSStringAdditions::stringValue(3.5), u"3.5");
  EXPECT_EQ(NSStringAdditions::stringValue(true), u"1");
  EXPECT_EQ(NSStringAdditions::stringValue(u"a"), u"a");
  EXPECT_EQ(NSStringAdditions::stringValue(null), u"<null>");
  EXPECT_EQ(NSStringAdditions::stringValue(nil), std::nullopt);
}

}  // namespace quorvel
