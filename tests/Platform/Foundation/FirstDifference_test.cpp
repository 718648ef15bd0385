#include <gtest/gtest.h>
#include <tests/support/Row.h>

#include <quorvel/Platform/Foundation/FirstDifference.h>

namespace quorvel {
namespace {

// pointer: nullptr for equal values
const Dictionary kRecord{{u"id", 1}, {u"list", List{1, List{2, 3}, Dictionary{{u"k", null}}}}};

const test::Row<Value, Value, const char16_t*, Value, Value, test::Why> kRows[] = {
    {nil, nil, nullptr, nil, nil, "nil is nil"},
    {nil, List{}, u"", nil, List{}, "the values as a whole"},
    {List{}, List{}, nullptr, nil, nil, "empty lists"},
    {List{}, List{u"x"}, u"/0", nil, u"x", "a list that never held anything lacks the first"},
    {List{1, 2}, List{1, 2, 3}, u"/2", nil, 3, "the longer list's first more"},
    {List{1, 9}, List{1, 8, 7}, u"/1", 9, 8, "an element before the length"},
    {List{List{1}}, List{List{1, 2}}, u"/0/1", nil, 2, "the innermost place"},
    {Dictionary{{u"a", 1}}, Dictionary{{u"b", 1}}, u"/a", 1, nil, "the first's keys come first"},
    {Dictionary{{u"a", 1}}, Dictionary{{u"b", 2}, {u"a", 1}}, u"/b", nil, 2, "a key that the second alone has"},
    {Dictionary{}, Dictionary{{u"b", 2}}, u"/b", nil, 2, "an empty dictionary lacks all"},
    {Dictionary{{u"x", 1}, {u"y", 2}}, Dictionary{{u"y", 2}, {u"x", 1}}, nullptr, nil, nil, "order of keys is nothing"},
    {Dictionary{{u"k", null}}, Dictionary{}, u"/k", null, nil, "a null marker is there, nil is not"},
    {Dictionary{{u"a/b~c", 1}}, Dictionary{{u"a/b~c", 2}}, u"/a~1b~0c", 1, 2, "escapes of RFC 6901"},
    {Dictionary{{u"~1", 1}}, Dictionary{{u"~1", 2}}, u"/~01", 1, 2, "a tilde first, then the solidus"},
    {Dictionary{{u"", 1}}, Dictionary{{u"", 2}}, u"/", 1, 2, "the empty key"},
    {Dictionary{{u"\xD800", 1}}, Dictionary{{u"\xD800", 2}}, u"/\xD800", 1, 2, "an unpaired surrogate stays"},
    {Dictionary{{7, u"x"}}, Dictionary{{7.0, u"y"}}, u"/7", u"x", u"y", "a key that is a number"},
    {kRecord, Dictionary{{u"id", 1}, {u"list", List{1, List{2, 3}, Dictionary{{u"k", 0}}}}}, u"/list/2/k", null, 0,
     "through lists and dictionaries"},
};

TEST(FirstDifference, PlaceAndBothValues) {
  for (const auto& [a, b, pointer, first, second, why] : kRows) {
    const std::optional<Difference> difference = firstDifference(a, b);
    EXPECT_EQ(difference.has_value(), a != b) << why;
    EXPECT_EQ(firstDifference(b, a).has_value(), a != b) << why;
    ASSERT_EQ(difference.has_value(), pointer != nullptr) << why;
    if (!pointer) continue;
    EXPECT_EQ(difference->pointer, std::u16string(pointer)) << why;
    EXPECT_EQ(difference->first, first) << why;
    EXPECT_EQ(difference->second, second) << why;
  }
}

TEST(FirstDifference, SharedPartsAreVisitedOnceAndDepthTakesNoStack) {
  Value a = List{1};
  Value b = List{1};
  Value c = List{2};
  for (int i = 0; i < 64; ++i) {
    a = List{a, a};
    b = List{b, b};
    c = List{c, c};
  }
  EXPECT_EQ(firstDifference(a, b), std::nullopt);
  EXPECT_EQ(firstDifference(List{a, a, c}, List{b, b, b})->pointer.size(), 2U + 64 * 2 + 2);

  Value deep = 1;
  Value other = 2;
  for (int i = 0; i < 200'000; ++i) {
    deep = List{deep};
    other = List{other};
  }
  EXPECT_EQ(firstDifference(deep, other)->pointer.size(), 400'000U);
}

TEST(FirstDifference, EqualPartsHideNothing) {
  // The same block on both sides at different places: found equal once, it must not hide what comes later.
  const Value x = List{1};
  const Value y = List{1};
  const Value z = List{2};
  EXPECT_EQ(firstDifference(List{x, y, x}, List{y, x, z})->pointer, u"/2/0");
  EXPECT_EQ(firstDifference(List{List{x, y}, List{y, z}}, List{List{y, x}, List{x, x}})->pointer, u"/1/1/0");
}

}  // namespace
}  // namespace quorvel
