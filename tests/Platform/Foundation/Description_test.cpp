#include <cmath>
#include <sstream>

#include <gtest/gtest.h>
#include <tests/support/Row.h>
#include <tests/support/SmallStack.h>

#include <quorvel/Platform/Foundation/Description.h>
#include <quorvel/Platform/Foundation/Limits.h>

namespace quorvel {
namespace {

Data dataOf(std::size_t size) {
  std::vector<std::uint8_t> bytes(size);
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(i);
  return Data(bytes);
}

TEST(Description, OfEachKind) {
  const test::Row<Value, std::string> rows[] = {
      {null, "<null>"},
      {u"a \"b\"", "a \"b\""},
      {true, "1"},
      {List{}, "(\n)"},
      {Dictionary{}, "{\n}"},
      {List{1, u"two", null}, "(\n    1,\n    two,\n    <null>\n)"},
      {Dictionary{{u"key", u"value"}, {1, 2}}, "{\n    key = value;\n    1 = 2;\n}"},
      {List{List{1}}, "(\n        (\n        1\n    )\n)"},
      {Dictionary{{u"k", List{1}}}, "{\n    k =     (\n        1\n    );\n}"},
      {Dictionary{{List{1}, Dictionary{}}}, "{\n        (\n        1\n    ) =     {\n    };\n}"},
      {List{u"", u"a b", u"a-b", u"$x_/:.9", u"한글"},
       "(\n    \"\",\n    \"a b\",\n    \"a-b\",\n    $x_/:.9,\n    \"한글\"\n)"},
      {List{u"q\"\\\n\t\u0001\u007F"}, "(\n    \"q\\\"\\\\\\n\\t\\001\\177\"\n)"},
      {dataOf(3), "{length = 3, bytes = 0x000102}"},
      {dataOf(0), "{length = 0, bytes = 0x}"},
      {dataOf(24), "{length = 24, bytes = 0x000102030405060708090a0b0c0d0e0f1011121314151617}"},
      {dataOf(25), "{length = 25, bytes = 0x000102030405060708090a0b0c0d0e0f ... 1112131415161718}"},
  };
  for (const auto& [value, text] : rows) EXPECT_EQ(description(value).toUTF8Replacing(), text);
}

TEST(Description, DatesByTheGregorianCalendar) {
  const test::Row<double, const char*> rows[] = {
      {1500000000, "2017-07-14 02:40:00 +0000"},  {-0.5, "1969-12-31 23:59:59 +0000"},
      {951782400, "2000-02-29 00:00:00 +0000"},    // a century that is a leap year
      {-2203891200, "1900-03-01 00:00:00 +0000"},  // one that is none: the day before is 28 February
      {-2203891201, "1900-02-28 23:59:59 +0000"}, {-62135596800, "0001-01-01 00:00:00 +0000"},
      {-62135596801, "<date -62135596801>"},      {253402300799.9, "9999-12-31 23:59:59 +0000"},
      {253402300800, "<date 253402300800>"},      {std::nan(""), "<date nan>"},
  };
  for (const auto& [seconds, text] : rows) EXPECT_EQ(description(Date{seconds}).toUTF8Replacing(), text);
}

TEST(Description, AMillionLevelsNeedNoStack) {
  test::onSmallStack([] {
    Value value = 1;
    for (int i = 0; i < 1'000'000; ++i) value = i % 2 == 0 ? Value(List{value}) : Value(Dictionary{{u"k", value}});
    const std::string text = description(value).toUTF8Replacing();
    EXPECT_NE(text.find("{...}"), std::string::npos);
    EXPECT_EQ(std::count(text.begin(), text.end(), '{') + std::count(text.begin(), text.end(), '('),
              static_cast<std::ptrdiff_t>(limits::kDescriptionDepth) + 1);
  });
}

TEST(Description, SharedPartsDoNotUnfoldWithoutBound) {
  Value value = List{1};
  for (int i = 0; i < 64; ++i) value = List{value, value};
  const String text = description(value);
  EXPECT_LT(text.size(), limits::kDescriptionLength + 1000);
  EXPECT_EQ(StringView(text).sub(text.size() - 3), StringView(u"..."));
}

TEST(Description, ClassNamesAndStreams) {
  EXPECT_EQ(className(nil), u"");
  EXPECT_EQ(className(true), u"NSNumber");
  EXPECT_EQ(className(null), u"NSNull");
  EXPECT_EQ(className(Dictionary{}), u"NSDictionary");
  std::ostringstream out;
  out << Value(u"é") << List{1};
  EXPECT_EQ(out.str(), "é(\n    1\n)");
}

}  // namespace
}  // namespace quorvel
