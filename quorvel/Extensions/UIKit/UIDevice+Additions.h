// UIDevice(Additions): the class of the screen, the free space and the model of the device.
// Not here: telling the library which screen there is (UIScreen.h).
#pragma once

#include <quorvel/Platform/Foundation/String.h>

namespace quorvel {

enum DeviceDisplay : std::int64_t {
  DeviceDisplay3_5Inches = 0,
  DeviceDisplay4Inches = 1,
  DeviceDisplay4_7Inches = 2,
  DeviceDisplay5_5Inches = 3,
  DeviceDisplay5_8Inches = 4,
  DeviceDisplayPad = 5,
  DeviceDisplayLarger = 6,
};

namespace UIDeviceAdditions {

/// `deviceDisplay`: the class of the main screen by its bounds in points, either way up. Two sizes are exact, 768 by
/// 1024 (`DeviceDisplayPad`) and 320 by 480; otherwise the first that the screen fits into: 320 by 568 (and 320
/// exactly), 375 by 667, 414 by 736, 375 by 812, else `DeviceDisplayLarger`.
[[nodiscard]] DeviceDisplay deviceDisplay();
/// `is4InchesDisplayOrLess`: true for the classes 0 and 1.
[[nodiscard]] bool is4InchesDisplayOrLess();
/// `is5_5InchesDisplayOrLess`: true for the classes 0 to 3.
[[nodiscard]] bool is5_5InchesDisplayOrLess();

/// `freeDiskSpace`: bytes that the user may still fill on the volume of his documents folder; 0 when that is unknown,
/// as where there is no such folder.
[[nodiscard]] std::uint64_t freeDiskSpace();
/// `modelName`: the machine of `UIDevice`; "unknown device" when that is no text.
[[nodiscard]] String modelName();

}  // namespace UIDeviceAdditions
}  // namespace quorvel
