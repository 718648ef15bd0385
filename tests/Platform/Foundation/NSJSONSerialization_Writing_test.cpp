// JSON written: layout, escapes, order, what cannot be written, and what comes back.
#include <cmath>
#include <random>

#include <gtest/gtest.h>
#include <tests/support/Row.h>
#include <tests/support/SmallStack.h>

#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/Foundation/NSJSONSerialization.h>
#include <quorvel/Platform/Foundation/Unicode.h>

namespace quorvel {
namespace {

using NSJSONSerialization::kPrettyPrinted;
using NSJSONSerialization::kSortedKeys;

/// By both writers, which must agree.
std::optional<String> write(const Value& value, std::uint64_t options = 0) {
  std::optional<String> text = NSJSONSerialization::write(value, options);
  if (value.isList() || value.isDictionary()) {
    const std::optional<std::string> bytes = NSJSONSerialization::writeFragmentUTF8(value, options);
    EXPECT_EQ(bytes, text ? text->toUTF8() : std::nullopt);
  }
  return text;
}

TEST(JSONWriter, LaysOut) {
  const Value records = Dictionary{{u"b", List{1, Dictionary{{u"z", List{}}, {u"y", Dictionary{}}}}}, {u"a", null}};
  const test::Row<Value, std::uint64_t, const char16_t*, test::Why> rows[] = {
      {List{}, 0, u"[]", "empty list"},
      {Dictionary{}, 0, u"{}", "empty dictionary"},
      {List{}, kPrettyPrinted, u"[\n\n]", "an empty line between the brackets"},
      {Dictionary{}, kPrettyPrinted, u"{\n\n}", "an empty line between the brackets"},
      {records, 0, uR"({"b":[1,{"z":[],"y":{}}],"a":null})", "keys in the order in which they came"},
      {records, kSortedKeys, uR"({"a":null,"b":[1,{"y":{},"z":[]}]})", "keys sorted at every level"},
      {records, kSortedKeys | 4096, uR"({"a":null,"b":[1,{"y":{},"z":[]}]})", "other bits change nothing"},
      {records, kPrettyPrinted | kSortedKeys,
       u"{\n  \"a\" : null,\n  \"b\" : [\n    1,\n    {\n      \"y\" : {\n\n      },\n      \"z\" : [\n\n      ]\n"
       u"    }\n  ]\n}",
       "two spaces a level, the closing bracket at the outer level"},
      {Dictionary{{u"\uFB01", 1}, {u"\U00010000", 2}, {u"a", 3}, {u"B", 4}, {u"", 5}, {u"aa", 6}}, kSortedKeys,
       u"{\"\":5,\"B\":4,\"a\":3,\"aa\":6,\"\U00010000\":2,\"\uFB01\":1}", "by unit: a surrogate before U+FB01"},
      {List{true, false, null, 0, -1, INT64_MIN, UINT64_MAX}, 0,
       u"[true,false,null,0,-1,-9223372036854775808,18446744073709551615]", "kinds of their own, integers whole"},
      {List{1.0, -0.0, 0.1, 68.32, 1e20, 1e21, 1e-6, 1e-7, 5e-324, 0.1F}, 0,
       u"[1,-0,0.1,68.32,100000000000000000000,1e+21,0.000001,1e-7,5e-324,0.1]", "doubles by their shortest digits"},
      {List{u"\"\\/\b\f\n\r\t"}, 0, uR"(["\"\\\/\b\f\n\r\t"])", "short escapes"},
      {List{String(u"\0\x0B\x1F", 3)}, 0, uR"(["\u0000\u000b\u001f"])", "other controls, lower-case digits"},
      {List{u"\x7F\u0080\u2028\uFEFF\uFFFF한\U0001F600"}, 0, u"[\"\x7F\u0080\u2028\uFEFF\uFFFF한\U0001F600\"]",
       "everything else as it is"},
      {Dictionary{{u"a/\n", u"b"}}, kSortedKeys, uR"({"a\/\n":"b"})", "keys have escapes too"},
  };
  for (const auto& [value, options, text, why] : rows)
    EXPECT_EQ(write(value, options), String(std::u16string(text))) << why;
}

TEST(JSONWriter, RefusesWhatJSONCannotHold) {
  const String unpaired[] = {String(u"\xD800", 1), String(u"long enough to stand outside \xDC00", 30),
                             String(u"\xDC00\xD800", 2), String(u"abcdef\xDBFF", 7), String(u"01234567\xD800x", 10)};
  std::vector<Value> bad = {nil, 1, u"text", null, List{std::nan("")}, List{-INFINITY}, List{INFINITY * 1.0F}};
  bad.emplace_back(List{Date{0}});
  bad.emplace_back(List{Data()});
  bad.emplace_back(Dictionary{{1, u"number as a key"}});
  bad.emplace_back(Dictionary{{u"a", 1}, {null, 2}});
  for (const String& text : unpaired) {
    bad.emplace_back(List{1, text});
    bad.emplace_back(Dictionary{{text, 1}});
  }
  for (const Value& value : bad) {
    for (const std::uint64_t options : {0U, 1U, 2U, 3U}) EXPECT_EQ(write(value, options), std::nullopt) << options;
  }
  EXPECT_EQ(NSJSONSerialization::writeFragmentUTF8(u"가/", 0), "\"가\\/\"");
  EXPECT_EQ(NSJSONSerialization::writeFragmentUTF8(-5, 0), "-5");
  EXPECT_EQ(NSJSONSerialization::writeFragmentUTF8(null, 0), "null");
  EXPECT_EQ(NSJSONSerialization::writeFragmentUTF8(nil, 0), std::nullopt);
  EXPECT_EQ(NSJSONSerialization::writeFragmentUTF8(unpaired[0], 0), std::nullopt);
}

TEST(JSONWriter, WritesEveryUnitAloneAndAmongOthers) {
  for (std::uint32_t unit = 0; unit <= 0xFFFF; ++unit) {
    for (const std::size_t before : {0U, 3U, 9U}) {
      const String text(std::u16string(before, u'x') + static_cast<char16_t>(unit) +
                        (before == 9 ? u"yyyyyyyyyy" : u""));
      const Value value = List{text};
      const std::optional<String> written = write(value);
      ASSERT_EQ(written.has_value(), !unicode::isSurrogate(unit)) << unit;
      if (!written) continue;
      const bool escaped = unit < 0x20 || unit == u'"' || unit == u'\\' || unit == u'/';
      ASSERT_EQ(written->size() > text.size() + 4, escaped) << unit;
      ASSERT_EQ(NSJSONSerialization::parse(*written), value) << unit;
    }
  }
}

class RandomValues {
 public:
  explicit RandomValues(std::uint32_t seed) : random_(seed) {}

