// Resource values of file URLs.
// Not here: how the exclusion from backups is marked (BackupExclusion.h), attributes of paths (NSFileManager.h).
#pragma once

#include <quorvel/Platform/Foundation/FileError.h>
#include <quorvel/Platform/Foundation/NSURL.h>

namespace quorvel {

/// A boolean: true keeps the item out of the device's backups.
inline constexpr char16_t NSURLIsExcludedFromBackupKey[] = u"NSURLIsExcludedFromBackupKey";

/// `setResourceValue:forKey:error:`: true when the value is set. False, and why, for a URL whose scheme is not "file"
/// or that names nothing on this system (ENOENT), for another key or a value that is no number (EINVAL), and when the
/// file system refuses.
bool setResourceValue(const NSURL& url, const Value& value, StringView key, FileError* error = nullptr);

/// `getResourceValue:forKey:error:`: nil, and why, in the same cases.
[[nodiscard]] Value getResourceValue(const NSURL& url, StringView key, FileError* error = nullptr);

}  // namespace quorvel
