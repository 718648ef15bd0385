// NSString(ConvertJSON): JSON text to values.
// Not here: the value-type form (String+JSON.h), writing (NSDictionary+ConvertJSON.h, NSArray+ConvertJSON.h).
#pragma once

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

/// `objectFromJSONString`: the list or dictionary that the text is (RFC 8259); the caller may change it in place. nil
/// for nil, for text that is no JSON, for a top level that is neither, and for text with an unpaired surrogate.
///
///     objectFromJSONString(u"{\"a\":[1,2]}")   // {a = (1, 2)}
///     objectFromJSONString(u"42")              // nil
[[nodiscard]] Value objectFromJSONString(StringView text);

}  // namespace quorvel
