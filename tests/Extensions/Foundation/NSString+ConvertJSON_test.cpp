#include <gtest/gtest.h>
#include <tests/support/Row.h>

#include <quorvel/Extensions/Foundation/NSArray+ConvertJSON.h>
#include <quorvel/Extensions/Foundation/NSDictionary+ConvertJSON.h>
#include <quorvel/Extensions/Foundation/NSString+ConvertJSON.h>
#include <quorvel/Extensions/Foundation/String+JSON.h>

namespace quorvel {

TEST(ConvertJSON, ReadsContainersAloneAndRecordsAlone) {
  const test::Row<StringView, Value, bool, test::Why> rows[] = {
      {u"{\"a\":[1,2]}", Dictionary{{u"a", List{1, 2}}}, true, "a record"},
      {u"[1,2]", List{1, 2}, false, "a list is no record"},
      {u"42", nil, false, "a fragment"},
      {u"", nil, false, "nothing"},
      {nil, nil, false, "nil"},
      {StringView(u"{\"\xD800\":1}", 7), nil, false, "no UTF-8 of an unpaired surrogate"},
  };
  for (const auto& [text, object, isRecord, why] : rows) {
    EXPECT_EQ(objectFromJSONString(text), object) << why;
    EXPECT_EQ(Value(jsonObject(text)), isRecord ? object : Value(nil)) << why;
  }
}

TEST(ConvertJSON, WritesSortedWhateverTheOptions) {
  const Dictionary record{{u"b", 1}, {u"a", 2}};
  EXPECT_EQ(toJSONString(record), u"{\"a\":2,\"b\":1}");
  EXPECT_EQ(toJSONString(record, 0), u"{\"a\":2,\"b\":1}");
  EXPECT_EQ(toJSONString(record, 1), u"{\n  \"a\" : 2,\n  \"b\" : 1\n}");
  EXPECT_EQ(toJSONString(List{record, u"/"}), u"[{\"a\":2,\"b\":1},\"\\/\"]");
  EXPECT_EQ(toJSONString(List{}, 1), u"[\n\n]");
  EXPECT_EQ(toJSONString(List{Date{0}}), std::nullopt);
  EXPECT_EQ(toJSONString(Dictionary{{1, 2}}, 1), std::nullopt);
}

}  // namespace quorvel
