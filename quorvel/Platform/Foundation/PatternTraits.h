// What can be told of a regular expression from its text alone, without understanding all of its syntax. Included by
// sources only. Not here: the expressions themselves (NSRegularExpression.h).
#pragma once

#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/Foundation/String.h>

namespace quorvel {

/// What makes a pattern slow to compile or to match. A set costs by the characters it holds, because ICU looks for the
/// other case of each.
class PatternTraits {
 public:
  explicit PatternTraits(StringView pattern) : pattern_(pattern) {
    for (std::size_t i = 0; i < pattern.size(); ++i) {
      const char16_t unit = pattern[i];
      quantifiers_ += unit == u'*' || unit == u'+' || unit == u'?' || unit == u'{';
      if (unit == u'[') readSet(i);
      if (unit == u']' && depth_ > 0) --depth_;
      if (unit == u'-' && depth_ > 0 && isFar(i + 1)) classes_ += kWide;
      if (unit == u'\\') readEscape(unitAt(++i));
    }
  }

  [[nodiscard]] bool hasBackReference() const { return hasBackReference_; }
  [[nodiscard]] bool isTooCostly() const {
    return classes_ > limits::kRegularExpressionClasses ||
           quantifiers_ * pattern_.size() > limits::kRegularExpressionQuantifiers;
  }

 private:
  static constexpr std::size_t kSet = 1;
  static constexpr std::size_t kClass = 8;
  static constexpr std::size_t kWide = 64;

  [[nodiscard]] char16_t unitAt(std::size_t i) const { return i < pattern_.size() ? pattern_[i] : u'\0'; }
  /// True when a range to this place may hold many characters.
  [[nodiscard]] bool isFar(std::size_t i) const { return unitAt(i) >= 0x1000 || unitAt(i) == u'\\'; }
  void readSet(std::size_t i) {
    const bool isNamed = unitAt(i + 1) == u':';
    const bool isNegated = unitAt(i + (isNamed ? 2 : 1)) == u'^';
    // A negated set inside another, and one of a negated property, has the characters of nearly all of Unicode.
    classes_ += isNegated && (isNamed || depth_ > 0) ? kWide : isNamed ? kClass : kSet;
    ++depth_;
  }
  void readEscape(char16_t unit) {
    static constexpr std::u16string_view kClasses = u"pwdshv";
    static constexpr std::u16string_view kNegated = u"PWDSHV";
    if (kClasses.find(unit) != std::u16string_view::npos) classes_ += kClass;
    if (kNegated.find(unit) != std::u16string_view::npos) classes_ += depth_ > 0 || unit == u'P' ? kWide : kClass;
    hasBackReference_ = hasBackReference_ || (unit >= u'1' && unit <= u'9') || unit == u'k';
  }

  StringView pattern_;
  std::size_t quantifiers_ = 0;
  std::size_t classes_ = 0;
  std::size_t depth_ = 0;
  bool hasBackReference_ = false;
};

/// The literal characters that every match begins with, as far as they are plain to see: empty for a pattern that has
/// alternatives anywhere or begins otherwise. A literal search for it, with case ignored where the pattern ignores it,
/// finds every place where a match may begin.
[[nodiscard]] String literalPrefix(StringView pattern);

}  // namespace quorvel
