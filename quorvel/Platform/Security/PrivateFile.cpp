#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <quorvel/Platform/Security/PrivateFile.h>

namespace quorvel {
namespace {

constexpr int kSafely = O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
constexpr mode_t kFileMode = 0600;
constexpr mode_t kFolderMode = 0700;

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

/// The folder below `parent`; a fresh one gets its mode by name, since a umask may have taken bits of it.
Descriptor stepInto(int parent, const char* name, bool own, bool create) {
  const int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | (own ? O_NOFOLLOW : 0);
  Descriptor folder(::openat(parent, name, flags));
  if (folder || errno != ENOENT || !create) return folder;
  if (::mkdirat(parent, name, kFolderMode) != 0 && errno != EEXIST) return {};
  if (Descriptor made(::openat(parent, name, flags)); made) {
    struct stat status{};
    if (::fstat(made.number(), &status) == 0 && status.st_uid == ::geteuid())
      (void)::fchmod(made.number(), kFolderMode);
    (void)::fsync(parent);
    return made;
  }
  return {};
}

std::size_t componentsOf(const std::string& path) {
  std::size_t count = 0;
  for (std::size_t i = 0; i < path.size(); ++i) count += path[i] != '/' && (i == 0 || path[i - 1] == '/');
  return count;
}

}  // namespace

Descriptor::~Descriptor() {
  if (number_ >= 0) ::close(number_);
}

FileState stateOf(int folder, const char* name) {
  struct stat status{};
  if (::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) != 0) {
    return errno == ENOENT ? FileState::Missing : FileState::Refused;
  }
  return isPrivate(status) ? FileState::Private : FileState::Refused;
}

Descriptor openPrivateFolder(const std::string& path, std::size_t ownComponents, bool create) {
  if (path.empty() || path[0] != '/') return {};
  Descriptor folder(::open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  std::size_t left = componentsOf(path);
  for (std::size_t at = 0; folder && left > 0; --left) {
    at = path.find_first_not_of('/', at);
    const std::size_t end = std::min(path.find('/', at), path.size());
    folder = stepInto(folder.number(), path.substr(at, end - at).c_str(), left <= ownComponents, create);
    at = end;
  }
  struct stat status{};
  if (!folder || ::fstat(folder.number(), &status) != 0) return {};
  if (status.st_uid != ::geteuid() || (status.st_mode & 022) != 0) return {};
  return folder;
}

Descriptor openPrivate(int folder, const char* name) {
  if (stateOf(folder, name) != FileState::Private) return {};
  Descriptor file(::openat(folder, name, O_RDONLY | kSafely));
  struct stat status{};
  if (!file || ::fstat(file.number(), &status) != 0 || !isPrivate(status)) return {};
  return file;
}

bool createPrivate(int folder, const char* name, std::span<const std::uint8_t> bytes) {
  const Descriptor file(::openat(folder, name, O_WRONLY | O_CREAT | O_EXCL | kSafely, kFileMode));
  if (!file) return false;
  if (::fchmod(file.number(), kFileMode) == 0 && writeAll(file.number(), bytes) && ::fsync(file.number()) == 0 &&
      ::fsync(folder) == 0) {
    return true;
  }
  (void)::unlinkat(folder, name, 0);
  return false;
}

bool replacePrivate(int folder, const char* name, std::span<const std::uint8_t> bytes) {
  const std::string temporary = std::string(name) + ".new";
  (void)::unlinkat(folder, temporary.c_str(), 0);  // of a writer that died; the lock keeps others out
  if (!createPrivate(folder, temporary.c_str(), bytes)) return false;
  if (::renameat(folder, temporary.c_str(), folder, name) == 0) return ::fsync(folder) == 0;
  (void)::unlinkat(folder, temporary.c_str(), 0);
  return false;
}

std::ptrdiff_t readPrivate(int folder, const char* name, std::span<std::uint8_t> room) {
  const Descriptor file = openPrivate(folder, name);
  struct stat status{};
  if (!file || ::fstat(file.number(), &status) != 0 || std::cmp_greater(status.st_size, room.size())) return -1;
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

FolderLock FolderLock::take(int folder, Deadline deadline) {
  constexpr const char* kName = "lock";
  FolderLock lock;
  if (stateOf(folder, kName) == FileState::Refused) return lock;
  Descriptor file(::openat(folder, kName, O_RDWR | O_CREAT | kSafely, kFileMode));
  struct stat status{};
  if (!file || ::fstat(file.number(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_nlink != 1) return lock;
  (void)::fchmod(file.number(), kFileMode);
  while (::flock(file.number(), LOCK_EX | LOCK_NB) != 0) {
    if ((errno != EWOULDBLOCK && errno != EINTR) || std::chrono::steady_clock::now() >= deadline) return lock;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  lock.file_ = std::move(file);
  return lock;
}

}  // namespace quorvel
