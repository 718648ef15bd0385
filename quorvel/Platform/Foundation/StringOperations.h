// The platform's operations on strings that need no locale: trimming, splitting, joining, replacing, case, clusters.
// Not here: comparison and search (Comparison.h), percent coding (PercentEncoding.h), numbers (NumberText.h).
#pragma once

#include <concepts>
#include <vector>

#include <quorvel/Platform/Foundation/CharacterSet.h>
#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

namespace detail {

// The operations below on a view; where nothing changes, `owner` is answered if there is one.
[[nodiscard]] String replacingOccurrences(StringView text, const String* owner, StringView target,
                                          StringView replacement);
[[nodiscard]] String lowercased(StringView text, const String* owner);
[[nodiscard]] String uppercased(StringView text, const String* owner);

}  // namespace detail

/// `stringByTrimmingCharactersInSet:` as a view into `text`; nil gives nil. No copy is made.
[[nodiscard]] StringView trimmed(StringView text, const NSCharacterSet& set);
/// The same with the white-space-and-newline set, without asking the set.
[[nodiscard]] StringView trimmedOfWhitespace(StringView text);
/// True when nothing is left of `text` by `trimmedOfWhitespace`; nil is blank.
[[nodiscard]] bool isBlankText(StringView text);

/// `componentsSeparatedByCharactersInSet:`: the pieces between members of the set, empty ones included; views into
/// `text`. A text without members is its only piece; the empty text has one empty piece.
[[nodiscard]] std::vector<StringView> componentsSeparatedBy(StringView text, const NSCharacterSet& set);
/// `componentsSeparatedByString:`, by literal search. An empty separator gives the text as the only piece.
[[nodiscard]] std::vector<StringView> componentsSeparatedBy(StringView text, StringView separator);
/// `componentsJoinedByString:`
[[nodiscard]] String joined(const std::vector<StringView>& pieces, StringView separator);
/// `stringByReplacingOccurrencesOfString:withString:`, by literal search. A `String` without the target is shared, not
/// copied; so is one that the case mappings below do not change.
[[nodiscard]] String replacingOccurrences(StringView text, StringView target, StringView replacement);
template <std::same_as<String> Text>
[[nodiscard]] String replacingOccurrences(const Text& text, StringView target, StringView replacement) {
  return detail::replacingOccurrences(text, &text, target, replacement);
}
/// Every member of the set is replaced by `replacement` (which may be empty); a text without members is shared, not
/// copied.
[[nodiscard]] String replacingCharacters(const String& text, const NSCharacterSet& set, StringView replacement);

/// Full, locale-independent case mappings (Unicode, chapter 3.13); lengths may change.
[[nodiscard]] String lowercased(StringView text);
template <std::same_as<String> Text>
[[nodiscard]] String lowercased(const Text& text) {
  return detail::lowercased(text, &text);
}
[[nodiscard]] String uppercased(StringView text);
template <std::same_as<String> Text>
[[nodiscard]] String uppercased(const Text& text) {
  return detail::uppercased(text, &text);
}

/// Extended grapheme clusters (UAX #29).
[[nodiscard]] std::size_t countOfClusters(StringView text);

}  // namespace quorvel
