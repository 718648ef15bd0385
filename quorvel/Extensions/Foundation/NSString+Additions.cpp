#include <quorvel/Extensions/Foundation/NSString+Additions.h>
#include <quorvel/Platform/Foundation/Comparison.h>
#include <quorvel/Platform/Foundation/NSAttributedString.h>
#include <quorvel/Platform/Foundation/StringOperations.h>

namespace quorvel {

bool NSStringAdditions::isNotEmpty(const Value& value) {
  if (const auto* attributed = value.as<NSAttributedString>()) return !isBlankText(attributed->string());
  if (const auto* changeable = value.as<NSMutableAttributedString>()) return !isBlankText(changeable->string());
  return value.isString() && !isBlankText(value.text());
}

bool NSStringAdditions::isEmpty(const Value& value) { return !isNotEmpty(value); }

bool isContainingString(StringView text, StringView string) { return rangeOfString(text, string).isFound(); }

bool equalsIgnoreCase(StringView text, StringView string) {
  return !text.isNil() && !string.isNil() && caseInsensitiveCompare(text, string) == 0;
}

}  // namespace quorvel
