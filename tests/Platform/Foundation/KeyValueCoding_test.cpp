#include <gtest/gtest.h>
#include <tests/support/Row.h>

#include <quorvel/Platform/Foundation/KeyValueCoding.h>

namespace quorvel {

TEST(KeyValueCoding, FollowsPaths) {
  const Value record = Dictionary{
      {u"a", Dictionary{{u"b", 1}, {u"", u"empty"}, {u"x.y", 2}}},
      {u"none", null},
      {u"list", List{Dictionary{{u"n", 1}}, Dictionary{}, null, 5, List{Dictionary{{u"n", 2}}, List{}}}},
      {u"text", u"t"},
      {u"@at", 3},
  };
  const test::Row<const char16_t*, Value, test::Why> rows[] = {
      {u"a.b", 1, "nested"},
      {u"a.", u"empty", "an empty key is a key"},
      {u"a.x.y", nil, "always split at dots"},
      {u"none.b.c", null, "the null marker answers with itself"},
      {u"list.n", List{1, null, null, null, List{2, List{}}}, "lists map, what is missing becomes a null marker"},
      {u"list.@count", 5, "a property of the list"},
      {u"text.self", u"t", "but themselves"},
      {u"a.self", nil, "of a dictionary it is a key like any other"},
      {u"list.self", List{null, null, null, 5, List{null, List{}}}, "lists map over it"},
      {u"@count", 5, "a property of the dictionary"},
      {u"a.@allKeys", List{u"b", u"", u"x.y"}, "in their order"},
      {u"a.@allValues", List{1, u"empty", 2}, "in their order"},
      {u"@at", nil, "a key with @ is not found as an entry"},
      {u"@", nil, "a property without a name"},
      {u"", nil, "no entry of the empty key"},
  };
  for (const auto& [path, value, why] : rows) EXPECT_EQ(valueForKeyPath(record, std::u16string(path)), value) << why;
  EXPECT_EQ(valueForKey(Dictionary{{u"x.y", 2}}, u"x.y"), Value(2)) << "one key is not split";
  EXPECT_EQ(valueForKey(record, nil), Value(nil));
}

TEST(KeyValueCoding, MapsDeepListsWithoutStack) {
  Value value = Dictionary{{u"k", 1}};
  for (int i = 0; i < 300'000; ++i) value = List{value};
  Value answer = valueForKey(value, u"k");
  for (int i = 0; i < 300'000; ++i) {
    const Value inner = (*answer.asList())[0];
    answer = inner;
  }
  EXPECT_EQ(answer, Value(1));
}

}  // namespace quorvel
