// Optional extension: the text of a value that may be absent.
// Not here: descriptions of values (Description.h).
#pragma once

#include <concepts>
#include <optional>
#include <string_view>

#include <quorvel/Platform/Foundation/Description.h>
#include <quorvel/Platform/Foundation/NumberText.h>

namespace quorvel {

/// `toString()`: '<nil>' when the optional holds nothing, else the wrapped value's own text: a string itself, an
/// integer's digits, a floating value's shortest digits that read back, with '.0' when they are whole ('1.0', '1e+16'),
/// 'true' and 'false', the description of any other value. UTF-8 that is not valid is replaced.
///
///     toString(std::optional<int>(5))   // "5"
[[nodiscard]] inline String toString(const Value& value) {
  if (value.isNil()) return u"<nil>";
  const std::optional<Number> number = value.asNumber();
  return number ? debugText(*number) : description(value);
}
template <class T>
[[nodiscard]] String toString(const std::optional<T>& value) {
  if (!value) return u"<nil>";
  if constexpr (std::convertible_to<const T&, Value>) {
    return toString(Value(*value));
  } else if constexpr (std::convertible_to<const T&, StringView>) {
    return String(StringView(*value));
  } else if constexpr (std::convertible_to<const T&, std::string_view>) {
    return String::fromUTF8Replacing(*value);
  } else {
    return value->description();
  }
}

}  // namespace quorvel
