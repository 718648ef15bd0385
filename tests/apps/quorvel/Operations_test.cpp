#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <set>

#include <apps/quorvel/Help.h>
#include <apps/quorvel/Operation.h>
#include <gtest/gtest.h>
#include <tests/support/Command.h>
#include <tests/support/Row.h>
#include <tests/support/TemporaryFolder.h>

#include <quorvel/Platform/Foundation/NSHTTPCookieStorage.h>
#include <quorvel/Platform/Foundation/NSJSONSerialization.h>

namespace quorvel::command {
namespace {

using Names = std::set<std::pair<std::string, std::string>>;

/// Operations on files and the device get a home folder of their own.
class OwnHome {
 public:
  OwnHome() { NSHTTPCookieStorage::setShared(NSHTTPCookieStorage::at(folder_.path("cookies"))); }
  OwnHome(const OwnHome&) = delete;
  OwnHome& operator=(const OwnHome&) = delete;
  ~OwnHome() { NSHTTPCookieStorage::setShared(before_); }

 private:
  test::TemporaryFolder folder_;
  test::Environment home_{"HOME", folder_.path()};
  test::Environment configuration_{"XDG_CONFIG_HOME", folder_.path("config")};
  NSHTTPCookieStorage before_ = NSHTTPCookieStorage::shared();
};

Value parsed(std::string_view json) { return NSJSONSerialization::parseFragment(json); }

/// The result as JSON text, or the error after "! ".
std::string invoked(const Operation& operation, const Value& arguments) {
  const List& list = *arguments.asList();
  std::string error;
  const auto result = operation.invoke(operation, {list.begin(), list.size()}, error);
  if (!result) return "! " + error;
  return NSJSONSerialization::writeFragmentUTF8(*result, 0).value_or("! not writable");
}

std::string called(std::string_view family, std::string_view name, std::string_view arguments) {
  std::string error;
  const Operation* operation = findOperation(String::fromASCII(family), String::fromASCII(name), error);
  return operation ? invoked(*operation, parsed(arguments)) : "! " + error;
}

Names listedNames() {
  Names names;
  std::ifstream file(QUORVEL_DOCS "/operation-names.tsv");
  for (std::string line; std::getline(file, line);) {
    const std::size_t tab = line.find('\t');
    if (line.find('\t', tab + 1) != std::string::npos) continue;  // takes an object, or is private
    names.emplace(line.substr(0, tab), line.substr(tab + 1));
  }
  return names;
}

TEST(Operations, TheTableHasEveryNameOnceAndNoOther) {
  const Names listed = listedNames();
  ASSERT_GT(listed.size(), 100U);
  Names seen;
  for (const Operation& operation : allOperations()) {
    const std::pair<std::string, std::string> name(operation.family, operation.name);
    EXPECT_TRUE(seen.insert(name).second) << name.first << " " << name.second << " stands twice";
    EXPECT_TRUE(listed.contains(name)) << name.first << " " << name.second << " is no operation";
  }
  for (const auto& name : listed) EXPECT_TRUE(seen.contains(name)) << name.first << " " << name.second << " is missing";
}

TEST(Operations, EveryExampleAnswersAResult) {
  const OwnHome home;
  for (const Operation& operation : allOperations()) {
    const Value arguments = parsed(operation.example);
    ASSERT_TRUE(arguments.isList()) << operation.family << " " << operation.name;
    EXPECT_NE(invoked(operation, arguments).substr(0, 1), "!")
        << operation.family << " " << operation.name << ": " << invoked(operation, arguments);
  }
}

TEST(Operations, WrongArgumentsAreAnErrorThatNamesTheOperation) {
  const OwnHome home;
  for (const char* json : {"null", "true", "-1", "2.5", R"("")", "[]", R"([[1]])", "{}", R"({"$data":"AA=="})"}) {
    for (const Operation& operation : allOperations()) {
      const std::size_t count = parameterNames(operation).size();
      List arguments;
      for (std::size_t i = 0; i < count; ++i) arguments.append(parsed(json));
      const std::string answer = invoked(operation, arguments);
      const bool isNamed = answer.find("'" + std::string(operation.name) + "'") != std::string::npos;
      EXPECT_TRUE(isNamed || !answer.starts_with("! ")) << answer;
    }
  }
}

TEST(Operations, TheNumberOfArgumentsIsChecked) {
  const OwnHome home;
  for (const Operation& operation : allOperations()) {
    if (operation.name.starts_with("localizedFormat")) continue;  // takes any number
    List arguments = *parsed(operation.example).asList();
    arguments.append(null);
    EXPECT_NE(invoked(operation, arguments).find(" takes "), std::string::npos) << operation.name;
  }
  EXPECT_EQ(called("StringUtils", "equals:andString:", R"(["a"])"),
            "! 'equals:andString:' takes 2 arguments (first, second), got 1");
  EXPECT_EQ(called("StringUtils", "trim:", "[]"), "! 'trim:' takes 1 argument (text), got 0");
}

constexpr test::Row<const char*, const char*, const char*, const char*, test::Why> kCalls[] = {
    {"StringUtils", "trim:", "[null]", "null", "nil in, nil out"},
    {"StringUtils", "trim", R"([" a "])", R"("a")", "the C++ name"},
    {"StringUtils", "trim:", "[5]", "! 'trim:', argument 1 (text): expected a string or null, got a number", "a kind"},
    {"NSString(URLEncoding)", "urlEncodeString", "[null]",
     "! 'urlEncodeString', argument 1 (text): expected a string, got null", "a receiver that cannot be nil"},
    {"NSString(URLEncoding)", "urlEncodeString", R"([{"$utf16": [55357]}])", "null", "a nil result"},
    {"String extension", "nsRangeOf(string:ignoreCase:)", R"(["abc", "x", false])", "[9223372036854775807,0]",
     "not found"},
    {"String extension", "nsRangeOf(string:ignoreCase:)", R"(["abc", "x", 0])",
     "! 'nsRangeOf(string:ignoreCase:)', argument 3 (ignoreCase): expected true or false, got a number",
     "a number is no boolean"},
    {"String extension", "nsSubstring(from:)", R"(["abc", 1.0])", R"("bc")", "a whole floating number is an integer"},
    {"String extension", "nsSubstring(from:)", R"(["abc", 9223372036854775808])",
     "! 'nsSubstring(from:)', argument 2 (from): expected an integer from 0 to 2^63 - 1",
     "one beyond the signed range"},
    {"String extension", "localizedFormat(arguments:)", R"(["%d%@", 1, "x"])", R"("1x")", "arguments one by one"},
    {"String extension", "localizedFormat(arguments:)", R"(["%d%@", [1, "x"]])", R"("1x")", "arguments as a list"},
    {"String extension", "nsSubstring(to:)", R"(["abc", -1])",
     "! 'nsSubstring(to:)', argument 2 (to): expected an integer from 0 to 2^63 - 1",
     "an index that must not be negative"},
    {"String extension", "localizedFormat(arguments:)", R"(["%@", null])", R"x("(null)")x", "nil as an argument"},
    {"NSDictionary(Addtion)", "boolValueForKey:", R"([{"a": true}, "a"])", "true", "one of two overloads"},
    {"NSDictionary(Addtion)", "boolValueForKey", R"([{}, "a"])",
     "! 'boolValueForKey' names several operations of 'NSDictionary(Addtion)': 'boolValueForKey:defaultValue:' "
     "'boolValueForKey:'",
     "a C++ name of two"},
    {"NSDictionary(Addtion)", "mergeToDictionary:", R"([{"a": [1]}, null])", R"({"a":[1]})", "an optional record"},
    {"NSDictionary(Addtion)", "isNotEmpty:", R"([{"text": "a", "spans": []}])", "false",
     "attributed text is no record"},
    {"NSMutableDictionary(VelkaAdditions)", "setBool:forKey:", R"([{"z": 0}, true, "a"])", R"({"z":0,"a":1})",
     "the changed receiver is the answer"},
    {"Dictionary extension", "init(tuples:)", R"([[["a", 1], [2, 3], ["a", 4]]])", R"({"$entries":[["a",4],[2,3]]})",
     "pairs"},
    {"Dictionary extension", "init(tuples:)", R"([[["a"]]])",
     "! 'init(tuples:)', argument 1 (tuples): expected a list of [key, value], got a list", "no pair"},
    {"NSMutableAttributedString extension", "+", R"(["a", {"text": "b", "spans": [[0, 1, {"m": null}]]}])",
     R"({"text":"ab","spans":[[0,1,{}],[1,1,{"m":{"$null":true}}]]})", "an operator"},
    {"UIColor(ColorWithHex)", "colorWithHex:", "[4294967295]", "[1,1,1,1]", "the largest packed integer"},
    {"UIColor(ColorWithHex)", "colorWithHex:", "[4294967296]",
     "! 'colorWithHex:', argument 1 (rgb): expected an integer from 0 to 2^32 - 1", "one more"},
    {"Array extension", "remove(_:)", "[[1, 2, 1.0], true]", "[2,1]", "a list is changed and answered"},
    {"Array extension", "split(size:)", "[[1, 2, 3], 2]", "[[1,2],[3]]", "lists of lists"},
    {"NSIndexSet(Array)", "arrayFromIndexesWithSection:", "[[4, 0, 4], -1]", "[[-1,0],[-1,4]]", "index paths"},
    {"NSIndexSet(Array)", "arrayFromIndexesWithSection:", "[[9223372036854775807], 0]",
     "! 'arrayFromIndexesWithSection:', argument 1 (set): expected an index below 2^63 - 1, got a number",
     "no index of a set"},
    {"NSArray(Additions)", "mergeObjects:with:sortDescriptors:", R"([["b"], ["a"], [["self", false]]])", R"(["b","a"])",
     "sort descriptors as pairs"},
    {"NSArray(Additions)", "distinctArray:keyPath:sortDescriptors:", R"([[{"k": 2}, {"k": 1}], "k", ["k"]])",
     R"([{"k":1},{"k":2}])", "and as key paths"},
    {"deep equality", "firstDifference", R"([{"a": [1, null]}, {"a": [1]}])",
     R"({"pointer":"\/a\/1","first":{"$null":true},"second":null})", "a null marker against nothing"},
    {"StringUtils", "matchesResult", R"(["aé(b", "é\\("])", R"({"outcome":"match"})", "a match"},
    {"StringUtils", "matchesResult", R"([null, "(b"])",
     R"({"outcome":"bad pattern","offset":2,"reason":"U_REGEX_MISMATCHED_PAREN"})", "a pattern that does not compile"},
    {"text matching", "matchRanges", R"(["Café", "CAFE", ["case", "accents"]])", "[[0,4]]", "options by name"},
    {"text matching", "matchRanges", R"(["Café", "CAFE", ["color"]])",
     R"(! 'matchRanges', argument 3 (options): expected "case", "accents", "width" or "hangul", got a string)",
     "an unknown option"},
    {"nobody", "trim:", "[]", "! unknown family 'nobody'", "a family"},
    {"StringUtils", "trim:x", "[]", "! family 'StringUtils' has no operation 'trim:x'", "an operation"},
};

TEST(Operations, ConvertArgumentsAndResults) {
  for (const auto& [family, name, arguments, answer, why] : kCalls)
    EXPECT_EQ(called(family, name, arguments), answer) << family << " " << name << " " << arguments << ": " << why;
}

TEST(Command, ListsCallsAndHelps) {
  using test::runCommand;
  const test::Outcome list = runCommand({"list", "--family", "NSString(Query)"});
  EXPECT_EQ(list.out, "NSString(Query)\tparseQuery\tDictionary parseQuery(const String& text)\n");
  const test::Outcome all = runCommand({"list"});
  EXPECT_EQ(static_cast<std::size_t>(std::ranges::count(all.out, '\n')), allOperations().size());

  const test::Outcome help = runCommand({"help", "trim"});
  EXPECT_NE(help.out.find("StringView StringUtils::trim(StringView text)\n"), std::string::npos) << help.out;
  EXPECT_NE(help.out.find("-> \"a b\"\n"), std::string::npos) << help.out;

  const test::Outcome call = runCommand({"call", "StringUtils", "trim:", "\" a \""});
  EXPECT_EQ(call.out, "\"a\"\n");
  EXPECT_EQ(call.status, 0);
  const test::Outcome failed = runCommand({"call", "StringUtils", "trim:", "a"});
  EXPECT_EQ(failed.status, 1);
  EXPECT_EQ(failed.out.substr(0, 34), "{\"error\":\"argument 1: no JSON: une") << failed.out;
}

TEST(Command, WordsThatAreNotUnderstoodAreUsageErrors) {
  const std::vector<std::vector<std::string>> calls = {{},
                                                       {"cal"},
                                                       {"call"},
                                                       {"call", "StringUtils"},
                                                       {"call", "--batch", "x"},
                                                       {"list", "x"},
                                                       {"list", "--family", "x"},
                                                       {"help", "nothing"}};
  for (const auto& words : calls) {
    const test::Outcome outcome = test::runCommand(words);
    EXPECT_EQ(outcome.status, 2) << testing::PrintToString(words);
    EXPECT_EQ(outcome.out, "") << testing::PrintToString(words);
    EXPECT_NE(outcome.err, "") << testing::PrintToString(words);
  }
}

TEST(Command, AnOutputThatIsFullIsAFailure) {
  for (const char* words : {"list", "help trim", "call StringUtils trim: null"}) {
    const std::string line = std::string(QUORVEL_COMMAND " ") + words + " >/dev/full 2>/dev/null";
    EXPECT_EQ(WEXITSTATUS(std::system(line.c_str())), 1) << words;
  }
}

TEST(ShellWord, QuotesWhatAShellWouldTakeApart) {
  EXPECT_EQ(shellWord("trim:"), "trim:");
  EXPECT_EQ(shellWord(""), "''");
  EXPECT_EQ(shellWord("NSString(Query)"), "'NSString(Query)'");
  EXPECT_EQ(shellWord("it's"), "'it'\\''s'");
}

}  // namespace
}  // namespace quorvel::command
