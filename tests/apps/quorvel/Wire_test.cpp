#include <limits>

#include <apps/quorvel/Font.h>
#include <apps/quorvel/Wire.h>
#include <gtest/gtest.h>
#include <tests/support/Row.h>

#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/Foundation/NSJSONSerialization.h>

namespace quorvel::command {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

Value parsed(std::string_view json) { return NSJSONSerialization::parseFragment(json); }

std::string written(const Value& value) {
  const std::optional<Value> json = toWire(value);
  return json ? NSJSONSerialization::writeFragmentUTF8(*json, 0).value_or("not writable") : "too deep";
}

Data bytes(std::initializer_list<std::uint8_t> list) { return Data(std::span(list.begin(), list.size())); }

NSAttributedString marked() {
  NSMutableAttributedString text(u"abc");
  text.addAttribute(kForegroundColorAttribute, UIColor(1, 0, 0, 0.5), {1, 1});
  return text;
}

TEST(Wire, FormsReadAndWriteTheSame) {
  const test::Row<const char*, Value, test::Why> forms[] = {
      {R"("a b")", u"a b", "plain text"},
      {"42", 42, "an integer"},
      {"18446744073709551615", std::uint64_t{UINT64_MAX}, "an unsigned integer beyond the signed range"},
      {"null", nil, "nil at the top"},
      {R"({"$null":true})", null, "the null marker at the top"},
      {R"([{"$null":true},1])", List{null, 1}, "the null marker inside is written in its own form"},
      {R"({"$data":"AQID"})", bytes({1, 2, 3}), "bytes"},
      {R"({"$data":"+\/8="})", bytes({0xFB, 0xFF}), "Base64 of the standard alphabet, padded"},
      {R"({"$date":1500000000123})", Date{1500000000.123}, "milliseconds"},
      {R"({"$date":{"$number":"inf"}})", Date{kInfinity}, "a date that is not finite"},
      {R"({"$utf16":[97,55357]})", String(u"a\xD83D"), "a lone high surrogate"},
      {R"({"$number":"inf"})", kInfinity, "infinity"},
      {R"({"$number":"nan"})", std::numeric_limits<double>::quiet_NaN(), "not a number"},
      {R"({"b":1,"a":[]})", Dictionary{{u"b", 1}, {u"a", List()}}, "members keep their order"},
      {R"({"$entries":[[5,"x"]]})", Dictionary{{5, u"x"}}, "a number as a key"},
      {R"({"$entries":[["$null",true]]})", Dictionary{{u"$null", true}}, "a key that looks like a form"},
      {R"({"$entries":[[{"$utf16":[55357]},1]]})", Dictionary{{String(u"\xD83D"), 1}}, "a key with a lone surrogate"},
      {R"({"$entries":[["text","a"],["spans",[]]]})", Dictionary{{u"text", u"a"}, {u"spans", List()}},
       "a dictionary that would read as attributed text"},
      {R"({"text":"a","spans":"b"})", Dictionary{{u"text", u"a"}, {u"spans", u"b"}}, "one that would not"},
      {R"({"$color":[1,0,0,0.5]})", UIColor(1, 0, 0, 0.5), "a colour inside"},
      {R"({"$color":[{"$number":"inf"},0,0,1]})", UIColor(kInfinity, 0, 0, 1), "components are not clamped"},
      {R"({"$font":"Bold"})", Font{u"Bold"}, "a font"},
      {R"({"text":"abc","spans":[[0,1,{}],[1,1,{"NSColor":{"$color":[1,0,0,0.5]}}],[2,1,{}]]})", marked(),
       "attributed text"},
      {R"({"text":{"$utf16":[55357]},"spans":[[0,1,{}]]})", NSAttributedString(String(u"\xD83D")),
       "attributed text with a lone surrogate"},
  };

  for (const auto& [json, value, why] : forms) {
    std::string reason;
    const std::optional<Value> read = fromWire(parsed(json), reason);
    ASSERT_TRUE(read) << json << ": " << why << ": " << reason;
    EXPECT_EQ(*read, value) << json << ": " << why;
    EXPECT_EQ(read->kind(), value.kind()) << json << ": " << why;
    EXPECT_EQ(written(value), json) << why;
  }
}

TEST(Wire, NullInsideIsTheNullMarker) {
  std::string reason;
  EXPECT_EQ(fromWire(parsed("[null]"), reason), List{null});
  EXPECT_EQ(fromWire(parsed(R"({"a":null})"), reason), Value(Dictionary{{u"a", null}}));
}

constexpr test::Row<const char*, const char*> kRefusals[] = {
    {R"({"$nil":true})", "unknown form '$nil'"},
    {R"({"$null":false})", "expected true in $null, got a boolean"},
    {R"({"$null":true,"a":1})", "a key that begins with '$' is written in $entries"},
    {R"([[{"$data":"A"}]])", "expected Base64 in $data"},
    {R"({"$data":[1]})", "expected a string in $data, got a list"},
    {R"({"$date":"now"})", "expected a number, got a string"},
    {R"({"$utf16":[65536]})", "expected units from 0 to 65535"},
    {R"({"$number":"Infinity"})", "expected \"inf\""},
    {R"({"$entries":[[1]]})", "expected [key, value] in $entries"},
    {R"({"$entries":{"a":1}})", "expected a list of pairs"},
    {R"({"$color":[1,0,0]})", "expected a colour"},
    {R"({"$color":[1,0,0,"1"]})", "expected a number, got a string"},
    {R"({"text":"a","spans":[[-1,1,{}]]})", "an integer that is not negative"},
};

TEST(Wire, RefusesWhatItDoesNotUnderstandAndSaysWhy) {
  for (const auto& [json, expected] : kRefusals) {
    std::string reason;
    EXPECT_FALSE(fromWire(parsed(json), reason)) << json;
    EXPECT_NE(reason.find(expected), std::string::npos) << json << ": " << reason;
  }
}

TEST(Wire, KnownKindsHaveShortForms) {
  std::string reason;
  EXPECT_EQ(colorFromWire(parsed("[1, 0, 0, 0.5]"), reason), UIColor(1, 0, 0, 0.5));
  EXPECT_EQ(colorFromWire(parsed(R"({"$color": [1, 0, 0, 0.5]})"), reason), UIColor(1, 0, 0, 0.5));
  EXPECT_EQ(attributedFromWire(parsed(R"("ab")"), reason), NSAttributedString(u"ab"));
  EXPECT_EQ(rangeFromWire(parsed("[1, 9223372036854775807]"), reason), (NSRange{1, INT64_MAX}));
  EXPECT_EQ(dictionaryFromWire(parsed(R"({"text": "a", "spans": []})"), reason)->size(), 2U)
      << "where a dictionary is wanted, it is one whatever its members";
  EXPECT_FALSE(dictionaryFromWire(parsed(R"({"$null": true})"), reason));
}

TEST(Wire, SpansBeyondTheTextAreClipped) {
  std::string reason;
  const auto text = attributedFromWire(parsed(R"({"text":"ab","spans":[[1,9,{"a":1}],[7,1,{"a":2}]]})"), reason);
  ASSERT_TRUE(text) << reason;
  EXPECT_EQ(written(Value(*text)), R"({"text":"ab","spans":[[0,1,{}],[1,1,{"a":1}]]})");
}

TEST(Wire, DepthIsBounded) {
  Value value = 1;
  for (std::size_t i = 0; i < limits::kJSONDepth; ++i) value = List{value};
  EXPECT_TRUE(toWire(value));
  EXPECT_FALSE(toWire(List{value}));
}

}  // namespace
}  // namespace quorvel::command
