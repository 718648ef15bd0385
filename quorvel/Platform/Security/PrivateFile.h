// Files and folders of ours alone: made with mode 0600 and 0700 whatever the umask, opened without following links and
// without blocking, refused when they could be somebody else's.
#pragma once

#include <chrono>
#include <cstdint>
#include <span>
#include <string>
#include <utility>

namespace quorvel {

/// An open file, closed in the end.
class Descriptor {
 public:
  constexpr Descriptor() noexcept = default;
  explicit constexpr Descriptor(int number) noexcept : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~Descriptor();
  [[nodiscard]] explicit operator bool() const { return number_ >= 0; }
  [[nodiscard]] int number() const { return number_; }

 private:
  int number_ = -1;
};

enum class FileState {
  Missing,
  Private,  // a regular file of ours with one name that nobody else can read
  Refused,  // anything else
};

using Deadline = std::chrono::steady_clock::time_point;

/// What stands at a name, without opening it.
[[nodiscard]] FileState stateOf(int folder, const char* name);

/// The folder, opened. Missing ones are made with mode 0700 when `create`; links are followed up to the last
/// `ownComponents` names, which are ours to name. Nothing when it is no folder of ours or others may write to it.
[[nodiscard]] Descriptor openPrivateFolder(const std::string& path, std::size_t ownComponents, bool create);

/// The file opened for reading; nothing unless it is `FileState::Private`.
[[nodiscard]] Descriptor openPrivate(int folder, const char* name);

/// Makes a new file with these bytes that outlives a loss of power; false, and no file, when there is one already or a
/// step fails.
[[nodiscard]] bool createPrivate(int folder, const char* name, std::span<const std::uint8_t> bytes);

/// The same in place of what stands there, which a crash leaves whole. The caller holds the folder's lock.
[[nodiscard]] bool replacePrivate(int folder, const char* name, std::span<const std::uint8_t> bytes);

/// Reads a file of at most `room.size()` bytes and says how many they are; -1 for anything else.
[[nodiscard]] std::ptrdiff_t readPrivate(int folder, const char* name, std::span<std::uint8_t> room);

/// The one lock of a folder, held by one process and one thread of it at a time.
class FolderLock {
 public:
  /// Waits until `deadline` at the longest.
  [[nodiscard]] static FolderLock take(int folder, Deadline deadline);
  [[nodiscard]] explicit operator bool() const { return static_cast<bool>(file_); }

 private:
  Descriptor file_;
};

}  // namespace quorvel
