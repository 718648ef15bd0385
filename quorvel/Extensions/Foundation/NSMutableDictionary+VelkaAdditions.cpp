#include <quorvel/Extensions/Foundation/NSMutableDictionary+VelkaAdditions.h>
#include <quorvel/Platform/Foundation/CharacterSet.h>
#include <quorvel/Platform/Foundation/NumberText.h>
#include <quorvel/Platform/Foundation/Unicode.h>

namespace quorvel {
namespace {

bool isLineTerminator(char32_t unit) {
  return (unit >= 0x0A && unit <= 0x0D) || unit == 0x85 || unit == 0x2028 || unit == 0x2029;
}

/// The text without the one line terminator that "$" of a pattern lets stand at the end.
StringView withoutFinalTerminator(StringView text) {
  if (text.isEmpty() || !isLineTerminator(text.back())) return text;
  const bool isPair = text.size() > 1 && text.back() == u'\n' && text[text.size() - 2] == u'\r';
  return text.sub(0, text.size() - (isPair ? 2 : 1));
}

/// What "^\d+$" matches.
bool isNumberText(StringView text) {
  const StringView digits = withoutFinalTerminator(text);
  for (std::size_t i = 0; i < digits.size();) {
    if (!NSCharacterSet::decimalDigit().contains(unicode::nextScalar(digits, i))) return false;
  }
  return !digits.isEmpty();
}

}  // namespace

void setObjectIfNotNil(Dictionary& record, const Value& value, const Value& key) {
  if (!value.isNil() && !key.isNil()) record.set(key, value);
}

void setString(Dictionary& record, StringView text, StringView key) { setObjectIfNotNil(record, text, key); }

void setDouble(Dictionary& record, double value, StringView key) { setObjectIfNotNil(record, value, key); }

void setInt(Dictionary& record, std::int64_t value, StringView key) { setObjectIfNotNil(record, value, key); }

void setBool(Dictionary& record, bool value, StringView key) { setInt(record, value ? 1 : 0, key); }

void setStringOfInt(Dictionary& record, std::int64_t value, StringView key) {
  setObjectIfNotNil(record, stringValue(value), key);
}

void setIntOfString(Dictionary& record, StringView text, StringView key) {
  if (isNumberText(text)) setInt(record, integerValue(text), key);
}

void setStringOfIntKey(Dictionary& record, StringView text, std::int64_t key) { setObjectIfNotNil(record, text, key); }

}  // namespace quorvel
