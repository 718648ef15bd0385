// Text matching: where a search term stands in a text, for finding and for highlighting alike, also while the term is
// being typed in Korean. Not here: whether a term is ready to be sent (NSString+TextSearch.h), expressions
// (StringUtils.h).
#pragma once

#include <quorvel/Platform/Foundation/TextMatcher.h>

namespace quorvel {

/// `matchRanges`: the ranges of the text, in UTF-16 units, at which the term stands; from left to right, none
/// overlapping another. None for a term or a text that is nil or empty. Linear in the text.
///
/// Text and term are compared sequence by composed sequence (a base with its marks, a Hangul syllable, a surrogate
/// pair), so that no range begins or ends inside one, and always by canonical equivalence (UAX #15). Beyond that
///  - `ignoresCase` folds case fully: 'STRASSE' finds 'Straße', but 's' does not find half of 'ß';
///  - `ignoresAccents` leaves out marks of combining class 1, 10 to 36 and 202 to 240: accents of Latin, Greek and
///    Cyrillic, Hebrew points, Arabic vowel signs. 'か' stays another letter than 'が', 'o' another than 'ø';
///  - `ignoresWidth` takes full-width and half-width characters for the ordinary ones; a half-width sound mark belongs
///    to the character before it;
///  - `partialHangul` takes the term as it is typed, see `hangulMatch`.
///
/// A term of accents alone finds nothing when they are ignored.
///
///     matchRanges(u"Café İzmir", u"izmir", {.ignoresCase = true, .ignoresAccents = true})   // {5, 5}
[[nodiscard]] std::vector<NSRange> matchRanges(StringView text, StringView term, MatchOptions options = {});

/// `hangulMatch`: `matchRanges` with `partialHangul` alone. Of a term of up to 128 units
///  - a consonant letter stands for itself and for every syllable that begins with it: 'ㅎㄱ' finds '한글'; two letters
///    that are typed one by one count as two: 'ㄳ' finds 'ㄳ', 'ㄱㅅ' and '가수';
///  - a last syllable without final consonant stands for those with any: '하' finds '한'; ㅗ, ㅜ and ㅡ stand also for
///    the vowels that are typed beginning with them: '고' finds '관'; a vowel letter at the end does the same;
///  - a last syllable with a final consonant stands for itself, for the one with a second consonant typed behind it
///    ('갑' finds '값'), and for the syllable that loses the consonant to whatever begins with it: '각' finds '가구',
///    '갃' finds '각시'.
///
/// Everything else stands for itself; so does a last syllable when anything, even a space, follows it.
///
///     hangulMatch(u"우리 한글 학교", u"한ㄱ")   // {3, 2}
[[nodiscard]] std::vector<NSRange> hangulMatch(StringView text, StringView term);

}  // namespace quorvel
