#include <cmath>
#include <limits>

#include <gtest/gtest.h>
#include <tests/support/Row.h>

#include <quorvel/Platform/Foundation/NumberText.h>

namespace quorvel {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(NumberText, LaysOutShortestDigits) {
  const test::Row<Number, const char16_t*, const char16_t*> rows[] = {
      {0.0, u"0", u"0.0"},
      {-0.0, u"-0", u"-0.0"},
      {16777216.0, u"16777216", u"16777216.0"},
      {123456789012345680000.0, u"123456789012345680000", u"1.2345678901234568e+20"},
      {1e21, u"1e+21", u"1e+21"},
      {-1.5e300, u"-1.5e+300", u"-1.5e+300"},
      {1e-6, u"0.000001", u"1e-06"},
      {1.25e-7, u"1.25e-7", u"1.25e-07"},
      {0.0001, u"0.0001", u"0.0001"},
      {0.00001, u"0.00001", u"1e-05"},
      {9007199254740992.0, u"9007199254740992", u"9007199254740992.0"},
      {9007199254740994.0, u"9007199254740994", u"9.007199254740994e+15"},
      {5e-324, u"5e-324", u"5e-324"},
      {std::numeric_limits<double>::max(), u"1.7976931348623157e+308", u"1.7976931348623157e+308"},
      {kInfinity, u"inf", u"inf"},
      {-kInfinity, u"-inf", u"-inf"},
      {-std::nan(""), u"nan", u"nan"},
      {16777216.0F, u"16777216", u"16777216.0"},
      {16777218.0F, u"16777218", u"1.6777218e+07"},
      {true, u"1", u"true"},
      {false, u"0", u"false"},
      {INT64_MIN, u"-9223372036854775808", u"-9223372036854775808"},
      {UINT64_MAX, u"18446744073709551615", u"18446744073709551615"},
  };
  for (const auto& [number, text, debug] : rows) {
    EXPECT_EQ(stringValue(number), String(std::u16string(text)));
    EXPECT_EQ(debugText(number), String(std::u16string(debug)));
  }
}

TEST(NumberText, FixedDigitsRoundTheExactValue) {
  const test::Row<double, int, const char16_t*, test::Why> rows[] = {
      {1.005, 2, u"1.00", "the double is below 1.005"},
      {1.115, 2, u"1.11", "the double is below 1.115"},
      {0.05, 1, u"0.1", "the double is above 0.05"},
      {9.96, 1, u"10.0", "carries into a new digit"},
      {-0.04, 1, u"-0.0", "the sign stays"},
      {-0.0, 0, u"-0", "the sign stays"},
      {281474976710655.5, 0, u"281474976710656", "last half below 2^48"},
      {281474976710656.5, 0, u"281474976710656", "first half from 2^48 on"},
      {1e22, 1, u"10000000000000000000000.0", "all digits"},
      {5e-324, 4, u"0.0000", "the smallest double"},
      {0.1, 20, u"0.10000000000000000555", "the exact value shows"},
      {1, -3, u"1", "decimals below 0 count as 0"},
      {kInfinity, 2, u"inf", "no digits"},
      {-std::nan(""), 2, u"nan", "no sign"},
  };
  for (const auto& [value, decimals, text, why] : rows) {
    EXPECT_EQ(fixedText(value, decimals), String(std::u16string(text))) << value << ": " << why;
  }
  EXPECT_EQ(fixedText(-std::numeric_limits<double>::max(), INT32_MAX).size(), kFixedTextLength);
}

// An exact 32nd has five decimals: rounding those digits by hand is an independent way to the same text.
std::string roundedByHand(int thirtySeconds, int decimals) {
  std::int64_t power = 1;
  for (int i = 0; i < decimals; ++i) power *= 10;
  const std::int64_t scaled = thirtySeconds * power;
  std::int64_t whole = scaled / 32;
  const std::int64_t rest = scaled % 32;
  whole += rest > 16 || (rest == 16 && whole % 2 == 1);
  if (decimals == 0) return std::to_string(whole);
  const std::string fraction = std::to_string(power + whole % power);  // a leading 1 keeps its zeros
  return std::to_string(whole / power) + '.' + fraction.substr(1);
}

TEST(NumberText, FixedDigitsOfEveryThirtySecond) {
  char buffer[kFixedTextLength];
  for (int i = 0; i < 100'000; ++i) {
    for (int decimals = 0; decimals <= 4; ++decimals) {
      const std::string_view text(buffer, writeFixedText(i / 32.0, decimals, buffer));
      ASSERT_EQ(text, roundedByHand(i, decimals)) << i << "/32 with " << decimals;
    }
  }
}

TEST(NumberText, LongLongValueReadsWhatStandsInFront) {
  const test::Row<const char16_t*, std::int64_t, test::Why> rows[] = {
      {u"42", 42, "plain"},
      {u" \u2003\n-7x", -7, "white space of Unicode, then a sign"},
      {u"+12abc", 12, "up to the first other character"},
      {u"abc", 0, "no digits"},
      {u"--1", 0, "one sign only"},
      {u"- 1", 0, "no space after the sign"},
      {u"\u0661", 0, "ASCII digits only"},
      {u"\u200B1", 0, "U+200B is no white space"},
      {u"9223372036854775807", INT64_MAX, "the largest"},
      {u"9223372036854775808", INT64_MAX, "one more"},
      {u"-9223372036854775808", INT64_MIN, "the smallest"},
      {u"000000000000000000000000000012", 12, "leading zeros do not overflow"},
  };
  for (const auto& [text, value, why] : rows) EXPECT_EQ(longLongValue(std::u16string(text)), value) << why;
  EXPECT_EQ(longLongValue(nil), 0);
}

}  // namespace
}  // namespace quorvel
