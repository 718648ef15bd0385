// JSON read: what is accepted, what is refused, where and why, by both readers alike.
#include <cmath>

#include <gtest/gtest.h>
#include <tests/support/IllFormedUTF8.h>
#include <tests/support/Row.h>

#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/Foundation/NSJSONSerialization.h>
#include <quorvel/Platform/Foundation/Unicode.h>

namespace quorvel {
namespace {

/// The text on the heap without a byte to spare, so that a sanitizer sees a read past its end.
Value parseUTF8(std::string_view text, JSONError* error = nullptr) {
  const std::vector<char> exact(text.begin(), text.end());
  return NSJSONSerialization::parse(std::string_view(exact.data(), exact.size()), error);
}
Value parseUTF16(StringView text, JSONError* error = nullptr) {
  const std::vector<char16_t> exact(text.begin(), text.end());
  return NSJSONSerialization::parse(StringView(exact.data(), exact.size()), error);
}
/// By both readers, which must agree.
Value parse(std::string_view text) {
  Value value = parseUTF8(text);
  EXPECT_EQ(value, parseUTF16(*String::fromUTF8(text))) << text;
  return value;
}

TEST(JSONReader, AcceptsWhatTheStandardAllows) {
  const test::Row<std::string_view, Value, test::Why> rows[] = {
      {"[]", List{}, "empty list"},
      {" \t\r\n{ \n} ", Dictionary{}, "white space at every place"},
      {"\xEF\xBB\xBF[]", List{}, "one byte-order mark"},
      {R"({"a" : [ { "b":{}} ] })", Dictionary{{u"a", List{Dictionary{{u"b", Dictionary{}}}}}}, "nesting"},
      {R"({"a":1,"b":2,"a":3,"\u0061":4})", Dictionary{{u"a", 1}, {u"b", 2}}, "first of repeated keys, escaped too"},
      {R"(["\"\\\/\b\f\n\r\t"])", List{u"\"\\/\b\f\n\r\t"}, "every short escape"},
      {R"(["\u0000\u00e9\uAC00"])", List{String(u"\0\u00E9\uAC00", 3)}, "an escaped NUL, digits of both cases"},
      {R"(["\ud83d\uDE00"])", List{u"\U0001F600"}, "surrogates of one pair, both escaped"},
      {"[\"\x7F\xC2\x80\xEF\xBF\xBF\xEF\xBB\xBF\"]", List{u"\u007F\u0080\uFFFF\uFEFF"}, "no other unit is special"},
      {"[\"1234567\",\"12345678\"]", List{u"1234567", u"12345678"}, "longest inline text and one unit more"},
      {R"(["123456\u0037","1234567\u0038"])", List{u"1234567", u"12345678"}, "the same with an escape"},
  };
  for (const auto& [text, value, why] : rows) EXPECT_EQ(parse(text), value) << text << ": " << why;
}

/// Refused by both readers, for this reason and at this byte.
void expectRefused(std::string_view text, std::size_t offset, const char* reason, const char* why) {
  const String units = *String::fromUTF8(text);
  JSONError error;
  EXPECT_TRUE(parseUTF8(text, &error).isNil()) << text << ": " << why;
  EXPECT_EQ(error.offset, offset) << text << ": " << why;
  EXPECT_STREQ(error.reason, reason) << text << ": " << why;
  EXPECT_TRUE(parseUTF16(units, &error).isNil()) << text << ": " << why;
  EXPECT_EQ(unicode::utf8Length(StringView(units).sub(0, error.offset)), offset) << text << ": " << why;
  EXPECT_STREQ(error.reason, reason) << text << ": " << why;
}

