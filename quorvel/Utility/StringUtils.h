// StringUtils: tests and small transformations of texts that may be nil.
// Not here: the same on values and strings as receivers (NSString+Additions.h, String+Extension.h), file names
// (NSString+Additions+FileNames.h).
#pragma once

#include <quorvel/Platform/Foundation/Value.h>
#include <quorvel/Utility/StringUtils+Highlight.h>

namespace quorvel {

enum class PatternOutcome : std::uint8_t { Match, NoMatch, BadPattern, LimitReached };

struct PatternResult {
  PatternOutcome outcome = PatternOutcome::NoMatch;
  /// Where a bad pattern stops to be one, in UTF-16 units, and why; 0 and empty otherwise.
  std::uint64_t offset = 0;
  const char* reason = "";
};

class StringUtils : public StringUtilsHighlight {
 public:
  StringUtils() = delete;

  /// `isEmpty:`: true when the text is blank: nil, empty, or white space and newlines only.
  [[nodiscard]] static bool isEmpty(StringView text);
  /// `isBlank:`: true when the text is nil, has no units or trims to none: the same answers as `isEmpty:`.
  [[nodiscard]] static bool isBlank(StringView text);
  /// `isNotEmpty:`: the negation of `isEmpty:` of `Self`, so that a class that hides `isEmpty` changes both:
  /// `Mine::isNotEmpty<Mine>(text)`.
  template <class Self = StringUtils>
  [[nodiscard]] static bool isNotEmpty(StringView text) {
    return !Self::isEmpty(text);
  }
  /// `isNotBlank:`: the negation of `isBlank:` of `Self`.
  template <class Self = StringUtils>
  [[nodiscard]] static bool isNotBlank(StringView text) {
    return !Self::isBlank(text);
  }

  /// `trim:`: the text without white space and newlines at its ends, as a view into it: nothing is copied. nil gives
  /// nil.
  [[nodiscard]] static StringView trim(StringView text);

  /// `equals:andString:`: literal equality; nil equals nil alone.
  [[nodiscard]] static bool equals(StringView first, StringView second);
  /// `equalsCaseInsensitive:andString:`: equality by full case folding and canonical equivalence (Unicode,
  /// chapter 3.13); nil equals nil alone.
  [[nodiscard]] static bool equalsCaseInsensitive(StringView first, StringView second);

  /// `matches:pattern:`: true when the pattern (ICU syntax, ignoring case) matches anywhere in the text. False for a
  /// blank text, for a pattern that does not compile, and when a limit of LIMITS.md is reached.
  [[nodiscard]] static bool matches(StringView text, StringView pattern);
  /// `matchesResult`: the same question with an answer that tells why there is no match: `matches:pattern:` is true
  /// exactly for `PatternOutcome::Match`. A pattern that does not compile is told for a blank text too.
  [[nodiscard]] static PatternResult matchesResult(StringView text, StringView pattern);
  /// `isNumber:`: `matches:pattern:` with "^\d+$": decimal digits of any script (general category Nd), and perhaps one
  /// line terminator at the end.
  [[nodiscard]] static bool isNumber(StringView text);

  /// `collectionToCommaDelimitedString:`: the `stringValue` of each element (numbers as plain decimal text, texts as
  /// they are, other values by their description) with "," between. nil when there is no element. Nothing is escaped.
  [[nodiscard]] static std::optional<String> collectionToCommaDelimitedString(const std::optional<List>& list);

  /// `stringWithFormat:args:`: the format with the first 21 elements as objects; "%@" past them prints '(null)'. A nil
  /// list is an empty one, a nil format gives an empty text.
  [[nodiscard]] static String stringWithFormat(StringView format, const std::optional<List>& args);

  /// `replaceToHEICImageExtension:extension:`: a path whose extension is "heic" in whatever case with the given
  /// extension in its place; any other path unchanged. nil for nil, and for an extension that is nil or holds a slash.
  ///
  ///     StringUtils::replaceToHEICImageExtension(u"IMG_1.HEIC", u"jpg")   // "IMG_1.jpg"
  [[nodiscard]] static std::optional<String> replaceToHEICImageExtension(const std::optional<String>& path,
                                                                         StringView extension);
};

}  // namespace quorvel
