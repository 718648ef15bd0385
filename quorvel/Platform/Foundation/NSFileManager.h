// NSFileManager and NSFileHandle: facts about files and volumes, creating a file, and opening one for reading.
// Not here: replacing files (FileReplacer.h), resource values of URLs (NSURLResourceValues.h).
#pragma once

#include <quorvel/Platform/Foundation/GuardedFile.h>
#include <quorvel/Platform/Foundation/NSURL.h>

namespace quorvel {

// Numbers of folders and domains; others name no folder.
inline constexpr std::uint64_t NSDocumentDirectory = 9;
inline constexpr std::uint64_t NSUserDomainMask = 1;

// Keys and values of attributes.
inline constexpr char16_t NSFileSize[] = u"NSFileSize";                          // bytes, a number
inline constexpr char16_t NSFileType[] = u"NSFileType";                          // one of the types below
inline constexpr char16_t NSFileModificationDate[] = u"NSFileModificationDate";  // a date
inline constexpr char16_t NSFilePosixPermissions[] = u"NSFilePosixPermissions";  // a number, the nine lowest bits
inline constexpr char16_t NSFileProtectionKey[] = u"NSFileProtectionKey";        // a protection class
inline constexpr char16_t NSFileSystemSize[] = u"NSFileSystemSize";              // bytes, a number
inline constexpr char16_t NSFileSystemFreeSize[] = u"NSFileSystemFreeSize";      // bytes that this user may fill
inline constexpr char16_t NSFileTypeRegular[] = u"NSFileTypeRegular";
inline constexpr char16_t NSFileTypeDirectory[] = u"NSFileTypeDirectory";
inline constexpr char16_t NSFileTypeSymbolicLink[] = u"NSFileTypeSymbolicLink";
inline constexpr char16_t NSFileTypeUnknown[] = u"NSFileTypeUnknown";
inline constexpr char16_t NSFileProtectionCompleteUntilFirstUserAuthentication[] =
    u"NSFileProtectionCompleteUntilFirstUserAuthentication";

/// Without state. A path that is nil or empty, or holds a NUL or an unpaired surrogate, names nothing.
class NSFileManager {
 public:
  /// `defaultManager`
  [[nodiscard]] static NSFileManager defaultManager() { return {}; }

  /// `URLsForDirectory:inDomains:`: the documents folder (`folders::documents`) in the user's domain, whether or not it
  /// is there; none when the user has no home folder, and for other numbers.
  [[nodiscard]] std::vector<NSURL> URLsForDirectory(std::uint64_t directory, std::uint64_t inDomains) const;

  /// `fileExistsAtPath:`: true for anything at the path; of a symbolic link, for what it names.
  [[nodiscard]] bool fileExistsAtPath(StringView path) const;

  /// `createFileAtPath:contents:attributes:`: a file with these bytes, in place of one that is there; the folder must
  /// be there. Of the attributes NSFilePosixPermissions is the mode (else 0600), and NSFileProtectionKey is recorded as
  /// the extended attribute "user.quorvel.protection"; on a file system without such attributes the file is made
  /// without the record. False when it cannot be made; a symbolic link, a folder, a FIFO or a device at the path is not
  /// touched.
  bool createFileAtPath(StringView path, const Data& contents, const Dictionary& attributes = {}) const;

  /// `attributesOfItemAtPath:error:`: size, type, permissions, modification date, and the protection class where one is
  /// recorded; a symbolic link is not followed. nil when the item cannot be read.
  [[nodiscard]] std::optional<Dictionary> attributesOfItemAtPath(StringView path, FileError* error = nullptr) const;

  /// `attributesOfFileSystemForPath:error:`: size and free size of the volume that holds the item; nil when it cannot
  /// be read.
  [[nodiscard]] std::optional<Dictionary> attributesOfFileSystemForPath(StringView path,
                                                                        FileError* error = nullptr) const;
};

/// `NSSearchPathForDirectoriesInDomains`: the paths of `URLsForDirectory`; with `expandTilde` false the home folder at
/// the front is written "~".
[[nodiscard]] std::vector<String> NSSearchPathForDirectoriesInDomains(std::uint64_t directory, std::uint64_t domainMask,
                                                                      bool expandTilde);

/// An open file, closed at the end.
class NSFileHandle {
 public:
  /// `fileHandleForReadingAtPath:`: nil when there is no regular file or it cannot be opened; the error tells why,
  /// among them ENOKEY for a file in a folder that is locked (encrypted, its key not there). No symbolic link at the
  /// path is followed, nothing waits for a FIFO's other end, no device is opened.
  [[nodiscard]] static std::optional<NSFileHandle> fileHandleForReadingAtPath(StringView path,
                                                                              FileError* error = nullptr);

  /// `readDataToEndOfFile`, from its start; nil when reading fails or the file is larger than `limit` bytes.
  [[nodiscard]] std::optional<Data> readDataToEndOfFile(std::size_t limit, FileError* error = nullptr) const;

 private:
  explicit NSFileHandle(FileDescriptor file) : file_(std::move(file)) {}

  FileDescriptor file_;
};

}  // namespace quorvel
