// FileReplacer: the one way in which the library puts a whole file in the place of another. Readers and a process that
// dies at any moment see the old file or the new one, whole.
// Not here: opening and locking (GuardedFile.h).
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <quorvel/Platform/Foundation/GuardedFile.h>

namespace quorvel {

struct FileReplacement {
  /// A link that is followed stays; the file that it names is replaced.
  using Links = files::Links;
  /// What the new file takes over from a file that is there: nothing; or mode (without set-user and set-group bits),
  /// owner, extended attributes and the nodump flag. What vouches for the old bytes is never taken over
  /// (security.capability, security.ima, security.evm).
  enum class Metadata : std::uint8_t { Fresh, Kept };

  struct Attribute {
    std::string name;
    std::string value;
  };

  Links links = Links::Refused;
  Metadata metadata = Metadata::Fresh;
  /// Of a file that takes over nothing, whatever the umask says; the temporary file has 0600 or less until the end.
  unsigned mode = 0600;
  /// Extended attributes that the file gets besides; one that the file system cannot hold is left out.
  std::vector<Attribute> attributes;
};

/// Writes the bytes to a temporary file beside the target, brings them to the disk (fsync), renames it to the target's
/// name and brings the folder to the disk. On failure the old file stays whole and the temporary file is removed; one
/// that a killed process left behind goes with the next replacement of the same file. Only when the last step fails,
/// the folder's fsync, does an error leave the new file in place.
///
/// Refused are a folder (EISDIR) and what is no regular file (EINVAL); nothing waits. EPERM or EACCES when what must be
/// kept cannot be. Other hard links to the old file keep the old bytes. Several threads and processes may replace one
/// file at once: one of their contents wins. EBUSY when more than eight do so for longer than a second.
[[nodiscard]] FileError replaceFile(const std::string& path, std::span<const std::uint8_t> bytes,
                                    const FileReplacement& how = {});
[[nodiscard]] FileError replaceFile(const std::string& path, std::string_view bytes, const FileReplacement& how = {});
/// The same of a name in an open folder.
[[nodiscard]] FileError replaceFile(const FileDescriptor& folder, const std::string& name, std::string_view bytes,
                                    const FileReplacement& how = {});

}  // namespace quorvel
