// NSDictionary(UrlEncoding): a whole record as encoded 'key=value' pairs.
// Not here: the query builder, which skips nested values (NSDictionary+URL.h).
#pragma once

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

/// `urlEncode`: `stringByEncodingCharacterSet` of the value's description (a string is itself, a number its decimal
/// text, nil '(null)'). The step that `urlEncodedString` takes for each key and value.
[[nodiscard]] String urlEncode(const Value& value);

/// `urlEncodedString`: "key=value" for each entry in the record's order, both through `urlEncode`, joined with "&". An
/// empty record gives the empty text.
[[nodiscard]] String urlEncodedString(const Dictionary& record);

}  // namespace quorvel
