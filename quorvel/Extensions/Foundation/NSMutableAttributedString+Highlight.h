// The NSMutableAttributedString extension: attributes on every match of a keyword or a pattern, and joining two texts.
// Not here: operations that make attributed text from a string (String+Attributed.h, NSString+AttributedString.h).
#pragma once

#include <quorvel/Platform/Foundation/NSAttributedString.h>

namespace quorvel {

/// `highlight(keyword:keywordAttributes:)`: adds the attributes to every place where the keyword stands, ignoring case;
/// no character of it is special. Returns the receiver, unchanged for an absent keyword.
///
///     highlightKeyword(text, u"a.c", attributes)   // in 'abc a.c' on (4, 3) only
NSMutableAttributedString& highlightKeyword(NSMutableAttributedString& text, StringView keyword,
                                            const Dictionary& keywordAttributes);
/// `highlight(pattern:keywordAttributes:)`: adds the attributes to every match of the expression, ignoring case.
/// Returns the receiver, unchanged for an absent pattern, one that does not compile, and when a limit of LIMITS.md is
/// reached.
NSMutableAttributedString& highlightPattern(NSMutableAttributedString& text, StringView pattern,
                                            const Attributes& keywordAttributes);

/// `+`: a new text, the left one and then the right one.
[[nodiscard]] NSMutableAttributedString operator+(const NSMutableAttributedString& left,
                                                  const NSMutableAttributedString& right);

}  // namespace quorvel
