#include <cerrno>
#include <cstring>
#include <ctime>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <quorvel/Platform/Foundation/GuardedFile.h>

namespace quorvel {

String FileError::description() const {
  const char* words = ::strerrordesc_np(number);
  return String::fromASCII(words ? std::string(words) : "Unknown error " + std::to_string(number));
}

FileDescriptor::~FileDescriptor() {
  if (number_ >= 0) ::close(number_);
}

namespace files {
namespace {

constexpr mode_t kPrivateFolder = 0700;
constexpr mode_t kPrivateFile = 0600;
constexpr int kNeverWaits = O_CLOEXEC | O_NONBLOCK | O_NOCTTY;

void report(FileError* error, int number) {
  if (error) error->number = number;
}

FileDescriptor fail(FileError* error, int number) {
  report(error, number);
  return {};
}

/// 0, or why what has this mode is not opened as a file.
int refusal(mode_t mode) {
  if (S_ISREG(mode)) return 0;
  if (S_ISLNK(mode)) return ELOOP;
  return S_ISDIR(mode) ? EISDIR : EINVAL;
}

int openRetrying(int folder, const char* name, int flags, mode_t mode = 0) {
  int descriptor = 0;
  do {
    descriptor = ::openat(folder, name, flags, mode);
  } while (descriptor < 0 && errno == EINTR);
  return descriptor;
}

FileDescriptor openRegularAt(int folder, const char* name, int access, Links links, FileError* error) {
  const bool isFollowed = links == Links::Followed;
  struct stat status{};
  // Looked at before it is opened, because opening a device may already do something.
  if (::fstatat(folder, name, &status, isFollowed ? 0 : AT_SYMLINK_NOFOLLOW) != 0) return fail(error, errno);
  if (const int number = refusal(status.st_mode)) return fail(error, number);
  FileDescriptor file(openRetrying(folder, name, access | kNeverWaits | (isFollowed ? 0 : O_NOFOLLOW)));
  if (!file.isOpen() || ::fstat(file.number(), &status) != 0) return fail(error, errno);
  if (const int number = refusal(status.st_mode)) return fail(error, number);
  return file;
}

/// Makes the folders of a path that are missing.
int makeFolders(const std::string& path) {
  for (std::size_t slash = path.find('/', 1); slash != path.npos; slash = path.find('/', slash + 1)) {
    if (::mkdir(path.substr(0, slash).c_str(), kPrivateFolder) != 0 && errno != EEXIST) return errno;
  }
  return ::mkdir(path.c_str(), kPrivateFolder) == 0 || errno == EEXIST ? 0 : errno;
}

FileDescriptor openPrivateFolderAt(const FileDescriptor& parent, const std::string& name, Missing missing,
                                   FileError* error) {
  const bool isMade = missing == Missing::Made;
  if (isMade && ::mkdirat(parent.number(), name.c_str(), kPrivateFolder) == 0) {
    static_cast<void>(::fsync(parent.number()));  // what is written into it is to outlive a loss of power
  } else if (isMade && errno != EEXIST) {
    return fail(error, errno);
  }
  FileDescriptor folder(openRetrying(parent.number(), name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW));
  struct stat status{};
  if (!folder.isOpen() || ::fstat(folder.number(), &status) != 0) return fail(error, errno);
  if (status.st_uid != ::geteuid()) return fail(error, EPERM);
  const bool isPrivate = (status.st_mode & 07777) == kPrivateFolder;
  if (isMade && !isPrivate && ::fchmod(folder.number(), kPrivateFolder) != 0) return fail(error, errno);
  return folder;
}

FileDescriptor openLockFile(const FileDescriptor& folder, const char* name, FileError* error) {
  FileDescriptor made(
      openRetrying(folder.number(), name, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | kNeverWaits, kPrivateFile));
  if (made.isOpen() && ::fchmod(made.number(), kPrivateFile) != 0) return fail(error, errno);
  if (made.isOpen()) return made;
  if (errno != EEXIST) return fail(error, errno);
  return openRegularAt(folder.number(), name, O_RDWR, Links::Refused, error);
}

constexpr off_t kTurnByte = 0;
constexpr off_t kOwnerByte = 1;

/// Locks or unlocks one byte for this open file; threads exclude each other by opening it each for themselves.
int setByte(const FileDescriptor& file, off_t byte, short type) {
  struct flock range{};
  range.l_type = type;
  range.l_whence = SEEK_SET;
  range.l_start = byte;
  range.l_len = 1;
  return ::fcntl(file.number(), F_OFD_SETLK, &range);
}

/// 0 when the byte is locked, or why not.
int awaitByte(const FileDescriptor& file, off_t byte, std::chrono::steady_clock::time_point end) {
  constexpr timespec kPause{0, 1'000'000};
  while (setByte(file, byte, F_WRLCK) != 0) {
    if (errno != EAGAIN && errno != EACCES && errno != EINTR) return errno;
    if (std::chrono::steady_clock::now() > end) return ETIMEDOUT;
    ::nanosleep(&kPause, nullptr);
  }
  return 0;
}

}  // namespace

FileDescriptor openFolder(const std::string& path, FileError* error) {
  FileDescriptor folder(openRetrying(AT_FDCWD, path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder.isOpen()) report(error, errno);
  return folder;
}

FileDescriptor openRegularFile(const FileDescriptor& folder, const std::string& name, FileError* error) {
  return openRegularAt(folder.number(), name.c_str(), O_RDONLY, Links::Refused, error);
}

FileDescriptor openRegularFile(const std::string& path, Links links, FileError* error) {
  return openRegularAt(AT_FDCWD, path.c_str(), O_RDONLY, links, error);
}

std::optional<std::string> readAll(const FileDescriptor& file, std::size_t limit, FileError* error) {
  std::string bytes;
  char buffer[16384];
  while (bytes.size() <= limit) {
    const ssize_t count = ::pread(file.number(), buffer, sizeof buffer, static_cast<off_t>(bytes.size()));
    if (count == 0) return bytes;
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) {
      report(error, errno);
      return nil;
    }
    bytes.append(buffer, static_cast<std::size_t>(count));
  }
  report(error, EFBIG);
  return nil;
}

FileDescriptor openPrivateFolder(const std::string& base, const std::vector<std::string>& names, Missing missing,
                                 FileError* error) {
  if (base.empty()) return fail(error, ENOENT);
  const int failure = missing == Missing::Made ? makeFolders(base) : 0;
  if (failure) return fail(error, failure);
  FileDescriptor folder = openFolder(base, error);
  for (const std::string& name : names) {
    if (folder.isOpen()) folder = openPrivateFolderAt(folder, name, missing, error);
  }
  return folder;
}

FileDescriptor lock(const FileDescriptor& folder, const std::string& name, FileError* error,
                    std::chrono::milliseconds patience) {
  FileDescriptor file = openLockFile(folder, name.c_str(), error);
  if (!file.isOpen()) return file;
  // Whoever waits for the owner holds the turn meanwhile, so that an owner who comes back at once does not pass him.
  const auto end = std::chrono::steady_clock::now() + patience;
  int failure = awaitByte(file, kTurnByte, end);
  if (!failure) failure = awaitByte(file, kOwnerByte, end);
  if (failure) return fail(error, failure);
  return setByte(file, kTurnByte, F_UNLCK) == 0 ? std::move(file) : fail(error, errno);
}

std::optional<std::string> systemPath(StringView path) {
  if (path.isEmpty() || path.units().find(u'\0') != std::u16string_view::npos) return nil;
  return String(path).toUTF8();
}

SplitPath splitPath(const std::string& path) {
  const std::size_t end = path.find_last_not_of('/');
  const std::size_t slash = end == path.npos ? path.npos : path.rfind('/', end);
  if (slash == path.npos) return {".", path};
  return {slash == 0 ? "/" : path.substr(0, slash), path.substr(slash + 1)};
}

}  // namespace files
}  // namespace quorvel
