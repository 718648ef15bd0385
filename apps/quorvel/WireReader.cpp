#include <array>
#include <cmath>
#include <limits>
#include <span>

#include <apps/quorvel/Font.h>
#include <apps/quorvel/Wire.h>
#include <apps/quorvel/WireForms.h>

#include <quorvel/Platform/Foundation/Base64.h>

// Recursion follows the nesting of parsed JSON, which the parser bounds.
namespace quorvel::command {
namespace {

template <class T>
std::optional<T> refuse(std::string& reason, const char* expected, const Value& json) {
  reason = std::string("expected ") + expected + ", got " + kindText(json);
  return std::nullopt;
}

/// What the only member of an object holds, where its key begins with "$".
const Entry* formOf(const Value& json) {
  const Dictionary* dictionary = json.asDictionary();
  if (!dictionary || dictionary->size() != 1) return nullptr;
  const Entry& entry = *dictionary->begin();
  return isFormKey(entry.key) ? &entry : nullptr;
}

std::optional<Value> readElement(const Value& json, std::string& reason) {
  if (json.isNull()) return Value(null);
  return fromWire(json, reason);
}

std::optional<List> readList(const List& json, std::string& reason) {
  List list;
  list.reserve(json.size());
  for (const Value& element : json) {
    std::optional<Value> value = readElement(element, reason);
    if (!value) return std::nullopt;
    list.append(std::move(*value));
  }
  return list;
}

std::optional<Value> readNull(const Value& json, std::string& reason) {
  if (json != Value(true)) return refuse<Value>(reason, "true in $null", json);
  return Value(null);
}

std::optional<Value> readData(const Value& json, std::string& reason) {
  if (!json.isString()) return refuse<Value>(reason, "a string in $data", json);
  const auto bytes = decodeBase64(json.text());
  if (!bytes) return refuse<Value>(reason, "Base64 in $data", json);
  return Value(Data(*bytes));
}

/// A number, which may be one that is not finite.
std::optional<double> readDouble(const Value& json, std::string& reason) {
  const std::optional<Value> value = fromWire(json, reason);
  if (!value) return std::nullopt;
  const std::optional<Number> number = value->asNumber();
  if (!number || number->isBoolean()) return refuse<double>(reason, "a number", json);
  return number->doubleValue();
}

std::optional<Value> readDate(const Value& json, std::string& reason) {
  const std::optional<double> milliseconds = readDouble(json, reason);
  if (!milliseconds) return std::nullopt;
  return Value(Date{*milliseconds / 1000});
}

std::optional<std::uint64_t> readCount(const Value& json, std::string& reason) {
  const std::optional<Number> number = json.asNumber();
  const bool isInteger =
      number && (number->kind() == Number::Kind::Integer || number->kind() == Number::Kind::Unsigned);
  if (!isInteger || (number->kind() == Number::Kind::Integer && number->longLongValue() < 0))
    return refuse<std::uint64_t>(reason, "an integer that is not negative", json);
  return number->bits();
}

std::optional<String> readUnits(const Value& json, std::string& reason) {
  const List* units = json.asList();
  if (!units) return refuse<String>(reason, "a list of units in $utf16", json);
  StringBuilder text;
  for (const Value& element : *units) {
    const std::optional<std::uint64_t> unit = readCount(element, reason);
    if (!unit || *unit > 0xFFFF) return refuse<String>(reason, "units from 0 to 65535 in $utf16", element);
    text.append(static_cast<char16_t>(*unit));
  }
  return text.finish();
}

std::optional<Value> readUnitsForm(const Value& json, std::string& reason) {
  std::optional<String> text = readUnits(json, reason);
  if (!text) return std::nullopt;
  return Value(std::move(*text));
}

std::optional<Value> readNumber(const Value& json, std::string& reason) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  if (json.text() == u"inf") return Value(kInfinity);
  if (json.text() == u"-inf") return Value(-kInfinity);
  if (json.text() == u"nan") return Value(std::numeric_limits<double>::quiet_NaN());
  return refuse<Value>(reason, "\"inf\", \"-inf\" or \"nan\" in $number", json);
}

std::optional<Dictionary> readEntries(const Value& json, std::string& reason) {
  const List* pairs = json.asList();
  if (!pairs) return refuse<Dictionary>(reason, "a list of pairs in $entries", json);
  Dictionary dictionary;
  dictionary.reserve(pairs->size());
  for (const Value& pair : *pairs) {
    const List* parts = pair.asList();
    if (!parts || parts->size() != 2) return refuse<Dictionary>(reason, "[key, value] in $entries", pair);
    std::optional<Value> key = readElement((*parts)[0], reason);
    std::optional<Value> value = key ? readElement((*parts)[1], reason) : std::nullopt;
    if (!value) return std::nullopt;
    dictionary.set(std::move(*key), std::move(*value));
  }
  return dictionary;
}

std::optional<Value> readEntriesForm(const Value& json, std::string& reason) {
  std::optional<Dictionary> dictionary = readEntries(json, reason);
  if (!dictionary) return std::nullopt;
  return Value(std::move(*dictionary));
}

std::optional<UIColor> readComponents(const Value& json, std::string& reason) {
  const List* list = json.asList();
  if (!list || list->size() != 4) return refuse<UIColor>(reason, "a colour [r, g, b, a]", json);
  std::array<double, 4> components{};
  for (std::size_t i = 0; i < components.size(); ++i) {
    const std::optional<double> component = readDouble((*list)[i], reason);
    if (!component) return std::nullopt;
    components[i] = *component;
  }
  return UIColor(components[0], components[1], components[2], components[3]);
}

std::optional<Value> readColor(const Value& json, std::string& reason) {
  const std::optional<UIColor> color = readComponents(json, reason);
  if (!color) return std::nullopt;
  return Value(*color);
}

std::optional<Value> readFont(const Value& json, std::string& reason) {
  std::optional<String> name = stringFromWire(json, reason);
  if (!name) return std::nullopt;
  return Value(Font{std::move(*name)});
}

struct Form {
  StringView key;
  std::optional<Value> (*read)(const Value& json, std::string& reason);
};

constexpr Form kForms[] = {
    {u"$null", readNull},     {u"$data", readData},           {u"$date", readDate},   {u"$utf16", readUnitsForm},
    {u"$number", readNumber}, {u"$entries", readEntriesForm}, {u"$color", readColor}, {u"$font", readFont},
};

std::optional<Value> readForm(const Entry& entry, std::string& reason) {
  for (const Form& form : kForms) {
    if (entry.key.text() == form.key) return form.read(entry.value, reason);
  }
  reason = "unknown form '" + String(entry.key.text()).toUTF8Replacing() + "'";
  return std::nullopt;
}

std::optional<Dictionary> readMembers(const Dictionary& json, std::string& reason) {
  Dictionary dictionary;
  dictionary.reserve(json.size());
  for (const Entry& entry : json) {
    if (isFormKey(entry.key)) {
      reason = "a key that begins with '$' is written in $entries";
      return std::nullopt;
    }
    std::optional<Value> value = readElement(entry.value, reason);
    if (!value) return std::nullopt;
    dictionary.set(entry.key, std::move(*value));
  }
  return dictionary;
}

std::optional<NSAttributedString> readAttributed(const Dictionary& json, std::string& reason) {
  std::optional<String> text = stringFromWire(json[u"text"], reason);
  if (!text) return std::nullopt;
  NSMutableAttributedString attributed(std::move(*text));
  for (const Value& span : *json[u"spans"].asList()) {
    const List& parts = *span.asList();
    const std::optional<NSRange> range = rangeFromWire(List{parts[0], parts[1]}, reason);
    const std::optional<Dictionary> attributes = range ? dictionaryFromWire(parts[2], reason) : std::nullopt;
    if (!attributes) return std::nullopt;
    attributed.addAttributes(*attributes, *range);
  }
  return attributed;
}

}  // namespace

