#include <quorvel/Extensions/Foundation/NSDictionary+Addtion.h>
#include <quorvel/Platform/Foundation/Description.h>
#include <quorvel/Platform/Foundation/KeyValueCoding.h>
#include <quorvel/Platform/Foundation/NumberText.h>
#include <quorvel/Platform/Foundation/StringOperations.h>

namespace quorvel {
namespace {

Value withoutNull(const Value& value) { return value.isNull() ? Value(nil) : value; }

/// The entry as the typed getters read it, without a copy where it needs none.
class Field {
 public:
  Field(const Dictionary& record, StringView key) {
    if (!key.isEmpty() && key.front() == u'@') {
      property_ = valueForKeyOrNil(record, key);
      value_ = &property_;
    } else {
      value_ = &record[key];
    }
  }
  Field(const Field&) = delete;
  Field& operator=(const Field&) = delete;

  const Value* operator->() const { return value_; }
  const Value& operator*() const { return *value_; }
  [[nodiscard]] bool isAbsent() const { return value_->isNil() || value_->isNull(); }

 private:
  Value property_;
  const Value* value_;
};

/// No other character's lower case is one of these letters, so ASCII case is enough.
bool isTrueText(StringView text) {
  if (text.size() != 4) return false;
  for (std::size_t i = 0; i < 4; ++i) {
    if ((text[i] | 0x20) != u"true"[i]) return false;
  }
  return true;
}

}  // namespace

bool NSDictionaryAddtion::isNotEmpty(const Value& value) {
  const Dictionary* dictionary = value.asDictionary();
  return dictionary != nullptr && !dictionary->isEmpty();
}

bool NSDictionaryAddtion::isEmpty(const Value& value) { return !isNotEmpty(value); }

Value objectForKeyOrNil(const Dictionary& record, const Value& key) {
  const Value* value = record.find(key);
  return value ? withoutNull(*value) : Value(nil);
}

Value valueForKeyOrNil(const Dictionary& record, StringView key) { return withoutNull(valueForKey(record, key)); }

Value valueForKeyPathOrNil(const Dictionary& record, StringView path) {
  return withoutNull(valueForKeyPath(record, path));
}

Value valueOrNil(const Dictionary&, const Value& value) { return withoutNull(value); }

std::optional<String> stringForKeyOrNil(const Dictionary& record, StringView key) {
  const Field field(record, key);
  if (field.isAbsent()) return nil;
  return description(*field);
}

std::optional<String> stringNotEmptyForKeyOrNil(const Dictionary& record, StringView key) {
  std::optional<String> text = stringForKeyOrNil(record, key);
  const StringView rest = trimmedOfWhitespace(text);
  if (rest.isEmpty()) return nil;
  if (rest.size() == text->size()) return text;
  return String(rest);
}

String stringOrEmptyForKey(const Dictionary& record, StringView key) {
  return stringNotEmptyForKeyOrNil(record, key).value_or(String());
}

std::optional<Number> integerNumberForKeyOrNil(const Dictionary& record, StringView key) {
  const Field field(record, key);
  if (const String* text = field->asString()) return Number(longLongValue(*text));
  return field->asNumber();
}

std::optional<Date> dateForKeyOrNil(const Dictionary& record, StringView key) {
  const std::optional<Number> number = integerNumberForKeyOrNil(record, key);
  const double seconds = number ? static_cast<double>(number->longLongValue()) / 1000.0 : 0;
  if (seconds <= 0) return nil;
  return Date{seconds};
}

std::optional<List> arrayForKeyOfNil(const Dictionary& record, StringView key) {
  const Field field(record, key);
  const List* list = field->asList();
  if (!list) return nil;
  return *list;
}

bool boolValueForKey(const Dictionary& record, StringView key, bool defaultValue) {
  const Field field(record, key);
  if (const String* text = field->asString()) return isTrueText(*text);
  const std::optional<Number> number = field->asNumber();
  return number ? number->boolValue() : defaultValue;
}

bool boolValueForKey(const Dictionary& record, StringView key) { return boolValueForKey(record, key, false); }

bool boolValueFromStringYnForKeyOrNil(const Dictionary& record, StringView key) {
  const std::optional<String> text = stringForKeyOrNil(record, key);
  return text && text->size() == 1 && ((*text)[0] == u'Y' || (*text)[0] == u'y');
}

Dictionary mergeToDictionary(const Dictionary& record, const std::optional<Dictionary>& other) {
  Dictionary result = record;
  if (!other) return result;
  for (const auto& [key, value] : *other) {
    const Value* existing = result.find(key);
    const List* first = existing ? existing->asList() : nullptr;
    if (!first || !value.isList()) {
      result.set(key, value);
      continue;
    }
    List both = *first;
    both.appendContentsOf(*value.asList());
    result.set(key, std::move(both));
  }
  return result;
}

}  // namespace quorvel
