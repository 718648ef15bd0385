// ICloudUtils: keeping files out of backups.
// Not here: the marks and who reads them (BackupExclusion.h).
#pragma once

#include <quorvel/Platform/Foundation/String.h>

namespace quorvel {

class ICloudUtils {
 public:
  /// `addSkipBackupAttributeToItemAtPath:`: true when the file or folder is marked as excluded from backups now. False,
  /// and a line in the log, when nothing is at the path or it cannot be marked.
  static bool addSkipBackupAttributeToItemAtPath(StringView path);
  /// `isSetBackupAttributeToItemAtPath:`: true when the file or folder is marked as excluded. False, and a line in the
  /// log, when nothing is at the path or its marks cannot be read.
  [[nodiscard]] static bool isSetBackupAttributeToItemAtPath(StringView path);
};

}  // namespace quorvel
