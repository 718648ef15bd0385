#include <algorithm>
#include <cerrno>
#include <memory>

#include <dirent.h>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <quorvel/Platform/Foundation/BackupExclusion.h>
#include <quorvel/Platform/Foundation/FileReplacer.h>

namespace quorvel::backup {
namespace {

constexpr const char* kAttribute = "user.xdg.robots.backup";
constexpr std::string_view kExcluded = "false";
constexpr const char* kTag = "CACHEDIR.TAG";
constexpr std::string_view kSignature = "Signature: 8a477f597d28d172789f06886806bc55";
constexpr std::string_view kOurTag =
    "Signature: 8a477f597d28d172789f06886806bc55\n"
    "# This folder was marked by quorvel to be kept out of backups. Cache Directory Tagging:\n"
    "# https://bford.info/cachedir/\n";
constexpr std::size_t kTagBytes = 4096;

struct Item {
  FileDescriptor descriptor;
  bool isFolder = false;
};

/// A file or folder by its name in an open folder. Neither of them, and what has vanished, is closed without an error.
Item open(int folder, const char* name, bool follows, FileError* error) {
  struct stat status{};
  Item item;
  const int failure = ::fstatat(folder, name, &status, follows ? 0 : AT_SYMLINK_NOFOLLOW) == 0 ? 0 : errno;
  item.isFolder = !failure && S_ISDIR(status.st_mode);
  if (failure || (!item.isFolder && !S_ISREG(status.st_mode))) {
    error->number = failure;
    return item;
  }
  const int flags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | (follows ? 0 : O_NOFOLLOW);
  item.descriptor = FileDescriptor(::openat(folder, name, flags | (item.isFolder ? O_DIRECTORY : 0)));
  if (!item.descriptor.isOpen()) error->number = errno;
  return item;
}

bool hasAttribute(const FileDescriptor& item) {
  char value[16];
  const ssize_t size = ::fgetxattr(item.number(), kAttribute, value, sizeof value);
  return size >= 0 && std::string_view(value, static_cast<std::size_t>(size)) == kExcluded;
}

FileError setAttribute(const FileDescriptor& item, bool isSet) {
  const int result = isSet ? ::fsetxattr(item.number(), kAttribute, kExcluded.data(), kExcluded.size(), 0)
                           : ::fremovexattr(item.number(), kAttribute);
  const bool isDone = result == 0 || (!isSet && (errno == ENODATA || errno == ENOTSUP));
  return {isDone ? 0 : errno};
}

bool hasFlag(const FileDescriptor& item) {
  int flags = 0;
  return ::ioctl(item.number(), FS_IOC_GETFLAGS, &flags) == 0 && (flags & FS_NODUMP_FL);
}

FileError setFlag(const FileDescriptor& item, bool isSet) {
  int flags = 0;
  if (::ioctl(item.number(), FS_IOC_GETFLAGS, &flags) != 0) return {isSet ? errno : 0};
  if (bool(flags & FS_NODUMP_FL) == isSet) return {};
  flags ^= FS_NODUMP_FL;
  return {::ioctl(item.number(), FS_IOC_SETFLAGS, &flags) == 0 ? 0 : errno};
}

/// The tag's bytes; nil for none, for a link and for what is too large to be one.
std::optional<std::string> tagOf(const FileDescriptor& folder) {
  const FileDescriptor tag = files::openRegularFile(folder, kTag);
  return tag.isOpen() ? files::readAll(tag, kTagBytes) : nil;
}

bool hasTag(const FileDescriptor& folder) { return tagOf(folder).value_or("").starts_with(kSignature); }

FileError addTag(const FileDescriptor& folder) {
  if (hasTag(folder)) return {};
  struct stat status{};
  const bool isTaken = ::fstatat(folder.number(), kTag, &status, AT_SYMLINK_NOFOLLOW) == 0;
  return isTaken ? FileError{EEXIST} : replaceFile(folder, kTag, kOurTag);
}

FileError removeTag(const FileDescriptor& folder) {
  if (!hasTag(folder)) return {};
  if (tagOf(folder) != kOurTag) return {EEXIST};
  return {::unlinkat(folder.number(), kTag, 0) == 0 ? 0 : errno};
}

bool isMarked(const Item& item) {
  return hasAttribute(item.descriptor) || hasFlag(item.descriptor) || (item.isFolder && hasTag(item.descriptor));
}

FileError mark(const Item& item) {
  const FileError errors[] = {setAttribute(item.descriptor, true), setFlag(item.descriptor, true),
                              item.isFolder ? addTag(item.descriptor) : FileError{ENOTDIR}};
  const bool isAnySet = std::any_of(std::begin(errors), std::end(errors), [](FileError error) { return !error; });
  return isAnySet ? FileError{} : errors[0];
}

FileError unmark(const Item& item) {
  FileError first;
  for (const FileError error : {setAttribute(item.descriptor, false), setFlag(item.descriptor, false),
                                item.isFolder ? removeTag(item.descriptor) : FileError{}}) {
    if (error && !first) first = error;
  }
  return first;
}

/// Walks with a list of folders still to be seen instead of recursion, and with one folder open at a time, so that
/// neither the stack nor the number of open files bounds the depth.
class Walk {
 public:
  Walk(const std::string& root, const Visitor& visitor) : visitor_(visitor) {
    FileError error;
    root_ = open(AT_FDCWD, root.c_str(), true, &error);
    if (error || !root_.isFolder) visitor_.onFailure("", error ? error : FileError{ENOTDIR});
  }

