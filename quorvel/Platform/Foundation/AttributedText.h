// AttributedText: what an operation answers that gives now the read-only form, now the changeable one.
#pragma once

#include <quorvel/Platform/Foundation/NSAttributedString.h>

namespace quorvel {

/// An attributed text that knows its form. It reads like any attributed text; in a Value it becomes an
/// NSMutableAttributedString or an NSAttributedString, by its form.
class AttributedText : public NSAttributedString {
 public:
  AttributedText(NSAttributedString text) : NSAttributedString(std::move(text)) {}
  AttributedText(NSMutableAttributedString text) : NSAttributedString(std::move(text)), isChangeable_(true) {}

  /// True for the form `NSMutableAttributedString`.
  [[nodiscard]] bool isChangeable() const { return isChangeable_; }
  /// A changeable copy, whatever the form.
  [[nodiscard]] NSMutableAttributedString mutableCopy() const { return NSMutableAttributedString(*this); }

  operator Value() const {
    return isChangeable_ ? Value(mutableCopy()) : Value(static_cast<const NSAttributedString&>(*this));
  }
  /// The same text, spans and form.
  friend bool operator==(const AttributedText& a, const AttributedText& b) = default;

  // The form decides the class, so the class alone has no name.
  static String className() = delete;

 private:
  bool isChangeable_ = false;
};

}  // namespace quorvel
