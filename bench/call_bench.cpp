// Lines of a batch: the example of every operation in turn, and of a single cheap one. The floor reads and writes the
// JSON without a call.
#include <apps/quorvel/Call.h>
#include <apps/quorvel/Operation.h>
#include <bench/Cases.h>

#include <quorvel/Platform/Foundation/NSJSONSerialization.h>

namespace quorvel::bench {
namespace {

std::vector<std::string> exampleLines() {
  std::vector<std::string> lines;
  for (const command::Operation& operation : command::allOperations())
    lines.push_back(command::joined({R"({"family":")", operation.family, R"(","operation":")", operation.name,
                                     R"(","args":)", operation.example, "}"}));
  return lines;
}

void addLines(const std::string& name, const std::vector<std::string>& lines) {
  add(name, 1, "ours", [lines, out = std::string(), at = std::size_t{0}]() mutable {
    out.clear();
    at = at + 1 == lines.size() ? 0 : at + 1;
    return command::answerCall(lines[at], out);
  });
  add(name, 1, "floor:json", [lines, at = std::size_t{0}]() mutable {
    at = at + 1 == lines.size() ? 0 : at + 1;
    return NSJSONSerialization::writeFragmentUTF8(NSJSONSerialization::parseFragment(lines[at]), 0);
  });
}

const bool kRegistered = [] {
  addLines("call/every operation", exampleLines());
  addLines("call/trim", {R"({"family":"StringUtils","operation":"trim:","args":[" a "]})"});
  return true;
}();

}  // namespace
}  // namespace quorvel::bench
