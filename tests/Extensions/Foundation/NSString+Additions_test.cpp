#include <gtest/gtest.h>
#include <tests/support/Row.h>

#include <quorvel/Extensions/Foundation/NSString+Additions.h>
#include <quorvel/Platform/Foundation/NSAttributedString.h>

namespace quorvel {

TEST(NSStringAdditions, OnlyTextsThatHoldSomethingAreNotEmpty) {
  const test::Row<Value, bool, test::Why> rows[] = {
      {nil, false, "nil"},           {null, false, "the null marker"},
      {u"", false, "an empty text"}, {u" \u00A0\u3000\r\n", false, "a blank text"},
      {u" x ", true, "a text"},      {u"\u200B", true, "a zero-width space is no white space"},
      {1, false, "a number"},        {true, false, "a boolean"},
      {List{u"x"}, false, "a list"}, {Dictionary{{u"x", u"x"}}, false, "a dictionary"},
      {Date{0}, false, "a date"},    {Data(), false, "data"},
  };
  for (const auto& [value, isNotEmpty, why] : rows) {
    EXPECT_EQ(NSStringAdditions::isNotEmpty(value), isNotEmpty) << why;
    EXPECT_NE(NSStringAdditions::isEmpty(value), isNotEmpty) << why;
  }
}

TEST(NSStringAdditions, ContainmentMindsCaseAndSplitsNoLetter) {
  const test::Row<StringView, StringView, bool, bool, test::Why> rows[] = {
      {u"Hello", u"ell", true, false, "inside"},
      {u"Hello", u"ELL", false, false, "case"},
      {u"Hello", u"hELLO", false, true, "the whole, ignoring case"},
      {u"Hello", u"", false, false, "an empty argument is never found"},
      {u"", u"", false, true, "not even in an empty text, which it equals"},
      {u"caf\u00E9", u"e\u0301", true, false, "another form"},
      {u"x", nil, false, false, "a nil argument"},
      {nil, u"x", false, false, "a nil receiver"},
      {nil, nil, false, false, "nil equals nothing"},
  };
  for (const auto& [text, string, isContaining, equalsCase, why] : rows) {
    EXPECT_EQ(isContainingString(text, string), isContaining) << why;
    EXPECT_EQ(equalsIgnoreCase(text, string), equalsCase) << why;
  }
}

}  // namespace quorvel
