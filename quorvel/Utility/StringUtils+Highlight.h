// The highlighting members of StringUtils: every place of some keywords coloured, or one place of a term.
// Not here: highlighting with any attributes (NSMutableAttributedString+Highlight.h).
#pragma once

#include <quorvel/Platform/Foundation/AttributedText.h>
#include <quorvel/Platform/UIKit/UIColor.h>

namespace quorvel {

/// `StringUtils` has these members; use them by its name.
class StringUtilsHighlight {
 public:
  StringUtilsHighlight() = delete;

  /// `searchKeywordInText:pattern:hilightColor:`: the same with the default base colour.
  [[nodiscard]] static std::optional<AttributedText> searchKeywordInText(StringView text, StringView pattern,
                                                                         const std::optional<UIColor>& hilightColor);
  /// `searchKeywordInText:pattern:baseColor:hilightColor:`: the text in the base colour (default 0xFF222222) with every
  /// place of each keyword in the highlight colour (default 0xFF157EFB); changeable. The keywords in `pattern` stand
  /// between commas and spaces and are found ignoring case; no character of them is special. nil keywords give the
  /// text without colours, read-only; a nil text gives nil.
  ///
  ///     searchKeywordInText(u"Hello world", u"WORLD, lo", nil, nil)   // 'lo' and 'world'
  [[nodiscard]] static std::optional<AttributedText> searchKeywordInText(StringView text, StringView pattern,
                                                                         const std::optional<UIColor>& baseColor,
                                                                         const std::optional<UIColor>& hilightColor);
  /// `searchKeywordInText:pattern:baseColor:hilightColor:font:`: a changeable copy of the same, with the font over the
  /// whole text unless it is nil. A nil text counts as an empty one.
  [[nodiscard]] static NSMutableAttributedString searchKeywordInText(StringView text, StringView pattern,
                                                                     const std::optional<UIColor>& baseColor,
                                                                     const std::optional<UIColor>& hilightColor,
                                                                     const Value& font);

  /// `attributedStringForBaseString:baseColor:pointString:pointColor:backwardSearch:`: the text in the base colour
  /// (default black) with the first, or with `backwardSearch` the last, match of the term in the point colour (default
  /// red); changeable. The lower-cased term is an expression and sought in the lower-cased text, up to the length of
  /// the text; where lower-casing lengthens the text (U+0130) the range counts units of the lower-cased one, so that it
  /// may lie beside the match, but inside the text. A term that does not compile matches nothing. An empty term gives
  /// the text without colours, read-only; a nil term, a nil or empty text give nil.
  [[nodiscard]] static std::optional<AttributedText> attributedStringForBaseString(
      StringView text, const std::optional<UIColor>& baseColor, StringView pointString,
      const std::optional<UIColor>& pointColor, bool backwardSearch);
};

}  // namespace quorvel
