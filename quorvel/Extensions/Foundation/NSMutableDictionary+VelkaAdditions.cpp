#include <quorvel/Extensions/Foundation/NSMutableDictionary+VelkaAdditions.h>
#include <quorvel/Platform/Foundation/NumberText.h>
#include <quorvel/Utility/StringUtils.h>

namespace quorvel {

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
  if (StringUtils::isNumber(text)) setInt(record, integerValue(text), key);
}

void setStringOfIntKey(Dictionary& record, StringView text, std::int64_t key) { setObjectIfNotNil(record, text, key); }

}  // namespace quorvel
