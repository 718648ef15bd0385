// NSNumber(HumanReadable): byte counts as display text, scaled by powers of 1024: '1.5 KB'.
// Not here: durations (TimeFormatConvertible.h).
#pragma once

#include <quorvel/Platform/Foundation/Number.h>
#include <quorvel/Platform/Foundation/String.h>

namespace quorvel {

// All operations read the receiver as a 64-bit float. Digits are correctly rounded from its exact scaled value, an
// exact half to the even digit. Decimals below 0 count as 0 and are bounded by `limits::kSizeDecimals`. An infinite
// receiver is written 'inf' or '-inf', NaN 'nan', each with its unit and never shortened.

/// `humanReadableSize`: width 4, one decimal, a zero fraction removed, long units.
///
///     humanReadableSize(1536)   // "1.5 KB"
[[nodiscard]] String humanReadableSize(Number bytes);

/// `humanReadableSizeOfTwoDecimals`: two decimals, zeros kept, long units: '1.00 KB'.
[[nodiscard]] String humanReadableSizeOfTwoDecimals(Number bytes);

/// `humanReadableSizeRemovedDecimal`: no decimals, long units: '2 KB'.
[[nodiscard]] String humanReadableSizeRemovedDecimal(Number bytes);

/// `humanReadableSizeShotMeasurement:`: as `humanReadableSize`, with the units B K M G T when `shotMeasurement` is set.
[[nodiscard]] String humanReadableSizeShotMeasurement(Number bytes, bool shotMeasurement);

/// `humanReadableSizeDigitNumber:decimalCount:removeZeroDeciaml:shotMeasurement:`: divides by 1024 while the value is
/// at least 1024 and a larger unit is left (1024 TB and more stay in TB; negative values keep B), and writes it with
/// `decimalCount` decimals, a space and the unit. `digitNumber` is a least width, which never shows because spaces are
/// removed from the number. With `removeZeroDeciaml` a fraction of zeros is cut off with its point.
[[nodiscard]] String humanReadableSizeDigitNumber(Number bytes, std::int64_t digitNumber, std::int64_t decimalCount,
                                                  bool removeZeroDeciaml, bool shotMeasurement);

/// `humanReadableSizeWithUnit:`: in the given unit, 0 (B) to 4 (TB), with one decimal, a zero fraction removed.
[[nodiscard]] String humanReadableSizeWithUnit(Number bytes, std::int64_t unit);

/// `humanReadableSizeWithUnit:decimalCount:removeZeroDeciaml:`: in the given unit, however small or large the value
/// then is. A unit below 0 is taken as 0, one above 4 as 4.
[[nodiscard]] String humanReadableSizeWithUnit(Number bytes, std::int64_t unit, std::int64_t decimalCount,
                                               bool removeZeroDeciaml);

}  // namespace quorvel
