#include <csignal>
#include <thread>

#include <apps/quorvel/Batch.h>
#include <apps/quorvel/Call.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <tests/support/Command.h>
#include <tests/support/Row.h>
#include <unistd.h>

namespace quorvel::command {
namespace {

constexpr std::string_view kTrim = R"({"family":"StringUtils","operation":"trim:","args":[" a "]})";
constexpr std::string_view kTrimmed = R"({"result":"a"})";

constexpr test::Row<std::string_view, std::string_view, test::Why> kLines[] = {
    {kTrim, kTrimmed, "a call"},
    {R"(  {"args":[" a "],"operation":"trim","id":7,"family":"StringUtils"}  )", kTrimmed,
     "members in any order, unknown ones ignored, white space around"},
    {R"({"family":"String extension","operation":"nonBreakSpace"})", "{\"result\":\"\u00A0\"}", "args left out"},
    {"{\"family\":\"StringUtils\",\"operation\":\"trim:\",\"args\":[\" a \"]}\r", kTrimmed, "a CR before the LF"},
    {"", R"({"error":"an empty line is no call"})", "an empty line"},
    {"[1]", R"({"error":"a call is an object {\"family\": ..., \"operation\": ..., \"args\": [...]}"})", "no object"},
    {R"({"operation":"trim:"})", R"({"error":"\"family\" is missing or no string"})", "no family"},
    {R"({"family":"StringUtils","operation":"trim:","args":" a "})", R"({"error":"\"args\" is no list"})",
     "arguments that are no list"},
    {R"({"family":"\u0001\"","operation":"x"})", R"({"error":"unknown family '\u0001\"'"})", "what came is escaped"},
};

TEST(Batch, AnswersALine) {
  for (const auto& [line, answer, why] : kLines) {
    std::string out = "before\n";
    const bool isResult = answerCall(line, out);
    EXPECT_EQ(out, "before\n" + std::string(answer) + "\n") << line << ": " << why;
    EXPECT_EQ(isResult, answer.starts_with("{\"result\"")) << line << ": " << why;
  }
}

TEST(Batch, AnAnswerTooDeepForJSONIsAnError) {
  const auto answerOf = [](std::size_t levels) {
    std::string out;
    answerCall(
        R"x({"family":"NSMutableDictionary(VelkaAdditions)","operation":"setStringOfIntKey:forKey:","args":[{"a":)x" +
            std::string(levels, '[') + std::string(levels, ']') + R"x(},"x",5]})x",
        out);
    return out;
  };
  // The answer has four levels above the list: itself, the form, its list and the pair; the call has three.
  EXPECT_TRUE(answerOf(508).starts_with("{\"result\":"));
  EXPECT_EQ(answerOf(509), "{\"error\":\"'setStringOfIntKey:forKey:': the result is nested too deeply for JSON\"}\n");
}

/// The command's loop on two pipes, with this test at their other ends.
class Peer {
 public:
  explicit Peer(std::size_t longestLine = kLongestLine) {
    // The loop in the command's process ignores the signal too.
    std::signal(SIGPIPE, SIG_IGN);
    if (::pipe(toLoop_) != 0 || ::pipe(fromLoop_) != 0) ADD_FAILURE() << "no pipes";
    loop_ = std::thread([this, longestLine] {
      status_ = runBatch(toLoop_[0], fromLoop_[1], longestLine);
      ::close(toLoop_[0]);
      ::close(fromLoop_[1]);
    });
  }
  ~Peer() {
    if (loop_.joinable()) finish();
    closeAnswers();
  }

  void send(std::string_view bytes) {
    for (std::size_t sent = 0; sent < bytes.size();) {
      const ssize_t count = ::write(toLoop_[1], bytes.data() + sent, bytes.size() - sent);
      if (count < 0) return;
      sent += static_cast<std::size_t>(count);
    }
  }
  /// What comes within ten seconds up to a line's end, or nothing.
  std::string receiveLine() {
    std::string line;
    for (char byte = 0; byte != '\n'; line += byte) {
      pollfd poll{fromLoop_[0], POLLIN, 0};
      if (::poll(&poll, 1, 10000) <= 0 || ::read(fromLoop_[0], &byte, 1) != 1) return {};
    }
    return line;
  }
  void closeAnswers() {
    if (fromLoop_[0] >= 0) ::close(std::exchange(fromLoop_[0], -1));
  }
  void closeInput() {
    if (toLoop_[1] >= 0) ::close(std::exchange(toLoop_[1], -1));
  }
  int finish() {
    closeInput();
    loop_.join();
    return status_;
  }

