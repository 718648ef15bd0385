// Byte counts and seconds as texts.
#include <iostream>

#include <quorvel/Extensions/Foundation/NSNumber+HumanReadable.h>
#include <quorvel/Extensions/Foundation/TimeFormatConvertible.h>

using namespace quorvel;

int main() {
  constexpr std::int64_t sizes[] = {0, 1023, 1024, 1536, 2560, 1048575, 10000000, 42949672960, 3848290697216, -2048};
  for (const std::int64_t bytes : sizes) {
    std::cout << bytes << " bytes: " << humanReadableSize(bytes) << " | " << humanReadableSizeOfTwoDecimals(bytes)
              << " | " << humanReadableSizeRemovedDecimal(bytes) << " | "
              << humanReadableSizeShotMeasurement(bytes, true) << '\n';
  }
  std::cout << "1572864 bytes in MB: " << humanReadableSizeWithUnit(1572864, 2)
            << "\n500 bytes in KB: " << humanReadableSizeWithUnit(500, 1)
            << "\n5242880 bytes in GB: " << humanReadableSizeWithUnit(5242880, 3, 2, true) << " or "
            << humanReadableSizeWithUnit(5242880, 3, 2, false)
            << "\n1234567 bytes with three decimals: " << humanReadableSizeDigitNumber(1234567, 10, 3, false, false)
            << '\n';
  for (const double seconds : {0.0, 5.0, 59.9, 61.0, 600.0, 3599.9, 3600.0, 90061.0, 360000.0, -0.5, -1.0, -3600.0}) {
    std::cout << seconds << " seconds: '" << QVStringTimeIntervalInSeconds(seconds) << "', '"
              << convertToTimeFormat(seconds) << "'\n";
  }
  std::cout << "none yet: " << defaultTimeFormat<double>() << '\n';
}
