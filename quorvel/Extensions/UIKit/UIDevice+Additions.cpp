#include <quorvel/Extensions/UIKit/UIDevice+Additions.h>
#include <quorvel/Platform/Foundation/NSFileManager.h>
#include <quorvel/Platform/UIKit/UIDevice.h>
#include <quorvel/Platform/UIKit/UIScreen.h>

namespace quorvel::UIDeviceAdditions {
namespace {

struct DisplayRule {
  DeviceDisplay display;
  double width;
  double height;
  bool (*fits)(double width, double height, const DisplayRule& rule);
};

bool isExactly(double width, double height, const DisplayRule& rule) {
  return width == rule.width && height == rule.height;
}
bool hasWidth(double width, double height, const DisplayRule& rule) {
  return width == rule.width && height <= rule.height;
}
bool isWithin(double width, double height, const DisplayRule& rule) {
  return width <= rule.width && height <= rule.height;
}

// Tried in this order.
constexpr DisplayRule kRules[] = {
    {DeviceDisplayPad, 768, 1024, isExactly},     {DeviceDisplay3_5Inches, 320, 480, isExactly},
    {DeviceDisplay4Inches, 320, 568, hasWidth},   {DeviceDisplay4_7Inches, 375, 667, isWithin},
    {DeviceDisplay5_5Inches, 414, 736, isWithin}, {DeviceDisplay5_8Inches, 375, 812, isWithin},
};

}  // namespace

DeviceDisplay deviceDisplay() {
  const UIScreen::Bounds bounds = UIScreen::mainScreen().bounds();
  for (const DisplayRule& rule : kRules) {
    const bool isUpright = rule.fits(bounds.width, bounds.height, rule);
    if (isUpright || rule.fits(bounds.height, bounds.width, rule)) return rule.display;
  }
  return DeviceDisplayLarger;
}

bool is4InchesDisplayOrLess() { return deviceDisplay() < DeviceDisplay4_7Inches; }

bool is5_5InchesDisplayOrLess() { return deviceDisplay() < DeviceDisplay5_8Inches; }

std::uint64_t freeDiskSpace() {
  const auto folders = NSSearchPathForDirectoriesInDomains(NSDocumentDirectory, NSUserDomainMask, true);
  if (folders.empty()) return 0;
  const auto attributes = NSFileManager::defaultManager().attributesOfFileSystemForPath(folders.back());
  const auto free = attributes ? (*attributes)[NSFileSystemFreeSize].asNumber() : nil;
  return free ? free->bits() : 0;
}

String modelName() { return UIDevice::currentDevice().machine().value_or(u"unknown device"); }

}  // namespace quorvel::UIDeviceAdditions