bool isFormKey(const Value& key) {
  const StringView text = key.text();
  return text.size() > 0 && text.front() == u'$';
}

bool hasAttributedForm(const Dictionary& json) {
  const Value& text = json[u"text"];
  const List* spans = json[u"spans"].asList();
  if (json.size() != 2 || !spans || !(text.isString() || formOf(text))) return false;
  for (const Value& span : *spans) {
    const List* parts = span.asList();
    if (!parts || parts->size() != 3 || !(*parts)[0].isNumber() || !(*parts)[1].isNumber() ||
        !(*parts)[2].isDictionary())
      return false;
  }
  return true;
}

const char* kindText(const Value& json) {
  switch (json.kind()) {
    case Value::Kind::String:
      return "a string";
    case Value::Kind::Number:
      return json.asNumber()->isBoolean() ? "a boolean" : "a number";
    case Value::Kind::List:
      return "a list";
    case Value::Kind::Dictionary:
      return "a dictionary";
    default:
      return "null";
  }
}

std::optional<Value> fromWire(const Value& json, std::string& reason) {
  if (json.isNull() || json.isNil()) return Value();
  if (const List* list = json.asList()) {
    std::optional<List> read = readList(*list, reason);
    if (!read) return std::nullopt;
    return Value(std::move(*read));
  }
  const Dictionary* dictionary = json.asDictionary();
  if (!dictionary) return json;
  if (const Entry* form = formOf(json)) return readForm(*form, reason);
  if (hasAttributedForm(*dictionary)) {
    std::optional<NSAttributedString> attributed = readAttributed(*dictionary, reason);
    if (!attributed) return std::nullopt;
    return Value(std::move(*attributed));
  }
  std::optional<Dictionary> read = readMembers(*dictionary, reason);
  if (!read) return std::nullopt;
  return Value(std::move(*read));
}

