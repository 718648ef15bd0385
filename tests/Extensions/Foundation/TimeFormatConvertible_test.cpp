#include <cmath>

#include <gtest/gtest.h>
#include <tests/support/Row.h>

#include <quorvel/Extensions/Foundation/TimeFormatConvertible.h>

namespace quorvel {
namespace {

TEST(Duration, TheTwoFormsDifferOnNegativeInput) {
  const test::Row<double, const char16_t*, const char16_t*> rows[] = {
      {59.9, u"0:59", u"0:59"},
      {-1, u"", u"0:01"},
      {-0.5, u"", u"0:00"},
      {-0.0, u"0:00", u"0:00"},
      {2147483647, u"596523:14:07", u"596523:14:07"},
      {2147483648.0, u"596523:14:07", u"596523:14:08"},
      {INFINITY, u"596523:14:07", u"2562047788015215:30:07"},
      {-INFINITY, u"", u"2562047788015215:30:08"},
      {std::nan(""), u"", u"0:00"},
  };
  for (const auto& [seconds, plain, converted] : rows) {
    EXPECT_EQ(QVStringTimeIntervalInSeconds(seconds), String(std::u16string(plain))) << seconds;
    EXPECT_EQ(convertToTimeFormat(seconds), String(std::u16string(converted))) << seconds;
  }
  EXPECT_EQ(convertToTimeFormat(INT64_MIN), u"2562047788015215:30:08");
  EXPECT_EQ(convertToTimeFormat(UINT64_MAX), u"5124095576030431:00:15");
  EXPECT_EQ(convertToTimeFormat(-61.5F), u"1:01");
  EXPECT_EQ(convertToTimeFormat<std::uint8_t>(61), u"1:01");
  EXPECT_EQ(defaultTimeFormat<float>(), u"0:00");
  static_assert(!TimeFormatConvertible<bool> && !TimeFormatConvertible<char16_t> &&
                !TimeFormatConvertible<long double>);
}

/// A clock that is wound second by second.
class Clock {
 public:
  void tick() {
    if (++seconds_ < 60) return;
    seconds_ = 0;
    if (++minutes_ < 60) return;
    minutes_ = 0;
    ++hours_;
  }
  [[nodiscard]] std::string face() const {
    const std::string seconds = (seconds_ < 10 ? ":0" : ":") + std::to_string(seconds_);
    const std::string minutes = std::to_string(minutes_) + seconds;
    return hours_ == 0 ? minutes : std::to_string(hours_) + (minutes_ < 10 ? ":0" : ":") + minutes;
  }

 private:
  int seconds_ = 0;
  int minutes_ = 0;
  int hours_ = 0;
};

TEST(Duration, EverySecondOfAHundredHours) {
  Clock clock;
  for (int seconds = 0; seconds <= 360'000; ++seconds, clock.tick()) {
    const String expected = String::fromASCII(clock.face());
    ASSERT_EQ(QVStringTimeIntervalInSeconds(seconds), expected) << seconds;
    ASSERT_EQ(convertToTimeFormat(seconds), expected) << seconds;
    ASSERT_EQ(convertToTimeFormat(-seconds - 0.75), expected) << seconds;
  }
}

}  // namespace
}  // namespace quorvel
