// Textual forms of any value, as "%@" prints them, and the class name of a value.
#pragma once

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

/// `description`: a string is itself, a number its `stringValue`, the null marker '<null>', nil '(null)'; a date
/// '2017-07-14 02:40:00 +0000' in whole seconds, cut toward the past, or '<date SECONDS>' outside the years 1 to 9999
/// and for a date that is not finite; data '{length = 3, bytes = 0x010203}', of more than 24 bytes the first 16, ' ...
/// ' and the last 8.
///
/// Lists and dictionaries have the nested form with four spaces a level: '(\n    1,\n    two\n)',
/// '{\n    key = value;\n}', '(\n)' and '{\n}' when empty. A list or dictionary inside another is indented once more
/// before its bracket: '{\n    key =     (\n        1\n    );\n}'. Texts inside are in quotation marks when they are
/// empty or hold more than ASCII letters, digits and _ $ / : . (non-ASCII text stays readable); `"` and `\` then have a
/// reverse solidus, controls are written \a \b \t \n \v \f \r or as three octal digits. Deeper than
/// `limits::kDescriptionDepth`: '(...)' and '{...}'; longer than `limits::kDescriptionLength`: '...' and no more.
[[nodiscard]] String description(const Value& value);

/// The name of the value's class: NSString, NSNumber, NSNull, NSDate, NSData, NSArray, NSDictionary, or an object's
/// own. Empty for nil.
[[nodiscard]] String className(const Value& value);

}  // namespace quorvel
