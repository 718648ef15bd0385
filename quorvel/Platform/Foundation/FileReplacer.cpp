#include <cerrno>
#include <ctime>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <quorvel/Platform/Foundation/FileReplacer.h>

namespace quorvel {
namespace {

constexpr int kLinksFollowed = 40;  // as the system itself
constexpr int kSlots = 8;
constexpr int kWaits = 200;
constexpr timespec kWait{0, 5'000'000};

template <class Call>
auto retrying(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

struct Target {
  const FileDescriptor* folder;
  std::string name;
  struct stat status{};
  bool exists = false;
};

/// Names in the folder under which nobody can write a file.
bool isFileName(const std::string& name) {
  return !name.empty() && name != "." && name != ".." && name.find('/') == name.npos;
}

int look(Target& target) {
  if (!isFileName(target.name)) return EISDIR;
  target.exists = ::fstatat(target.folder->number(), target.name.c_str(), &target.status, AT_SYMLINK_NOFOLLOW) == 0;
  return target.exists || errno == ENOENT ? 0 : errno;
}

/// Goes to what the link at the target names; `opened` keeps its folder open.
int followLink(Target& target, FileDescriptor& opened) {
  char text[4096];
  const ssize_t size = ::readlinkat(target.folder->number(), target.name.c_str(), text, sizeof text);
  if (size < 0) return errno;
  if (static_cast<std::size_t>(size) == sizeof text) return ENAMETOOLONG;
  const files::SplitPath parts = files::splitPath(std::string(text, static_cast<std::size_t>(size)));
  FileDescriptor next(::openat(target.folder->number(), parts.folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!next.isOpen()) return errno;
  opened = std::move(next);
  target.folder = &opened;
  target.name = parts.name;
  return look(target);
}

int resolve(Target& target, FileDescriptor& opened, FileReplacement::Links links) {
  int failure = look(target);
  for (int followed = 0; failure == 0 && target.exists && S_ISLNK(target.status.st_mode); ++followed) {
    if (links == FileReplacement::Links::Refused || followed == kLinksFollowed) return ELOOP;
    failure = followLink(target, opened);
  }
  if (failure || !target.exists || S_ISREG(target.status.st_mode)) return failure;
  return S_ISDIR(target.status.st_mode) ? EISDIR : EINVAL;
}

/// The temporary file. Its name tells the target, so that the next run finds what a killed one left; a lock on it tells
/// the living from the dead.
class Temporary {
 public:
  explicit Temporary(const Target& target) : target_(target) {}
  Temporary(const Temporary&) = delete;
  Temporary& operator=(const Temporary&) = delete;
  ~Temporary() {
    if (file_.isOpen()) ::unlinkat(target_.folder->number(), name_.c_str(), 0);
  }

  /// Makes the file in a free place and removes leftovers from the others.
  int make() {
    for (int wait = 0;; ++wait) {
      bool isOneAlive = false;
      for (int slot = 0; slot < kSlots; ++slot) {
        const std::string name = nameOf(slot);
        isOneAlive = !removeLeftover(name) || isOneAlive;
        if (file_.isOpen()) continue;
        if (const int failure = makeAt(name); failure != 0 && failure != EEXIST) return failure;
      }
      if (file_.isOpen()) return 0;
      if (!isOneAlive) return EEXIST;
      if (wait == kWaits) return EBUSY;
      ::nanosleep(&kWait, nullptr);
    }
  }

  [[nodiscard]] int number() const { return file_.number(); }

  int rename() {
    if (::renameat(target_.folder->number(), name_.c_str(), target_.folder->number(), target_.name.c_str()) != 0)
      return errno;
    file_ = FileDescriptor();
    return 0;
  }

 private:
  [[nodiscard]] std::string nameOf(int slot) const {
    std::uint64_t hash = 0xCBF29CE484222325;  // FNV-1a: the same in every process
    for (const char byte : target_.name) hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3;
    std::string name = ".quorvel-";
    for (int shift = 60; shift >= 0; shift -= 4) name += "0123456789abcdef"[(hash >> shift) & 15];
    return name + "-" + std::to_string(slot) + ".tmp";
  }

  /// False when a living process holds the file.
  [[nodiscard]] bool removeLeftover(const std::string& name) const {
    if (name == name_) return true;
    const FileDescriptor file = files::openRegularFile(*target_.folder, name);
    if (!file.isOpen()) return true;
    if (::flock(file.number(), LOCK_EX | LOCK_NB) != 0) return false;
    if (isStill(file, name)) ::unlinkat(target_.folder->number(), name.c_str(), 0);
    return true;
  }

  int makeAt(const std::string& name) {
    FileDescriptor file(
        ::openat(target_.folder->number(), name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!file.isOpen()) return errno;
    // Whoever sees the file before it is locked takes it for a leftover; then this place is lost to him.
    if (::flock(file.number(), LOCK_EX | LOCK_NB) != 0 || !isStill(file, name)) return EEXIST;
    file_ = std::move(file);
    name_ = name;
    return 0;
  }

  /// True when the name still stands for the open file.
  [[nodiscard]] bool isStill(const FileDescriptor& file, const std::string& name) const {
    struct stat open{};
    struct stat named{};
    return ::fstat(file.number(), &open) == 0 &&
           ::fstatat(target_.folder->number(), name.c_str(), &named, AT_SYMLINK_NOFOLLOW) == 0 &&
           open.st_ino == named.st_ino && open.st_dev == named.st_dev;
  }

  const Target& target_;
  FileDescriptor file_;
  std::string name_;
};

int writeAll(int file, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = retrying([&] { return ::write(file, bytes.data(), bytes.size()); });
    if (count < 0) return errno;
    if (count == 0) return EIO;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return 0;
}

enum class Keeping { Must, May, Not };

Keeping keepingOf(std::string_view attribute) {
  if (attribute.starts_with("user.") || attribute == "system.posix_acl_access") return Keeping::Must;
  const bool vouches = attribute == "security.capability" || attribute == "security.ima" || attribute == "security.evm";
  return vouches ? Keeping::Not : Keeping::May;
}

/// What `call(buffer, size)` answers, in a buffer that is large enough even when it grows meanwhile; -1 as errno says.
template <class Call>
ssize_t readGrowing(std::string& buffer, Call call) {
  for (;;) {
    const ssize_t size = call(nullptr, 0);
    if (size <= 0) return size;
    buffer.resize(static_cast<std::size_t>(size));
    const ssize_t read = call(buffer.data(), buffer.size());
    if (read >= 0 || errno != ERANGE) return read;
  }
}

int keepAttribute(int from, int to, const char* name) {
  const Keeping keeping = keepingOf(name);
  if (keeping == Keeping::Not) return 0;
  std::string value;
  const ssize_t size =
      readGrowing(value, [&](char* out, std::size_t capacity) { return ::fgetxattr(from, name, out, capacity); });
  const bool kept = size >= 0 && ::fsetxattr(to, name, value.data(), static_cast<std::size_t>(size), 0) == 0;
  return kept || keeping == Keeping::May || errno == ENODATA ? 0 : errno;
}

int keepAttributes(int from, int to) {
  std::string names;
  const ssize_t size =
      readGrowing(names, [&](char* out, std::size_t capacity) { return ::flistxattr(from, out, capacity); });
  if (size < 0) return errno == ENOTSUP ? 0 : errno;
  for (std::size_t at = 0; at < static_cast<std::size_t>(size); at += names.find('\0', at) - at + 1) {
    if (const int failure = keepAttribute(from, to, names.c_str() + at)) return failure;
  }
  return 0;
}

/// On file systems without extended attributes this flag is the mark that keeps a file out of backups.
void keepNoDumpFlag(int from, int to) {
  int old = 0;
  int flags = 0;
  if (::ioctl(from, FS_IOC_GETFLAGS, &old) != 0 || !(old & FS_NODUMP_FL)) return;
  if (::ioctl(to, FS_IOC_GETFLAGS, &flags) != 0) return;
  flags |= FS_NODUMP_FL;
  static_cast<void>(::ioctl(to, FS_IOC_SETFLAGS, &flags));
}

/// Mode last: a file without write permission takes no attributes, and a change of owner may clear bits of the mode.
int keepMetadata(const Target& target, int to) {
  FileError error;
  const FileDescriptor from = files::openRegularFile(*target.folder, target.name, &error);
  struct stat old{};
  struct stat made{};
  if (!from.isOpen()) return error.number;
  if (::fstat(from.number(), &old) != 0 || ::fstat(to, &made) != 0) return errno;
  const bool isSameOwner = old.st_uid == made.st_uid && old.st_gid == made.st_gid;
  if (!isSameOwner && ::fchown(to, old.st_uid, old.st_gid) != 0) return errno;
  if (const int failure = keepAttributes(from.number(), to)) return failure;
  keepNoDumpFlag(from.number(), to);
  return ::fchmod(to, old.st_mode & 0777) == 0 ? 0 : errno;
}

int addAttributes(int to, const FileReplacement& how) {
  for (const auto& [name, value] : how.attributes) {
    const bool isSet = ::fsetxattr(to, name.c_str(), value.data(), value.size(), 0) == 0;
    if (!isSet && errno != ENOTSUP && errno != ENOSPC && errno != E2BIG) return errno;
  }
  return 0;
}

int finish(const Target& target, int to, const FileReplacement& how) {
  if (const int failure = addAttributes(to, how)) return failure;
  if (target.exists && how.metadata == FileReplacement::Metadata::Kept) return keepMetadata(target, to);
  return ::fchmod(to, how.mode) == 0 ? 0 : errno;
}

/// Some file systems know no fsync of folders.
int syncFolder(int folder) {
  const bool isSynced = retrying([&] { return ::fsync(folder); }) == 0;
  return isSynced || errno == EINVAL || errno == ENOTSUP ? 0 : errno;
}

int replaceAt(const Target& target, std::string_view bytes, const FileReplacement& how) {
  Temporary temporary(target);
  if (const int failure = temporary.make()) return failure;
  if (const int failure = writeAll(temporary.number(), bytes)) return failure;
  if (const int failure = finish(target, temporary.number(), how)) return failure;
  if (retrying([&] { return ::fsync(temporary.number()); }) != 0) return errno;
  if (const int failure = temporary.rename()) return failure;
  return syncFolder(target.folder->number());
}

}  // namespace

FileError replaceFile(const FileDescriptor& folder, const std::string& name, std::string_view bytes,
                      const FileReplacement& how) {
  Target target{&folder, name};
  FileDescriptor linked;
  if (const int failure = resolve(target, linked, how.links)) return {failure};
  return {replaceAt(target, bytes, how)};
}

FileError replaceFile(const std::string& path, std::string_view bytes, const FileReplacement& how) {
  if (path.empty()) return {ENOENT};
  const files::SplitPath parts = files::splitPath(path);
  FileError error;
  const FileDescriptor folder = files::openFolder(parts.folder, &error);
  return folder.isOpen() ? replaceFile(folder, parts.name, bytes, how) : error;
}

FileError replaceFile(const std::string& path, std::span<const std::uint8_t> bytes, const FileReplacement& how) {
  return replaceFile(path, std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()), how);
}

}  // namespace quorvel
