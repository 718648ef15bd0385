// NSJSONSerialization: JSON (RFC 8259) to and from values.
// Not here: the families' conversions with their fixed options (NSString+ConvertJSON.h).
#pragma once

#include <string>
#include <string_view>

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

/// Where and why a text is no JSON.
struct JSONError {
  std::size_t offset = 0;  // bytes of UTF-8 text, units of UTF-16 text
  const char* reason = "";
};

namespace NSJSONSerialization {

/// Bits for writing: 1 pretty-printed, 2 sorted keys.
inline constexpr std::uint64_t kPrettyPrinted = 1;
inline constexpr std::uint64_t kSortedKeys = 2;

/// `JSONObjectWithData:options:error:`: a list or dictionary; a nil value for anything else. RFC 8259 strictly, one
/// leading U+FEFF skipped, no trailing commas, no fragments, at most `limits::kJSONDepth` levels. Of repeated keys the
/// first value stays. Integers that fit 64 bits, signed or unsigned, are integers ("-0" is 0), larger ones doubles; a
/// number that overflows to infinity or underflows to zero, an unpaired surrogate escape and a NUL make the text
/// invalid.
[[nodiscard]] Value parse(std::string_view utf8, JSONError* error = nullptr);
/// The same for UTF-16 text, where an unpaired surrogate unit makes it invalid too.
[[nodiscard]] Value parse(StringView text, JSONError* error = nullptr);
/// Any JSON value at the top level, for lines of arguments and results.
[[nodiscard]] Value parseFragment(std::string_view utf8, JSONError* error = nullptr);

/// `dataWithJSONObject:options:error:` as text: nil for a top level that is no list or dictionary, a date, data, an
/// object, a non-finite number, a key that is no string, an unpaired surrogate in any string, or nesting beyond
/// `limits::kJSONDepth`. Compact without spaces, or pretty with two spaces a level and " : "; " \ / and controls
/// escaped, the rest as it is; whole doubles without fraction, others by the shortest digits that read back.
[[nodiscard]] std::optional<String> write(const Value& value, std::uint64_t options);
/// The same as UTF-8 bytes; any value is allowed at the top.
[[nodiscard]] std::optional<std::string> writeFragmentUTF8(const Value& value, std::uint64_t options);

}  // namespace NSJSONSerialization
}  // namespace quorvel
