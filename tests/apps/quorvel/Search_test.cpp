#include <algorithm>

#include <gtest/gtest.h>
#include <tests/support/Command.h>

namespace quorvel {
namespace {

using test::Outcome;
using test::runCommand;
using test::temporaryFile;

constexpr std::string_view kReply =
    R"({"result":"Y","list":[)"
    R"({"room":"가족","sender":1,"text":"여행 가고 싶다","sentAt":1500000726000,"edited":"true","unread":"3"},)"
    R"({"room":"Trip","sender":"Ann","text":"Budget\nfor the trip, BUDGET!","sentAt":"1500002171000","edited":null,)"
    R"("attach":{"name":"plan.pdf","size":1536,"seconds":null}},)"
    R"({"room":"x","text":null},{"room":"y"},{"text":12345,"edited":1},)"
    R"({"room":"\u001b[31mred","sender":2,"text":"escape \u001b[2J trip","edited":"Y",)"
    R"("attach":{"name":"memo.m4a","size":"2048","seconds":188.7}}]})";

Outcome search(std::string_view reply, std::vector<std::string> more) {
  std::vector<std::string> arguments = {"search", "--reply", "-"};
  arguments.insert(arguments.end(), more.begin(), more.end());
  return runCommand(arguments, reply);
}

bool contains(const std::string& text, std::string_view part) { return text.find(part) != std::string::npos; }

TEST(Search, ShowsRecordsWithTheirFieldsAsTheyShouldRead) {
  const Outcome found = search(kReply, {"--text", "trip,여행"});
  EXPECT_EQ(found.status, 0) << found.err;
  for (const char* part : {
           "request: ?text=trip%2C%EC%97%AC%ED%96%89&limit=20\n",
           "가족  1  2017-07-14 02:52  3 unread  (edited)\n    여행 가고 싶다\n",
           "Trip  Ann  2017-07-14 03:16\n    Budget\n    for the trip, BUDGET!\n    + plan.pdf  1.5 KB\n",
           "␛[31mred  2  (edited)\n    escape ␛[2J trip\n    + memo.m4a  2 KB  3:08\n",
           "\n3 hits in 6 records, ",
       }) {
    EXPECT_TRUE(contains(found.out, part)) << part << "\nis missing in\n" << found.out;
  }
  EXPECT_FALSE(contains(found.out, "\x1b")) << "a message must not reach the terminal's controls";
  EXPECT_EQ(found.err, "");
}

TEST(Search, ColoursComeFromTheHighlightAndOnlyOnRequest) {
  const Outcome found = search(kReply, {"--text=budget", "--color=always"});
  EXPECT_TRUE(
      contains(found.out, "\x1b[1;38;2;21;126;251mBudget\x1b[0m\n    for the trip, \x1b[1;38;2;21;126;251mBUDGET"))
      << found.out;
}

TEST(Search, JSONHasOnlyHitsOnStandardOutput) {
  const Outcome found = search(kReply, {"--text", "budget", "--json"});
  EXPECT_EQ(
      found.out,
      R"({"record":{"room":"Trip","sender":"Ann","text":"Budget\nfor the trip, BUDGET!","sentAt":"1500002171000",)"
      R"("edited":null,"attach":{"name":"plan.pdf","size":1536,"seconds":null}},"ranges":[[0,6],[21,6]]})"
      "\n");
  EXPECT_TRUE(contains(found.err, "1 hit in 6 records, ")) << found.err;
}

TEST(Search, LimitBoundsWhatIsShownNotWhatIsCounted) {
  std::string reply = R"({"list":[{"text":"trip 0"})";
  for (int i = 1; i < 30; ++i) reply += R"(,{"text":"trip )" + std::to_string(i) + "\"}";
  reply += "]}";
  const struct {
    std::vector<std::string> limit;
    long shown;
  } rows[] = {{{}, 20}, {{"--limit", "3"}, 3}, {{"--limit", "0"}, 30}, {{"--limit", "99"}, 30}};
  for (const auto& [limit, shown] : rows) {
    std::vector<std::string> arguments = {"--text", "trip", "--json"};
    arguments.insert(arguments.end(), limit.begin(), limit.end());
    const Outcome found = search(reply, arguments);
    EXPECT_EQ(std::count(found.out.begin(), found.out.end(), '\n'), shown);
    EXPECT_TRUE(contains(found.err, "30 hits")) << found.err;
  }
}

TEST(Search, CleansTextThatIsStillBeingTyped) {
  const Outcome whole = search(kReply, {"--text", "여행", "--json"});
  const Outcome typed = search(kReply, {"--text", "여행 ㄱ", "--json"});
  EXPECT_EQ(whole.out, typed.out);
  EXPECT_TRUE(contains(typed.err, "search text: '여행', cleaned from '여행 ㄱ'")) << typed.err;
  EXPECT_FALSE(contains(whole.err, "cleaned")) << whole.err;
}

TEST(Search, MatchesKeywordsAsTheyAreTyped) {
  constexpr std::string_view kTyped = R"({"list":[{"text":"여자친구가 한글 Book"},{"text":"여자친구는 책"}]})";
  const struct {
    const char* text;
    const char* ranges;
    const char* why;
  } rows[] = {
      {"여자친구ㄱ", "[[0,5]]", "a letter at the end begins a syllable"},
      {"ㅎㄱ", "[[6,2]]", "initials"},
      {"한그,BOO", "[[6,2],[9,3]]", "keywords ignoring case"},
      {"ㅎㄱ 한", "[[6,2]]", "places that two keywords share are one range"},
      {"챍", "", "what stands nowhere"},
  };
  for (const auto& [text, ranges, why] : rows) {
    const Outcome found = search(kTyped, {"--text", text, "--typing", "--json"});
    EXPECT_EQ(found.status, 0) << found.err;
    const bool isFound = *ranges != '\0';
    EXPECT_EQ(found.out.empty(), !isFound) << why << found.out;
    EXPECT_TRUE(!isFound || contains(found.out, "\"ranges\":" + std::string(ranges) + "}")) << why << found.out;
    EXPECT_FALSE(contains(found.err, "cleaned")) << found.err;
  }
  const Outcome colored = search(kTyped, {"--text", "ㅎㄱ", "--typing", "--color=always"});
  EXPECT_TRUE(contains(colored.out, "여자친구가 \x1b[1;38;2;21;126;251m한글\x1b[0m Book")) << colored.out;
  EXPECT_EQ(search(kTyped, {"--text", "ㅎㄱ"}).status, 2) << "without the option a bare letter is no search text";
  EXPECT_EQ(search(kTyped, {"--text", " , ", "--typing"}).status, 2) << "nothing to search for";
}

TEST(Search, BuildsTheWholeAddressBehindAnyBase) {
  const std::pair<const char*, const char*> rows[] = {
      {"https://example.org/find", "https://example.org/find?text=trip&limit=20\n"},
      {"https://example.org/find?room=1", "https://example.org/find?room=1&text=trip&limit=20\n"},
      {"https://example.org/find#top", "https://example.org/find?text=trip&limit=20#top\n"},
  };
  for (const auto& [base, address] : rows) {
    const Outcome found = search(kReply, {"--text", "trip", "--url", base});
    EXPECT_TRUE(contains(found.out, address)) << base << "\n" << found.out;
  }
}

TEST(Search, RefusesWithAReasonAndPrintsNothing) {
  const struct {
    std::string_view reply;
    std::vector<std::string> arguments;
    int status;
    const char* reason;
  } rows[] = {
      {kReply, {"--text", "a"}, 2, "'a' is no search text"},
      {kReply, {"--text", "ㄱㄴㄷ"}, 2, "'ㄱㄴㄷ' is no search text"},
      {kReply, {"--text", " , "}, 2, "is no search text"},
      {kReply, {"--text", ",,"}, 2, "is no search text"},
      {kReply, {"--text", "\xFF\xFE"}, 2, "--text is not valid UTF-8"},
      {kReply, {}, 2, "--text is missing"},
      {kReply, {"--text", "trip", "--limit", "-1"}, 2, "--limit takes a number from 0 up, not '-1'"},
      {kReply, {"--text", "trip", "--color", "blue"}, 2, "--color takes auto, always or never, not 'blue'"},
      {kReply, {"--text", "trip", "--bogus", "1"}, 2, "unknown option '--bogus'"},
      {kReply, {"--text", "trip", "--limit"}, 2, "--limit needs a value"},
      {kReply, {"--text", "trip", "--list", "messages"}, 1, "no list under 'messages' (lists here: list)"},
      {kReply, {"--text", "trip", "--list", "result"}, 1, "'result' is a string, not a list"},
      {"[1]", {"--text", "trip"}, 1, "standard input: the top level is a list, not a record"},
      {R"({"list":[{},7]})", {"--text", "trip"}, 1, "standard input: list[1] is a number, not a record"},
      {kReply.substr(0, 100), {"--text", "trip"}, 1, "standard input:1:"},
      {"{\"list\":\n [{\"text\":\"한글\",}]}", {"--text", "trip"}, 1, "standard input:2:16: "},
      {"", {"--text", "trip"}, 1, "standard input:1:1: "},
  };
  for (const auto& [reply, arguments, status, reason] : rows) {
    for (const bool json : {false, true}) {
      std::vector<std::string> all = arguments;
      if (json) all.insert(all.begin(), "--json");
      const Outcome refused = search(reply, all);
      EXPECT_EQ(refused.status, status) << reason << "\n" << refused.err;
      EXPECT_TRUE(contains(refused.err, reason)) << reason << "\n" << refused.err;
      EXPECT_EQ(refused.out, "") << reason;
    }
  }
}

TEST(Search, NamesFilesThatCannotBeRead) {
  for (const auto& [path, reason] : {std::pair<std::string, std::string>{"/nonexistent/reply.json", "No such file"},
                                     {testing::TempDir(), "is a directory"}}) {
    const Outcome refused = runCommand({"search", "--reply", path, "--text", "trip"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_TRUE(contains(refused.err, path + ": " + reason)) << refused.err;
  }
}

TEST(Search, FindsListsUnderPathsAndTextInOtherFields) {
  const Outcome found = search(R"({"data":{"items":[{"body":"a trip"},{"body":["trip"]}]}})",
                               {"--text", "trip", "--list", "data.items", "--field", "body"});
  EXPECT_EQ(found.status, 0) << found.err;
  EXPECT_TRUE(contains(found.out, "2 hits in 2 records")) << found.out;
}

}  // namespace
}  // namespace quorvel