std::optional<String> stringFromWire(const Value& json, std::string& reason) {
  if (const String* text = json.asString()) return *text;
  const Entry* form = formOf(json);
  if (!form || form->key.text() != u"$utf16") return refuse<String>(reason, "a string", json);
  return readUnits(form->value, reason);
}

std::optional<Dictionary> dictionaryFromWire(const Value& json, std::string& reason) {
  const Dictionary* dictionary = json.asDictionary();
  const Entry* form = formOf(json);
  if (form && form->key.text() == u"$entries") return readEntries(form->value, reason);
  if (!dictionary || form) return refuse<Dictionary>(reason, "a dictionary", json);
  return readMembers(*dictionary, reason);
}

std::optional<NSAttributedString> attributedFromWire(const Value& json, std::string& reason) {
  const Dictionary* dictionary = json.asDictionary();
  if (dictionary && hasAttributedForm(*dictionary)) return readAttributed(*dictionary, reason);
  std::optional<String> text = stringFromWire(json, reason);
  if (!text) return refuse<NSAttributedString>(reason, "attributed text {\"text\": ..., \"spans\": [...]}", json);
  return NSAttributedString(std::move(*text));
}

std::optional<UIColor> colorFromWire(const Value& json, std::string& reason) {
  const Entry* form = formOf(json);
  return readComponents(form && form->key.text() == u"$color" ? form->value : json, reason);
}

std::optional<NSRange> rangeFromWire(const Value& json, std::string& reason) {
  const List* parts = json.asList();
  if (!parts || parts->size() != 2) return refuse<NSRange>(reason, "a range [location, length]", json);
  const std::optional<std::uint64_t> location = readCount((*parts)[0], reason);
  const std::optional<std::uint64_t> length = location ? readCount((*parts)[1], reason) : std::nullopt;
  if (!length) return std::nullopt;
  return NSRange{*location, *length};
}

}  // namespace quorvel::command
