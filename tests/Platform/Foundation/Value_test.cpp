#include <cmath>

#include <gtest/gtest.h>
#include <tests/support/Row.h>
#include <tests/support/SmallStack.h>

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {
namespace {

struct Tag {
  int number;
  static String className() { return u"Tag"; }
  [[nodiscard]] String description() const { return u"tag"; }
  [[nodiscard]] std::uint64_t hash() const { return 7; }
  friend bool operator==(Tag a, Tag b) { return a.number == b.number; }
};

TEST(Value, EqualityAndHashGoByValueNotByKind) {
  const double two53 = 9007199254740992.0;
  const std::int64_t beyond = (std::int64_t{1} << 53) + 1;
  const test::Row<Value, Value, bool, test::Why> rows[] = {
      {1, true, true, "integer and boolean"},
      {0, -0.0, true, "both zeros"},
      {beyond, two53, false, "2^53 + 1 is no double"},
      {UINT64_MAX, 18446744073709551615.0, false, "the double is 2^64"},
      {UINT64_MAX, -1, false, "same bits, other sign"},
      {INT64_MIN, -9223372036854775808.0, true, "the smallest integer is a double"},
      {std::nan(""), std::nan("1"), true, "NaN equals itself in collections"},
      {u"1", 1, false, "a text is no number"},
      {u"e\u0301", u"\u00E9", false, "strings are equal unit by unit only"},
      {null, Value(nil), false, "the null marker is a value"},
      {List{1, u"a"}, List{1.0, u"a"}, true, "elements by value"},
      {Dictionary{{u"a", 1}, {u"b", 2}}, Dictionary{{u"b", 2.0}, {u"a", true}}, true, "order of entries is no matter"},
      {Dictionary{{1, u"x"}}, Dictionary{{1.0, u"x"}}, true, "number keys by value"},
      {Tag{1}, Tag{1}, true, "objects by their own equality"},
      {Tag{1}, Tag{2}, false, "objects by their own equality"},
  };
  for (const auto& [a, b, equal, why] : rows) {
    EXPECT_EQ(a == b, equal) << why;
    EXPECT_EQ(b == a, equal) << why;
    if (equal) {
      EXPECT_EQ(a.hash(), b.hash()) << why;
    }
  }
}

TEST(Value, CopiesShareUntilOneIsChanged) {
  List list{1, u"a text that is too long to stay inline", List{2}};
  const List before = list;
  list.mutableAt(2).mutableList()->append(3);
  list.appendContentsOf(list);
  EXPECT_EQ(before, (List{1, u"a text that is too long to stay inline", List{2}}));
  EXPECT_EQ(list.size(), 6U);
  EXPECT_EQ(list[5], (List{2, 3}));

  Dictionary entries{{u"k", List{1}}};
  const Dictionary held = entries;
  entries.mutableFind(u"k")->mutableList()->append(2);
  EXPECT_EQ(held[u"k"], Value(List{1}));
  EXPECT_EQ(entries[u"k"], Value(List{1, 2}));
}

TEST(Dictionary, KeepsOrderAndFindsAcrossTheSizeWhereItIsIndexed) {
  for (const int count : {1, 16, 17, 18, 33, 1000}) {
    Dictionary entries;
    for (int i = 0; i < count; ++i) entries.set(i, i);
    const Dictionary whole = entries;
    for (int i = 0; i < count; i += 3) EXPECT_TRUE(entries.remove(i)) << count;
    entries.set(0, u"again");
    for (int i = 0; i < count; ++i) {
      ASSERT_NE(whole.find(Value(i)), nullptr) << i << " of " << count;
      EXPECT_EQ(entries.find(Value(i)) != nullptr, i % 3 != 0 || i == 0) << i << " of " << count;
    }
    EXPECT_EQ((entries.end() - 1)->key, Value(0)) << "a key that was removed comes last when it is set again";
    std::int64_t last = -1;
    for (const Entry& entry : whole) EXPECT_GT(entry.key.asNumber()->longLongValue(), std::exchange(last, last + 1));
  }
}

TEST(Dictionary, NilValueRemovesAndInsertKeepsTheFirst) {
  Dictionary entries{{u"a", 1}, {u"b", 2}};
  EXPECT_FALSE(entries.insert(u"a", 3));
  entries.set(u"b", nil);
  entries.set(u"c", nil);
  EXPECT_EQ(entries, (Dictionary{{u"a", 1}}));
  EXPECT_TRUE(entries[u"b"].isNil());
}

Value nested(int levels, bool inDictionaries) {
  Value value = List{};
  for (int i = 0; i < levels; ++i) {
    value = inDictionaries && i % 2 == 0 ? Value(Dictionary{{u"k", value}}) : Value(List{value});
  }
  return value;
}

TEST(Value, AMillionLevelsNeedNoStack) {
  test::onSmallStack([] {
    for (const bool inDictionaries : {false, true}) {
      const Value a = nested(1'000'000, inDictionaries);
      const Value b = nested(1'000'000, inDictionaries);
      const Value shorter = nested(999'999, inDictionaries);
      Value copy = a;
      copy.isList() ? copy.mutableList()->append(1) : copy.mutableDictionary()->set(u"n", 1);
      EXPECT_EQ(a, b);
      EXPECT_EQ(a.hash(), b.hash());
      EXPECT_FALSE(a == shorter);
      EXPECT_FALSE(a == copy);
    }
  });
}

TEST(Value, SharedPartsAreVisitedOnce) {
  // 64 levels of a list that holds the same list twice are 2^64 leaves when they are walked as a tree.
  Value a = List{1};
  Value b = List{1};
  Value c = List{2};
  for (int i = 0; i < 64; ++i) {
    a = List{a, a};
    b = List{b, b};
    c = List{c, c};
  }
  EXPECT_EQ(a, b);
  EXPECT_EQ(a.hash(), b.hash());
  EXPECT_FALSE(a == c);
}

/// Counts the comparisons of what stands in for the records of a large reply.
struct Counted {
  int value = 0;
  std::shared_ptr<int> comparisons;

  [[nodiscard]] static String className() { return u"Counted"; }
  [[nodiscard]] String description() const { return u"counted"; }
  [[nodiscard]] std::uint64_t hash() const { return 1; }
  friend bool operator==(const Counted& a, const Counted& b) {
    ++*a.comparisons;
    return a.value == b.value;
  }
};

/// Levels of lists that share what they hold crosswise: `width` equal leaves, then each list holds two lists of the
/// level below, `stride` apart.
Value woven(std::size_t width, const Value& leafOf, std::size_t strideFactor) {
  std::vector<Value> level;
  for (std::size_t i = 0; i < width; ++i) level.push_back(List{leafOf});
  for (std::size_t stride = 1; stride < width; stride *= 2) {
    std::vector<Value> above;
    for (std::size_t i = 0; i < width; ++i) {
      above.push_back(List{level[i], level[(i + stride * strideFactor) % width]});
    }
    level = std::move(above);
  }
  List all;
  for (const Value& value : level) all.append(value);
  return all;
}

TEST(Value, PairsOfSharedPartsAreNotEnumerated) {
  const auto comparisons = std::make_shared<int>(0);
  const std::size_t width = 256;
  // Each leaf list of one side meets half of the other's: 32,768 pairs, of which 511 settle the matter.
  const Value a = woven(width, Counted{7, comparisons}, 1);
  const Value b = woven(width, Counted{7, comparisons}, 3);
  EXPECT_EQ(a, b);
  EXPECT_LT(*comparisons, 512);
  EXPECT_FALSE(a == woven(width, Counted{8, comparisons}, 3));
}

}  // namespace
}  // namespace quorvel
