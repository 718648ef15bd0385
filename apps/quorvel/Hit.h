// One found message, as a person reads it and as a line of JSON.
#pragma once

#include <string>
#include <vector>

#include <quorvel/Platform/Foundation/NSAttributedString.h>
#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel::command {

/// The message's text with every keyword highlighted.
[[nodiscard]] NSAttributedString highlighted(StringView text, StringView keywords);

/// The message's text with these ranges highlighted, in the same colours.
[[nodiscard]] NSAttributedString highlighted(StringView text, const std::vector<NSRange>& ranges);

/// Appends room, sender, time, marks, the text and the attachment, a blank line at the end.
void appendHit(std::string& out, const Dictionary& record, const NSAttributedString& text, bool colored);

/// Appends {"record": …, "ranges": [[location, length], …]} and a line break.
void appendHitJSON(std::string& out, const Dictionary& record, const NSAttributedString& text);

}  // namespace quorvel::command
