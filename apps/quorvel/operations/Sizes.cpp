#include <apps/quorvel/Binding.h>
#include <apps/quorvel/operations/Tables.h>

#include <quorvel/Extensions/Foundation/NSNumber+HumanReadable.h>

namespace quorvel::command {
namespace {

constexpr const char* kFamily = "NSNumber(HumanReadable)";

using InUnit = String (*)(Number, std::int64_t);
using InUnitWithDecimals = String (*)(Number, std::int64_t, std::int64_t, bool);

constexpr Operation kRows[] = {
    op<&humanReadableSize>(kFamily, "humanReadableSize", "bytes", "one decimal, no zero fraction", "[1536]"),
    op<&humanReadableSizeOfTwoDecimals>(kFamily, "humanReadableSizeOfTwoDecimals", "bytes", "two decimals", "[1536]"),
    op<&humanReadableSizeRemovedDecimal>(kFamily, "humanReadableSizeRemovedDecimal", "bytes", "no decimals", "[1536]"),
    op<&humanReadableSizeShotMeasurement>(kFamily, "humanReadableSizeShotMeasurement:", "bytes, shotMeasurement",
                                          "one decimal, units B K M G T when asked", "[1536, true]"),
    op<&humanReadableSizeDigitNumber>(kFamily,
                                      "humanReadableSizeDigitNumber:decimalCount:removeZeroDeciaml:shotMeasurement:",
                                      "bytes, digitNumber, decimalCount, removeZeroDeciaml, shotMeasurement",
                                      "every choice in the caller's hands", "[1536, 4, 2, false, true]"),
    op<static_cast<InUnit>(&humanReadableSizeWithUnit)>(kFamily, "humanReadableSizeWithUnit:", "bytes, unit",
                                                        "in a given unit, 0 (B) to 4 (TB)", "[1572864, 2]"),
    op<static_cast<InUnitWithDecimals>(&humanReadableSizeWithUnit)>(
        kFamily, "humanReadableSizeWithUnit:decimalCount:removeZeroDeciaml:",
        "bytes, unit, decimalCount, removeZeroDeciaml", "in a given unit with given decimals", "[5242880, 3, 2, true]"),
};

}  // namespace

std::span<const Operation> sizeOperations() { return kRows; }

}  // namespace quorvel::command