TEST(JSONReader, AfterEachPartOnlyWhatMayFollowIsAccepted) {
  constexpr const char* kUnexpected = "unexpected character";
  const test::Row<std::string_view, std::string_view, const char*> rows[] = {
      {"", "[{tfn\"-0123456789", kUnexpected},
      {"[", "]{[tfn\"-0123456789", kUnexpected},
      {"[1,", "[{tfn\"-0123456789", kUnexpected},
      {"{\"a\":", "[{tfn\"-0123456789", kUnexpected},
      {"{", "}\"", kUnexpected},
      {"{\"a\":1,", "\"", kUnexpected},
      {"{\"a\"", ":", kUnexpected},
      {"{\"a\":[]", ",}", kUnexpected},
      {"[{}", ",]", kUnexpected},
      {"[tru", "e", kUnexpected},
      {"[12", ",].eE0123456789", kUnexpected},
      {"[0", ",].eE", kUnexpected},
      {"[-0", ",].eE", kUnexpected},
      {"[1.5", ",]eE0123456789", kUnexpected},
      {"[1e5", ",]0123456789", kUnexpected},
      {"[-", "0123456789", "a digit is missing"},
      {"[1.", "0123456789", "a digit is missing"},
      {"[1e", "+-0123456789", "a digit is missing"},
      {"[1e+", "0123456789", "a digit is missing"},
      {"[1]", "", "text after the end"},
  };
  for (const auto& [before, allowed, reason] : rows) {
    const bool isSpaceAllowed = !before.ends_with('u') && std::string_view(reason) != "a digit is missing";
    for (char next = 1; next < 0x7F; ++next) {
      if (allowed.find(next) != allowed.npos) continue;
      if (isSpaceAllowed && std::string_view(" \t\r\n").find(next) != std::string_view::npos) continue;
      expectRefused(std::string(before) + next, before.size(), reason, "");
    }
  }
}

constexpr test::Row<std::string_view, std::size_t, const char*, test::Why> kRefused[] = {
    {"", 0, "the text ends too early", "nothing"},
    {" ", 1, "the text ends too early", "white space alone"},
    {"nul", 0, "no list or dictionary at the top", "a broken word"},
    {"42", 0, "no list or dictionary at the top", "a number"},
    {" \"x\"", 1, "no list or dictionary at the top", "a text"},
    {"\xEF\xBB\xBF\xEF\xBB\xBF[]", 3, "unexpected character", "two byte-order marks"},
    {"[]\xEF\xBB\xBF", 2, "text after the end", "a mark at the end"},
    {" \xEF\xBB\xBF[]", 1, "unexpected character", "a mark that is not first"},
    {"[\"0123456789abcdef0123456789abcdef", 34, "the text ends too early", "open text longer than a vector"},
    {"[1e400]", 1, "number out of range", "overflows"},
    {"[1e-400]", 1, "number out of range", "underflows to zero"},
    {"[2e-324]", 1, "number out of range", "rounds to zero"},
    {"[1e99999999999999999999]", 1, "number out of range", "an exponent beyond 64 bits"},
    {"[1e-99999999999999999999]", 1, "number out of range", "an exponent beyond 64 bits"},
    {"[\"0123456789\x1F\"]", 12, "control character in a string", "the last control"},
    {"{\"a\nb\":1}", 3, "control character in a string", "raw line feed in a key"},
    {"[\"\\x41\"]", 2, "invalid escape", "unknown letter"},
    {"[\"ab\\u12g4\"]", 4, "invalid escape", "no hexadecimal digit"},
    {"[\"\\ud83d\\n\"]", 2, "unpaired surrogate", "high before another escape"},
    {"[\"\\ud83d\\u0041\"]", 2, "unpaired surrogate", "high before a letter"},
    {"[\"\\ud83d\\ud83d\\ude00\"]", 2, "unpaired surrogate", "high before a pair"},
    {"[\"\\ude00\\ud83d\"]", 2, "unpaired surrogate", "low first"},
    {"{\"\\udfff\":1}", 2, "unpaired surrogate", "low alone in a key"},
};

TEST(JSONReader, RefusesWithPlaceAndReason) {
  for (const auto& [text, offset, reason, why] : kRefused) expectRefused(text, offset, reason, why);
}

