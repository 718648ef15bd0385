// BackupExclusion: marks that keep files and folders out of backups, and the marked items below a folder.
// Not here: the mark as a resource value of a URL (NSURLResourceValues.h).
#pragma once

#include <functional>
#include <string>

#include <quorvel/Platform/Foundation/GuardedFile.h>

namespace quorvel::backup {

/// Marks a file or folder as excluded, in every way that its file system can hold: the extended attribute
/// "user.xdg.robots.backup" with the value "false", the nodump flag, and in a folder a CACHEDIR.TAG file of mode 0600
/// (Cache Directory Tagging). One of them is enough; else the error tells why the first failed. With
/// `excluded` false all three go; a CACHEDIR.TAG that others wrote stays and is EEXIST. A link at the path is followed;
/// EINVAL for what is neither file nor folder.
[[nodiscard]] FileError setExcluded(const std::string& path, bool excluded);

/// True when any of the three marks is there, whoever set it; nil when the item cannot be read. What is neither file
/// nor folder has no mark.
[[nodiscard]] std::optional<bool> isExcluded(const std::string& path, FileError* error = nullptr);

struct Visitor {
  /// An excluded item: its path below the root, bytes as the file system has them; empty for the root itself.
  std::function<void(const std::string& path)> onExcluded;
  /// An item that could not be read.
  std::function<void(const std::string& path, FileError error)> onFailure;
};

/// Looks at the folder and everything below it, in the order of the names' bytes, but not into what is excluded. Links
/// are never followed, except for `root` itself. Items that vanish meanwhile are passed over.
void visit(const std::string& root, const Visitor& visitor);

}  // namespace quorvel::backup
