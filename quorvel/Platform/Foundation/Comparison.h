// Comparison and search beyond code units: canonical equivalence (UAX #15) and case folding, independent of locale.
// Not here: literal equality (String.h), literal search (Unicode.h), regular expressions (NSRegularExpression.h).
#pragma once

#include <compare>

#include <quorvel/Platform/Foundation/Range.h>
#include <quorvel/Platform/Foundation/String.h>

namespace quorvel {

/// True when the texts are canonically equivalent: U+00E9 and U+0065 U+0301. Nil equals nil alone.
[[nodiscard]] bool isCanonicallyEqual(StringView a, StringView b);
/// `compare:` of texts: canonical equivalence, otherwise the order of code units.
[[nodiscard]] std::weak_ordering compareCanonical(StringView a, StringView b);
/// `caseInsensitiveCompare:`: full case folding and canonical equivalence, otherwise the order of the folded code
/// units. 'Straße' equals 'STRASSE'. Nil sorts first.
[[nodiscard]] std::weak_ordering caseInsensitiveCompare(StringView a, StringView b);

/// `rangeOfString:` without options: the first range of `text` that is canonically equivalent to `needle` and splits no
/// composed sequence. `NSRange::notFound()` for an empty needle or a nil argument. Linear in the text's length.
[[nodiscard]] NSRange rangeOfString(StringView text, StringView needle);
/// The same, ignoring case by full folding.
[[nodiscard]] NSRange rangeOfStringCaseInsensitive(StringView text, StringView needle);

}  // namespace quorvel
