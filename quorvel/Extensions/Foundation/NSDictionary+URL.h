// NSDictionary(URL): the query part of a URL from a record.
// Not here: the parsers (NSString+Query.h, NSString+URLEncoding.h).
#pragma once

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

/// `queryString`: "?key=value&key=value" in the record's order; keys and string values through `urlEncodeString`,
/// numbers as their decimal text. Any other value leaves its pair empty, the separator stays. '(null)' stands for a key
/// or a text with an unpaired surrogate. nil for an empty record.
///
///     queryString({{u"a", u"x y"}})   // "?a=x%20y"
[[nodiscard]] std::optional<String> queryString(const Dictionary& record);

}  // namespace quorvel
