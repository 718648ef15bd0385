#include <algorithm>
#include <cmath>

#include <quorvel/Extensions/Foundation/NSNumber+HumanReadable.h>
#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/Foundation/NumberText.h>

namespace quorvel {
namespace {

constexpr std::int64_t kLastUnit = 4;
constexpr char kUnits[] = {'B', 'K', 'M', 'G', 'T'};
constexpr double kStep = 0.0009765625;  // one 1024th, exact

struct Style {
  std::int64_t decimals;
  bool removesZeroFraction;
  bool shortUnits;
};

/// The digits without a fraction that is all zeros.
std::size_t withoutZeroFraction(const char* digits, std::size_t size, std::size_t decimals) {
  const std::size_t point = size - decimals - 1;
  const bool isZero = std::all_of(digits + point + 1, digits + size, [](char digit) { return digit == '0'; });
  return isZero ? point : size;
}

String sizeText(double scaled, std::int64_t unit, Style style) {
  char buffer[kFixedTextLength + 3];
  const int decimals = static_cast<int>(std::clamp<std::int64_t>(style.decimals, 0, limits::kSizeDecimals));
  std::size_t size = writeFixedText(scaled, decimals, buffer);
  if (style.removesZeroFraction && decimals > 0 && std::isfinite(scaled)) {
    size = withoutZeroFraction(buffer, size, static_cast<std::size_t>(decimals));
  }
  buffer[size++] = ' ';
  buffer[size++] = kUnits[unit];
  if (unit > 0 && !style.shortUnits) buffer[size++] = 'B';
  return String::fromASCII({buffer, size});
}

String automaticText(Number bytes, Style style) {
  double scaled = bytes.doubleValue();
  std::int64_t unit = 0;
  while (scaled >= 1024.0 && unit < kLastUnit) {
    scaled *= kStep;
    ++unit;
  }
  return sizeText(scaled, unit, style);
}

}  // namespace

String humanReadableSize(Number bytes) { return automaticText(bytes, {1, true, false}); }

String humanReadableSizeOfTwoDecimals(Number bytes) { return automaticText(bytes, {2, false, false}); }

String humanReadableSizeRemovedDecimal(Number bytes) { return automaticText(bytes, {0, true, false}); }

String humanReadableSizeShotMeasurement(Number bytes, bool shotMeasurement) {
  return automaticText(bytes, {1, true, shotMeasurement});
}

String humanReadableSizeDigitNumber(Number bytes, std::int64_t, std::int64_t decimalCount, bool removeZeroDeciaml,
                                    bool shotMeasurement) {
  return automaticText(bytes, {decimalCount, removeZeroDeciaml, shotMeasurement});
}

String humanReadableSizeWithUnit(Number bytes, std::int64_t unit) {
  return humanReadableSizeWithUnit(bytes, unit, 1, true);
}

String humanReadableSizeWithUnit(Number bytes, std::int64_t unit, std::int64_t decimalCount, bool removeZeroDeciaml) {
  unit = std::clamp<std::int64_t>(unit, 0, kLastUnit);
  double scaled = bytes.doubleValue();
  for (std::int64_t i = 0; i < unit; ++i) scaled *= kStep;
  return sizeText(scaled, unit, {decimalCount, removeZeroDeciaml, false});
}

}  // namespace quorvel
