#include <cmath>

#include <gtest/gtest.h>
#include <tests/support/Row.h>

#include <quorvel/Extensions/Foundation/NSNumber+HumanReadable.h>

namespace quorvel {
namespace {

constexpr double kTera = 1099511627776.0;

TEST(HumanReadableSize, ScalesBeforeItRounds) {
  const test::Row<Number, const char16_t*, const char16_t*, const char16_t*, const char16_t*, test::Why> rows[] = {
      {0, u"0 B", u"0.00 B", u"0 B", u"0 B", "zero keeps its unit"},
      {1023, u"1023 B", u"1023.00 B", u"1023 B", u"1023 B", "last value below the first step"},
      {1023.96, u"1024 B", u"1023.96 B", u"1024 B", u"1024 B", "rounded after the unit is chosen"},
      {1024, u"1 KB", u"1.00 KB", u"1 KB", u"1 K", "first value on the step"},
      {1536, u"1.5 KB", u"1.50 KB", u"2 KB", u"1.5 K", "half to the even digit"},
      {2560, u"2.5 KB", u"2.50 KB", u"2 KB", u"2.5 K", "half to the even digit, down"},
      {1048575, u"1024 KB", u"1024.00 KB", u"1024 KB", u"1024 K", "stays below the step before rounding"},
      {1048576, u"1 MB", u"1.00 MB", u"1 MB", u"1 M", "on the step"},
      {10485759, u"10 MB", u"10.00 MB", u"10 MB", u"10 M", "rounds to a zero fraction"},
      {3.5 * kTera, u"3.5 TB", u"3.50 TB", u"4 TB", u"3.5 T", "the last unit"},
      {1024 * kTera, u"1024 TB", u"1024.00 TB", u"1024 TB", u"1024 T", "no unit follows"},
      {UINT64_MAX, u"16777216 TB", u"16777216.00 TB", u"16777216 TB", u"16777216 T",
       "unsigned beyond the signed range"},
      {-2048, u"-2048 B", u"-2048.00 B", u"-2048 B", u"-2048 B", "negative values keep the first unit"},
      {-0.4, u"-0.4 B", u"-0.40 B", u"-0 B", u"-0.4 B", "the sign of a rounded zero stays, as C writes it"},
      {-0.04, u"-0 B", u"-0.04 B", u"-0 B", u"-0 B", "its fraction is removed all the same"},
      {INFINITY, u"inf TB", u"inf TB", u"inf TB", u"inf T", "no endless loop"},
      {std::nan(""), u"nan B", u"nan B", u"nan B", u"nan B", "not a number"},
  };
  for (const auto& [bytes, plain, twoDecimals, noDecimals, shortUnit, why] : rows) {
    EXPECT_EQ(humanReadableSize(bytes), String(std::u16string(plain))) << why;
    EXPECT_EQ(humanReadableSizeOfTwoDecimals(bytes), String(std::u16string(twoDecimals))) << why;
    EXPECT_EQ(humanReadableSizeRemovedDecimal(bytes), String(std::u16string(noDecimals))) << why;
    EXPECT_EQ(humanReadableSizeShotMeasurement(bytes, true), String(std::u16string(shortUnit))) << why;
    EXPECT_EQ(humanReadableSizeShotMeasurement(bytes, false), humanReadableSize(bytes)) << why;
  }
}

TEST(HumanReadableSize, InAGivenUnit) {
  const test::Row<Number, std::int64_t, std::int64_t, bool, const char16_t*> rows[] = {
      {1572864, 2, 1, true, u"1.5 MB"}, {1048576, 2, 1, true, u"1 MB"},           {500, 1, 1, true, u"0.5 KB"},
      {1536, 0, 1, true, u"1536 B"},    {5242880, 3, 2, true, u"0 GB"},           {5242880, 3, 2, false, u"0.00 GB"},
      {5242880, 3, 0, true, u"0 GB"},   {kTera, 0, 0, false, u"1099511627776 B"}, {1024, -5, 1, true, u"1024 B"},
      {kTera, 5, 1, true, u"1 TB"},     {kTera, INT64_MAX, 1, true, u"1 TB"},     {1, 0, INT64_MIN, true, u"1 B"},
      {100, 0, 0, true, u"100 B"},
  };
  for (const auto& [bytes, unit, decimals, removesZero, text] : rows) {
    EXPECT_EQ(humanReadableSizeWithUnit(bytes, unit, decimals, removesZero), String(std::u16string(text)));
  }
  EXPECT_EQ(humanReadableSizeWithUnit(1572864, 2), u"1.5 MB");
  EXPECT_EQ(humanReadableSizeDigitNumber(1536, 1000, 3, false, true), u"1.500 K") << "the width never shows";
  EXPECT_EQ(humanReadableSizeDigitNumber(1, 4, INT64_MAX, true, false), u"1 B") << "decimals are bounded";
}

}  // namespace
}  // namespace quorvel
