// What links are made of: the characters of host names and paths, host names by the public suffix list and UTS #46, and
// the Korean particles that follow a link without a space. Included by sources only.
// Not here: where links are in a text (LinkScanner.h).
#pragma once

#include <optional>
#include <string>

#include <quorvel/Platform/Foundation/Unicode.h>

namespace quorvel::links {

[[nodiscard]] constexpr bool isDigit(char32_t unit) { return unit >= u'0' && unit <= u'9'; }
[[nodiscard]] constexpr bool isLetter(char32_t unit) {
  return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z');
}
[[nodiscard]] constexpr bool isAlphanumeric(char32_t unit) { return isDigit(unit) || isLetter(unit); }
/// Hangul, kana and ideographs: what is written beside an address without a space.
[[nodiscard]] bool isEastAsian(char32_t scalar);
/// Letters, marks and numbers of any script, "-" and "_".
[[nodiscard]] bool isHostScalar(char32_t scalar);
/// What may stand in a path, a query or a fragment as people write them: ASCII but white space, controls and
/// " < > \ ^ ` { | }; beyond it letters, marks, numbers, symbols and joiners, but no punctuation.
[[nodiscard]] bool isPathScalar(char32_t scalar);

/// The end of the labels that begin at `from`, dots between them; `from` when there is none.
[[nodiscard]] std::size_t endOfLabels(StringView text, std::size_t from);

enum class Suffix { Known, Any };
/// The end of the host whose labels are [from, end): without what is written behind its last label, such as particles,
/// and without East Asian words behind a full stop. `from` when `suffix` asks for a top-level name that is known and
/// there is none.
[[nodiscard]] std::size_t endOfHost(StringView text, std::size_t from, std::size_t end, Suffix suffix);

/// The host in ASCII: as it is, or in Punycode (UTS #46, nontransitional); nil when it is no host name.
[[nodiscard]] std::optional<std::string> asciiHost(StringView host);
/// True when the host is one label or more below a public suffix.
[[nodiscard]] bool isRegistrable(const std::string& asciiHost);
/// True for four decimal numbers of at most 255.
[[nodiscard]] bool isIPv4(StringView host);

/// True when the text is one to three particles or endings that Korean writes straight after a word.
[[nodiscard]] bool areParticles(StringView text);
/// Where a run of Hangul syllables begins that ends at `end`; looks back at no more of them than particles have.
[[nodiscard]] std::size_t startOfSyllables(StringView text, std::size_t from, std::size_t end);

}  // namespace quorvel::links
