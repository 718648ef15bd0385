// The table of operations behind `list`, `help` and `call`.
// Not here: how a row is made from a function (Binding.h), the rows themselves (operations/*.cpp).
#pragma once

#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel::command {

struct Operation {
  std::string_view family;
  std::string_view name;        // in full: "equals:andString:"
  std::string_view function;    // in C++, qualified inside `quorvel`; empty where the row adapts one
  std::string_view parameters;  // "first, second"
  std::string_view summary;
  std::string_view example;  // a JSON list of arguments

  /// The C++ signature with the names of the parameters.
  std::string (*signature)(const Operation& operation);
  /// The result of JSON arguments as a JSON value; nothing, and why in `error`, when they do not fit.
  std::optional<Value> (*invoke)(const Operation& operation, std::span<const Value> arguments, std::string& error);

  /// It reads or changes files or asks the device, so that it is called only when the user asks for that, and may
  /// answer otherwise the next time.
  bool isOnDevice = false;
};

/// The C++ name without the class or namespace: of the function, else the name's first word.
[[nodiscard]] std::string_view functionName(const Operation& operation);
/// The parameters one by one.
[[nodiscard]] std::vector<std::string_view> parameterNames(const Operation& operation);

/// All operations, a family's rows together, in the order of `list`.
[[nodiscard]] std::span<const Operation> allOperations();

/// The operation of that family by its full name, or by its C++ name where that names one alone. nullptr otherwise, and
/// why in `error`.
[[nodiscard]] const Operation* findOperation(StringView family, StringView name, std::string& error);

/// The pieces one after the other.
[[nodiscard]] std::string joined(std::initializer_list<std::string_view> pieces);

}  // namespace quorvel::command
