// The value-type String extension: attributed texts made from a string.
// Not here: highlighting (NSString+AttributedString.h, NSMutableAttributedString+Highlight.h, StringUtils+Highlight.h).
#pragma once

#include <quorvel/Platform/Foundation/NSAttributedString.h>

namespace quorvel {

/// `attributed`: the text without attributes.
[[nodiscard]] inline NSAttributedString attributed(const String& text) { return NSAttributedString(text); }
/// `attributed(_:)`: the text with the attributes over all of it; without any when they are absent.
[[nodiscard]] NSAttributedString attributed(const String& text, const std::optional<Attributes>& attributes);
/// `mutableAttributed(_:)`: the same in the changeable form.
[[nodiscard]] NSMutableAttributedString mutableAttributed(const String& text,
                                                          const std::optional<Attributes>& attributes);
/// `attributedString(_:)`: the same; the dictionary's keys are the attributes' names as they are.
[[nodiscard]] NSMutableAttributedString attributedString(const String& text,
                                                         const std::optional<Dictionary>& attributes);

}  // namespace quorvel
