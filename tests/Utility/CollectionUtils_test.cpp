#include <random>

#include <gtest/gtest.h>
#include <tests/support/Row.h>

#include <quorvel/Platform/Foundation/NSAttributedString.h>
#include <quorvel/Utility/CollectionUtils.h>

namespace quorvel {
namespace {

TEST(CollectionUtils, ComparesMembersByTheTable) {
  const test::Row<Value, Value, bool, test::Why> rows[] = {
      {nil, nil, true, "nil counts 0"},
      {nil, List{}, true, "and so does an empty list"},
      {nil, List{1}, false, "counts"},
      {List{List{1}, List{}}, List{List{}, List{1.0}}, true, "nested lists by =="},
      {List{List{}}, List{Dictionary{}}, false, "a list is no dictionary"},
      {List{u"\u00E9"}, List{u"e\u0301"}, false, "texts unit by unit"},
      {List{NSAttributedString(u"a")}, List{NSMutableAttributedString(u"a")}, false, "two classes of objects"},
      {u"text", List{1}, true, "a text has no count: the failure reads as equal"},
      {List{1}, 7, true, "a number has none either"},
      {null, nil, true, "nor has the null marker"},
      {Dictionary{{u"a", 1}}, List{u"a"}, true, "a dictionary's elements are its keys"},
      {Dictionary{{u"a", 1}}, List{1}, false, "not its values"},
      {Dictionary{{u"a", 1}}, List{}, false, "its count is that of its entries"},
  };
  for (const auto& [first, second, isEqual, why] : rows) {
    EXPECT_EQ(CollectionUtils::isEqualList(first, second), isEqual) << first << second << why;
    EXPECT_EQ(CollectionUtils::isNotEqualList(first, second), !isEqual) << first << second << why;
  }
}

bool isSameType(const Value& a, const Value& b) {
  return a.kind() == b.kind() && (!a.isNumber() || a.asNumber()->isBoolean() == b.asNumber()->isBoolean());
}

/// The rule step by step.
bool naivelyEqual(const List& first, const List& second) {
  if (first.size() != second.size()) return false;
  if (first.isEmpty()) return true;
  bool found = false;
  for (const Value& x : first) {
    found = false;
    for (const Value& y : second) {
      if (!isSameType(x, y)) break;
      found = x == y;
      if (found) break;
    }
    if (!found) break;
  }
  return found;
}

TEST(CollectionUtils, ComparesAsTheScansDo) {
  const Value values[] = {1, 2, 2.5, 1.0, 3, 4, true, u"a", u"b", null};
  std::mt19937 random(11);
  int equal = 0;
  for (int round = 0; round < 20000; ++round) {
    List lists[2];
    const std::size_t size = random() % 14;
    const std::size_t kinds = round % 2 == 0 ? 6 : std::size(values);
    for (List& list : lists) {
      for (std::size_t i = 0; i < size; ++i) list.append(values[random() % kinds]);
    }
    const bool expected = naivelyEqual(lists[0], lists[1]);
    equal += expected && size > 8;
    ASSERT_EQ(CollectionUtils::isEqualList(lists[0], lists[1]), expected) << lists[0] << lists[1];
  }
  EXPECT_GT(equal, 100) << "long equal lists were among them";
}

TEST(CollectionUtils, Emptiness) {
  EXPECT_TRUE(CollectionUtils::isEmptyList(nil));
  EXPECT_TRUE(CollectionUtils::isEmptyList(List{}));
  EXPECT_TRUE(CollectionUtils::isNotEmptyList(List{null}));
  EXPECT_TRUE(CollectionUtils::isEmptyMap(nil));
  EXPECT_TRUE(CollectionUtils::isEmptyMap(Dictionary{}));
  EXPECT_TRUE(CollectionUtils::isNotEmptyMap(Dictionary{{u"a", null}}));
}

}  // namespace
}  // namespace quorvel
