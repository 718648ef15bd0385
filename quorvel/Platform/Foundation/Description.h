// Textual forms of any value, as "%@" prints them, and the class name of a value.
#pragma once

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

/// `description`: a string is itself, a number its `stringValue`, the null marker '<null>', nil '(null)', a date
/// '2017-07-14 02:40:00 +0000', data '{length = 3, bytes = 0x010203}'; lists and dictionaries the nested form with four
/// spaces a level: '(\n    1,\n    two\n)', '{\n    key = value;\n}', texts in quotation marks when they hold more than
/// ASCII letters, digits and _ $ / : . (non-ASCII text stays readable), '(\n)' and '{\n}' when empty. Deeper than
/// `limits::kDescriptionDepth`: '(...)' and '{...}'.
[[nodiscard]] String description(const Value& value);

/// The name of the value's class: NSString, NSNumber, NSNull, NSDate, NSData, NSArray, NSDictionary, or an object's
/// own. Empty for nil.
[[nodiscard]] String className(const Value& value);

}  // namespace quorvel
