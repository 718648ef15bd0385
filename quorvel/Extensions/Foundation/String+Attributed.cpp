#include <quorvel/Extensions/Foundation/String+Attributed.h>

namespace quorvel {

NSAttributedString attributed(const String& text, const std::optional<Attributes>& attributes) {
  return NSAttributedString(text, attributes.value_or(Attributes{}));
}

NSMutableAttributedString mutableAttributed(const String& text, const std::optional<Attributes>& attributes) {
  return NSMutableAttributedString(text, attributes.value_or(Attributes{}));
}

NSMutableAttributedString attributedString(const String& text, const std::optional<Dictionary>& attributes) {
  return mutableAttributed(text, attributes);
}

}  // namespace quorvel
