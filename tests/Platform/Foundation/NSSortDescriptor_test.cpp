#include <cmath>

#include <gtest/gtest.h>
#include <tests/support/Row.h>

#include <quorvel/Platform/Foundation/NSSortDescriptor.h>

namespace quorvel {
namespace {

const NSSortDescriptor kUp(u"self", true);
const NSSortDescriptor kDown(u"self", false);

TEST(SortDescriptors, SortByTheTable) {
  const Dictionary a1{{u"k", u"a"}, {u"n", 1}};
  const Dictionary a2{{u"k", u"a"}, {u"n", 2}};
  const Dictionary b1{{u"k", u"b"}, {u"n", 1}};
  const Dictionary none{{u"n", 9}};
  const Dictionary deep1{{u"r", Dictionary{{u"n", 1}}}};
  const Dictionary deep2{{u"r", Dictionary{{u"n", 2}}}};
  const test::Row<List, SortDescriptors, List, test::Why> rows[] = {
      {{3, 1, 2}, {}, {3, 1, 2}, "no descriptors leave the order"},
      {{2.5, 3, true, 1, 2}, {kUp}, {true, 1, 2, 2.5, 3}, "numbers across kinds, equal ones as they stood"},
      {{INT64_MAX, 9223372036854775808.0, UINT64_MAX},
       {kDown},
       {UINT64_MAX, 9223372036854775808.0, INT64_MAX},
       "by exact value, not as doubles"},
      {{u"b", u"10", u"B", u"9", u"a"}, {kUp}, {u"10", u"9", u"B", u"a", u"b"}, "texts by code unit, not by locale"},
      {{u"e\u0301", u"f", u"\u00E9", u"e"}, {kUp}, {u"e", u"e\u0301", u"\u00E9", u"f"}, "canonically the same"},
      {{u"x", 1, null, Date{1}, List{}}, {kUp}, {null, 1, u"x", Date{1}, List{}}, "kinds in their order"},
      {{b1, a2, none, a1}, {{u"k", true}, {u"n", true}}, {none, a1, a2, b1}, "ties by the next; nil first"},
      {{b1, a2, none, a1}, {{u"k", false}, {u"n", true}}, {b1, a1, a2, none}, "descending puts nil last"},
      {{b1, a2, a1}, {{u"k", true}}, {a2, a1, b1}, "ties keep their order"},
      {{deep2, deep1}, {{u"r.n", true}}, {deep1, deep2}, "a path"},
      {{1, std::nan(""), -1.0}, {kUp}, {std::nan(""), -1.0, 1}, "NaN before all numbers"},
  };
  for (const auto& [list, descriptors, sorted, why] : rows) {
    const List got = sortedArrayUsingDescriptors(list, descriptors);
    ASSERT_EQ(got, sorted) << why;
    // Equal numbers of different kinds must not have changed places either.
    for (std::size_t i = 0; i < got.size(); ++i) {
      EXPECT_EQ(got[i].isNumber() ? got[i].asNumber()->kind() : Number::Kind::Double,
                got[i].isNumber() ? sorted[i].asNumber()->kind() : Number::Kind::Double)
          << why;
    }
  }
}

TEST(SortDescriptors, AnyValuesHaveOneOrder) {
  // What std::stable_sort relies on: equivalence and order are transitive over values of all kinds.
  const Value values[] = {nil,    null,      true,         1,     1.0,       std::nan(""), -INFINITY,
                          u"",    u"\u00E9", u"e\u0301",   u"z",  u"\xD800", Date{0},      Date{std::nan("")},
                          Data(), List{1},   Dictionary{}, List{}};
  for (const Value& a : values) {
    EXPECT_EQ(compareValues(a, a), std::weak_ordering::equivalent) << a;
    for (const Value& b : values) {
      EXPECT_EQ(compareValues(a, b), 0 <=> compareValues(b, a)) << a << b;
      for (const Value& c : values) {
        const bool ascends = compareValues(a, b) <= 0 && compareValues(b, c) <= 0;
        EXPECT_TRUE(!ascends || compareValues(a, c) <= 0) << a << b << c;
      }
    }
  }
}

}  // namespace
}  // namespace quorvel
