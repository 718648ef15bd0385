// NSAttributedString and NSMutableAttributedString: a text with spans of display attributes.
// Not here: highlighting (StringUtils.h, NSString+AttributedString.h, NSMutableAttributedString+Highlight.h).
#pragma once

#include <vector>

#include <quorvel/Platform/Foundation/Range.h>
#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

/// Attribute names to values, such as a colour under `kForegroundColorAttribute`.
using Attributes = Dictionary;

/// `NSForegroundColorAttributeName`: "NSColor"; the value is a UIColor.
inline constexpr char16_t kForegroundColorAttribute[] = u"NSColor";
/// `NSFontAttributeName`: "NSFont"; the value is a font.
inline constexpr char16_t kFontAttribute[] = u"NSFont";

struct Span {
  NSRange range;
  Attributes attributes;
  friend bool operator==(const Span& a, const Span& b) = default;
};

/// The read-only form. Neighbouring spans have different attributes; together they cover the text; an empty text has no
/// span.
class NSAttributedString {
 public:
  NSAttributedString() = default;
  explicit NSAttributedString(String text, Attributes attributes = {});

  [[nodiscard]] const String& string() const { return text_; }
  [[nodiscard]] std::size_t length() const { return text_.size(); }
  [[nodiscard]] const std::vector<Span>& spans() const { return spans_; }
  /// The attributes of the unit at `index`; empty past the end.
  [[nodiscard]] const Attributes& attributesAt(std::size_t index) const;

  friend bool operator==(const NSAttributedString& a, const NSAttributedString& b) = default;

  [[nodiscard]] static String className() { return u"NSAttributedString"; }
  /// The text's pieces, each followed by its attributes' description.
  [[nodiscard]] String description() const;
  [[nodiscard]] std::uint64_t hash() const { return Value(text_).hash(); }

 protected:
  String text_;
  std::vector<Span> spans_;
};

/// The changeable form. Ranges that leave the text are clipped to it.
class NSMutableAttributedString : public NSAttributedString {
 public:
  NSMutableAttributedString() = default;
  explicit NSMutableAttributedString(String text, Attributes attributes = {})
      : NSAttributedString(std::move(text), std::move(attributes)) {}
  explicit NSMutableAttributedString(const NSAttributedString& other) : NSAttributedString(other) {}

  /// `addAttribute:value:range:`
  void addAttribute(StringView name, const Value& value, NSRange range);
  /// `addAttributes:range:`
  void addAttributes(const Attributes& attributes, NSRange range);
  /// The same over many ranges in order, in time linear in ranges and spans where the ranges ascend.
  void addAttributes(const Attributes& attributes, const std::vector<NSRange>& ranges);
  /// `appendAttributedString:`
  void append(const NSAttributedString& other);

  [[nodiscard]] static String className() { return u"NSMutableAttributedString"; }
};

}  // namespace quorvel
