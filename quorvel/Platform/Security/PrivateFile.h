// Files that hold or guard secrets: read and made only where nobody else can read, write or have planted them.
// Not here: replacing and locking (Foundation/FileReplacer.h, Foundation/GuardedFile.h).
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include <quorvel/Platform/Foundation/GuardedFile.h>

namespace quorvel {

enum class FileState {
  Missing,
  Private,  // a regular file of ours with one name that nobody else can read
  Refused,  // anything else
};

/// What stands at a name, without opening it.
[[nodiscard]] FileState stateOf(const FileDescriptor& folder, const char* name);

/// The folder, opened. Its last `ownComponents` names are ours: made with mode 0700 where that is wanted, and never
/// followed when they are links. None when the path is not absolute, or the folder not ours, or others may write to it.
[[nodiscard]] FileDescriptor openOwnFolder(const std::string& path, std::size_t ownComponents, files::Missing missing);

/// Makes a new file with these bytes that outlives a loss of power; false, and no file, when there is one already or a
/// step fails.
[[nodiscard]] bool createPrivate(const FileDescriptor& folder, const char* name, std::span<const std::uint8_t> bytes);

/// Reads a file of at most `room.size()` bytes and says how many they are; -1 for anything else, and for a file that is
/// not `FileState::Private`.
[[nodiscard]] std::ptrdiff_t readPrivate(const FileDescriptor& folder, const char* name, std::span<std::uint8_t> room);

}  // namespace quorvel
