#include <algorithm>

#include <quorvel/Extensions/UIKit/UIColor+ColorWithHex.h>
#include <quorvel/Platform/Foundation/NSRegularExpression.h>
#include <quorvel/Platform/Foundation/StringOperations.h>
#include <quorvel/Utility/StringUtils+Highlight.h>

namespace quorvel {
namespace {

using Options = NSRegularExpression::Options;

constexpr UIColor kBaseColor = UIColorWithHex::colorWithAlphaHex(0xFF222222);
constexpr UIColor kHighlightColor = UIColorWithHex::colorWithAlphaHex(0xFF157EFB);

/// The different keywords between commas and spaces. All get one colour, so that their order does not matter.
std::vector<StringView> keywordsOf(StringView text) {
  std::vector<StringView> keywords;
  std::size_t start = 0;
  for (std::size_t i = 0; i <= text.size(); ++i) {
    if (i < text.size() && text[i] != u',' && text[i] != u' ') continue;
    if (i > start) keywords.push_back(text.sub(start, i - start));
    start = i + 1;
  }
  std::sort(keywords.begin(), keywords.end());
  keywords.erase(std::unique(keywords.begin(), keywords.end()), keywords.end());
  return keywords;
}

void paint(NSMutableAttributedString& text, const UIColor& color, const std::vector<NSRange>& ranges) {
  text.addAttributes(Attributes{{kForegroundColorAttribute, color}}, ranges);
}

void paintKeywords(NSMutableAttributedString& text, StringView pattern, const UIColor& color) {
  std::vector<NSRange> ranges;
  for (const StringView keyword : keywordsOf(pattern)) {
    const auto expression = NSRegularExpression::withPattern(keyword, Options::CaseInsensitiveLiteral);
    if (!expression) continue;
    const std::vector<NSRange> matches = expression->matchRanges(text.string());
    ranges.insert(ranges.end(), matches.begin(), matches.end());
    if (ranges.size() <= 2 * text.length()) continue;
    paint(text, color, ranges);  // so that many keywords need no more memory than the text
    ranges.clear();
  }
  paint(text, color, ranges);
}

std::optional<NSRange> pointRange(StringView text, StringView pointString, bool backwardSearch) {
  const auto expression = NSRegularExpression::withPattern(lowercased(pointString), Options::None);
  if (!expression) return nil;
  const String lower = lowercased(text);
  const StringView searched = StringView(lower).sub(0, text.size());
  if (!backwardSearch) return expression->firstMatch(searched, {0, searched.size()});
  const std::vector<NSRange> matches = expression->matchRanges(searched);
  return matches.empty() ? std::nullopt : std::optional(matches.back());
}

}  // namespace

std::optional<AttributedText> StringUtilsHighlight::searchKeywordInText(StringView text, StringView pattern,
                                                                        const std::optional<UIColor>& hilightColor) {
  return searchKeywordInText(text, pattern, nil, hilightColor);
}

std::optional<AttributedText> StringUtilsHighlight::searchKeywordInText(StringView text, StringView pattern,
                                                                        const std::optional<UIColor>& baseColor,
                                                                        const std::optional<UIColor>& hilightColor) {
  if (text.isNil()) return nil;
  if (pattern.isNil()) return NSAttributedString(text);
  NSMutableAttributedString result(text, Attributes{{kForegroundColorAttribute, baseColor.value_or(kBaseColor)}});
  paintKeywords(result, pattern, hilightColor.value_or(kHighlightColor));
  return result;
}

NSMutableAttributedString StringUtilsHighlight::searchKeywordInText(StringView text, StringView pattern,
                                                                    const std::optional<UIColor>& baseColor,
                                                                    const std::optional<UIColor>& hilightColor,
                                                                    const Value& font) {
  const std::optional<AttributedText> found = searchKeywordInText(text, pattern, baseColor, hilightColor);
  if (!found) return {};
  NSMutableAttributedString result = found->mutableCopy();
  if (!font.isNil()) result.addAttribute(kFontAttribute, font, {0, result.length()});
  return result;
}

std::optional<AttributedText> StringUtilsHighlight::attributedStringForBaseString(
    StringView text, const std::optional<UIColor>& baseColor, StringView pointString,
    const std::optional<UIColor>& pointColor, bool backwardSearch) {
  if (pointString.isNil() || text.isEmpty()) return nil;
  if (pointString.isEmpty()) return NSAttributedString(text);
  NSMutableAttributedString result(text,
                                   Attributes{{kForegroundColorAttribute, baseColor.value_or(UIColor::blackColor())}});
  if (const auto range = pointRange(text, pointString, backwardSearch)) {
    paint(result, pointColor.value_or(UIColor::redColor()), {*range});
  }
  return result;
}

}  // namespace quorvel
