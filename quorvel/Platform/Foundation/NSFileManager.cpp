#include <cerrno>

#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/xattr.h>

#include <quorvel/Platform/Foundation/ApplicationFolders.h>
#include <quorvel/Platform/Foundation/FileReplacer.h>
#include <quorvel/Platform/Foundation/Log.h>
#include <quorvel/Platform/Foundation/NSFileManager.h>

namespace quorvel {
namespace {

constexpr const char* kProtection = "user.quorvel.protection";
constexpr unsigned kPrivateMode = 0600;
constexpr unsigned kPermissions = 0777;

std::nullopt_t fail(FileError* error, int number) {
  if (error) error->number = number;
  return std::nullopt;
}

std::optional<std::string> documentsPath(std::uint64_t directory, std::uint64_t domains) {
  return directory == NSDocumentDirectory && (domains & NSUserDomainMask) ? folders::documents() : nil;
}

StringView typeOf(mode_t mode) {
  if (S_ISREG(mode)) return NSFileTypeRegular;
  if (S_ISDIR(mode)) return NSFileTypeDirectory;
  return S_ISLNK(mode) ? StringView(NSFileTypeSymbolicLink) : StringView(NSFileTypeUnknown);
}

Date dateOf(const timespec& time) {
  return Date{static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9};
}

std::optional<String> protectionOf(const std::string& path) {
  char name[256];
  const ssize_t size = ::lgetxattr(path.c_str(), kProtection, name, sizeof name);
  return size < 0 ? nil : String::fromUTF8(std::string_view(name, static_cast<std::size_t>(size)));
}

FileReplacement replacementOf(const Dictionary& attributes) {
  FileReplacement how;
  const auto mode = attributes[NSFilePosixPermissions].asNumber();
  how.mode = mode ? static_cast<unsigned>(mode->longLongValue()) & kPermissions : kPrivateMode;
  const String* protection = attributes[NSFileProtectionKey].asString();
  if (protection) how.attributes.push_back({kProtection, protection->toUTF8Replacing()});
  return how;
}

/// Blocks as bytes; the largest number when there are more.
std::uint64_t bytesOf(std::uint64_t blocks, std::uint64_t blockSize) {
  std::uint64_t bytes = 0;
  return __builtin_mul_overflow(blocks, blockSize, &bytes) ? UINT64_MAX : bytes;
}

}  // namespace

std::vector<NSURL> NSFileManager::URLsForDirectory(std::uint64_t directory, std::uint64_t inDomains) const {
  std::vector<NSURL> urls;
  for (const String& path : NSSearchPathForDirectoriesInDomains(directory, inDomains, true)) {
    if (const auto url = NSURL::fileURLWithPath(path)) urls.push_back(*url);
  }
  return urls;
}

bool NSFileManager::fileExistsAtPath(StringView path) const {
  const auto bytes = files::systemPath(path);
  struct stat status{};
  return bytes && ::stat(bytes->c_str(), &status) == 0;
}

bool NSFileManager::createFileAtPath(StringView path, const Data& contents, const Dictionary& attributes) const {
  const auto bytes = files::systemPath(path);
  if (!bytes) return false;
  const FileError error = replaceFile(*bytes, contents.bytes(), replacementOf(attributes));
  if (error) log(LogLevel::Info, "createFileAtPath: " + *bytes + ": " + error.description().toUTF8Replacing());
  return !error;
}

std::optional<Dictionary> NSFileManager::attributesOfItemAtPath(StringView path, FileError* error) const {
  const auto bytes = files::systemPath(path);
  if (!bytes) return fail(error, ENOENT);
  struct stat status{};
  if (::lstat(bytes->c_str(), &status) != 0) return fail(error, errno);
  Dictionary attributes{{NSFileSize, static_cast<std::int64_t>(status.st_size)},
                        {NSFileType, typeOf(status.st_mode)},
                        {NSFilePosixPermissions, status.st_mode & kPermissions},
                        {NSFileModificationDate, dateOf(status.st_mtim)}};
  attributes.set(NSFileProtectionKey, protectionOf(*bytes));
  return attributes;
}

std::optional<Dictionary> NSFileManager::attributesOfFileSystemForPath(StringView path, FileError* error) const {
  const auto bytes = files::systemPath(path);
  if (!bytes) return fail(error, ENOENT);
  struct statvfs volume{};
  if (::statvfs(bytes->c_str(), &volume) != 0) return fail(error, errno);
  const std::uint64_t block = volume.f_frsize ? volume.f_frsize : volume.f_bsize;
  return Dictionary{{NSFileSystemSize, bytesOf(volume.f_blocks, block)},
                    {NSFileSystemFreeSize, bytesOf(volume.f_bavail, block)}};
}

std::vector<String> NSSearchPathForDirectoriesInDomains(std::uint64_t directory, std::uint64_t domainMask,
                                                        bool expandTilde) {
  std::optional<std::string> path = documentsPath(directory, domainMask);
  if (!path) return {};
  const std::string home = folders::home().value_or("");
  const bool isInHome =
      home.size() > 1 && path->starts_with(home) && (path->size() == home.size() || (*path)[home.size()] == '/');
  if (!expandTilde && isInHome) path->replace(0, home.size(), "~");
  const std::optional<String> text = String::fromUTF8(*path);
  return text ? std::vector<String>{*text} : std::vector<String>();
}

std::optional<NSFileHandle> NSFileHandle::fileHandleForReadingAtPath(StringView path, FileError* error) {
  const auto bytes = files::systemPath(path);
  if (!bytes) return fail(error, ENOENT);
  FileDescriptor file = files::openRegularFile(*bytes, files::Links::Refused, error);
  if (!file.isOpen()) return std::nullopt;
  return NSFileHandle(std::move(file));
}

std::optional<Data> NSFileHandle::readDataToEndOfFile(std::size_t limit, FileError* error) const {
  const auto bytes = files::readAll(file_, limit, error);
  if (!bytes) return std::nullopt;
  return Data({reinterpret_cast<const std::uint8_t*>(bytes->data()), bytes->size()});
}

}  // namespace quorvel
