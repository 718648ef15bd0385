// NSString(Additions), parameters: 'key=value' text for a URL's query, escaped where the query would break.
// Not here: the stricter encoders (NSString+URLEncoding.h).
#pragma once

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel::NSStringAdditions {

/// The platform's number of the UTF-8 encoding.
inline constexpr std::uint64_t kUTF8StringEncoding = 4;

/// `qv_percentEscapedQueryStringValueFromStringWithEncoding:encoding:`: the 16 characters of :/?&=;+!@#$()',* as %XX,
/// all others as they are, space and "%" included. The encoding is not consulted. nil for nil and for an unpaired
/// surrogate.
[[nodiscard]] std::optional<String> qv_percentEscapedQueryStringValueFromStringWithEncoding(StringView text,
                                                                                            std::uint64_t encoding);

/// `qv_parameterStringWithKey:value:`: "key=value" of the two descriptions, each through the operation above; '(null)'
/// for a text with an unpaired surrogate. A nil key or value has the description '(null)', which is escaped.
///
///     NSStringAdditions::qv_parameterStringWithKey(u"q", u"a&b=c d")   // "q=a%26b%3Dc d"
[[nodiscard]] String qv_parameterStringWithKey(const Value& key, const Value& value);

/// `qv_parameterStringWithArray:`: the elements (descriptions of those that are no strings) joined with "&"; nil for
/// nil, for an empty list and for what is no list.
[[nodiscard]] std::optional<String> qv_parameterStringWithArray(const Value& strings);

}  // namespace quorvel::NSStringAdditions
