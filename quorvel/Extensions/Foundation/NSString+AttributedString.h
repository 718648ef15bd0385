// NSString(AttributedString): a title line set apart from the rest, and the matches of a keyword coloured.
// Not here: highlighting of several keywords (StringUtils+Highlight.h), attributes on an existing text
// (NSMutableAttributedString+Highlight.h).
#pragma once

#include <quorvel/Platform/Foundation/AttributedText.h>
#include <quorvel/Platform/UIKit/UIColor.h>

namespace quorvel {

/// `makeTitleAttributedString:contentAttribute:`: the units before the first line feed with the title attributes, the
/// line feed and what follows with the content attributes; changeable. Without a line feed the whole text with the
/// content attributes; read-only.
[[nodiscard]] AttributedText makeTitleAttributedString(const String& text, const Attributes& titleAttribute,
                                                       const Attributes& contentAttribute);

/// `attributedStringForKeywordHighlights:highlightColor:`: the text with the colour over each match of the keyword, an
/// expression that ignores case, as its first group "(keyword)"; changeable. Read-only and without attributes when
/// "(keyword)" does not compile, and for a nil keyword. No colour when a limit of LIMITS.md is reached.
///
///     attributedStringForKeywordHighlights(u"abbbc", u"b+", color)   // the colour on (1, 3)
[[nodiscard]] AttributedText attributedStringForKeywordHighlights(const String& text, StringView keyword,
                                                                  const UIColor& highlightColor);

}  // namespace quorvel
