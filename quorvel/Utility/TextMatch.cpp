#include <quorvel/Utility/TextMatch.h>

namespace quorvel {

std::vector<NSRange> matchRanges(StringView text, StringView term, MatchOptions options) {
  return TextMatcher(term, options).ranges(text);
}

std::vector<NSRange> hangulMatch(StringView text, StringView term) {
  return matchRanges(text, term, {.partialHangul = true});
}

}  // namespace quorvel
