// One line of a batch, as arbitrary bytes and as a well-formed call with arbitrary arguments: always one line of JSON
// comes back, with a result or an error.
#include <apps/quorvel/Call.h>
#include <apps/quorvel/Operation.h>
#include <fuzz/FuzzInput.h>

#include <quorvel/Platform/Foundation/NSJSONSerialization.h>

using namespace quorvel;
using fuzz::require;

namespace {

void check(std::string_view line) {
  std::string answer;
  const bool isResult = command::answerCall(line, answer);
  require(answer.ends_with('\n') && answer.find('\n') + 1 == answer.size(), "an answer is one line");
  const Value parsed = NSJSONSerialization::parseFragment(answer);
  const Dictionary* members = parsed.asDictionary();
  require(members && members->size() == 1, "an answer is an object of one member");
  require(members->find(isResult ? StringView(u"result") : StringView(u"error")) != nullptr,
          "which says whether the call succeeded");

  std::string again;
  require(command::answerCall(line, again) == isResult && again == answer, "a call has one answer");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const std::span<const command::Operation> operations = command::allOperations();
  const std::size_t index = input.byte();
  if (index >= operations.size()) {
    check(input.bytes());
    return 0;
  }
  const command::Operation& operation = operations[index];
  if (operation.isOnDevice) return 0;  // arbitrary paths are not ours to touch
  check(command::joined({R"({"family":")", operation.family, R"(","operation":")", operation.name, R"(","args":[)",
                         input.bytes(), "]}"}));
  return 0;
}
