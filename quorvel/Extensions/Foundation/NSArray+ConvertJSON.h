// NSArray(ConvertJSON): a list as JSON text.
// Not here: reading (NSString+ConvertJSON.h), the other container (NSDictionary+ConvertJSON.h).
#pragma once

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

/// `toJSONString`: the list as compact JSON text with sorted keys: `toJSONString:` with options 0.
///
///     toJSONString(List{1, u"a"})   // "[1,\"a\"]"
[[nodiscard]] std::optional<String> toJSONString(const List& list);

/// `toJSONString:`: the list as JSON text, keys sorted by code unit whatever the options; option 1 lays it out in
/// lines, two spaces a level. nil for what JSON cannot hold: a date, data, a number that is not finite, a key that is
/// no string, an unpaired surrogate, and for nesting beyond `limits::kJSONDepth`.
[[nodiscard]] std::optional<String> toJSONString(const List& list, std::uint64_t options);

}  // namespace quorvel