  /// A list or dictionary of about `size` values.
  Value container(int size) {
    if (below(2) == 0) {
      List list;
      while (size-- > 0) list.append(below(6) == 0 ? container(std::exchange(size, size / 2) / 2) : leaf());
      return list;
    }
    Dictionary entries;
    while (size-- > 0) entries.set(text(), below(6) == 0 ? container(std::exchange(size, size / 2) / 2) : leaf());
    return entries;
  }

 private:
  std::uint32_t below(std::uint32_t bound) { return static_cast<std::uint32_t>(random_() % bound); }
  Value leaf() {
    switch (below(6)) {
      case 0:
        return null;
      case 1:
        return below(2) == 0;
      case 2:
        return static_cast<std::int64_t>(random_() >> below(64));
      case 3:
        return static_cast<double>(static_cast<std::int32_t>(random_())) / 1024;
      default:
        return text();
    }
  }
  String text() {
    static constexpr char32_t kScalars[] = {0, u'"', u'\\', u'/', u'\n', 0x1F, 0x7F, 0xE9, 0xAC00, 0xFFFD, 0x1F600};
    StringBuilder builder;
    for (std::uint32_t left = below(below(8) == 0 ? 60 : 10); left > 0; --left) {
      builder.appendScalar(below(4) == 0 ? kScalars[below(std::size(kScalars))] : U'a' + below(26));
    }
    return builder.finish();
  }

  std::mt19937_64 random_;
};

TEST(JSONWriter, WhatWasWrittenReadsBackEqual) {
  for (std::uint32_t seed = 0; seed < 2000; ++seed) {
    RandomValues values(seed);
    const Value value = values.container(static_cast<int>(seed % 97));
    for (const std::uint64_t options : {0U, 1U, 2U, 3U}) {
      const std::optional<String> text = write(value, options);
      ASSERT_TRUE(text) << seed;
      ASSERT_EQ(NSJSONSerialization::parse(*text), value) << seed << ": " << *text;
      ASSERT_EQ(NSJSONSerialization::parse(std::string_view(*text->toUTF8())), value) << seed;
    }
  }
}

TEST(JSONWriter, SortsRecordsOfChangingShapeAlike) {
  // The shape of a record is remembered while others, nested in it or larger than any that is remembered, come between.
  List records;
  for (int i = 0; i < 200; ++i) {
    Dictionary record;
    for (int key = 0; key < i % 30 + 1; ++key) record.set(String::fromASCII(std::to_string(key * 37 % 31)), key);
    if (i % 3 == 0) record.set(u"nested", Dictionary{{u"b", record}, {u"a", List{record, record}}});
    records.append(record);
    records.append(record);
  }
  const std::optional<String> together = write(records, kSortedKeys);
  StringBuilder one;
  one.append(u'[');
  for (const Value& record : records) {
    if (one.size() > 1) one.append(u',');
    one.append(*write(record, kSortedKeys));
    const Value again = NSJSONSerialization::parse(*write(record, kSortedKeys));
    StringView last = nil;
    for (const Entry& entry : *again.asDictionary()) {
      EXPECT_LT(last, entry.key.text());
      last = entry.key.text();
    }
  }
  one.append(u']');
  EXPECT_EQ(together, one.finish());
}

Value nested(std::size_t levels) {
  Value value = List{};
  for (std::size_t i = 1; i < levels; ++i) value = i % 2 ? Value(Dictionary{{u"k", value}}) : Value(List{value});
  return value;
}

TEST(JSONWriter, AMillionLevelsAreRefusedOnASmallStack) {
  test::onSmallStack([] {
    for (const std::uint64_t options : {0U, 3U}) {
      EXPECT_TRUE(write(nested(limits::kJSONDepth), options));
      EXPECT_EQ(write(nested(limits::kJSONDepth + 1), options), std::nullopt);
      EXPECT_EQ(write(nested(1'000'000), options), std::nullopt);
      EXPECT_FALSE(NSJSONSerialization::parse(*write(nested(limits::kJSONDepth), options)).isNil());
    }
  });
}

}  // namespace
}  // namespace quorvel
