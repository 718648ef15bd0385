// NSString(Additions): cleaning and escaping of text. A text that needs no change comes back shared, not copied.
// Not here: percent coding and control characters (NSString+URLEncoding.h), links (NSString+Additions+Links.h).
#pragma once

#include <quorvel/Platform/Foundation/String.h>

namespace quorvel {

/// `stringByRemovingNewLineCharacters`: every U+000A as one space; carriage returns and other line ends stay.
[[nodiscard]] String stringByRemovingNewLineCharacters(const String& text);

/// `stringByTrimmingWhitespaces`: the receiver without white space and newlines at its ends, as a view into it.
[[nodiscard]] StringView stringByTrimmingWhitespaces(StringView text);

/// `stringByRemovingEmojiCharacters`: the receiver without the units U+D800 to U+EFFF: every character beyond the Basic
/// Multilingual Plane, whether emoji or not, unpaired surrogates, and the private-use characters below U+F000. Emoji of
/// the Basic Multilingual Plane, variation selectors and joiners stay.
[[nodiscard]] String stringByRemovingEmojiCharacters(const String& text);

/// `truncatedStringWithMaxLength:`: a receiver longer than `max` units as its first `max` units and "...", even where
/// that splits a surrogate pair; otherwise the receiver.
///
///     truncatedStringWithMaxLength(u"abcdef", 3)   // "abc..."
[[nodiscard]] String truncatedStringWithMaxLength(const String& text, std::uint64_t max);

/// `qv_stringEscapedForJavasacript`: the receiver as it stands between the quotation marks of JSON text: " \ / behind a
/// reverse solidus, \b \f \n \r \t, other controls below U+0020 as \u00xx, the rest as it is. The receiver itself when
/// it holds an unpaired surrogate.
[[nodiscard]] String qv_stringEscapedForJavasacript(const String& text);

/// `qv_appendToEscapedSymbol`: & < > as "&amp;" "&lt;" "&gt;"; quotation marks and apostrophes stay.
[[nodiscard]] String qv_appendToEscapedSymbol(const String& text);
/// `qv_removeToEscapedSymbol`: "&lt;" "&gt;" "&amp;" as the characters, each place once: '&amp;lt;' gives '&lt;'.
/// Undoes `qv_appendToEscapedSymbol` of any text.
[[nodiscard]] String qv_removeToEscapedSymbol(const String& text);

}  // namespace quorvel
