// Durations as clock text, '4:05' and from one hour on '1:02:03': QVStringTimeIntervalInSeconds and
// TimeFormatConvertible, which differ on negative and fractional input.
#pragma once

#include <quorvel/Platform/Foundation/Number.h>
#include <quorvel/Platform/Foundation/String.h>

namespace quorvel {

/// `QVStringTimeIntervalInSeconds`: the seconds cut toward zero as "m:ss", from 3600 on as "h:mm:ss" with hours not
/// limited to 23. More than 2147483647 seconds count as that. The empty text below 0.0 and for NaN.
[[nodiscard]] String QVStringTimeIntervalInSeconds(double seconds);

namespace detail {

/// "m:ss" or "h:mm:ss".
[[nodiscard]] String clockText(std::uint64_t seconds);
[[nodiscard]] String clockText(Number seconds);

}  // namespace detail

/// `TimeFormatConvertible`: the numeric types whose values are durations in seconds: 64-bit and 32-bit floats, signed
/// and unsigned integers.
template <class T>
concept TimeFormatConvertible =
    std::same_as<T, double> || std::same_as<T, float> ||
    (std::integral<T> && !std::same_as<T, bool> && !std::same_as<T, char> && !std::same_as<T, wchar_t> &&
     !std::same_as<T, char8_t> && !std::same_as<T, char16_t> && !std::same_as<T, char32_t>);

/// `defaultTimeFormat`: "0:00", whatever the type.
template <TimeFormatConvertible T>
[[nodiscard]] String defaultTimeFormat() {
  return u"0:00";
}

/// `convertToTimeFormat()`: the absolute value of the seconds, floats cut toward zero first, as "m:ss", from 3600 on as
/// "h:mm:ss". Every integer has its absolute value, the most negative one and unsigned ones beyond the signed range
/// included; floats beyond the signed 64-bit range count as its nearest end, and NaN as 0.
///
///     convertToTimeFormat(-3661)   // "1:01:01"
template <TimeFormatConvertible T>
[[nodiscard]] String convertToTimeFormat(T seconds) {
  return detail::clockText(Number(seconds));
}

}  // namespace quorvel
