// NSString(Additions): values from text and text from values.
// Not here: records' coercions (NSDictionary+Addtion.h), counters (NSString+Badge.h).
#pragma once

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

namespace NSStringAdditions {

/// `stringValue:`: a string itself, a number's decimal text, the description of anything else; nil for nil.
[[nodiscard]] std::optional<String> stringValue(const Value& value);
/// `qv_valueOfString:`: "true" or "false".
[[nodiscard]] String qv_valueOfString(bool flag);
/// `qv_valueOfYN:`: "Y" or "N".
[[nodiscard]] String qv_valueOfYN(bool flag);

}  // namespace NSStringAdditions

/// `integerNumberObject`: the receiver's `longLongValue` (NumberText.h); nil when that is 0.
///
///     integerNumberObject(u"42abc")   // 42
[[nodiscard]] std::optional<std::int64_t> integerNumberObject(StringView text);

/// `qv_boolValueOfYN`: true for 'y' and 'Y' alone.
[[nodiscard]] bool qv_boolValueOfYN(StringView text);

}  // namespace quorvel