TEST(JSONReader, RefusesNULWhereverItStands) {
  const std::string_view document = R"({"key":["a text",-12.5e3,true]})";
  for (std::size_t i = 0; i <= document.size(); ++i) {
    std::string text(document);
    text.insert(i, 1, '\0');
    JSONError error;
    EXPECT_TRUE(parseUTF8(text, &error).isNil()) << i;
    EXPECT_EQ(error.offset, i);
    EXPECT_TRUE(parseUTF16(*String::fromUTF8(text), &error).isNil()) << i;
    EXPECT_EQ(error.offset, i);
  }
}

TEST(JSONReader, EveryPrefixOfADocumentEndsTooEarly) {
  const std::string_view document = R"({"key":["abc \n\ud83d\ude00\u00e9",-12.5e+3,true,{}],"b":null})";
  ASSERT_FALSE(parse(document).isNil());
  for (std::size_t i = 0; i < document.size(); ++i) {
    expectRefused(document.substr(0, i), i, "the text ends too early", "a prefix");
  }
}

TEST(JSONReader, RefusesIllFormedUTF8AtItsFirstByte) {
  for (const std::string_view bad : test::kIllFormedUTF8) {
    for (const std::string_view before : {"", "abc", "가나", "0123456789abcdef"}) {
      for (const std::string_view after : {"", "\"]", "\",\"0123456789abcdef\"]"}) {
        const std::string text = std::string("[\"") + std::string(before) + std::string(bad) + std::string(after);
        JSONError error;
        EXPECT_TRUE(parseUTF8(text, &error).isNil()) << text;
        EXPECT_EQ(error.offset, 2 + before.size()) << text;
        EXPECT_STREQ(error.reason, "invalid UTF-8") << text;
      }
    }
  }
}

TEST(JSONReader, ReadsNumbersExactlyAndKeepsTheirKind) {
  const test::Row<const char*, Number, test::Why> rows[] = {
      {"0", 0, "zero"},
      {"-0", 0, "an integer has no negative zero"},
      {"-0.0", -0.0, "a double has one"},
      {"0e-999", 0.0, "zero does not underflow"},
      {"0.0e99999999999999999999", 0.0, "nor overflow"},
      {"1e2", 100.0, "an exponent makes a double"},
      {"9223372036854775807", INT64_MAX, "19 digits, the largest signed"},
      {"9223372036854775808", std::uint64_t{1} << 63, "one more is unsigned"},
      {"-9223372036854775808", INT64_MIN, "the smallest signed"},
      {"-9223372036854775809", -9223372036854775808.0, "one less is a double"},
      {"9999999999999999999", std::uint64_t{9999999999999999999U}, "the largest of 19 digits"},
      {"18446744073709551615", UINT64_MAX, "20 digits, the largest unsigned"},
      {"18446744073709551616", 18446744073709551616.0, "one more is a double"},
      {"28446744073709551615", 28446744073709551615.0, "20 digits with 2 at the front"},
      {"1234567890123456789012345678901234567890", 1234567890123456789012345678901234567890.0, "40 digits"},
      {"9007199254740993.0", 9007199254740992.0, "a half to even"},
      {"9007199254740993.00000000000000000001", 9007199254740994.0, "a little more than a half"},
      {"1e22", 1e22, "the last exact power"},
      {"1e23", 1e23, "the first that is not"},
      {"0.000000000000000000000000000000000000001", 1e-39, "leading zeros count no digits"},
      {"1.7976931348623157e308", 1.7976931348623157e308, "the largest double"},
      {"2.2250738585072011e-308", 2.2250738585072011e-308, "a subnormal"},
      {"5E-324", 5e-324, "the smallest"},
      {"3e-324", 5e-324, "rounds up to the smallest"},
  };
  for (const auto& [text, value, why] : rows) {
    const Value list = parse(std::string("[").append(text).append("]"));
    ASSERT_TRUE(list.isList()) << text << ": " << why;
    const Number read = *(*list.asList())[0].asNumber();
    EXPECT_EQ(read, value) << text << ": " << why;
    EXPECT_EQ(read.kind(), value.kind()) << text << ": " << why;
    EXPECT_EQ(std::signbit(read.doubleValue()), std::signbit(value.doubleValue())) << text << ": " << why;
  }
}

