#include <quorvel/Extensions/Foundation/NSString+AttributedString.h>
#include <quorvel/Platform/Foundation/NSRegularExpression.h>

namespace quorvel {

AttributedText makeTitleAttributedString(const String& text, const Attributes& titleAttribute,
                                         const Attributes& contentAttribute) {
  const std::size_t lineFeed = StringView(text).units().find(u'\n');
  if (lineFeed == std::u16string_view::npos) return NSAttributedString(text, contentAttribute);
  NSMutableAttributedString result(text);
  result.addAttributes(titleAttribute, NSRange{0, lineFeed});
  result.addAttributes(contentAttribute, NSRange{lineFeed, text.size() - lineFeed});
  return result;
}

AttributedText attributedStringForKeywordHighlights(const String& text, StringView keyword,
                                                    const UIColor& highlightColor) {
  StringBuilder pattern;
  pattern.append(u'(');
  pattern.append(keyword);
  pattern.append(u')');
  const auto expression =
      NSRegularExpression::withPattern(pattern.view(), NSRegularExpression::Options::CaseInsensitive);
  if (keyword.isNil() || !expression) return NSAttributedString(text);
  NSMutableAttributedString result(text);
  result.addAttributes(Attributes{{kForegroundColorAttribute, highlightColor}}, expression->groupRanges(text, 1));
  return result;
}

}  // namespace quorvel
