// Text for a terminal: colours from the spans of attributed text, and nothing that a terminal would obey.
#pragma once

#include <string>

#include <quorvel/Platform/Foundation/NSAttributedString.h>
#include <quorvel/Platform/UIKit/UIColor.h>

namespace quorvel::command {

/// True when standard output is a terminal that shows colours, and the environment's NO_COLOR does not forbid them.
[[nodiscard]] bool outputTakesColor();

/// Two columns in the colour, which counts as opaque.
void appendSwatch(std::string& out, const UIColor& color);

/// Appends the text with each control character shown as its picture (U+2400 on) or U+FFFD, so that a message cannot
/// move the cursor or recolour the screen. Line breaks are kept and followed by `indent`.
void appendPlain(std::string& out, StringView text, std::string_view indent);

/// A text from outside, such as the name of a file, to be part of a message.
[[nodiscard]] std::string plainText(std::string_view text);

/// The same as `appendPlain` with the foreground colours of the spans. Spans in `base` take the terminal's own
/// foreground: a text colour chosen for a white screen is hard to read on a dark one.
void appendColored(std::string& out, const NSAttributedString& text, const UIColor& base, std::string_view indent);

}  // namespace quorvel::command
