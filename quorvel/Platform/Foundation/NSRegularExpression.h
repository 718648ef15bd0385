// NSRegularExpression: ICU regular expressions on UTF-16 text, with limits of time, memory and pattern length.
// Compiled patterns are kept in a small cache that all threads share.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include <quorvel/Platform/Foundation/Range.h>
#include <quorvel/Platform/Foundation/String.h>

namespace quorvel {

/// Option bits: 1 ignores case, 4 takes every character of the pattern literally, 5 both.
enum class RegularExpressionOptions : std::uint32_t {
  None = 0,
  CaseInsensitive = 1,
  Literal = 4,
  CaseInsensitiveLiteral = 5
};

/// Where and why a pattern does not compile.
struct PatternError {
  std::uint64_t offset = 0;  // UTF-16 units into the pattern
  const char* reason = "";
};

/// An immutable compiled pattern, cheap to copy; any number of threads may use one at once.
class NSRegularExpression {
 public:
  using Options = RegularExpressionOptions;
  /// A match: the range of the whole and of each capture group; a group that took no part is not found.
  using Match = std::vector<NSRange>;
  enum class Outcome { Complete, LimitReached };

  /// `regularExpressionWithPattern:options:error:`: nil when the pattern is nil, empty, beyond a limit of LIMITS.md or
  /// does not compile, with the reason in `error` when it is given.
  [[nodiscard]] static std::optional<NSRegularExpression> withPattern(StringView pattern, Options options,
                                                                      PatternError* error = nullptr);

  [[nodiscard]] const String& pattern() const;
  [[nodiscard]] std::size_t groupCount() const;

  /// `matchesInString:options:range:` with matching options 0. When a limit is reached there are no matches, `outcome`
  /// says so and a line is logged.
  [[nodiscard]] std::vector<Match> matches(StringView text, Outcome* outcome = nullptr) const;
  /// The ranges of the whole matches alone: no allocation for each match, and a fast path for literal patterns that
  /// answers the same.
  [[nodiscard]] std::vector<NSRange> matchRanges(StringView text, Outcome* outcome = nullptr) const;
  /// The ranges of one capture group in each match, in order; not found where it took no part. `group` is at most
  /// `groupCount()`.
  [[nodiscard]] std::vector<NSRange> groupRanges(StringView text, std::size_t group, Outcome* outcome = nullptr) const;
  /// True when there is at least one match; stops at the first.
  [[nodiscard]] bool hasMatch(StringView text, Outcome* outcome = nullptr) const;
  [[nodiscard]] std::optional<NSRange> firstMatch(StringView text, NSRange range) const;

  /// `stringByReplacingMatchesInString:options:range:withTemplate:` over the whole text. In the template `$n` is the
  /// group with the longest number that exists (empty when it took no part, or when no group has that number), a
  /// reverse solidus makes the next character literal, and a `$` without digits stays. The text itself when a limit is
  /// reached.
  [[nodiscard]] String replacingMatches(StringView text, StringView replacementTemplate) const;

  /// `escapedPatternForString:`: a reverse solidus before each of * ? + [ ( ) { } ^ $ | \ . /
  [[nodiscard]] static String escapedPattern(StringView text);

 private:
  struct Compiled;
  explicit NSRegularExpression(std::shared_ptr<const Compiled> compiled) : compiled_(std::move(compiled)) {}
  std::shared_ptr<const Compiled> compiled_;
};

}  // namespace quorvel
