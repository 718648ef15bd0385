// JSON arguments as the parameters of C++ functions.
// Not here: results (Results.h), what one JSON value stands for (Wire.h).
#pragma once

#include <span>
#include <string>
#include <utility>
#include <vector>

#include <apps/quorvel/Wire.h>

#include <quorvel/Platform/Foundation/NSIndexPath.h>
#include <quorvel/Platform/Foundation/NSIndexSet.h>
#include <quorvel/Platform/Foundation/NSSortDescriptor.h>
#include <quorvel/Platform/Foundation/TextMatcher.h>

namespace quorvel::command {

/// What a parameter of type `T` is read from. Each has `kText`, the type as a signature shows it, and `read`.
template <class T>
struct Reader;

/// "expected EXPECTED, got a list" in `reason`.
void refuseArgument(const char* expected, const Value& json, std::string& reason);

#define QUORVEL_ARGUMENT(type)                                                             \
  template <>                                                                              \
  struct Reader<type> {                                                                    \
    static constexpr std::string_view kText = #type;                                       \
    [[nodiscard]] static std::optional<type> read(const Value& json, std::string& reason); \
  }
QUORVEL_ARGUMENT(bool);
QUORVEL_ARGUMENT(double);
QUORVEL_ARGUMENT(float);
QUORVEL_ARGUMENT(std::int64_t);
QUORVEL_ARGUMENT(std::uint64_t);
QUORVEL_ARGUMENT(std::int32_t);
QUORVEL_ARGUMENT(std::uint32_t);
QUORVEL_ARGUMENT(Number);
QUORVEL_ARGUMENT(String);
QUORVEL_ARGUMENT(Value);
QUORVEL_ARGUMENT(List);
QUORVEL_ARGUMENT(Dictionary);
QUORVEL_ARGUMENT(Date);
QUORVEL_ARGUMENT(Data);
QUORVEL_ARGUMENT(NSRange);
QUORVEL_ARGUMENT(UIColor);
QUORVEL_ARGUMENT(NSAttributedString);
QUORVEL_ARGUMENT(NSMutableAttributedString);
QUORVEL_ARGUMENT(NSIndexPath);       // [section, item]
QUORVEL_ARGUMENT(NSIndexSet);        // a list of indexes
QUORVEL_ARGUMENT(NSSortDescriptor);  // "key path", or [key path, ascending]
QUORVEL_ARGUMENT(MatchOptions);      // a list of "case", "accents", "width", "hangul"
#undef QUORVEL_ARGUMENT

/// Pairs for `init(tuples:)`: a list of [key, value].
using Tuples = std::vector<std::pair<Value, Value>>;
template <>
struct Reader<Tuples> {
  [[nodiscard]] static std::optional<Tuples> read(const Value& json, std::string& reason);
};

/// An index that the operation's contract wants not to be negative.
struct UnitIndex {
  std::int64_t value;
  operator std::int64_t() const { return value; }
};
template <>
struct Reader<UnitIndex> {
  static constexpr std::string_view kText = "std::int64_t";
  [[nodiscard]] static std::optional<UnitIndex> read(const Value& json, std::string& reason);
};
template <>
struct Reader<SortDescriptors> {
  [[nodiscard]] static std::optional<SortDescriptors> read(const Value& json, std::string& reason);
};

/// Holds an argument for the time of a call. `kIsRest` says that it takes all arguments that are left.
template <class T>
struct Held {
  static constexpr bool kIsRest = false;
  std::optional<T> value;

  bool read(const Value& json, std::string& reason) {
    value = Reader<T>::read(json, reason);
    return value.has_value();
  }
  T& pass() { return *value; }
};

template <class T>
struct Held<std::optional<T>> {
  static constexpr bool kIsRest = false;
  std::optional<T> value;

  bool read(const Value& json, std::string& reason) {
    if (json.isNull()) return true;
    value = Reader<T>::read(json, reason);
    return value.has_value();
  }
  std::optional<T>& pass() { return value; }
};

template <>
struct Held<StringView> {
  static constexpr bool kIsRest = false;
  std::optional<String> value;

  bool read(const Value& json, std::string& reason);
  StringView pass() { return value; }
};

/// One list, or whatever number of arguments one by one.
template <>
struct Held<std::span<const Value>> {
  static constexpr bool kIsRest = true;
  std::vector<Value> value;  // which may be nil

  bool read(std::span<const Value> json, std::string& reason);
  std::span<const Value> pass() { return value; }
};

}  // namespace quorvel::command
