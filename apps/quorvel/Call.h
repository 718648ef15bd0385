// One call of an operation, from JSON text to JSON text.
// Not here: the stream of calls (Batch.h).
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace quorvel::command {

/// Appends the answer to one line, {"family": …, "operation": …, "args": […]}: {"result": …} or {"error": "…"}, and a
/// line break. False for an error. Members with other names are ignored; "args" may be left out when there are none.
bool answerCall(std::string_view line, std::string& out);
/// Appends {"error": "…"} and a line break.
void appendError(std::string_view error, std::string& out);

/// `quorvel call`: the words after it. 0; 1 when the operation answers an error or a call of a batch did; 2 when the
/// words are not understood.
int runCall(std::span<const std::string_view> words);

}  // namespace quorvel::command