TEST(JSONReader, CountsLevelsOfNesting) {
  const auto nested = [](std::size_t lists, std::size_t dictionaries) {
    std::string text(lists, '[');
    for (std::size_t i = 0; i < dictionaries; ++i) text += "{\"k\":";
    text += std::string("1") + std::string(dictionaries, '}') + std::string(lists, ']');
    return text;
  };
  EXPECT_FALSE(parse(nested(limits::kJSONDepth, 0)).isNil());
  EXPECT_FALSE(parse(nested(limits::kJSONDepth - 200, 200)).isNil());
  EXPECT_FALSE(parse(std::string("[") + nested(limits::kJSONDepth - 1, 0) + "," + nested(0, 511) + "]").isNil());
  for (const std::string& text :
       {nested(limits::kJSONDepth + 1, 0), nested(limits::kJSONDepth, 1), std::string(10'000'000, '[')}) {
    JSONError error;
    EXPECT_TRUE(parseUTF8(text, &error).isNil());
    EXPECT_EQ(error.offset, limits::kJSONDepth);
    EXPECT_STREQ(error.reason, "nested too deeply");
    EXPECT_TRUE(parseUTF16(*String::fromUTF8(text), &error).isNil());
    EXPECT_EQ(error.offset, limits::kJSONDepth);
  }
}

