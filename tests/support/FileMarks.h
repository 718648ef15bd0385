// Attributes and flags of files, as far as the file system of a test holds them.
#pragma once

#include <string>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/xattr.h>

#include <quorvel/Platform/Foundation/FileReplacer.h>

namespace quorvel::test {

/// "none" where there is no such attribute.
[[nodiscard]] inline std::string attributeOf(const std::string& path, const char* name) {
  char value[64];
  const ssize_t size = ::getxattr(path.c_str(), name, value, sizeof value);
  return size < 0 ? "none" : std::string(value, static_cast<std::size_t>(size));
}

/// False where the file system has no such flag.
inline bool setNoDump(const std::string& path, bool isSet) {
  const FileDescriptor file(::open(path.c_str(), O_RDONLY));
  int flags = 0;
  if (::ioctl(file.number(), FS_IOC_GETFLAGS, &flags) != 0) return false;
  flags = isSet ? flags | FS_NODUMP_FL : flags & ~FS_NODUMP_FL;
  return ::ioctl(file.number(), FS_IOC_SETFLAGS, &flags) == 0;
}

[[nodiscard]] inline bool hasNoDump(const std::string& path) {
  const FileDescriptor file(::open(path.c_str(), O_RDONLY));
  int flags = 0;
  return ::ioctl(file.number(), FS_IOC_GETFLAGS, &flags) == 0 && (flags & FS_NODUMP_FL);
}

}  // namespace quorvel::test
