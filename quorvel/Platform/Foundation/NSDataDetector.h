// NSDataDetector: links in free text, with their ranges and completed URLs.
// Not here: the checking of a whole text as a URL (NSURL.h).
#pragma once

#include <vector>

#include <quorvel/Platform/Foundation/NSURL.h>
#include <quorvel/Platform/Foundation/Range.h>

namespace quorvel {

/// The checking type of links.
inline constexpr std::uint64_t kTextCheckingTypeLink = 32;

struct NSTextCheckingResult {
  std::uint64_t resultType = kTextCheckingTypeLink;
  NSRange range;
  NSURL url;

  friend bool operator==(const NSTextCheckingResult& a, const NSTextCheckingResult& b) = default;
};

/// A link is one of: a scheme, "://" and a host or, for schemes of applications, whatever follows; a host whose
/// top-level name the public suffix list knows; an e-mail address on such a host; "mailto:" with one, "tel:" and "sms:"
/// with a number. A host may have a port, a path, a query and a fragment.
///
/// No part of a link: a full stop, comma, colon, question or exclamation mark, quotation mark, asterisk or tilde at its
/// end, a closing bracket that the link did not open, punctuation beyond ASCII, Korean particles straight after it, and
/// East Asian words before or behind the ASCII letters of a host without a scheme.
///
/// A host gets 'http://', an e-mail address 'mailto:'; hosts beyond ASCII become Punycode (UTS #46), everything else
/// beyond ASCII is percent-encoded; the rest stays as it is written.
class NSDataDetector {
 public:
  /// `dataDetectorWithTypes:error:`: nil unless links are among the types; other types find nothing.
  [[nodiscard]] static std::optional<NSDataDetector> withTypes(std::uint64_t types);

  /// `matchesInString:options:range:`, from left to right; linear in the text.
  [[nodiscard]] std::vector<NSTextCheckingResult> matches(StringView text) const;
  /// `firstMatchInString:options:range:`; looks no further than the first.
  [[nodiscard]] std::optional<NSTextCheckingResult> firstMatch(StringView text) const;

 private:
  NSDataDetector() = default;
};

}  // namespace quorvel
