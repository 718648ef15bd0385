#include <quorvel/Extensions/Foundation/NSMutableAttributedString+Highlight.h>
#include <quorvel/Platform/Foundation/NSRegularExpression.h>

namespace quorvel {
namespace {

using Options = NSRegularExpression::Options;

NSMutableAttributedString& highlight(NSMutableAttributedString& text, StringView pattern, Options options,
                                     const Attributes& attributes) {
  const auto expression = NSRegularExpression::withPattern(pattern, options);
  if (expression) text.addAttributes(attributes, expression->matchRanges(text.string()));
  return text;
}

}  // namespace

NSMutableAttributedString& highlightKeyword(NSMutableAttributedString& text, StringView keyword,
                                            const Dictionary& keywordAttributes) {
  // The escaped keyword as a pattern finds the same; a literal needs no compilation and has no limits.
  return highlight(text, keyword, Options::CaseInsensitiveLiteral, keywordAttributes);
}

NSMutableAttributedString& highlightPattern(NSMutableAttributedString& text, StringView pattern,
                                            const Attributes& keywordAttributes) {
  return highlight(text, pattern, Options::CaseInsensitive, keywordAttributes);
}

NSMutableAttributedString operator+(const NSMutableAttributedString& left, const NSMutableAttributedString& right) {
  NSMutableAttributedString result;
  result.append(left);
  result.append(right);
  return result;
}

}  // namespace quorvel
