// The value-type String extension: tests of optional strings, localisation, ranges in UTF-16 units, removal of
// characters. Not here: percent coding (String+URLEncoding.h), JSON (String+JSON.h), attributed text
// (String+Attributed.h).
#pragma once

#include <initializer_list>
#include <span>

#include <quorvel/Platform/Foundation/Range.h>
#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

/// The static members of the family.
struct StringExtension {
  StringExtension() = delete;

  /// `nonBreakSpace`: one U+00A0.
  [[nodiscard]] static String nonBreakSpace() { return u"\u00A0"; }
  /// `isEmpty(_:)`: true when the text is nil or white space and newlines only.
  [[nodiscard]] static bool isEmpty(StringView text);
  /// `isNotEmpty(_:)`: false for nil and for a text of white space and newlines only.
  [[nodiscard]] static bool isNotEmpty(StringView text);
  /// `isEqualString(lhs:rhs:)`: two blank texts are equal, a blank one and another are not; otherwise the two
  /// `trimmedString()` are compared by canonical equivalence, and one that is nil equals nothing.
  [[nodiscard]] static bool isEqualString(StringView lhs, StringView rhs);
};

/// `localized()`: the receiver's text in the main bundle's default string table, else in the table "NoTranslation",
/// else in "Localizable_dev"; the receiver itself where none of them has another text for it.
[[nodiscard]] String localized(const String& text);
/// `localizedFormat(arguments:)`: `localized()` of the receiver as a printf-style format (Format.h) of the arguments.
[[nodiscard]] String localizedFormat(const String& text, std::span<const Value> arguments);
[[nodiscard]] inline String localizedFormat(const String& text, std::initializer_list<Value> arguments) {
  return localizedFormat(text, std::span(arguments.begin(), arguments.size()));
}

/// `trimmedString()`: every U+00A0 is removed, then white space and newlines, then control characters (general
/// categories Cc and Cf) at both ends, each once and in this order. nil when nothing is left.
[[nodiscard]] std::optional<String> trimmedString(StringView text);

/// `count()`: extended grapheme clusters (UAX #29); a flag of two regional indicators is one.
[[nodiscard]] std::size_t count(StringView text);
/// `length()`: UTF-16 units.
[[nodiscard]] inline std::size_t length(StringView text) { return text.size(); }
/// `nsRange()`: (0, `length()`).
[[nodiscard]] inline NSRange nsRange(StringView text) { return {0, text.size()}; }

/// `nsRangeOf(string:ignoreCase:)`: the first place of `string` by canonical search; with `ignoreCase` both are
/// lower-cased first, and the range counts units of the lower-cased receiver, whose length may differ (U+0130). (not
/// found, 0) otherwise.
[[nodiscard]] NSRange nsRangeOf(StringView text, StringView string, bool ignoreCase);

/// `nsSubstring(from:)`: the units from `from` to the end; the receiver when `from` is greater than its length. A view
/// into the receiver. `from` must not be negative.
[[nodiscard]] StringView nsSubstringFrom(StringView text, std::int64_t from);
/// `nsSubstring(to:)`: the first `to` units, at most the receiver. A view into the receiver. `to` must not be negative.
[[nodiscard]] StringView nsSubstringTo(StringView text, std::int64_t to);

/// `separatedBy(characters:)`: the receiver without the characters that occur in the argument. A text without them is
/// shared, not copied.
///
///     separatedBy(u"a-b_c", u"-_")   // "abc"
[[nodiscard]] String separatedBy(const String& text, StringView characters);
/// `separatedEmptyCharacters()`: the receiver without U+000D and U+0009; line feeds and spaces stay.
[[nodiscard]] String separatedEmptyCharacters(const String& text);
/// `replacingCharacters(_:with:)`: each run of the characters is replaced by `replacement`, and runs at the ends by
/// nothing.
///
///     replacingCharacters(u"a,,b,", u",", u" / ")   // "a / b"
[[nodiscard]] String replacingCharacters(StringView text, StringView characters, StringView replacement);

/// `containsCaseInsensitive(_:)`: true when the argument is found ignoring case, without a locale. An empty argument is
/// never found.
[[nodiscard]] bool containsCaseInsensitive(StringView text, StringView string);

}  // namespace quorvel
