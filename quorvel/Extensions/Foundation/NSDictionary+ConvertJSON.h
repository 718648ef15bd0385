// NSDictionary(ConvertJSON): a record as JSON text.
// Not here: reading (NSString+ConvertJSON.h), the other container (NSArray+ConvertJSON.h).
#pragma once

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

/// `toJSONString`: the record as compact JSON text with sorted keys: `toJSONString:` with options 0.
///
///     toJSONString(Dictionary{{u"b", 1}, {u"a", 2}})   // "{\"a\":2,\"b\":1}"
[[nodiscard]] std::optional<String> toJSONString(const Dictionary& record);

/// `toJSONString:`: the record as JSON text, keys sorted by code unit whatever the options; option 1 lays it out in
/// lines, two spaces a level. nil for what JSON cannot hold: a date, data, a number that is not finite, a key that is
/// no string, an unpaired surrogate, and for nesting beyond `limits::kJSONDepth`.
[[nodiscard]] std::optional<String> toJSONString(const Dictionary& record, std::uint64_t options);

}  // namespace quorvel
