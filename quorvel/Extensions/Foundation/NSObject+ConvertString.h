// NSObject(ConvertString): any object as text.
// Not here: the descriptions themselves (Description.h).
#pragma once

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

/// `className`: the name of the receiver's class: NSString, NSNumber, NSNull, NSDate, NSData, NSArray, NSDictionary, or
/// an object's own; empty for nil.
[[nodiscard]] String className(const Value& value);

/// `toStringValue`: a string itself, a number's decimal text, the description of anything else; nil for nil.
[[nodiscard]] std::optional<String> toStringValue(const Value& value);

}  // namespace quorvel
