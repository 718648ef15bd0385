#include <cstdio>

#include <apps/quorvel/Batch.h>
#include <apps/quorvel/Binding.h>
#include <apps/quorvel/Call.h>
#include <apps/quorvel/Operation.h>
#include <unistd.h>

#include <quorvel/Platform/Foundation/NSJSONSerialization.h>

namespace quorvel::command {
namespace {

constexpr int kFailed = 1;
constexpr int kUsage = 2;

/// The result as JSON text, or nothing and the reason. `wrap` makes of the result what is written.
template <class Wrap>
std::optional<std::string> resultText(StringView family, StringView name, std::span<const Value> arguments,
                                      std::string& error, Wrap wrap) {
  const Operation* operation = findOperation(family, name, error);
  if (!operation) return std::nullopt;
  std::optional<Value> result = operation->invoke(*operation, arguments, error);
  if (!result) return std::nullopt;
  std::optional<std::string> text = NSJSONSerialization::writeFragmentUTF8(wrap(std::move(*result)), 0);
  if (!text) detail::refuseDepth(*operation, error);
  return text;
}

std::string parseErrorText(const JSONError& error) {
  return std::string("no JSON: ") + error.reason + " at byte " + std::to_string(error.offset);
}

struct Call {
  StringView family = nil;
  StringView operation = nil;
  std::span<const Value> arguments;
};

/// What a line asks for, as views into it, or the reason why it asks for nothing.
const char* readCall(const Value& line, Call& call) {
  const Dictionary* members = line.asDictionary();
  if (!members) return "a call is an object {\"family\": ..., \"operation\": ..., \"args\": [...]}";
  call.family = (*members)[u"family"].text();
  call.operation = (*members)[u"operation"].text();
  if (call.family.isNil()) return "\"family\" is missing or no string";
  if (call.operation.isNil()) return "\"operation\" is missing or no string";
  const Value& arguments = (*members)[u"args"];
  if (const List* list = arguments.asList()) {
    call.arguments = {list->begin(), list->size()};
  } else if (!arguments.isNil()) {
    return "\"args\" is no list";
  }
  return nullptr;
}

std::optional<std::string> answerText(std::string_view line, std::string& error) {
  if (line.empty()) {
    error = "an empty line is no call";
    return std::nullopt;
  }
  JSONError problem;
  const Value parsed = NSJSONSerialization::parseFragment(line, &problem);
  if (parsed.isNil()) {
    error = parseErrorText(problem);
    return std::nullopt;
  }
  Call call;
  if (const char* reason = readCall(parsed, call)) {
    error = reason;
    return std::nullopt;
  }
  return resultText(call.family, call.operation, call.arguments, error,
                    [](Value result) { return Dictionary{{u"result", std::move(result)}}; });
}

std::optional<std::string> callWords(std::span<const std::string_view> words, std::string& error) {
  List arguments;
  for (const std::string_view word : words.subspan(2)) {
    JSONError problem;
    Value parsed = NSJSONSerialization::parseFragment(word, &problem);
    if (parsed.isNil()) {
      error = "argument " + std::to_string(arguments.size() + 1) + ": " + parseErrorText(problem) +
              " (text is written '\"text\"')";
      return std::nullopt;
    }
    arguments.append(std::move(parsed));
  }
  return resultText(String::fromUTF8Replacing(words[0]), String::fromUTF8Replacing(words[1]),
                    {arguments.begin(), arguments.size()}, error, [](Value result) { return result; });
}

}  // namespace

void appendError(std::string_view error, std::string& out) {
  const auto text = NSJSONSerialization::writeFragmentUTF8(String::fromUTF8Replacing(error), 0);
  out += "{\"error\":" + text.value_or("\"\"") + "}\n";
}

bool answerCall(std::string_view line, std::string& out) {
  if (line.ends_with('\r')) line.remove_suffix(1);
  std::string error;
  const std::optional<std::string> text = answerText(line, error);
  if (text) {
    out.append(*text).append("\n");
  } else {
    appendError(error, out);
  }
  return text.has_value();
}

int runCall(std::span<const std::string_view> words) {
  if (words.size() == 1 && words[0] == "--batch") return runBatch(STDIN_FILENO, STDOUT_FILENO);
  if (words.size() < 2 || words[0].starts_with("--")) {
    std::fputs("quorvel call: expected FAMILY OPERATION ARGUMENT... or --batch (quorvel help call)\n", stderr);
    return kUsage;
  }
  std::string error;
  std::string out;
  const std::optional<std::string> text = callWords(words, error);
  text ? void(out.append(*text).append("\n")) : appendError(error, out);
  std::fwrite(out.data(), 1, out.size(), stdout);
  return text ? 0 : kFailed;
}

}  // namespace quorvel::command
