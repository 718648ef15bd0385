// NSString(TextSearch): whether a search term that is being typed in Korean is ready to be sent, and its last form that
// is. Not here: highlighting of what is found (StringUtils+Highlight.h).
#pragma once

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

/// True for U+1100 to U+11FF (Hangul Jamo) and U+3131 to U+318E (Hangul Compatibility Jamo). Precomposed syllables,
/// half-width letters and the extended jamo blocks are not jamo here.
[[nodiscard]] constexpr bool isJamo(char16_t unit) { return (unit >> 8) == 0x11 || (unit >= 0x3131 && unit <= 0x318E); }

/// `stringArrayOfEachLetters`: one text of one UTF-16 unit for each unit of the receiver, in order; a surrogate pair
/// gives its two halves. Empty for an empty or nil receiver.
[[nodiscard]] List stringArrayOfEachLetters(StringView text);

namespace NSStringTextSearch {

/// `isFirstLetterJamo:`: true when the first unit is a jamo. The text must not be empty; an empty or nil one is false.
[[nodiscard]] bool isFirstLetterJamo(StringView text);

/// `isSearchableString:`: true when the text, trimmed of white space and newlines, has two units or more and does not
/// end in a jamo. nil is false.
[[nodiscard]] bool isSearchableString(StringView text);

/// `removeInvaildSearchStr:`: the last searchable form of the text: it is trimmed, and units are taken from its end,
/// each time trimming again, until it is searchable or shorter than two units. A text shorter than two units is
/// answered as it is, not trimmed; nil gives nil. Linear in the text's length, without a copy on the way.
///
///     removeInvaildSearchStr(u"한글ㄱ")   // "한글"
[[nodiscard]] std::optional<String> removeInvaildSearchStr(StringView text);

}  // namespace NSStringTextSearch
}  // namespace quorvel