  void run() {
    if (!root_.descriptor.isOpen() || !root_.isFolder) return;
    if (isMarked(root_)) return visitor_.onExcluded("");
    std::vector<std::string> pending = {""};
    while (!pending.empty()) {
      const std::string path = std::move(pending.back());
      pending.pop_back();
      lookInto(path, pending);
    }
  }

 private:
  void fail(const std::string& path, FileError error) const {
    if (error.number != ENOENT) visitor_.onFailure(path, error);
  }

  /// The folder at a path below the root, component by component, so that no link in between is followed.
  [[nodiscard]] FileDescriptor openFolder(const std::string& path, FileError* error) const {
    FileDescriptor folder(::openat(root_.descriptor.number(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    for (std::size_t from = 0; folder.isOpen() && from < path.size();) {
      const std::size_t to = std::min(path.find('/', from), path.size());
      const std::string name = path.substr(from, to - from);
      folder = FileDescriptor(::openat(folder.number(), name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW));
      from = to + 1;
    }
    if (!folder.isOpen()) error->number = errno;
    return folder;
  }

  /// Names in the folder by their bytes.
  [[nodiscard]] static std::vector<std::string> namesIn(const FileDescriptor& folder, FileError* error) {
    std::vector<std::string> names;
    const int copy = ::openat(folder.number(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(copy < 0 ? nullptr : ::fdopendir(copy), ::closedir);
    errno = entries ? 0 : errno;
    while (const dirent* entry = entries ? ::readdir(entries.get()) : nullptr) {
      const std::string_view name = entry->d_name;
      if (name != "." && name != "..") names.emplace_back(name);
    }
    error->number = errno;
    std::sort(names.begin(), names.end());
    return names;
  }

  void lookInto(const std::string& path, std::vector<std::string>& pending) const {
    FileError error;
    const FileDescriptor folder = openFolder(path, &error);
    const std::vector<std::string> names = error ? std::vector<std::string>() : namesIn(folder, &error);
    if (error) fail(path, error);
    const std::size_t first = pending.size();
    const std::string prefix = path.empty() ? path : path + "/";
    for (const std::string& name : names) lookAt(folder, name, std::string(prefix).append(name), pending);
    std::reverse(pending.begin() + static_cast<std::ptrdiff_t>(first), pending.end());
  }

  void lookAt(const FileDescriptor& folder, const std::string& name, const std::string& path,
              std::vector<std::string>& pending) const {
    FileError error;
    const Item item = open(folder.number(), name.c_str(), false, &error);
    if (error) return fail(path, error);
    if (!item.descriptor.isOpen()) return;
    if (isMarked(item)) return visitor_.onExcluded(path);
    if (item.isFolder) pending.push_back(path);
  }

  const Visitor& visitor_;
  Item root_;
};

}  // namespace

FileError setExcluded(const std::string& path, bool excluded) {
  FileError error;
  const Item item = open(AT_FDCWD, path.c_str(), true, &error);
  if (error) return error;
  if (!item.descriptor.isOpen()) return {EINVAL};
  return excluded ? mark(item) : unmark(item);
}

std::optional<bool> isExcluded(const std::string& path, FileError* error) {
  FileError failure;
  const Item item = open(AT_FDCWD, path.c_str(), true, &failure);
  if (error) *error = failure;
  if (failure) return nil;
  return item.descriptor.isOpen() && isMarked(item);
}

void visit(const std::string& root, const Visitor& visitor) { Walk(root, visitor).run(); }

}  // namespace quorvel::backup
