#include <cmath>

#include <apps/quorvel/Font.h>
#include <apps/quorvel/Wire.h>
#include <apps/quorvel/WireForms.h>

#include <quorvel/Platform/Foundation/Base64.h>
#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/Foundation/Unicode.h>

namespace quorvel::command {
namespace {

Value form(StringView key, Value value) { return Dictionary{{key, std::move(value)}}; }

Value numberToWire(Number number) {
  const double value = number.isFloating() ? number.doubleValue() : 0;
  if (std::isfinite(value)) return number;
  return form(u"$number", std::isnan(value) ? Value(u"nan") : value > 0 ? Value(u"inf") : Value(u"-inf"));
}

Value stringToWire(const String& text) {
  if (unicode::isWellFormed(text)) return text;
  List units;
  units.reserve(text.size());
  for (const char16_t unit : text) units.append(static_cast<std::int64_t>(unit));
  return form(u"$utf16", std::move(units));
}

/// Bounded by `limits::kJSONDepth`, beyond which `failed` is set and the rest left out.
class Writer {
 public:
  Value write(const Value& value) {
    if (const String* text = value.asString()) return stringToWire(*text);
    if (const auto number = value.asNumber()) return numberToWire(*number);
    if (const auto date = value.asDate()) return form(u"$date", numberToWire(date->secondsSince1970 * 1000));
    if (const Data* data = value.asData()) return form(u"$data", base64EncodedString(data->bytes()));
    if (value.isNull()) return form(u"$null", true);
    if (value.isNil()) return null;
    return writeNested(value);
  }
  bool failed = false;

 private:
  Value writeNested(const Value& value) {
    if (depth_ == limits::kJSONDepth) {
      failed = true;
      return null;
    }
    ++depth_;
    const List* list = value.asList();
    const Dictionary* dictionary = value.asDictionary();
    Value result = list         ? Value(writeList(*list))
                   : dictionary ? writeDictionary(*dictionary)
                                : writeObject(*value.asObject(), value);
    --depth_;
    return result;
  }

  List writeList(const List& list) {
    List result;
    result.reserve(list.size());
    for (const Value& element : list) result.append(write(element));
    return result;
  }

  Value writeDictionary(const Dictionary& dictionary) {
    Dictionary members;
    members.reserve(dictionary.size());
    for (const auto& [key, value] : dictionary) {
      if (!key.isString() || isFormKey(key) || !unicode::isWellFormed(key.text())) return writeEntries(dictionary);
      members.set(key, write(value));
    }
    if (hasAttributedForm(members)) return writeEntries(dictionary);
    return members;
  }

  Value writeEntries(const Dictionary& dictionary) {
    List pairs;
    pairs.reserve(dictionary.size());
    for (const auto& [key, value] : dictionary) pairs.append(Value(List{write(key), write(value)}));
    return form(u"$entries", std::move(pairs));
  }

  Value writeObject(const Object& object, const Value& value) {
    if (const auto* color = value.as<UIColor>()) return form(u"$color", writeList(colorComponents(*color)));
    if (const auto* font = value.as<Font>()) return form(u"$font", stringToWire(font->name));
    if (const auto* text = value.as<NSAttributedString>()) return writeAttributed(*text);
    if (const auto* text = value.as<NSMutableAttributedString>()) return writeAttributed(*text);
    return form(u"$object", List{stringToWire(object.className()), stringToWire(object.description())});
  }

  Value writeAttributed(const NSAttributedString& text) {
    List spans;
    spans.reserve(text.spans().size());
    for (const Span& span : text.spans())
      spans.append(Value(List{span.range.location, span.range.length, write(span.attributes)}));
    return Dictionary{{u"text", stringToWire(text.string())}, {u"spans", std::move(spans)}};
  }

  std::size_t depth_ = 0;
};

}  // namespace

std::optional<Value> toWire(const Value& value) {
  Writer writer;
  Value json = writer.write(value);
  if (writer.failed) return std::nullopt;
  return json;
}

List colorComponents(const UIColor& color) { return {color.red(), color.green(), color.blue(), color.alpha()}; }

}  // namespace quorvel::command
