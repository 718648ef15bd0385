#include <algorithm>
#include <cmath>
#include <limits>

#include <apps/quorvel/Arguments.h>

namespace quorvel::command {
namespace {

template <class T>
std::optional<T> refuse(const char* expected, const Value& json, std::string& reason) {
  refuseArgument(expected, json, reason);
  return std::nullopt;
}

/// The argument as an exact integer that `T` holds: 5.0 is 5, 5.5 and true are none.
template <std::integral T>
std::optional<T> readInteger(const char* expected, const Value& json, std::string& reason) {
  const std::optional<Number> number = json.asNumber();
  if (!number || number->isBoolean()) return refuse<T>(expected, json, reason);
  const Number least = std::numeric_limits<T>::min();
  const Number most = std::numeric_limits<T>::max();
  const bool fits = Number::compare(*number, least) >= 0 && Number::compare(*number, most) <= 0;
  if (!fits || (number->isFloating() && number->doubleValue() != std::trunc(number->doubleValue()))) {
    reason = std::string("expected ") + expected;
    return std::nullopt;
  }
  if (number->isFloating()) return static_cast<T>(number->doubleValue());
  return static_cast<T>(number->bits());
}

/// A value of the dynamic kind, or its refusal.
template <class T, class Take>
std::optional<T> readKind(const char* expected, const Value& json, std::string& reason, Take take) {
  const std::optional<Value> value = fromWire(json, reason);
  if (!value) return std::nullopt;
  std::optional<T> taken = take(*value);
  return taken ? taken : refuse<T>(expected, json, reason);
}

template <class T>
std::optional<T> copied(const T* value) {
  return value ? std::optional<T>(*value) : std::nullopt;
}

}  // namespace

void refuseArgument(const char* expected, const Value& json, std::string& reason) {
  reason = std::string("expected ") + expected + ", got " + kindText(json);
}

std::optional<bool> Reader<bool>::read(const Value& json, std::string& reason) {
  const std::optional<Number> number = json.asNumber();
  if (!number || !number->isBoolean()) return refuse<bool>("true or false", json, reason);
  return number->boolValue();
}

std::optional<Number> Reader<Number>::read(const Value& json, std::string& reason) {
  return readKind<Number>("a number", json, reason, [](const Value& value) { return value.asNumber(); });
}

std::optional<double> Reader<double>::read(const Value& json, std::string& reason) {
  const std::optional<Number> number = Reader<Number>::read(json, reason);
  if (!number) return std::nullopt;
  if (number->isBoolean()) return refuse<double>("a number", json, reason);
  return number->doubleValue();
}

std::optional<float> Reader<float>::read(const Value& json, std::string& reason) {
  const std::optional<double> number = Reader<double>::read(json, reason);
  if (!number) return std::nullopt;
  constexpr double kMost = std::numeric_limits<float>::max();
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  if (std::abs(*number) > kMost) return *number > 0 ? kInfinity : -kInfinity;
  return static_cast<float>(*number);
}

std::optional<std::int64_t> Reader<std::int64_t>::read(const Value& json, std::string& reason) {
  return readInteger<std::int64_t>("an integer of 64 bits", json, reason);
}
std::optional<std::uint64_t> Reader<std::uint64_t>::read(const Value& json, std::string& reason) {
  return readInteger<std::uint64_t>("an integer from 0 to 2^64 - 1", json, reason);
}
std::optional<std::int32_t> Reader<std::int32_t>::read(const Value& json, std::string& reason) {
  return readInteger<std::int32_t>("an integer from -2^31 to 2^31 - 1", json, reason);
}
std::optional<std::uint32_t> Reader<std::uint32_t>::read(const Value& json, std::string& reason) {
  return readInteger<std::uint32_t>("an integer from 0 to 2^32 - 1", json, reason);
}

std::optional<String> Reader<String>::read(const Value& json, std::string& reason) {
  return stringFromWire(json, reason);
}
std::optional<Value> Reader<Value>::read(const Value& json, std::string& reason) { return fromWire(json, reason); }

std::optional<List> Reader<List>::read(const Value& json, std::string& reason) {
  return readKind<List>("a list", json, reason, [](const Value& value) { return copied(value.asList()); });
}
std::optional<Dictionary> Reader<Dictionary>::read(const Value& json, std::string& reason) {
  return dictionaryFromWire(json, reason);
}
std::optional<Date> Reader<Date>::read(const Value& json, std::string& reason) {
  return readKind<Date>("a date {\"$date\": milliseconds}", json, reason,
                        [](const Value& value) { return value.asDate(); });
}
std::optional<Data> Reader<Data>::read(const Value& json, std::string& reason) {
  return readKind<Data>("bytes {\"$data\": Base64}", json, reason,
                        [](const Value& value) { return copied(value.asData()); });
}

std::optional<NSRange> Reader<NSRange>::read(const Value& json, std::string& reason) {
  return rangeFromWire(json, reason);
}
std::optional<UIColor> Reader<UIColor>::read(const Value& json, std::string& reason) {
  return colorFromWire(json, reason);
}
std::optional<NSAttributedString> Reader<NSAttributedString>::read(const Value& json, std::string& reason) {
  return attributedFromWire(json, reason);
}
std::optional<NSMutableAttributedString> Reader<NSMutableAttributedString>::read(const Value& json,
                                                                                 std::string& reason) {
  const std::optional<NSAttributedString> text = attributedFromWire(json, reason);
  if (!text) return std::nullopt;
  return NSMutableAttributedString(*text);
}

std::optional<UnitIndex> Reader<UnitIndex>::read(const Value& json, std::string& reason) {
  constexpr const char* kExpected = "an integer from 0 to 2^63 - 1";
  const std::optional<std::int64_t> value = readInteger<std::int64_t>(kExpected, json, reason);
  if (!value) return std::nullopt;
  if (*value < 0) {
    reason = std::string("expected ") + kExpected;
    return std::nullopt;
  }
  return UnitIndex{*value};
}
std::optional<NSIndexPath> Reader<NSIndexPath>::read(const Value& json, std::string& reason) {
  const List* pair = json.asList();
  if (!pair || pair->size() != 2) return refuse<NSIndexPath>("[section, item]", json, reason);
  const std::optional<std::int64_t> section = Reader<std::int64_t>::read((*pair)[0], reason);
  if (!section) return std::nullopt;
  const std::optional<std::int64_t> item = Reader<std::int64_t>::read((*pair)[1], reason);
  if (!item) return std::nullopt;
  return NSIndexPath{*section, *item};
}
std::optional<NSIndexSet> Reader<NSIndexSet>::read(const Value& json, std::string& reason) {
  const List* list = json.asList();
  if (!list) return refuse<NSIndexSet>("a list of indexes", json, reason);
  std::vector<std::uint64_t> indexes;
  for (const Value& element : *list) {
    const std::optional<std::uint64_t> index = Reader<std::uint64_t>::read(element, reason);
    if (!index) return std::nullopt;
    if (*index >= kNotFound) return refuse<NSIndexSet>("an index below 2^63 - 1", element, reason);
    indexes.push_back(*index);
  }
  return NSIndexSet(std::move(indexes));
}
std::optional<MatchOptions> Reader<MatchOptions>::read(const Value& json, std::string& reason) {
  constexpr std::pair<StringView, bool MatchOptions::*> kNames[] = {{u"case", &MatchOptions::ignoresCase},
                                                                    {u"accents", &MatchOptions::ignoresAccents},
                                                                    {u"width", &MatchOptions::ignoresWidth},
                                                                    {u"hangul", &MatchOptions::partialHangul}};
  const List* list = json.asList();
  if (!list) return refuse<MatchOptions>("a list of options", json, reason);
  MatchOptions options;
  for (const Value& element : *list) {
    const auto* known = std::ranges::find_if(kNames, [&](const auto& name) { return element == Value(name.first); });
    if (known == std::end(kNames)) {
      return refuse<MatchOptions>("\"case\", \"accents\", \"width\" or \"hangul\"", element, reason);
    }
    options.*known->second = true;
  }
  return options;
}
std::optional<NSSortDescriptor> Reader<NSSortDescriptor>::read(const Value& json, std::string& reason) {
  const List* pair = json.asList();
  if (!pair && json.isString()) return NSSortDescriptor(*json.asString(), true);
  const bool isPair = pair && pair->size() == 2 && (*pair)[0].isString();
  const std::optional<bool> ascending = isPair ? Reader<bool>::read((*pair)[1], reason) : std::nullopt;
  if (!ascending) return refuse<NSSortDescriptor>("a key path or [key path, ascending]", json, reason);
  return NSSortDescriptor(*(*pair)[0].asString(), *ascending);
}
std::optional<SortDescriptors> Reader<SortDescriptors>::read(const Value& json, std::string& reason) {
  const List* list = json.asList();
  if (!list) return refuse<SortDescriptors>("a list of sort descriptors", json, reason);
  SortDescriptors descriptors;
  for (const Value& element : *list) {
    std::optional<NSSortDescriptor> descriptor = Reader<NSSortDescriptor>::read(element, reason);
    if (!descriptor) return std::nullopt;
    descriptors.push_back(std::move(*descriptor));
  }
  return descriptors;
}

std::optional<Tuples> Reader<Tuples>::read(const Value& json, std::string& reason) {
  const std::optional<List> list = Reader<List>::read(json, reason);
  if (!list) return std::nullopt;
  Tuples tuples;
  for (const Value& element : *list) {
    const List* pair = element.asList();
    if (!pair || pair->size() != 2) return refuse<Tuples>("a list of [key, value]", element, reason);
    tuples.emplace_back((*pair)[0], (*pair)[1]);
  }
  return tuples;
}

bool Held<StringView>::read(const Value& json, std::string& reason) {
  if (json.isNull()) return true;
  value = stringFromWire(json, reason);
  if (!value && !json.isDictionary()) refuseArgument("a string or null", json, reason);
  return value.has_value();
}

bool Held<std::span<const Value>>::read(std::span<const Value> json, std::string& reason) {
  if (json.size() == 1 && json[0].isList()) {
    const std::optional<List> list = Reader<List>::read(json[0], reason);
    if (list) value.assign(list->begin(), list->end());
    return list.has_value();
  }
  for (const Value& element : json) {
    std::optional<Value> read = fromWire(element, reason);
    if (!read) return false;
    value.push_back(std::move(*read));
  }
  return true;
}

}  // namespace quorvel::command
