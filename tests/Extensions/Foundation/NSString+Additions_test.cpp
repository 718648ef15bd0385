#include <gtest/gtest.h>

#include <quorvel/Extensions/Foundation/NSString+Additions.h>
#include <quorvel/Platform/Foundation/NSAttributedString.h>

namespace quorvel {
namespace {

TEST(NSStringAdditions, OnlyTextsThatHoldSomethingAreNotEmpty) {
  struct Row {
    Value value;
    bool isNotEmpty;
    const char* why;
  };
  const Row rows[] = {
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
  struct Row {
    StringView text;
    StringView string;
    bool isContaining;
    bool equalsIgnoreCase;
    const char* why;
  };
  const Row rows[] = {
      {u"Hello", u"ell", true, false, "inside"},
      {u"Hello", u"ELL", false, false, "case"},
      {u"Hello", u"hELLO", false, true, "the whole, ignoring case"},
      {u"Hello", u"", false, false, "an empty argument is never found"},
      {u"", u"", false, true, "not even in an empty text, which it equals"},
      {u"caf\u00E9", u"e\u0301", true, false, "another form"},
      {u"cafe\u0301", u"e", false, false, "part of a letter"},
      {u"\uD55C", u"\u1112\u1161\u11AB", true, true, "a syllable by its letters"},
      {u"x", nil, false, false, "a nil argument"},
      {nil, u"x", false, false, "a nil receiver"},
      {nil, nil, false, false, "nil equals nothing"},
  };
  for (const auto& [text, string, isContaining, equalsCase, why] : rows) {
    EXPECT_EQ(isContainingString(text, string), isContaining) << why;
    EXPECT_EQ(equalsIgnoreCase(text, string), equalsCase) << why;
  }
}

}  // namespace
}  // namespace quorvel
