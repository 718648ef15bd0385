// NSDictionary(Addtion): nil-safe, coercing reads from records, and merging. A stored null marker reads like a missing
// key everywhere.
// Not here: deep equality (DeepEquality.h), writers (NSMutableDictionary+VelkaAdditions.h).
#pragma once

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

namespace NSDictionaryAddtion {

/// `isNotEmpty:`: true for a dictionary with at least one entry.
[[nodiscard]] bool isNotEmpty(const Value& value);
/// `isEmpty:`: the negation of `isNotEmpty:`; true for nil and for what is no dictionary.
[[nodiscard]] bool isEmpty(const Value& value);

}  // namespace NSDictionaryAddtion

/// `objectForKeyOrNil:`: the entry of the key, which may be of any kind; nil for none and for a null marker.
[[nodiscard]] Value objectForKeyOrNil(const Dictionary& record, const Value& key);
/// `valueForKeyOrNil:`: the same for a text, except that a key that begins with '@' names a property of the dictionary:
/// '@count' is the number of entries.
[[nodiscard]] Value valueForKeyOrNil(const Dictionary& record, StringView key);
/// `valueForKeyPathOrNil:`: follows the keys between the dots through nested records; nil for nothing and for a null
/// marker at the end.
[[nodiscard]] Value valueForKeyPathOrNil(const Dictionary& record, StringView path);
/// `valueOrNil:`: nil for the null marker, else the value. The receiver plays no part.
[[nodiscard]] Value valueOrNil(const Dictionary& record, const Value& value);

// The typed getters read by `valueForKeyOrNil:`.

/// `stringForKeyOrNil:`: a string as it is, a number's decimal text ('1' and '0' for booleans), else the description.
[[nodiscard]] std::optional<String> stringForKeyOrNil(const Dictionary& record, StringView key);
/// `stringNotEmptyForKeyOrNil:`: the same, trimmed of white space and newlines; nil when nothing is left.
[[nodiscard]] std::optional<String> stringNotEmptyForKeyOrNil(const Dictionary& record, StringView key);
/// `stringOrEmptyForKey:`: the same, with the empty text for nil.
[[nodiscard]] String stringOrEmptyForKey(const Dictionary& record, StringView key);
/// `integerNumberForKeyOrNil:`: a number unchanged (2.7 stays 2.7), a string by `longLongValue` ('12abc' is 12, 'abc'
/// 0, beyond 64 bits the nearest end of the range), else nil.
[[nodiscard]] std::optional<Number> integerNumberForKeyOrNil(const Dictionary& record, StringView key);
/// `dateForKeyOrNil:`: a number or a string read by `longLongValue` as milliseconds since 1970-01-01 00:00:00 UTC, the
/// fraction of a second kept; nil for 0, for less and for other kinds.
[[nodiscard]] std::optional<Date> dateForKeyOrNil(const Dictionary& record, StringView key);
/// `arrayForKeyOfNil:`: a list, else nil.
[[nodiscard]] std::optional<List> arrayForKeyOfNil(const Dictionary& record, StringView key);
/// `boolValueForKey:defaultValue:`: a number's truth; a string is true when it is "true" in whatever case; else the
/// default.
[[nodiscard]] bool boolValueForKey(const Dictionary& record, StringView key, bool defaultValue);
/// `boolValueForKey:`: the same with false as the default.
[[nodiscard]] bool boolValueForKey(const Dictionary& record, StringView key);
/// `boolValueFromStringYnForKeyOrNil:`: true when the text of `stringForKeyOrNil:` is "Y" or "y".
[[nodiscard]] bool boolValueFromStringYnForKeyOrNil(const Dictionary& record, StringView key);

/// `mergeToDictionary:`: the record with the entries of `other` stored over its own; where both hold a list, the
/// record's list followed by the other's. Nested records are replaced, not merged. A nil `other` gives the record.
[[nodiscard]] Dictionary mergeToDictionary(const Dictionary& record, const std::optional<Dictionary>& other);

}  // namespace quorvel
