// DeviceLockChecker: whether protected files and cookies can be read at the moment, by trying.
// Not here: the files (NSFileManager.h) and cookies (NSHTTPCookieStorage.h) themselves.
#pragma once

#include <quorvel/Platform/Foundation/String.h>

namespace quorvel {

/// Without state, from any thread; calls at the same time are not coordinated.
class DeviceLockChecker {
 public:
  struct Constants {
    static constexpr char16_t fileName[] = u"tandrel.secure";
    static constexpr char16_t content[] = u"TANDREL secure content";
  };

  /// `isUnlocked`: true when the marker file in the documents folder can be opened for reading. It is made first where
  /// it is missing, and stays. False without a documents folder, while its folder is locked (encrypted, the key not
  /// there), and when something else stands in its place: no link is followed, nothing waits for a FIFO.
  [[nodiscard]] static bool isUnlocked();
  /// `isLocked`: the opposite of `isUnlocked`; true without a documents folder.
  [[nodiscard]] static bool isLocked();

  /// `isCookieStorageLocked`: true when a cookie stored in the shared storage cannot be read back, or the storage not
  /// at all. A storage that holds a cookie is not locked and is not touched; otherwise a probe cookie is stored and
  /// deleted again.
  [[nodiscard]] static bool isCookieStorageLocked();
  /// `isCookieStorageUnlocked`: the opposite of `isCookieStorageLocked`.
  [[nodiscard]] static bool isCookieStorageUnlocked() { return !isCookieStorageLocked(); }

 private:
  /// `filePath`: the path of the marker file, "tandrel.secure" in the first documents folder; nil when there is none.
  [[nodiscard]] static std::optional<String> filePath();
  /// `createFileIfNeed(_:)`: makes the file of class NSFileProtectionCompleteUntilFirstUserAuthentication where nothing
  /// is. Whether that succeeds is not looked at; what is there is not rewritten.
  static void createFileIfNeed(const String& path);
};

}  // namespace quorvel
