#include <apps/quorvel/Binding.h>
#include <apps/quorvel/operations/Tables.h>

#include <quorvel/Extensions/Foundation/TimeFormatConvertible.h>

namespace quorvel::command {
namespace {

constexpr const char* kFamily = "TimeFormatConvertible";

/// Calls `use` with the number in the C++ type of its kind; `otherwise` for a boolean, which is no duration.
template <class Use, class Result>
Result withDuration(Number number, Use use, Result otherwise) {
  switch (number.kind()) {
    case Number::Kind::Integer:
      return use(number.longLongValue());
    case Number::Kind::Unsigned:
      return use(number.bits());
    case Number::Kind::Double:
      return use(number.doubleValue());
    case Number::Kind::Float:
      return use(static_cast<float>(number.doubleValue()));
    case Number::Kind::Boolean:
      break;
  }
  return otherwise;
}

/// Whether the C++ type that carries the value meets the concept.
bool isConvertible(const Value& value) {
  const std::optional<Number> number = value.asNumber();
  if (!number) return false;
  return withDuration(*number, [](auto seconds) { return TimeFormatConvertible<decltype(seconds)>; }, false);
}

/// What cannot be converted has the default text.
String converted(Number number) {
  return withDuration(number, [](auto seconds) { return convertToTimeFormat(seconds); }, defaultTimeFormat<double>());
}

constexpr Operation kRows[] = {
    op<&QVStringTimeIntervalInSeconds>("QVStringTimeIntervalInSeconds", "QVStringTimeIntervalInSeconds", "seconds",
                                       "a duration as m:ss or h:mm:ss; empty below zero", "[3661]"),
    op<[](const Value& value) { return isConvertible(value); }>(kFamily, "TimeFormatConvertible", "value",
                                                                "whether the value's type can be a duration", "[2.5]"),
    op<&defaultTimeFormat<double>>(kFamily, "defaultTimeFormat", "", "the text of no duration"),
    op<[](Number seconds) { return converted(seconds); }>(kFamily, "convertToTimeFormat()", "seconds",
                                                          "a duration as m:ss or h:mm:ss, without its sign", "[-3661]"),
};

}  // namespace

std::span<const Operation> durationOperations() { return kRows; }

}  // namespace quorvel::command
