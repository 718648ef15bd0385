#include <atomic>
#include <clocale>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <quorvel/Extensions/Foundation/NSDictionary+ConvertJSON.h>
#include <quorvel/Extensions/Foundation/NSNumber+HumanReadable.h>
#include <quorvel/Extensions/Foundation/NSString+Additions+Cleaning.h>
#include <quorvel/Extensions/Foundation/NSString+Additions+Conversion.h>
#include <quorvel/Extensions/Foundation/NSString+ConvertJSON.h>
#include <quorvel/Extensions/Foundation/Optional+Extension.h>
#include <quorvel/Extensions/Foundation/String+Extension.h>
#include <quorvel/Extensions/Foundation/TimeFormatConvertible.h>
#include <quorvel/Extensions/UIKit/UIColor+ColorWithHex.h>
#include <quorvel/Platform/Foundation/StringOperations.h>
#include <quorvel/Utility/StringUtils.h>

namespace quorvel {
namespace {

/// An operation that C code would be tempted to build on the locale, and what it answers in every one.
struct Row {
  String (*run)();
  String expected;
  const char* why;
};

const Row kRows[] = {
    {[] { return toString(Value(1234567.5)); }, u"1234567.5", "a comma for the decimal point, dots between thousands"},
    {[] { return NSStringAdditions::stringValue(0.001).value_or(u"nil"); }, u"0.001", "the same in stringValue"},
    {[] { return localizedFormat(u"%.2f|%d|%@", {1234.5, 1234567, 0.5}); }, u"1234.50|1234567|0.5", "printf's point"},
    {[] { return toString(*objectFromJSONString(u"[1.5]").asList()->begin()); }, u"1.5", "strtod's point"},
    {[] { return toString(Value(objectFromJSONString(u"[1,5]").asList()->size())); }, u"2", "a comma is no point"},
    {[] { return toJSONString(Dictionary{{u"I", 2.25}, {u"i", 1e21}}).value_or(u"nil"); }, u"{\"I\":2.25,\"i\":1e+21}",
     "a number written, keys in the order of units, not of a collation"},
    {[] { return lowercased(u"TITLE I\u0130"); }, u"title ii\u0307", "a dotless small i"},
    {[] { return uppercased(u"title i\u0131"); }, u"TITLE II", "a dotted capital I"},
    {[] { return toString(Value(StringUtils::equalsCaseInsensitive(u"FILE", u"file"))); }, u"true", "a Turkish I"},
    {[] { return toString(Value(containsCaseInsensitive(u"MAIL", u"i"))); }, u"true", "a Turkish I"},
    {[] { return toString(Value(StringUtils::matches(u"ID", u"^i\\w$"))); }, u"true", "a Turkish I in a pattern"},
    {[] { return toString(Value(qv_boolValueOfYN(u"y"))); }, u"true", "toupper"},
    {[] { return humanReadableSize(1536); }, u"1.5 KB", "a comma in a size"},
    {[] { return humanReadableSizeOfTwoDecimals(1234567); }, u"1.18 MB", "a comma in a size"},
    {[] { return convertToTimeFormat(3661.5); }, u"1:01:01", "a duration"},
    {[] { return toString(Value(UIColorWithHex::colorWithHexString(u"#1e90ff").blue())); }, u"1.0", "strtol"},
};

TEST(CLocale, HasNoSayInAnyAnswer) {
  for (const auto& [run, expected, why] : kRows) EXPECT_EQ(run(), expected) << why;
}

/// What the machine has of locales that differ in point, grouping, letters and coding.
std::vector<const char*> locales() {
  const std::string before = std::setlocale(LC_ALL, nullptr);
  std::vector<const char*> found;
  for (const char* name : {"C", "C.UTF-8", "de_DE.UTF-8", "tr_TR.UTF-8", "ko_KR.UTF-8"}) {
    if (std::setlocale(LC_ALL, name)) found.push_back(name);
  }
  std::setlocale(LC_ALL, before.c_str());
  return found;
}

TEST(CLocale, MayChangeUnderRunningOperations) {
  const std::vector<const char*> names = locales();
  ASSERT_GE(names.size(), 2U);
  const std::string before = std::setlocale(LC_ALL, nullptr);
  std::atomic<int> running = 3;
  std::atomic<int> wrong[std::size(kRows)]{};
  std::vector<std::thread> threads;
  for (int i = running; i > 0; --i) {
    threads.emplace_back([&running, &wrong] {
      for (int round = 0; round < 2000; ++round) {
        for (std::size_t row = 0; row < std::size(kRows); ++row) wrong[row] += kRows[row].run() != kRows[row].expected;
      }
      --running;
    });
  }
  for (std::size_t i = 0; running > 0; ++i) std::setlocale(LC_ALL, names[i % names.size()]);
  for (std::thread& thread : threads) thread.join();
  std::setlocale(LC_ALL, before.c_str());
  for (std::size_t row = 0; row < std::size(kRows); ++row) EXPECT_EQ(wrong[row], 0) << kRows[row].why;
}

}  // namespace
}  // namespace quorvel
