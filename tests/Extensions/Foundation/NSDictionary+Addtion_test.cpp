#include <map>
#include <unordered_map>

#include <gtest/gtest.h>
#include <tests/support/Row.h>

#include <quorvel/Extensions/Foundation/Dictionary+Extension.h>
#include <quorvel/Extensions/Foundation/NSDictionary+Addtion.h>
#include <quorvel/Extensions/Foundation/NSMutableDictionary+VelkaAdditions.h>
#include <quorvel/Extensions/Foundation/NSObject+ConvertString.h>
#include <quorvel/Extensions/Foundation/Optional+Extension.h>

namespace quorvel {

TEST(Getters, CoerceByTheTable) {
  const test::Row<Value, Value, Value, Value, std::optional<double>, bool, bool> rows[] = {
      {nil, nil, nil, nil, {}, true, false},
      {null, nil, nil, nil, {}, true, false},
      {u"  ab\u2003\n", u"  ab\u2003\n", u"ab", 0, {}, false, false},
      {u" \u3000 ", u" \u3000 ", nil, 0, {}, false, false},
      {u"", u"", nil, 0, {}, false, false},
      {u"12abc", u"12abc", u"12abc", 12, 0.012, false, false},
      {u"99999999999999999999", u"99999999999999999999", u"99999999999999999999", INT64_MAX, 9223372036854775.807,
       false, false},
      {u"1500000000000", u"1500000000000", u"1500000000000", 1500000000000, 1500000000.0, false, false},
      {u"TRUE", u"TRUE", u"TRUE", 0, {}, true, false},
      {u"y", u"y", u"y", 0, {}, false, true},
      {u"Y", u"Y", u"Y", 0, {}, false, true},
      {42, u"42", u"42", 42, 0.042, true, false},
      {true, u"1", u"1", true, 0.001, true, false},
      {0, u"0", u"0", 0, {}, false, false},
      {-5, u"-5", u"-5", -5, {}, true, false},
      {2.7, u"2.7", u"2.7", 2.7, 0.002, true, false},
      {0.9, u"0.9", u"0.9", 0.9, {}, true, false},
      {1500000000001, u"1500000000001", u"1500000000001", 1500000000001, 1500000000.001, true, false},
      {List{1}, u"(\n    1\n)", u"(\n    1\n)", nil, {}, true, false},
  };
  for (const auto& [stored, string, notEmpty, number, dateSeconds, boolOrTrue, yes] : rows) {
    Dictionary record;
    if (!stored.isNil()) record.set(u"k", stored);
    EXPECT_EQ(Value(stringForKeyOrNil(record, u"k")), string) << stored;
    EXPECT_EQ(Value(stringNotEmptyForKeyOrNil(record, u"k")), notEmpty) << stored;
    EXPECT_EQ(Value(stringOrEmptyForKey(record, u"k")), notEmpty.isNil() ? Value(u"") : notEmpty) << stored;
    const std::optional<Number> asNumber = integerNumberForKeyOrNil(record, u"k");
    EXPECT_EQ(asNumber ? Value(*asNumber) : Value(nil), number) << stored;
    const std::optional<Date> date = dateForKeyOrNil(record, u"k");
    EXPECT_EQ(date ? std::optional(date->secondsSince1970) : std::nullopt, dateSeconds) << stored;
    EXPECT_EQ(boolValueForKey(record, u"k", true), boolOrTrue) << stored;
    EXPECT_EQ(boolValueForKey(record, u"k"), boolOrTrue && (stored.isNumber() || stored.isString())) << stored;
    EXPECT_EQ(boolValueFromStringYnForKeyOrNil(record, u"k"), yes) << stored;
    EXPECT_EQ(arrayForKeyOfNil(record, u"k").has_value(), stored.isList()) << stored;
  }
}

TEST(Getters, KeysPathsAndNullMarkers) {
  const Dictionary record{{u"a", Dictionary{{u"b", null}, {u"c", 1}}}, {u"n", null}, {7, u"seven"}, {u"@count", 9}};
  EXPECT_EQ(valueForKeyOrNil(record, u"@count"), Value(4));
  EXPECT_EQ(integerNumberForKeyOrNil(record, u"@count"), Number(4));
  EXPECT_EQ(objectForKeyOrNil(record, u"@count"), Value(9));
  EXPECT_EQ(objectForKeyOrNil(record, 7.0), Value(u"seven"));
  EXPECT_EQ(objectForKeyOrNil(record, u"n"), Value(nil));
  EXPECT_EQ(objectForKeyOrNil(record, nil), Value(nil));
  EXPECT_EQ(stringForKeyOrNil(record, nil), std::nullopt);
  EXPECT_EQ(valueForKeyPathOrNil(record, u"a.c"), Value(1));
  EXPECT_EQ(valueForKeyPathOrNil(record, u"a.b"), Value(nil));
  EXPECT_EQ(valueForKeyPathOrNil(record, u"n.x"), Value(nil));
  EXPECT_EQ(valueOrNil(record, null), Value(nil));
  EXPECT_TRUE(NSDictionaryAddtion::isNotEmpty(record));
  for (const Value& value : {Value(nil), Value(Dictionary{}), Value(List{1}), Value(u"text"), Value(null)}) {
    EXPECT_TRUE(NSDictionaryAddtion::isEmpty(value)) << value;
  }
}

TEST(Merging, ListsAreJoinedEverythingElseIsReplaced) {
  const Dictionary record{{u"a", List{1}}, {u"b", 1}, {u"d", Dictionary{{u"x", 1}}}, {u"l", List{1}}};
  const Dictionary other{{u"a", List{1, 2}}, {u"b", List{2}}, {u"c", 3}, {u"d", Dictionary{{u"y", 2}}}, {u"l", null}};
  const Dictionary merged{
      {u"a", List{1, 1, 2}}, {u"b", List{2}}, {u"c", 3}, {u"d", Dictionary{{u"y", 2}}}, {u"l", null}};
  EXPECT_EQ(mergeToDictionary(record, other), merged);
  EXPECT_EQ(record[u"a"], Value(List{1})) << "the receiver stays";
  EXPECT_EQ(mergeToDictionary(record, nil), record);
  EXPECT_EQ(mergeToDictionary(record, record)[u"a"], Value(List{1, 1}));
}

TEST(Writers, StoreTheirFormsAndSkipNil) {
  Dictionary record;
  setObjectIfNotNil(record, nil, u"k");
  setObjectIfNotNil(record, 1, nil);
  setString(record, nil, u"k");
  setStringOfIntKey(record, nil, 1);
  for (const char16_t* text : {u"12a", u"", u" 7", u"-7"}) setIntOfString(record, std::u16string(text), u"k");
  setIntOfString(record, nil, u"k");
  EXPECT_TRUE(record.isEmpty());
  setBool(record, true, u"bool");
  EXPECT_EQ(record[u"bool"].asNumber()->kind(), Number::Kind::Integer) << "not a boolean";
  setDouble(record, 2, u"double");
  EXPECT_EQ(record[u"double"].asNumber()->kind(), Number::Kind::Double) << "not an integer";
  setStringOfInt(record, INT64_MIN, u"text");
  setIntOfString(record, u"007", u"seven");
  setIntOfString(record, u"\u0661\u0662", u"arabic");
  setStringOfIntKey(record, u"under a number", -3);
  EXPECT_EQ(record, (Dictionary{{u"bool", 1},
                                {u"double", 2},
                                {u"text", u"-9223372036854775808"},
                                {u"seven", 7},
                                {u"arabic", 0},
                                {-3, u"under a number"}}));
}

TEST(DictionaryExtension, OnStandardAndOwnDictionaries) {
  const std::map<std::string, int> a{{"a", 1}};
  const std::map<std::string, int> b{{"a", 2}, {"b", 3}};
  EXPECT_EQ(merging(a, b), (std::map<std::string, int>{{"a", 1}, {"b", 3}}));
  std::map<std::string, int> changed = a;
  merge(changed, b);
  EXPECT_EQ(changed, b);
  const Dictionary own{{u"a", 1}, {5, u"five"}};
  EXPECT_EQ(merging(own, Dictionary{{u"a", 2}, {u"b", 3}}), (Dictionary{{u"a", 1}, {5, u"five"}, {u"b", 3}}));
  Dictionary self = own;
  merge(self, self);
  EXPECT_EQ(self, own);

  EXPECT_EQ(swiftDictionary(own), (Dictionary{{u"a", 1}}));
  const std::map<std::string, std::vector<std::map<std::u16string, bool>>> nested{{"k\xC3\xA9", {{{u"t", true}}, {}}}};
  EXPECT_EQ(swiftDictionary(nested), (Dictionary{{u"k\u00E9", List{Dictionary{{u"t", true}}, Dictionary{}}}}));
  EXPECT_EQ(swiftDictionary(std::unordered_map<int, int>{{1, 2}}), Dictionary()) << "no string keys";

  const std::vector<std::pair<int, int>> tuples{{1, 1}, {2, 5}, {1, 2}};
  EXPECT_EQ((dictionaryFromTuples<std::map<int, int>>(tuples)), (std::map<int, int>{{1, 2}, {2, 5}}));
  EXPECT_EQ(dictionaryFromTuples(tuples), (Dictionary{{1, 2}, {2, 5}}));
}

TEST(DictionaryExtension, SubscriptsGiveStringsAndNumbers) {
  const Dictionary own{{u"s", u"text"}, {u"n", 2.5}, {u"b", true}, {u"l", List{}}, {u"null", null}};
  EXPECT_EQ(subscriptStringOrNil(own, u"s"), u"text");
  EXPECT_EQ(subscriptStringOrNil(own, u"n"), u"2.5");
  EXPECT_EQ(subscriptStringOrNil(own, u"b"), u"1");
  for (const char16_t* key : {u"l", u"null", u"missing"}) {
    EXPECT_EQ(subscriptStringOrNil(own, StringView(std::u16string(key))), std::nullopt);
  }
  EXPECT_EQ(subscriptString(own, u"missing"), u"");
  const std::map<int, std::vector<int>> lists{{1, {}}};
  EXPECT_EQ(subscriptStringOrNil(lists, 1), std::nullopt);
  const std::unordered_map<std::string, bool> flags{{"f", false}};
  EXPECT_EQ(subscriptString(flags, "f"), u"0");
}

TEST(Texts, OfOptionalsAndObjects) {
  EXPECT_EQ(toString(std::optional<int>()), u"<nil>");
  EXPECT_EQ(toString(std::optional(5)), u"5");
  EXPECT_EQ(toString(std::optional(1.0)), u"1.0");
  EXPECT_EQ(toString(std::optional(true)), u"true");
  EXPECT_EQ(toString(std::optional<std::string>("\xED\x95\x9C")), u"한");
  EXPECT_EQ(toString(std::optional<String>(u"text")), u"text");
  EXPECT_EQ(toString(std::optional<List>(List{})), u"(\n)");
  EXPECT_EQ(toString(Value(nil)), u"<nil>");
  EXPECT_EQ(toString(Value(null)), u"<null>");
  EXPECT_EQ(toStringValue(nil), std::nullopt);
  EXPECT_EQ(toStringValue(true), u"1");
  EXPECT_EQ(toStringValue(1.0), u"1");
  EXPECT_EQ(className(List{}), u"NSArray");
}

}  // namespace quorvel