TEST(JSONReader, KeepsTheFirstOfRepeatedKeysAtEverySize) {
  for (const int count : {2, 8, 16, 17, 63, 64, 65, 200, 100'000}) {
    std::string text = "{";
    for (const char* round : {"first", "again"}) {
      for (int i = 0; i < count; ++i) {
        // Every third repetition is written with an escape.
        const bool escaped = i % 3 == 0 && *round == 'a';
        text += (text.size() > 1 ? ",\"" : "\"") + std::string(escaped ? "\\u006bey" : "key") + std::to_string(i) +
                "\":\"" + round + "\"";
      }
    }
    const Value value = parse(text + "}");
    ASSERT_TRUE(value.isDictionary()) << count;
    const Dictionary& dictionary = *value.asDictionary();
    ASSERT_EQ(dictionary.size(), static_cast<std::size_t>(count));
    int place = 0;
    for (const Entry& entry : dictionary) {
      EXPECT_EQ(entry.key, Value(String::fromASCII("key" + std::to_string(place++)))) << count;
      EXPECT_EQ(entry.value, Value(u"first")) << count;
      EXPECT_EQ(dictionary.find(entry.key), &entry.value) << count;
    }
  }
}

TEST(JSONReader, KeepsKeysApartThatLookAlike) {
  // More keys than are remembered, of which many begin or end alike, in records of changing shape.
  Value expected = List{};
  std::string text = "[";
  for (int record = 0; record < 300; ++record) {
    Dictionary entries;
    text += record ? ",{" : "{";
    for (int i = 0; i < 12; ++i) {
      const std::string key = std::string(static_cast<std::size_t>((record * 5 + i * 7) % 70), 'k') +
                              std::to_string((record * i) % 11) + (i % 2 ? "" : "가");
      if (entries.insert(*String::fromUTF8(key), i)) text += entries.size() > 1 ? "," : "";
      text += (text.back() == '{' || text.back() == ',' ? "\"" : ",\"") + key + "\":" + std::to_string(i);
    }
    text += "}";
    expected.mutableList()->append(entries);
  }
  EXPECT_EQ(parse(text + "]"), expected);
}

TEST(JSONReader, ReadsEveryUnitEscapedAndRaw) {
  for (std::uint32_t unit = 0; unit <= 0xFFFF; ++unit) {
    char escape[16];
    std::snprintf(escape, sizeof escape, unit % 2 ? "[\"\\u%04x\"]" : "[\"\\u%04X\"]", unit);
    const auto raw = static_cast<char16_t>(unit);
    const bool surrogate = unicode::isSurrogate(unit);
    const Value expected = surrogate ? Value() : Value(List{String(&raw, 1)});
    ASSERT_EQ(parse(escape), expected) << escape;

    const bool special = surrogate || unit < 0x20 || unit == u'"' || unit == u'\\';
    const char16_t units[] = {u'[', u'"', raw, u'"', u']'};
    ASSERT_EQ(parseUTF16(StringView(units, 5)), special ? Value() : expected) << escape;
    if (!surrogate) {
      ASSERT_EQ(parseUTF8(*String(units, 5).toUTF8()), special ? Value() : expected) << escape;
    }
  }
}

TEST(JSONReader, RefusesUnpairedUnitsOfUTF16) {
  const test::Row<std::u16string, std::size_t, test::Why> rows[] = {
      {u"[\"a\xD83D\"]", 3, "high alone"},
      {u"[\"\xDE00\xD83D\"]", 2, "low first"},
      {u"[\"0123456789\xD83D\xD83D\xDE00\"]", 12, "high before a pair"},
      {u"[\"\\ud83d\xDE00\"]", 2, "escape and unit make no pair"},
      {u"[\"\xD83D\\ude00\"]", 2, "unit and escape make no pair"},
      {u"[\"\\n\xD83D", 4, "the text ends in a pair"},
  };
  for (const auto& [text, offset, why] : rows) {
    JSONError error;
    EXPECT_TRUE(parseUTF16(text, &error).isNil()) << why;
    EXPECT_EQ(error.offset, offset) << why;
    EXPECT_STREQ(error.reason, "unpaired surrogate") << why;
  }
  EXPECT_EQ(parseUTF16(u"[\"01234567\xD83D\xDE00\"]"), Value(List{u"01234567\U0001F600"}))
      << "a pair over a vector's end";
  EXPECT_TRUE(parseUTF16(nil).isNil());
}

TEST(JSONReader, ReadsTextsOfEveryLengthAtEveryPlace) {
  for (std::size_t size = 0; size < 40; ++size) {
    for (const std::string unit : {"a", "가", "é", "\xF0\x9F\x98\x80"}) {
      for (std::size_t place = 0; place <= size; ++place) {
        std::string content;
        for (std::size_t i = 0; i <= size; ++i) content += i == place ? unit : "x";
        EXPECT_EQ(parse(std::string("[\"") + content + "\",\"" + content + "\\n\"]"),
                  Value(List{*String::fromUTF8(content), *String::fromUTF8(content + "\n")}))
            << content;
      }
    }
  }
  const std::string large(100'000, 'x');
  EXPECT_EQ(parse(std::string("[\"\\t") + large + "가\"]"),
            Value(List{*String::fromUTF8(std::string("\t") + large + "가")}));
}

TEST(JSONReader, FragmentsAreReadWhereAskedFor) {
  EXPECT_EQ(NSJSONSerialization::parseFragment(" \"x\" "), Value(u"x"));
  EXPECT_EQ(NSJSONSerialization::parseFragment("null"), Value(null));
  EXPECT_EQ(NSJSONSerialization::parseFragment("-7"), Value(-7));
  EXPECT_EQ(NSJSONSerialization::parseFragment("[{}]"), Value(List{Dictionary{}}));
  for (const char* bad : {"", " ", "nul", "1 2", "\"", "-", "]"}) {
    EXPECT_TRUE(NSJSONSerialization::parseFragment(bad).isNil()) << bad;
  }
}

}  // namespace
}  // namespace quorvel
