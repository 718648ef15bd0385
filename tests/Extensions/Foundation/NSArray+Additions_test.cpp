#include <gtest/gtest.h>
#include <tests/support/Row.h>

#include <quorvel/Extensions/Foundation/DeepEquality.h>
#include <quorvel/Extensions/Foundation/IndexPath+Extension.h>
#include <quorvel/Extensions/Foundation/NSArray+Additions.h>
#include <quorvel/Extensions/Foundation/NSIndexSet+Array.h>
#include <quorvel/Platform/Foundation/Hash.h>
#include <quorvel/Platform/Foundation/NSAttributedString.h>

namespace quorvel {
namespace {

using namespace NSArrayAdditions;
using Sorting = std::optional<SortDescriptors>;

const Sorting kByKey = SortDescriptors{{u"k", true}};

Value record(Value key, int number) { return Dictionary{{u"k", std::move(key)}, {u"n", number}}; }

TEST(DistinctArray, KeepsTheFirstOfEachKey) {
  const Value none = Dictionary{{u"n", 1}};
  const test::Row<std::optional<List>, const char16_t*, Sorting, std::optional<List>, test::Why> rows[] = {
      {nil, u"k", kByKey, nil, "nil"},
      {List{}, u"k", kByKey, nil, "an empty list is nil too"},
      {List{record(3, 1), record(1, 2), record(3, 3), record(2, 4)}, u"k", kByKey,
       List{record(1, 2), record(2, 4), record(3, 1)}, "sorted, the first 3 stays"},
      {List{record(3, 1), record(1, 2), record(3, 3)}, u"k", nil, List{record(3, 1), record(1, 2)}, "as they stood"},
      {List{record(1, 1), record(true, 2), record(1.0, 3)}, u"k", nil, List{record(1, 1)}, "numbers by value"},
      {List{record(u"\u00E9", 1), record(u"e\u0301", 2), record(u"\u00E9", 3)}, u"k", nil,
       List{record(u"\u00E9", 1), record(u"e\u0301", 2)}, "texts unit by unit"},
      {List{none, none, record(null, 1), record(null, 1)}, u"k", nil,
       List{none, none, record(null, 1), record(null, 1)}, "nothing there and null markers are no duplicates"},
      {List{record(List{1}, 1), record(List{1}, 1)}, u"k", nil, List{record(List{1}, 1), record(List{1}, 1)},
       "nor are equal lists"},
      {List{record(1, 1), record(u"1", 2), record(1, 3)}, u"k", nil, List{record(1, 1), record(u"1", 2)},
       "a number is no text"},
      {List{Dictionary{{u"r", record(5, 1)}}, Dictionary{{u"r", record(5, 2)}}}, u"r.k", nil,
       List{Dictionary{{u"r", record(5, 1)}}}, "a path"},
      {List{u"b", u"a", u"b"}, u"self", SortDescriptors{{u"self", true}}, List{u"a", u"b"}, "the elements themselves"},
  };
  for (const auto& [list, path, sorting, distinct, why] : rows)
    EXPECT_EQ(distinctArray(list, std::u16string(path), sorting), distinct) << why;
  EXPECT_EQ(distinctArray(List{1, 1}, nil, nil), (List{1, 1})) << "no path leads nowhere";
}

TEST(MergeObjects, SortsTheSetOfBoth) {
  const test::Row<std::optional<List>, std::optional<List>, std::optional<List>, test::Why> rows[] = {
      {nil, nil, nil, "nothing"},
      {List{3, 1}, List{2, 3}, List{1, 2, 3}, "by the elements themselves"},
      {nil, List{2, 1, 2}, List{1, 2}, "one list alone is made distinct"},
      {List{2, 1, 2}, nil, List{1, 2}, "whichever it is"},
      {List{u"b", u"a"}, List{u"B"}, List{u"B", u"a", u"b"}, "texts by code unit"},
  };
  for (const auto& [first, second, result, why] : rows) EXPECT_EQ(mergeObjects(first, second, nil), result) << why;
  EXPECT_EQ(mergeObjects(List{3, 1}, List{2, 3}, SortDescriptors{}), (List{2, 3, 1})) << "second's, then first's new";
  EXPECT_EQ(mergeObjects(List{record(2, 1)}, List{record(1, 9), record(2, 1)}, SortDescriptors{{u"k", false}}),
            (List{record(2, 1), record(1, 9)}));
  const std::optional<List> merged = mergeObjects(List{1.0}, List{true}, nil);
  ASSERT_EQ(merged->size(), 1U);
  EXPECT_TRUE((*merged)[0].asNumber()->isBoolean()) << "of equal elements the second's was there first";
}

TEST(ExcludeObjects, ByTheTable) {
  const test::Row<std::optional<List>, std::optional<List>, std::optional<List>, test::Why> rows[] = {
      {List{u"b"}, List{u"a", u"b", u"a"}, List{u"a", u"a"}, "repeats stay"},
      {List{u"a"}, List{u"a"}, nil, "nothing left is nil"},
      {List{}, nil, nil, "nothing to exclude from nil"},
      {nil, List{u"x"}, List{u"x"}, "the source itself"},
      {nil, List{}, List{}, "even when it is empty"},
      {List{1}, List{}, nil, "but an empty source is nil once there is something to exclude"},
      {List{1}, nil, nil, "and so is no source"},
      {List{2}, List{2.0, u"2", 3}, List{u"2", 3}, "numbers by value, texts are none"},
  };
  for (const auto& [exclude, source, left, why] : rows) EXPECT_EQ(excludeObjects(exclude, source), left) << why;
}

/// Counts comparisons with an own hash; a stand-in for a large record.
struct Counted {
  static inline std::size_t comparisons = 0;
  std::size_t value;
  static String className() { return u"Counted"; }
  [[nodiscard]] String description() const { return u"counted"; }
  [[nodiscard]] std::uint64_t hash() const { return hashing::mix(value, 1); }
  friend bool operator==(Counted a, Counted b) {
    ++comparisons;
    return a.value == b.value;
  }
};

TEST(Lists, AHundredThousandElementsTakeLinearWork) {
  constexpr std::size_t kCount = 100'000;
  List a;
  List b;
  for (std::size_t i = 0; i < kCount; ++i) {
    a.append(Counted{i});
    b.append(Counted{i * 2});
  }
  Counted::comparisons = 0;
  EXPECT_EQ(excludeObjects(b, a)->size(), kCount / 2);
  EXPECT_EQ(mergeObjects(a, b, SortDescriptors{})->size(), kCount + kCount / 2);
  EXPECT_LT(Counted::comparisons, 2 * kCount);
}

TEST(FilteredNotEmptyStrings, KeepsTextThatIsNotBlank) {
  const Value attributed = NSAttributedString(u" x");
  const List list{
      u"a", u" ", 3, u"", u" b", u"\u2028\u0085", u"\u200B", null, attributed, NSAttributedString(u"\t"), List{u"a"}};
  EXPECT_EQ(filteredNotEmptyStrings(list), (List{u"a", u" b", u"\u200B", attributed}));
  EXPECT_EQ(filteredNotEmptyStrings(List{1}), List{});
}

TEST(NSArrayAdditions, EmptinessOfAnyValue) {
  EXPECT_TRUE(NSArrayAdditions::isNotEmpty(List{null}));
  for (const Value& value : {Value(nil), Value(List{}), Value(null), Value(u"text"), Value(Dictionary{{1, 1}})})
    EXPECT_TRUE(NSArrayAdditions::isEmpty(value)) << value;
}

TEST(IndexPaths, OfSetsAndInSectionZero) {
  EXPECT_EQ(arrayFromIndexesWithSection(NSIndexSet({4, 0, 5}), 2), (std::vector<NSIndexPath>{{2, 0}, {2, 4}, {2, 5}}));
  EXPECT_TRUE(arrayFromIndexesWithSection(NSIndexSet(), -1).empty());
  EXPECT_EQ(mapToZeroSection({3, 7}), (NSIndexPath{0, 7}));
}

TEST(DeepEquality, ByTheTable) {
  const test::Row<std::optional<List>, std::optional<List>, bool, test::Why> rows[] = {
      {nil, nil, true, "two nils are the same"},
      {nil, List{}, false, "nil is no empty list"},
      {List{}, List{}, true, "empty lists"},
      {List{1, List{2, 3}}, List{1, List{2, 3}}, true, "nested"},
      {List{1, 2}, List{2, 1}, false, "in order"},
      {List{Dictionary{{u"a", 1}}}, List{Dictionary{{u"a", 1.0}}}, true, "through dictionaries, by value"},
      {List{1, 0}, List{true, false}, true, "booleans are numbers"},
      {List{1}, List{u"1"}, false, "a number is no text"},
  };
  for (const auto& [first, second, isEqual, why] : rows) {
    EXPECT_EQ(isEqualArray(first, second), isEqual) << why;
    EXPECT_EQ(isEqualArray(second, first), isEqual) << why;
    // The same under a key.
    const std::optional<Dictionary> a = first ? std::optional(Dictionary{{u"x", 1}, {u"k", *first}}) : std::nullopt;
    const std::optional<Dictionary> b = second ? std::optional(Dictionary{{u"k", *second}, {u"x", 1}}) : std::nullopt;
    EXPECT_EQ(NSDictionaryAddtion::isEqualDictionary(a, b), isEqual) << why;
  }
  using NSDictionaryAddtion::isEqualDictionary;
  EXPECT_FALSE(isEqualDictionary(Dictionary{{u"a", 1}}, Dictionary{{u"b", 1}}));
  EXPECT_FALSE(isEqualDictionary(Dictionary{{u"a", 1}}, Dictionary{{u"a", 1}, {u"b", 1}}));
  EXPECT_TRUE(isEqualDictionary(Dictionary{{1, u"x"}}, Dictionary{{1.0, u"x"}})) << "keys by value too";
}

}  // namespace
}  // namespace quorvel
