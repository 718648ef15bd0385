// Text matching on arbitrary UTF-16 against the rules carried out place by place; pattern results against the boolean.
#include <fuzz/FuzzInput.h>
#include <tests/support/NaiveMatch.h>

#include <quorvel/Utility/StringUtils.h>
#include <quorvel/Utility/TextMatch.h>

using namespace quorvel;
using fuzz::require;

namespace {

/// Syllables around those of the term and letters, so that partial matches come often; other bytes as they are.
String hangul(const String& source) {
  static constexpr std::u16string_view kNear = u"가각갂갃까고과곽관나난낞낳라락닭시수ㄱㄲㄳㅅㅎㅗㅘㅏㅀ ａｶﾞﾡ";
  std::u16string out;
  for (const char16_t unit : StringView(source).units()) {
    out += unit < 0x80 && unit > u'@' ? kNear[unit % kNear.size()] : unit;
  }
  return String(out);
}

void checkRanges(const String& text, const String& term, MatchOptions options) {
  const std::vector<NSRange> ranges = matchRanges(text, term, options);
  require(ranges == test::NaiveMatch(term, options).ranges(text), "matchRanges agrees with the rules");
  require(TextMatcher(term, options).hasMatch(text) == !ranges.empty(), "hasMatch agrees");
  std::uint64_t last = 0;
  for (const NSRange range : ranges) {
    require(range.length > 0 && range.location >= last && range.end() <= text.size(), "ranges ascend inside the text");
    require(isSequenceBoundary(text, range.location) && isSequenceBoundary(text, range.end()),
            "ranges split no sequence");
    last = range.end();
    const StringView found = StringView(text).sub(range.location, range.length);
    require(!matchRanges(found, term, options).empty(), "what is found is found in itself");
  }
}

void checkPattern(const String& text, const String& pattern) {
  const PatternResult result = StringUtils::matchesResult(text, pattern);
  if (result.outcome == PatternOutcome::LimitReached) return;  // another call may have more time
  require((result.outcome == PatternOutcome::Match) == StringUtils::matches(text, pattern), "matches:pattern: agrees");
  require(result.offset <= pattern.size(), "the offset lies in the pattern");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const std::uint8_t bits = input.byte();
  const MatchOptions options{(bits & 1) != 0, (bits & 2) != 0, (bits & 4) != 0, (bits & 8) != 0};
  String term = input.text();
  String text = input.rest();
  if (bits & 16) checkPattern(text, term);
  if (bits & 32) term = hangul(term);
  if (bits & 32) text = hangul(text);
  checkRanges(text, term, options);
  require(hangulMatch(text, term) == matchRanges(text, term, {.partialHangul = true}), "hangulMatch is one option");
  return 0;
}
