// NSMutableDictionary(VelkaAdditions): writes into a record that skip nil.
// Not here: reads (NSDictionary+Addtion.h).
#pragma once

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

// A nil key stores nothing in any of them.

/// `setObjectIfNotNil:forKey:`: stores the value unless it is nil.
void setObjectIfNotNil(Dictionary& record, const Value& value, const Value& key);
/// `setString:forKey:`: stores the text unless it is nil.
void setString(Dictionary& record, StringView text, StringView key);
/// `setDouble:forKey:`: stores a floating number.
void setDouble(Dictionary& record, double value, StringView key);
/// `setInt:forKey:`: stores an integer number.
void setInt(Dictionary& record, std::int64_t value, StringView key);
/// `setBool:forKey:`: stores the integer number 1 or 0, not a boolean.
void setBool(Dictionary& record, bool value, StringView key);
/// `setStringOfInt:forKey:`: stores the integer's decimal text.
void setStringOfInt(Dictionary& record, std::int64_t value, StringView key);
/// `setIntOfString:forKey:`: stores `integerValue` of the text as an integer number, unless `StringUtils` `isNumber:`
/// rejects the text: it takes decimal digits of any script, of which `integerValue` reads the ASCII ones.
void setIntOfString(Dictionary& record, StringView text, StringView key);
/// `setStringOfIntKey:forKey:`: stores the text, unless it is nil, under an integer-number key, which only
/// `objectForKeyOrNil:` reads back.
void setStringOfIntKey(Dictionary& record, StringView text, std::int64_t key);

}  // namespace quorvel
