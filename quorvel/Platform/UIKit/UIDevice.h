// UIDevice: facts of the device. Needs no graphics library.
#pragma once

#include <quorvel/Platform/Foundation/String.h>

namespace quorvel {

class UIDevice {
 public:
  /// `currentDevice`
  [[nodiscard]] static UIDevice currentDevice() { return {}; }

  /// What `setMachine` told, else the `machine` field of the system's `uname` record, such as "x86_64" or "aarch64";
  /// nil when there is none or it is not UTF-8.
  [[nodiscard]] std::optional<String> machine() const;
  /// For an application that knows its hardware better, as on a phone; nil asks the system again. From any thread.
  static void setMachine(const std::optional<String>& machine);
};

}  // namespace quorvel
