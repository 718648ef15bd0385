// Rows of the table of operations, made from the functions themselves: signature, argument checks and call.
//
//     op<&urlEncodeString>("NSString(URLEncoding)", "urlEncodeString", "text", "percent-encodes ...", R"(["a b"])")
#pragma once

#include <algorithm>
#include <tuple>
#include <utility>

#include <apps/quorvel/Arguments.h>
#include <apps/quorvel/Operation.h>
#include <apps/quorvel/Results.h>

namespace quorvel::command {
namespace detail {

template <class T>
struct FunctionType;
template <class R, class... P>
struct FunctionType<R (*)(P...)> {
  using Result = R;
  using Parameters = std::tuple<P...>;
};
template <class R, class... P>
struct FunctionType<R (*)(P...) noexcept> : FunctionType<R (*)(P...)> {};
template <class Class, class R, class... P>
struct FunctionType<R (Class::*)(P...) const> : FunctionType<R (*)(P...)> {};
// A function without captures.
template <class T>
  requires std::is_class_v<T>
struct FunctionType<T> : FunctionType<decltype(&T::operator())> {};

/// The name of `Function` as the compiler prints template arguments; empty for an expression without a name.
template <auto Function>
consteval std::string_view nameOf() {
  constexpr std::string_view kNamespace = "quorvel::";
  std::string_view text = __PRETTY_FUNCTION__;
  text.remove_prefix(text.find("Function = ") + std::string_view("Function = ").size());
  text = text.substr(0, text.find_first_of("(<{;]"));
  if (text.starts_with('&')) text.remove_prefix(1);
  return text.starts_with(kNamespace) ? text.substr(kNamespace.size()) : std::string_view();
}

template <class T>
inline constexpr std::string_view kTypeText = Reader<T>::kText;
template <>
inline constexpr std::string_view kTypeText<void> = "void";
template <>
inline constexpr std::string_view kTypeText<StringView> = "StringView";
template <>
inline constexpr std::string_view kTypeText<NSURL> = "NSURL";
template <>
inline constexpr std::string_view kTypeText<NSCharacterSet> = "NSCharacterSet";
template <>
inline constexpr std::string_view kTypeText<Difference> = "Difference";
template <>
inline constexpr std::string_view kTypeText<PatternResult> = "PatternResult";
template <>
inline constexpr std::string_view kTypeText<std::span<const Value>> = "std::span<const Value>";

template <class T>
struct TypeText {
  static std::string text() { return std::string(kTypeText<T>); }
};
template <class T>
struct TypeText<const T> {
  static std::string text() { return "const " + TypeText<T>::text(); }
};
template <class T>
struct TypeText<T&> {
  static std::string text() { return TypeText<T>::text() + "&"; }
};
template <class T>
struct TypeText<std::optional<T>> {
  static std::string text() { return "std::optional<" + TypeText<T>::text() + ">"; }
};
template <class T>
struct TypeText<std::vector<T>> {
  static std::string text() { return "std::vector<" + TypeText<T>::text() + ">"; }
};

template <class First, class Second>
struct TypeText<std::pair<First, Second>> {
  static std::string text() { return "std::pair<" + TypeText<First>::text() + ", " + TypeText<Second>::text() + ">"; }
};

template <class R, class Parameters>
struct Signature;
template <class R, class... P>
struct Signature<R, std::tuple<P...>> {
  static std::string text(const Operation& operation) {
    const std::vector<std::string_view> names = parameterNames(operation);
    std::string text = TypeText<R>::text() + " ";
    text += operation.function.empty() ? functionName(operation) : operation.function;
    text += '(';
    std::size_t index = 0;
    ((text += (index ? ", " : "") + TypeText<P>::text() + " " + std::string(names[index]), ++index), ...);
    return text + ")";
  }
};

/// "OPERATION takes 2 arguments (first, second), got 3"
void refuseCount(const Operation& operation, std::size_t count, std::string& error);
/// Puts "OPERATION: argument 1 (first): " before the reason.
void placeRefusal(const Operation& operation, std::size_t index, std::string& error);
void refuseDepth(const Operation& operation, std::string& error);

template <class T>
bool readArgument(const Operation& operation, std::size_t index, std::span<const Value> arguments, Held<T>& held,
                  std::string& error) {
  bool read = false;
  if constexpr (Held<T>::kIsRest) {
    read = held.read(arguments.subspan(index), error);
  } else {
    read = held.read(arguments[index], error);
  }
  if (!read) placeRefusal(operation, index, error);
  return read;
}

/// The parameter that an operation changes and answers: its first one, where that is an lvalue reference to what is
/// not const.
template <class... P>
inline constexpr bool kChangesReceiver = false;
template <class First, class... P>
inline constexpr bool kChangesReceiver<First, P...> =
    std::is_lvalue_reference_v<First> && !std::is_const_v<std::remove_reference_t<First>>;

template <auto Function, class R, class Parameters>
struct Invocation;
template <auto Function, class R, class... P>
struct Invocation<Function, R, std::tuple<P...>> {
  using Arguments = std::tuple<Held<std::remove_cvref_t<P>>...>;
  static constexpr bool kTakesRest = (Held<std::remove_cvref_t<P>>::kIsRest || ... || false);

  static std::optional<Value> call(const Operation& operation, std::span<const Value> arguments, std::string& error) {
    const std::size_t least = sizeof...(P) - (kTakesRest ? 1 : 0);
    if (arguments.size() < least || (!kTakesRest && arguments.size() > least)) {
      refuseCount(operation, arguments.size(), error);
      return std::nullopt;
    }
    return callWith(operation, arguments, error, std::index_sequence_for<P...>());
  }

 private:
  template <std::size_t... I>
  static std::optional<Value> callWith(const Operation& operation, [[maybe_unused]] std::span<const Value> arguments,
                                       std::string& error, std::index_sequence<I...>) {
    [[maybe_unused]] Arguments held;
    if (!(readArgument(operation, I, arguments, std::get<I>(held), error) && ...)) return std::nullopt;
    std::optional<Value> result;
    if constexpr (kChangesReceiver<P...>) {
      static_cast<void>(Function(std::get<I>(held).pass()...));
      result = resultToWire(std::get<0>(held).pass());
    } else {
      result = resultToWire(Function(std::get<I>(held).pass()...));
    }
    if (!result) refuseDepth(operation, error);
    return result;
  }
};

consteval std::size_t countNames(std::string_view names) {
  return names.empty() ? 0 : 1 + static_cast<std::size_t>(std::count(names.begin(), names.end(), ','));
}

}  // namespace detail

/// A row for a function or a lambda without captures; `Named` is the function that a lambda stands for. It does not
/// compile when the parameters are not named one by one.
template <auto Function, auto Named = Function>
consteval Operation op(std::string_view family, std::string_view name, std::string_view parameters,
                       std::string_view summary, std::string_view example = "[]") {
  using Type = detail::FunctionType<std::remove_const_t<decltype(Function)>>;
  using Parameters = typename Type::Parameters;
  if (detail::countNames(parameters) != std::tuple_size_v<Parameters>) throw "one name for each parameter";
  return {family,
          name,
          detail::nameOf<Named>(),
          parameters,
          summary,
          example,
          &detail::Signature<typename Type::Result, Parameters>::text,
          &detail::Invocation<Function, typename Type::Result, Parameters>::call};
}

}  // namespace quorvel::command
