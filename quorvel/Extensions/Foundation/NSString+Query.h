// NSString(Query): query text into a record, keys and values decoded.
// Not here: the parser that reads "+" as a space and leaves keys alone, `parameterInfo` (NSString+URLEncoding.h).
#pragma once

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

/// `parseQuery`: the pairs 'key=value' between "&", both through `stringByDecodingPercentChars`; "+" stays. Pieces
/// without exactly one "=" are skipped; a later pair replaces an earlier one of the same key. A leading "?" belongs to
/// its key.
///
///     parseQuery(u"a=1&b=2&a=3")   // {"a": "3", "b": "2"}
[[nodiscard]] Dictionary parseQuery(const String& text);

}  // namespace quorvel