 private:
  int toLoop_[2] = {-1, -1};
  int fromLoop_[2] = {-1, -1};
  int status_ = -1;
  std::thread loop_;
};

TEST(Batch, AnswersAnInteractivePeerLineByLine) {
  Peer peer;
  for (int i = 0; i < 3; ++i) {
    peer.send(std::string(kTrim) + "\n");
    EXPECT_EQ(peer.receiveLine(), std::string(kTrimmed) + "\n") << "the peer sends its next call after this answer";
  }
  peer.send(kTrim.substr(0, 20));
  peer.send(std::string(kTrim.substr(20)) + "\n{");
  EXPECT_EQ(peer.receiveLine(), std::string(kTrimmed) + "\n") << "a line that comes in pieces";
  peer.send("}");
  peer.closeInput();
  EXPECT_EQ(peer.receiveLine().substr(0, 9), "{\"error\":") << "the last line has no line break";
  EXPECT_EQ(peer.finish(), 1) << "a line was answered with an error";
}

TEST(Batch, KeepsTheOrderOfManyCallsAndGoesOnAfterErrors) {
  constexpr int kCount = 20000;
  const std::string start = R"x({"family":"NSObject(ConvertString)","operation":"toStringValue","args":[)x";
  std::string input;
  std::string expected;
  for (int i = 0; i < kCount; ++i) {
    const std::string number = std::to_string(i);
    input += i % 7 == 0 ? "no JSON" : start + number + "]}";
    input += i + 1 < kCount ? "\n" : "";
    expected += i % 7 == 0 ? "E" : "\"" + number + "\"";
  }
  const test::Outcome outcome = test::runCommand({"call", "--batch"}, input);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "");
  std::string answers;
  for (std::size_t at = 0, end; (end = outcome.out.find('\n', at)) != std::string::npos; at = end + 1) {
    const std::string line = outcome.out.substr(at, end - at);
    answers += line.starts_with("{\"error\"") ? "E" : line.substr(10, line.size() - 11);
  }
  EXPECT_TRUE(answers == expected);
  EXPECT_EQ(test::runCommand({"call", "--batch"}, std::string(kTrim)).status, 0);
  EXPECT_EQ(test::runCommand({"call", "--batch"}).out, "") << "no input, no answer";
}

TEST(Batch, ALineThatIsTooLongIsAnsweredWithAnErrorAndDropped) {
  constexpr std::size_t kLimit = 1000;
  const std::string start = R"x({"family":"String extension","operation":"length()","args":[")x";
  const std::string end = R"x("]})x";
  const auto callOf = [&](std::size_t size) {
    return start + std::string(size - start.size() - end.size(), 'a') + end + "\n";
  };
  Peer peer(kLimit);
  std::thread sender([&] {
    peer.send(callOf(kLimit) + callOf(kLimit + 1));
    // Much longer than what is read at once, so that its start is dropped before its end comes.
    peer.send(std::string(3 << 20, 'a') + "\n");
    peer.send(std::string(kTrim) + "\n" + std::string(3 << 20, 'a'));
    peer.closeInput();
  });
  const char* tooLong = "{\"error\":\"the line is too long\"}\n";
  EXPECT_EQ(peer.receiveLine(), "{\"result\":" + std::to_string(kLimit - start.size() - end.size()) + "}\n");
  EXPECT_EQ(peer.receiveLine(), tooLong) << "one byte more";
  EXPECT_EQ(peer.receiveLine(), tooLong) << "megabytes more";
  EXPECT_EQ(peer.receiveLine(), std::string(kTrimmed) + "\n") << "the stream goes on";
  EXPECT_EQ(peer.receiveLine(), tooLong) << "without a line break at the end";
  sender.join();
  EXPECT_EQ(peer.finish(), 1);
}

TEST(Batch, EndsQuietlyWhenNobodyReadsItsAnswers) {
  Peer peer;
  peer.closeAnswers();
  peer.send(std::string(kTrim) + "\n");
  EXPECT_EQ(peer.finish(), 0);
}

}  // namespace
}  // namespace quorvel::command
