// Results of C++ functions as JSON values.
// Not here: arguments (Arguments.h), the JSON form of a dynamic value (Wire.h).
#pragma once

#include <variant>
#include <vector>

#include <apps/quorvel/Wire.h>

#include <quorvel/Platform/Foundation/CharacterSet.h>
#include <quorvel/Platform/Foundation/FirstDifference.h>
#include <quorvel/Platform/Foundation/NSIndexPath.h>
#include <quorvel/Platform/Foundation/NSURL.h>
#include <quorvel/Utility/StringUtils.h>

namespace quorvel::command {

// Each answers nothing when the result is nested deeper than JSON may be.

[[nodiscard]] inline std::optional<Value> resultToWire(const Value& value) { return toWire(value); }
template <Arithmetic T>
[[nodiscard]] std::optional<Value> resultToWire(T number) {
  return toWire(Value(number));
}
/// [r, g, b, a]
[[nodiscard]] std::optional<Value> resultToWire(const UIColor& color);
/// [location, length]
[[nodiscard]] std::optional<Value> resultToWire(NSRange range);
/// Its text.
[[nodiscard]] std::optional<Value> resultToWire(const NSURL& url);
/// {"$characters": "..."}, or {"$excluded": "..."} for a set of most characters: the members, or what is no member.
/// Unpaired surrogates are left out of account.
[[nodiscard]] std::optional<Value> resultToWire(const NSCharacterSet& set);

/// [section, item]
[[nodiscard]] std::optional<Value> resultToWire(NSIndexPath path);
/// {"pointer": "...", "first": ..., "second": ...}; null for a side that has nothing there.
[[nodiscard]] std::optional<Value> resultToWire(const Difference& difference);
/// {"outcome": "match" | "no match" | "bad pattern" | "limit reached"}; for a bad pattern also "offset" and "reason".
[[nodiscard]] std::optional<Value> resultToWire(const PatternResult& result);

template <class T>
[[nodiscard]] std::optional<Value> resultToWire(const std::optional<T>& value) {
  return value ? resultToWire(*value) : std::optional<Value>(null);
}
template <class... T>
[[nodiscard]] std::optional<Value> resultToWire(const std::variant<T...>& value) {
  return std::visit([](const auto& one) { return resultToWire(one); }, value);
}
template <class T>
[[nodiscard]] std::optional<Value> resultToWire(const std::vector<T>& values) {
  List list;
  list.reserve(values.size());
  for (const T& value : values) {
    std::optional<Value> json = resultToWire(value);
    if (!json) return std::nullopt;
    list.append(std::move(*json));
  }
  return Value(std::move(list));
}

}  // namespace quorvel::command
