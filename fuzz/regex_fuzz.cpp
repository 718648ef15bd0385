// Regular-expression entries on arbitrary patterns and texts: ranges stay inside, fast and general paths agree.
#include <fuzz/FuzzInput.h>

#include <quorvel/Extensions/Foundation/NSMutableAttributedString+Highlight.h>
#include <quorvel/Extensions/Foundation/NSString+AttributedString.h>
#include <quorvel/Platform/Foundation/NSRegularExpression.h>
#include <quorvel/Utility/StringUtils.h>

using namespace quorvel;
using fuzz::require;

namespace {

void checkOption(const String& pattern, const String& text, RegularExpressionOptions options) {
  const auto expression = NSRegularExpression::withPattern(pattern, options);
  if (!expression) return;
  auto outcome = NSRegularExpression::Outcome::Complete;
  const auto matches = expression->matches(text, &outcome);
  const auto ranges = expression->matchRanges(text);
  if (outcome != NSRegularExpression::Outcome::Complete) return;
  require(ranges.size() == matches.size(), "ranges and matches are as many");
  std::uint64_t last = 0;
  for (std::size_t i = 0; i < matches.size(); ++i) {
    require(matches[i][0] == ranges[i], "ranges and matches agree");
    require(ranges[i].location >= last && ranges[i].end() <= text.size(), "matches ascend inside the text");
    last = ranges[i].end();
  }
  require(expression->hasMatch(text) == !matches.empty(), "hasMatch agrees");
}

void checkCover(const NSAttributedString& marked, const String& text) {
  std::uint64_t at = 0;
  for (const Span& span : marked.spans()) {
    require(span.range.location == at && span.range.length > 0, "spans cover the text in order");
    at = span.range.end();
  }
  require(at == marked.length() && marked.string() == text, "spans cover the whole text");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const String pattern = input.text();
  const String text = input.rest();
  for (const std::uint32_t options : {0U, 1U, 4U, 5U}) {
    checkOption(pattern, text, static_cast<RegularExpressionOptions>(options));
  }
  const String escaped = NSRegularExpression::escapedPattern(pattern);
  require(pattern.isEmpty() || NSRegularExpression::withPattern(escaped, RegularExpressionOptions::None).has_value() ||
              escaped.size() > 65536,
          "an escaped text is a pattern");
  if (const auto marked = StringUtils::searchKeywordInText(text, pattern, nil, nil)) checkCover(*marked, text);
  if (const auto marked = StringUtils::attributedStringForBaseString(text, nil, pattern, nil, true))
    checkCover(*marked, text);
  NSMutableAttributedString highlighted{text};
  checkCover(highlightKeyword(highlighted, pattern, Attributes{{u"k", 1}}), text);
  checkCover(highlightPattern(highlighted, pattern, Attributes{{u"p", 1}}), text);
  return 0;
}
