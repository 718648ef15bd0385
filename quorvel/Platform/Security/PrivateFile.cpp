#include <cerrno>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <quorvel/Platform/Security/PrivateFile.h>

namespace quorvel {
namespace {

constexpr int kSafely = O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
constexpr mode_t kFileMode = 0600;

bool isPrivate(const struct stat& file) {
  return S_ISREG(file.st_mode) && file.st_uid == ::geteuid() && file.st_nlink == 1 && (file.st_mode & 077) == 0;
}

bool writeAll(int file, std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(file, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes = bytes.subspan(static_cast<std::size_t>(written));
  }
  return true;
}

}  // namespace

FileState stateOf(const FileDescriptor& folder, const char* name) {
  struct stat status{};
  if (::fstatat(folder.number(), name, &status, AT_SYMLINK_NOFOLLOW) != 0) {
    return errno == ENOENT ? FileState::Missing : FileState::Refused;
  }
  return isPrivate(status) ? FileState::Private : FileState::Refused;
}

FileDescriptor openOwnFolder(const std::string& path, std::size_t ownComponents, files::Missing missing) {
  if (path.empty() || path[0] != '/') return {};
  std::string base = path;
  std::vector<std::string> names(ownComponents);
  for (std::size_t i = ownComponents; i-- > 0;) {
    const files::SplitPath parts = files::splitPath(base);
    names[i] = parts.name.substr(0, parts.name.find('/'));
    if (names[i].empty() || names[i] == "." || names[i] == "..") return {};
    base = parts.folder;
  }
  // One that is there is judged as it is: what others could write to may hold what they planted.
  FileDescriptor folder = files::openPrivateFolder(base, names, files::Missing::Refused);
  if (!folder.isOpen() && missing == files::Missing::Made) folder = files::openPrivateFolder(base, names, missing);
  struct stat status{};
  if (!folder.isOpen() || ::fstat(folder.number(), &status) != 0) return {};
  const bool isOurs = status.st_uid == ::geteuid() && (status.st_mode & 022) == 0;
  return isOurs ? std::move(folder) : FileDescriptor();
}

bool createPrivate(const FileDescriptor& folder, const char* name, std::span<const std::uint8_t> bytes) {
  const FileDescriptor file(::openat(folder.number(), name, O_WRONLY | O_CREAT | O_EXCL | kSafely, kFileMode));
  if (!file.isOpen()) return false;
  if (::fchmod(file.number(), kFileMode) == 0 && writeAll(file.number(), bytes) && ::fsync(file.number()) == 0 &&
      ::fsync(folder.number()) == 0) {
    return true;
  }
  (void)::unlinkat(folder.number(), name, 0);
  return false;
}

std::ptrdiff_t readPrivate(const FileDescriptor& folder, const char* name, std::span<std::uint8_t> room) {
  const FileDescriptor file = files::openRegularFile(folder, name);
  struct stat status{};
  if (!file.isOpen() || ::fstat(file.number(), &status) != 0 || !isPrivate(status)) return -1;
  if (std::cmp_greater(status.st_size, room.size())) return -1;
  std::size_t size = 0;
  while (size < room.size()) {
    const ssize_t got = ::read(file.number(), room.data() + size, room.size() - size);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return -1;
    if (got == 0) break;
    size += static_cast<std::size_t>(got);
  }
  return static_cast<std::ptrdiff_t>(size);
}

}  // namespace quorvel
