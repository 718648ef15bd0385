#include <array>
#include <cmath>
#include <deque>
#include <random>

#include <gtest/gtest.h>
#include <tests/support/Row.h>

#include <quorvel/Extensions/Foundation/Array+Extension.h>

namespace quorvel {
namespace {

using Ints = std::vector<int>;
using Sizes = std::vector<std::size_t>;

// What the rules say, word by word.

template <class T>
bool naivelyContains(const std::vector<T>& list, const T& element) {
  return std::find(list.begin(), list.end(), element) != list.end();
}
template <class T>
Sizes naiveIndices(const std::vector<T>& list, const std::vector<T>& contents) {
  Sizes result;
  for (const T& element : contents) {
    const auto found = std::find(list.begin(), list.end(), element);
    if (found != list.end()) result.push_back(static_cast<std::size_t>(found - list.begin()));
  }
  return result;
}
template <class T>
std::vector<T> naivelyKept(const std::vector<T>& list, const std::vector<T>& other, bool contained) {
  std::vector<T> result;
  for (const T& element : list) {
    if (naivelyContains(other, element) == contained) result.push_back(element);
  }
  return result;
}
template <class T>
std::vector<T> naivelyDistinct(const std::vector<T>& list) {
  std::vector<T> result;
  for (const T& element : list) {
    if (!naivelyContains(result, element)) result.push_back(element);
  }
  return result;
}

/// Equal without a hash.
struct Plain {
  int value;
  friend bool operator==(Plain, Plain) = default;
};

template <class T, class Make>
void compareWithTheRules(Make make) {
  std::mt19937 random(7);
  for (int round = 0; round < 2000; ++round) {
    std::vector<T> lists[2];
    for (auto& list : lists) {
      for (std::size_t left = random() % 24; left > 0; --left) list.push_back(make(random() % 12));
    }
    const auto& [a, b] = lists;
    ASSERT_EQ(indices(a, b), naiveIndices(a, b)) << round;
    ASSERT_EQ(subtract(a, b), naivelyKept(a, b, false)) << round;
    ASSERT_EQ(intersection(a, b), naivelyKept(a, b, true)) << round;
    if constexpr (HashableElement<T>) {
      ASSERT_EQ(removeDuplicates(a), naivelyDistinct(a)) << round;
    }
  }
}

TEST(ArrayExtension, AnswersAsTheQuadraticRules) {
  compareWithTheRules<int>([](std::size_t n) { return static_cast<int>(n); });
  compareWithTheRules<Plain>([](std::size_t n) { return Plain{static_cast<int>(n)}; });
  compareWithTheRules<std::string>([](std::size_t n) { return std::string(n % 4, static_cast<char>('a' + n / 4)); });
  const Value values[] = {1, true, 1.0, u"1", u"", null, List{}, List{1}, List{1.0}, Dictionary{}, 2, Date{1}};
  compareWithTheRules<Value>([&values](std::size_t n) { return values[n]; });
}

TEST(ArrayExtension, SameValuesOfOtherBits) {
  const double nan = std::nan("");
  EXPECT_EQ(removeDuplicates(std::vector{0.0, -0.0, 1.0}), (std::vector{0.0, 1.0}));
  EXPECT_EQ(indices(std::vector{nan, 1.0}, std::vector{nan, 1.0}), (Sizes{1})) << "NaN is in no list";
  EXPECT_EQ(removeDuplicates(std::vector(1000, nan)).size(), 1000U);
  const List own{std::nan(""), 1};
  EXPECT_EQ(indices(own, List{std::nan("")}), (Sizes{0})) << "but a Value that holds one equals itself";
  EXPECT_EQ(removeDuplicates(List{u"\u00E9", u"e\u0301"}).size(), 2U) << "texts unit by unit";
}

TEST(ArrayExtension, OnEveryKindOfList) {
  const int raw[] = {1, 2, 2, 3};
  EXPECT_EQ(subtract(std::span(raw), Ints{2}), (Ints{1, 3}));
  EXPECT_EQ(removeDuplicates(std::array{2, 2, 1}), (Ints{2, 1}));
  EXPECT_EQ(intersection(std::deque{1, 2, 2}, std::span(raw)), (std::deque{1, 2, 2}));
  EXPECT_EQ(removeDuplicates(std::vector{true, false, true}), (std::vector{true, false}));
  EXPECT_EQ(subtract(List{1, u"a", 1.0}, List{true}), List{u"a"});
  EXPECT_EQ(removeDuplicates(List{}), List{});
}

TEST(ArrayExtension, RemoveTakesTheFirstOccurrenceAlone) {
  Ints ints{1, 2, 1};
  remove(ints, ints[2]);
  EXPECT_EQ(ints, (Ints{2, 1}));
  remove(ints, 9);
  EXPECT_EQ(ints, (Ints{2, 1}));
  List list{u"a", 1.0, 1};
  const List copy = list;
  remove(list, list[2]);
  EXPECT_EQ(list, (List{u"a", 1}));
  remove(list, nil);
  EXPECT_EQ(list.size(), 2U);
  EXPECT_EQ(copy.size(), 3U) << "a copy keeps its elements";
}

TEST(ArrayExtension, SafeSubscripts) {
  const Ints ints{5, 6};
  for (const std::int64_t index : {std::int64_t{-1}, std::int64_t{2}, INT64_MIN, INT64_MAX}) {
    EXPECT_EQ(subscriptSafe(ints, index), std::nullopt) << index;
    EXPECT_EQ(subscriptSafe(List{5, 6}, index), Value(nil)) << index;
  }
  EXPECT_EQ(subscriptSafe(ints, 1), 6);
  EXPECT_EQ(subscriptSafe(List{5, null}, 1), Value(null));
}

TEST(ArrayExtension, SplitKeepsTheIndexes) {
  const test::Row<std::size_t, std::int64_t, Sizes, test::Why> rows[] = {
      {5, 2, {0, 2, 4}, "the last one is shorter"},
      {4, 2, {0, 2}, "a multiple has no rest"},
      {0, 3, {}, "nothing to split"},
      {3, 9, {0}, "one slice with all"},
      {2, INT64_MAX, {0}, "a size beyond any list"},
      {3, -1, {}, "a negative size"},
      {3, INT64_MIN, {}, "the most negative one"},
      {3, 1, {0, 1, 2}, "one by one"},
  };
  for (const auto& [count, size, starts, why] : rows) {
    Ints list;
    for (std::size_t i = 0; i < count; ++i) list.push_back(static_cast<int>(i) * 10);
    Sizes got;
    Ints joined;
    for (const auto& slice : split(list, size)) {
      got.push_back(slice.startIndex());
      joined.insert(joined.end(), slice.begin(), slice.end());
      EXPECT_EQ(slice[slice.startIndex()], static_cast<int>(slice.startIndex()) * 10) << why;
      EXPECT_EQ(slice.endIndex(), slice.startIndex() + slice.size()) << why;
    }
    EXPECT_EQ(got, starts) << why;
    EXPECT_EQ(joined, starts.empty() ? Ints{} : list) << why;
  }
  const List list{1, 2, 3};
  EXPECT_EQ(split(list, 2)[1][2], Value(3));
}

/// Counts how often elements are compared or hashed.
struct Counted {
  static inline std::size_t operations = 0;
  std::size_t value;
  [[nodiscard]] std::uint64_t hash() const {
    ++operations;
    return hashing::mix(value, 1);
  }
  friend bool operator==(Counted a, Counted b) {
    ++operations;
    return a.value == b.value;
  }
};

TEST(ArrayExtension, LinearInBothLists) {
  constexpr std::size_t kCount = 100'000;
  std::vector<Counted> a;
  std::vector<Counted> b;
  for (std::size_t i = 0; i < kCount; ++i) {
    a.push_back({i * 2 % kCount});
    b.push_back({i * 3});
  }
  const auto operationsOf = [](auto run) {
    Counted::operations = 0;
    static_cast<void>(run());
    return Counted::operations;
  };
  EXPECT_LT(operationsOf([&] { return indices(a, b); }), kCount * 5);
  EXPECT_LT(operationsOf([&] { return subtract(a, b); }), kCount * 5);
  EXPECT_LT(operationsOf([&] { return intersection(a, b); }), kCount * 5);
  EXPECT_LT(operationsOf([&] { return removeDuplicates(a); }), kCount * 3);
}

}  // namespace
}  // namespace quorvel
