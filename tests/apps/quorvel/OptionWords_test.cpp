#include <apps/quorvel/OptionWords.h>
#include <gtest/gtest.h>
#include <tests/support/Command.h>
#include <tests/support/Row.h>

namespace quorvel::command {
namespace {

TEST(OptionWords, TellsOptionsFromTheRest) {
  const test::Row<std::vector<std::string_view>, std::string, test::Why> rows[] = {
      {{"a", "--flag", "-b", ""}, "a|--flag=|-b||", "a flag takes no word; a single dash is no option"},
      {{"--on", "x", "--on=y", "--on=", "--on=a=b"}, "--on=x|--on=y|--on=|--on=a=b|", "both forms of a value"},
      {{"--on", "--flag", "--on", "--"}, "--on=--flag|--on=--|", "the next word is the value, whatever it is"},
      {{"--flag", "--", "--on", "--", "--none"}, "--flag=|--on|--|--none|", "behind -- there are none"},
      {{"a", "--on"}, "a|! --on needs a value", "at the end"},
      {{"--flag=1", "a"}, "! --flag takes no value", "nothing behind it is given"},
      {{"--none=1"}, "! unknown option '--none'", "its value is not repeated"},
      {{"--on=", "--o"}, "--on=|! unknown option '--o'", "nor is an option cut short one"},
      {{}, "", "no words"},
  };
  constexpr std::string_view kKnown[] = {"--flag", "--on="};
  for (const auto& [given, expected, why] : rows) {
    OptionWords words(given, kKnown);
    std::string text;
    while (words.next()) {
      if (!words.name.empty()) text.append(words.name).append("=");
      text.append(words.value).append("|");
    }
    if (!words.error.empty()) text.append("! ").append(words.error);
    EXPECT_EQ(text, expected) << why;
  }
}

/// The option and its value are the last two words.
TEST(OptionWords, AreReadAlikeByEveryCommand) {
  const std::vector<std::string> rows[] = {
      {"search", "--text", "trip", "--reply", "/nowhere"},
      {"list", "--family", "StringUtils"},
      {"backup", "list", "/nowhere", "--format", "zip"},
      {"keychain", "list", "--source", "nowhere"},
      {"color", "red", "--on", "navy"},
      {"image", "gray", "/nowhere", "--format", "gif"},
      {"gallery", "/nowhere/a.png", "--picture", "/nowhere/b.png"},
  };
  for (std::vector<std::string> words : rows) {
    const test::Outcome apart = test::runCommand(words);
    const std::string value = words.back();
    words.pop_back();
    const test::Outcome missing = test::runCommand(words);
    EXPECT_EQ(missing.status, 2) << words[0];
    EXPECT_NE(missing.err.find(words.back() + " needs a value"), std::string::npos) << words[0] << missing.err;
    words.back() += "=" + value;
    const test::Outcome joined = test::runCommand(words);
    EXPECT_EQ(joined.status, apart.status) << words[0];
    EXPECT_EQ(joined.out, apart.out) << words[0];
    EXPECT_EQ(joined.err, apart.err) << words[0];
    words.push_back("--" + value);
    EXPECT_EQ(test::runCommand(words).status, 2) << words[0];
  }
}

}  // namespace
}  // namespace quorvel::command
