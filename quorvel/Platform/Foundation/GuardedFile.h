// GuardedFile: opening, reading and locking files at paths that the library names itself, so that nothing planted there
// is followed, blocks or is written to; and folders that are private from their first instant.
// Not here: replacing a file (FileReplacer.h), the application's folders (ApplicationFolders.h).
#pragma once

#include <chrono>
#include <string>
#include <utility>
#include <vector>

#include <quorvel/Platform/Foundation/FileError.h>
#include <quorvel/Platform/Foundation/Limits.h>

namespace quorvel {

/// An open descriptor, closed at the end; or none.
class FileDescriptor {
 public:
  FileDescriptor() = default;
  explicit FileDescriptor(int number) : number_(number) {}
  FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~FileDescriptor();

  [[nodiscard]] bool isOpen() const { return number_ >= 0; }
  [[nodiscard]] int number() const { return number_; }

 private:
  int number_ = -1;
};

namespace files {

/// What a symbolic link at a path means: refused (ELOOP) where the library names the path itself, followed where the
/// user does.
enum class Links : std::uint8_t { Refused, Followed };

/// Whether a folder that is missing is made or refused (ENOENT).
enum class Missing : std::uint8_t { Made, Refused };

// Each of these answers a closed descriptor or nil on failure, and why in `error` (nullptr: not asked for).

/// A folder, for the calls that name what is in it. Links are followed.
[[nodiscard]] FileDescriptor openFolder(const std::string& path, FileError* error = nullptr);

/// The regular file `name` in the folder, for reading. A symbolic link is ELOOP, anything else that is no regular file
/// EINVAL (a folder EISDIR); a FIFO or device is not opened, so that nothing waits.
[[nodiscard]] FileDescriptor openRegularFile(const FileDescriptor& folder, const std::string& name,
                                             FileError* error = nullptr);
/// The same of a path; links in front of its last component are followed.
[[nodiscard]] FileDescriptor openRegularFile(const std::string& path, Links links, FileError* error = nullptr);

/// All bytes from the start of the descriptor; EFBIG beyond `limit`.
[[nodiscard]] std::optional<std::string> readAll(const FileDescriptor& file, std::size_t limit,
                                                 FileError* error = nullptr);

/// The folder `base`/`names`..., each of `names` made with mode 0700 and brought to 0700 where it has another. A
/// symbolic link or anything but a folder among `names` is refused, a folder of another user is EPERM. `base` is made
/// with mode 0700 too, but links are followed and modes left alone up to there; an empty `base` is ENOENT. With
/// `Missing::Refused` nothing is made or changed.
[[nodiscard]] FileDescriptor openPrivateFolder(const std::string& base, const std::vector<std::string>& names,
                                               Missing missing, FileError* error = nullptr);

/// An exclusive lock between threads and processes, on the file `name` in the folder (made with mode 0600 if missing),
/// until the descriptor closes; the system gives it up when a process dies. ETIMEDOUT after `patience`.
[[nodiscard]] FileDescriptor lock(const FileDescriptor& folder, const std::string& name, FileError* error = nullptr,
                                  std::chrono::milliseconds patience = limits::kLockTime);

/// A path as the system takes it; nil for nil, the empty text, a NUL and an unpaired surrogate.
[[nodiscard]] std::optional<std::string> systemPath(StringView path);

/// Puts a path into the folder that it names and the name in it: "a/b" is "a" and "b", "b" is "." and "b", "/b" is "/"
/// and "b". Slashes at the end stay with the name.
struct SplitPath {
  std::string folder;
  std::string name;
};
[[nodiscard]] SplitPath splitPath(const std::string& path);

}  // namespace files
}  // namespace quorvel
