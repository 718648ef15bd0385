#include <gtest/gtest.h>
#include <tests/support/Row.h>

#include <quorvel/Extensions/Foundation/NSString+Additions+Version.h>
#include <quorvel/Utility/VersionHelper.h>

namespace quorvel {

TEST(VersionHelper, AVersionIsOneNumber) {
  const test::Row<StringView, std::int64_t, test::Why> rows[] = {
      {u"2.10.3", 2100300, "missing parts are 0"},
      {u"1.2.3.4.5", 1020304, "four parts count"},
      {u"", 0, "no parts"},
      {nil, 0, "no version"},
      {u"1.100", 2000000, "a large part carries"},
      {u".1.", 10000, "dots at both ends"},
      {u"....9", 0, "a fifth part does not count"},
      {u" 1. 2.\u00A03.+4", 1020304, "white space and a sign before digits"},
      {u"1.-1", 990000, "a negative part borrows"},
      {u"1\xFF0E"
       u"2",
       1000000, "a full-width stop is no separator"},
      {u"\uFF11.2", 20000, "a full-width digit is none"},
      {u"0.0.0.999999999999999999", 999999999999999999, "eighteen digits"},
      {u"0.0.0.1000000000000000000", 1000000000000000000, "nineteen digits"},
      {u"0.0.0.99999999999999999999", INT64_MAX, "twenty digits"},
      {u"0000000000000000000000001", 1000000, "leading zeros do not use up the range"},
      {u"9223372036854775807.1", INT64_MAX, "beyond the range its end"},
      {u"0.0.-1.9223372036854775807", 9223372036854775707, "clamped once, at the end"},
  };
  for (const auto& [version, number, why] : rows) EXPECT_EQ(convertVersionNumeric(version), number) << why;
}

TEST(VersionHelper, ComparesByNumberBothWays) {
  const test::Row<StringView, StringView, int> rows[] = {
      {u"1.9", u"1.10", -1},
      {u"1.0", u"1.0.0.0", 0},
      {u"3", u"2.99.99.99", 1},
      {nil, u"0.0.0.1", -1},
      {u"-9999999999999", u"999999999999999", -1},
  };
  for (const auto& [first, second, order] : rows) {
    EXPECT_EQ(VersionHelper::compare(first, second), order) << first << " " << second;
    EXPECT_EQ(VersionHelper::compare(second, first), -order) << first << " " << second;
  }
}

TEST(VersionHelper, TheSlotReceivesTheHigherVersionOnly) {
  std::optional<String> slot = String(u"before");
  EXPECT_FALSE(VersionHelper::isLower(u"1.0", u"1.0", &slot));
  EXPECT_FALSE(VersionHelper::isLower(u"1.1", u"1.0", &slot));
  EXPECT_EQ(slot, std::optional<String>(u"before"));
  EXPECT_TRUE(VersionHelper::isLower(u"1.0", u"1.0.1", &slot));
  EXPECT_EQ(slot, std::optional<String>(u"1.0.1"));
  EXPECT_TRUE(VersionHelper::isLower(u"-1", nil, &slot)) << "an absent version is 0";
  EXPECT_EQ(slot, std::nullopt);
}

TEST(VersionHelper, VersionsFromTheFirstNewerOneOnAreDropped) {
  const List versions{u"1.0", u"1.2", u"2.0", u"1.1"};
  EXPECT_EQ(VersionHelper::deleteVersionsIfNeeded(versions, u"1.5"), std::optional(List{u"1.0", u"1.2"}));
  EXPECT_EQ(VersionHelper::deleteVersionsIfNeeded(versions, nil), std::optional(List())) << "all are newer than 0";
  const auto kept = VersionHelper::deleteVersionsIfNeeded(versions, u"3.0");
  EXPECT_TRUE(kept && kept->isSameAs(versions)) << "the list itself";
  EXPECT_EQ(VersionHelper::deleteVersionsIfNeeded(List(), u"1"), std::optional(List()));
  EXPECT_EQ(VersionHelper::deleteVersionsIfNeeded(nil, u"1"), std::nullopt);
  const List mixed{7, null, u"2"};
  EXPECT_EQ(VersionHelper::deleteVersionsIfNeeded(mixed, u"1"), std::optional(List{7, null}));
}

}  // namespace quorvel
