#include <gtest/gtest.h>
#include <tests/support/Row.h>

#include <quorvel/Platform/Foundation/NSBundle.h>

namespace quorvel {

TEST(StringsTable, ReadsPairsCommentsAndEscapes) {
  const std::optional<Dictionary> table = parseStringsTable(
      "\xEF\xBB\xBF/* first\n */ \"a b\" = \"x\\n\\t\\\"\\\\\\q\"; // rest\r\n"
      "word.1/$_-:=value;\n\"alone\";\n"
      "\"escapes\" = \"\\101\\0\\7\\u00e9\\UD83D\\UDE00\\7778\";\n"
      "\"line\nbreak\"=\"\"; a/*b*/=c//\n;\n\"twice\"=\"1\";\"twice\"=\"2\";");
  ASSERT_TRUE(table);
  const Dictionary expected{
      {u"a b", u"x\n\t\"\\q"}, {u"word.1/$_-:", u"value"},
      {u"alone", u"alone"},    {u"escapes", Value(StringView(u"A\0\a\u00E9\U0001F600\u01FF8"))},
      {u"line\nbreak", u""},   {u"a", u"c"},
      {u"twice", u"2"},
  };
  EXPECT_EQ(*table, expected);
  EXPECT_EQ(parseStringsTable(""), Dictionary());
}

TEST(StringsTable, ReadsUTF16WithEitherByteOrder) {
  const std::u16string text = u"\"한\"=\"\U0001F600\";";
  std::string little = "\xFF\xFE";
  std::string big = "\xFE\xFF";
  for (const char16_t unit : text) {
    little += {static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)};
    big += {static_cast<char>(unit >> 8), static_cast<char>(unit & 0xFF)};
  }
  const Dictionary expected{{u"한", u"\U0001F600"}};
  EXPECT_EQ(parseStringsTable(little), expected);
  EXPECT_EQ(parseStringsTable(big), expected);
  EXPECT_EQ(parseStringsTable(little + "x"), std::nullopt) << "half a unit";
}

TEST(StringsTable, RefusesWithTheLine) {
  const test::Row<std::string, std::size_t, test::Why> rows[] = {
      {"\"a\" = \"b\"", 1, "no semicolon at the end"},
      {"\"a\" = \"b\";\n\"c\" \"d\";", 2, "no equals sign"},
      {"\n\n/* open", 3, "a comment without an end"},
      {"\"a\" = \"open\n", 2, "a text without an end"},
      {"\"a\" = \"b\\", 1, "an escape without an end"},
      {"\"a\" = \"\\U12\";", 1, "too few digits"},
      {"\"a\" = \"\\UD83D\";", 1, "an unpaired surrogate"},
      {"{ a = b; }", 1, "a property list"},
      {"\"a\" = \"\xFF\";", 0, "no UTF-8"},
  };
  for (const auto& [text, expected, why] : rows) {
    std::size_t line = 99;
    EXPECT_EQ(parseStringsTable(text, &line), std::nullopt) << why;
    EXPECT_EQ(line, expected) << why;
  }
}

}  // namespace quorvel
