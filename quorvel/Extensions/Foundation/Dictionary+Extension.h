// Dictionary extension: operations on value-type dictionaries, which are std::map, std::unordered_map and Dictionary.
// Not here: the class-level getters and merging (NSDictionary+Addtion.h).
#pragma once

#include <concepts>
#include <iterator>
#include <ranges>
#include <string>
#include <utility>

#include <quorvel/Platform/Foundation/NumberText.h>
#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

/// A dictionary of the standard library, of whatever keys and values.
template <class T>
concept StandardDictionary = requires(T& map, const T& constant, const typename T::key_type& key) {
  typename T::mapped_type;
  { constant.find(key) } -> std::same_as<typename T::const_iterator>;
  map.insert_or_assign(key, constant.begin()->second);
};

namespace detail {

template <class T>
concept TextLike = std::convertible_to<const T&, StringView> && !std::same_as<T, Nil>;
template <class T>
concept UTF8Text = std::convertible_to<const T&, std::string_view>;

/// The platform's object of a value: texts, numbers, collections. UTF-8 that is not valid is replaced.
template <class T>
Value objectOf(const T& value) {
  if constexpr (std::convertible_to<const T&, Value>) {
    return value;
  } else if constexpr (TextLike<T>) {
    return StringView(value);
  } else if constexpr (UTF8Text<T>) {
    return String::fromUTF8Replacing(value);
  } else if constexpr (StandardDictionary<T>) {
    Dictionary result;
    for (const auto& [key, element] : value) result.set(objectOf(key), objectOf(element));
    return result;
  } else {
    static_assert(std::ranges::input_range<T>, "a value of this type is no object of the platform");
    List result;
    for (const auto& element : value) result.append(objectOf(element));
    return result;
  }
}

template <class T>
Value keyOf(const T& key) {
  if constexpr (std::convertible_to<const T&, Value> || TextLike<T> || UTF8Text<T>) return objectOf(key);
  return nil;
}

inline std::optional<String> stringOrNumberText(const Value& value) {
  if (const String* text = value.asString()) return *text;
  const std::optional<Number> number = value.asNumber();
  if (!number) return nil;
  return stringValue(*number);
}

}  // namespace detail

/// `swiftDictionary()`: the entries whose key is a string, in the dictionary's order, each value as the platform's
/// object; other entries are dropped.
template <StandardDictionary Map>
[[nodiscard]] Dictionary swiftDictionary(const Map& map) {
  Dictionary result;
  for (const auto& [key, value] : map) {
    if (Value object = detail::keyOf(key); object.isString()) result.set(std::move(object), detail::objectOf(value));
  }
  return result;
}
[[nodiscard]] inline Dictionary swiftDictionary(const Dictionary& dictionary) {
  Dictionary result;
  for (const auto& [key, value] : dictionary) {
    if (key.isString()) result.set(key, value);
  }
  return result;
}

/// `merging(_:)`: the receiver with the entries of `other` whose keys it lacks.
template <StandardDictionary Map>
[[nodiscard]] Map merging(const Map& map, const Map& other) {
  Map result = map;
  result.insert(other.begin(), other.end());
  return result;
}
[[nodiscard]] inline Dictionary merging(const Dictionary& dictionary, const Dictionary& other) {
  Dictionary result = dictionary;
  for (const auto& [key, value] : other) result.insert(key, value);
  return result;
}

/// `merge(_:)`: stores the entries of `other` in the receiver, over its own of the same keys.
template <StandardDictionary Map>
void merge(Map& map, const Map& other) {
  for (const auto& [key, value] : other) map.insert_or_assign(key, value);
}
inline void merge(Dictionary& dictionary, const Dictionary& other) {
  // `other` may be the receiver itself. NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
  const Dictionary entries = other;
  for (const auto& [key, value] : entries) dictionary.set(key, value);
}

/// `init(tuples:)`: a dictionary of the pairs, stored in their order; a later pair replaces an earlier one of the same
/// key.
///
///     dictionaryFromTuples<std::map<int, int>>(std::vector{std::pair{1, 1}, {1, 2}})   // {1: 2}
template <class Map = Dictionary, std::ranges::input_range Tuples>
[[nodiscard]] Map dictionaryFromTuples(const Tuples& tuples) {
  Map result;
  for (const auto& [key, value] : tuples) {
    if constexpr (std::same_as<Map, Dictionary>) {
      result.set(detail::objectOf(key), detail::objectOf(value));
    } else {
      result.insert_or_assign(key, value);
    }
  }
  return result;
}

/// `subscript(stringOrNil:)`: the value when it is a string, the decimal text of a number ('1' and '0' for booleans),
/// nil for a missing key and any other value.
template <StandardDictionary Map>
[[nodiscard]] std::optional<String> subscriptStringOrNil(const Map& map, const typename Map::key_type& key) {
  const auto found = map.find(key);
  if (found == map.end()) return nil;
  return detail::stringOrNumberText(detail::objectOf(found->second));
}
[[nodiscard]] inline std::optional<String> subscriptStringOrNil(const Dictionary& dictionary, const Value& key) {
  const Value* value = dictionary.find(key);
  return value ? detail::stringOrNumberText(*value) : nil;
}

/// `subscript(string:)`: the same, with the empty text for nil.
template <StandardDictionary Map>
[[nodiscard]] String subscriptString(const Map& map, const typename Map::key_type& key) {
  return subscriptStringOrNil(map, key).value_or(String());
}
[[nodiscard]] inline String subscriptString(const Dictionary& dictionary, const Value& key) {
  return subscriptStringOrNil(dictionary, key).value_or(String());
}

}  // namespace quorvel
