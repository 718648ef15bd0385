#include <algorithm>

#include <gtest/gtest.h>
#include <tests/support/Command.h>
#include <tests/support/Row.h>

namespace quorvel {
namespace {

TEST(ColorCommand, ShowsFormsContrastAndAReadableColor) {
  const test::Outcome shown = test::runCommand({"color", "#777", "rgb(0 0 0 / 50%)"});
  EXPECT_EQ(shown.status, 0) << shown.err;
  EXPECT_NE(shown.out.find("#777777  RGBA #777777FF  ARGB #FF777777"), std::string::npos) << shown.out;
  EXPECT_NE(shown.out.find("contrast 4.47   readable #767676\n"), std::string::npos)
      << "cut, not rounded: " << shown.out;
  EXPECT_NE(shown.out.find("#000000  RGBA #00000080  ARGB #80000000"), std::string::npos) << shown.out;
  EXPECT_EQ(shown.out.find('\x1b'), std::string::npos) << "no colours where there is no terminal";
}

TEST(ColorCommand, GoesOnAfterWhatIsNoColor) {
  const test::Outcome mixed = test::runCommand({"color", "red", "re\x1b[31md", "blueColor", "--on", "black"});
  EXPECT_EQ(mixed.status, 1);
  EXPECT_EQ(std::ranges::count(mixed.out, '\n'), 2) << mixed.out;
  EXPECT_NE(mixed.err.find("is neither a CSS colour"), std::string::npos) << mixed.err;
  EXPECT_EQ(mixed.err.find('\x1b'), std::string::npos) << "what was typed cannot reach the terminal";
  const test::Outcome json = test::runCommand({"color", "red", "nope", "lime", "--json"});
  EXPECT_EQ(json.status, 1);
  EXPECT_EQ(std::ranges::count(json.out, '\n'), 3) << json.out;
  EXPECT_NE(json.out.find("\n{\"text\":\"nope\",\"error\":\""), std::string::npos) << json.out;
  EXPECT_EQ(json.err, "");
}

TEST(ColorCommand, RefusesWhatItDoesNotUnderstand) {
  const test::Row<std::vector<std::string>, const char*> rows[] = {
      {{"color"}, "expected a colour"},
      {{"color", "red", "--on"}, "--on needs a value"},
      {{"color", "red", "--on", "nope"}, "the background 'nope' is neither"},
      {{"color", "red", "--frobnicate"}, "unknown option '--frobnicate'"},
  };
  for (const auto& [words, message] : rows) {
    const test::Outcome refused = test::runCommand(words);
    EXPECT_EQ(refused.status, 2) << message;
    EXPECT_NE(refused.err.find(message), std::string::npos) << refused.err;
    EXPECT_EQ(refused.out, "");
  }
}

}  // namespace
}  // namespace quorvel
