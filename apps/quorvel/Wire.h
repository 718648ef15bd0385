// Values of the library as JSON values and back, for arguments and results on the command's line.
// Not here: JSON text itself (NSJSONSerialization.h), which of these an operation takes (Arguments.h).
//
// Text, numbers, booleans, lists and dictionaries stand for themselves. nil is null at the top; inside lists and
// dictionaries null reads as the null marker. What JSON lacks is an object of one member that begins with "$":
//
//     {"$null": true}                        the null marker
//     {"$data": "AQID"}                      bytes, in Base64
//     {"$date": 1500000000000}               a date, in milliseconds since 1970-01-01 00:00:00 UTC
//     {"$utf16": [55357]}                    text with an unpaired surrogate
//     {"$number": "inf" | "-inf" | "nan"}    a number that is not finite
//     {"$entries": [[key, value], ...]}      a dictionary with a key that is no text or begins with "$"
//     {"$color": [r, g, b, a]}               a colour; where an operation takes or gives a colour, the list alone
//     {"$font": "name"}                      a font
//     {"text": ..., "spans": [[location, length, {...}], ...]}    attributed text
#pragma once

#include <string>

#include <quorvel/Platform/Foundation/NSAttributedString.h>
#include <quorvel/Platform/Foundation/Value.h>
#include <quorvel/Platform/UIKit/UIColor.h>

namespace quorvel::command {

/// The value that a parsed JSON value stands for: a nil value for null; nothing, and why in `reason`, for a form that
/// is not understood.
[[nodiscard]] std::optional<Value> fromWire(const Value& json, std::string& reason);

// The same where the kind is known. A dictionary may then have the members of attributed text, and a colour and
// attributed text have their short forms: [r, g, b, a] and plain text.
[[nodiscard]] std::optional<String> stringFromWire(const Value& json, std::string& reason);
[[nodiscard]] std::optional<Dictionary> dictionaryFromWire(const Value& json, std::string& reason);
[[nodiscard]] std::optional<NSAttributedString> attributedFromWire(const Value& json, std::string& reason);
[[nodiscard]] std::optional<UIColor> colorFromWire(const Value& json, std::string& reason);
[[nodiscard]] std::optional<NSRange> rangeFromWire(const Value& json, std::string& reason);

/// The JSON value for a value; nothing when it is nested beyond `limits::kJSONDepth`.
[[nodiscard]] std::optional<Value> toWire(const Value& value);

/// The components, for results that are a colour.
[[nodiscard]] List colorComponents(const UIColor& color);

/// "a string", "a boolean": what a JSON value is, for messages.
[[nodiscard]] const char* kindText(const Value& json);

}  // namespace quorvel::command
