// NSString(Additions): tests of a string, or of any value that may be one.
// Not here: query parameters (NSString+Additions+Parameters.h), tests of texts that may be nil (StringUtils.h).
#pragma once

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

namespace NSStringAdditions {

/// `isNotEmpty:`: true when the value is a string, or attributed text whose plain text is one, that holds more than
/// white space and newlines. False for nil and for every other kind of value.
[[nodiscard]] bool isNotEmpty(const Value& value);
/// `isEmpty:`: the negation of `isNotEmpty:`.
[[nodiscard]] bool isEmpty(const Value& value);

}  // namespace NSStringAdditions

/// `isContainingString:`: true when the argument occurs in the receiver, by canonical equivalence and without splitting
/// a composed sequence. An empty argument is never found; nil is false.
[[nodiscard]] bool isContainingString(StringView text, StringView string);

/// `equalsIgnoreCase:`: true when both are the same by full case folding and canonical equivalence. nil equals nothing.
[[nodiscard]] bool equalsIgnoreCase(StringView text, StringView string);

}  // namespace quorvel
