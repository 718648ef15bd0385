#include <algorithm>
#include <cerrno>

#include <unistd.h>

#include <quorvel/Platform/ImageIO/ImageFile.h>

namespace quorvel {

bool isFileURL(const NSURL& url) {
  constexpr StringView kScheme = u"file";
  const auto lowered = [](char16_t unit) { return unit >= u'A' && unit <= u'Z' ? unit + 32 : +unit; };
  return std::ranges::equal(url.scheme().units(), kScheme.units(), {}, lowered);
}

FileDescriptor openImageFile(const NSURL& url) {
  const auto path = isFileURL(url) ? files::systemPath(url.path()) : std::nullopt;
  return path ? files::openRegularFile(*path, files::Links::Followed) : FileDescriptor();
}

void readOn(const FileDescriptor& file, std::size_t size, std::vector<std::uint8_t>& bytes) {
  std::size_t count = bytes.size();
  bytes.resize(std::max(size, count));
  while (count < size) {
    const ssize_t got = ::pread(file.number(), bytes.data() + count, size - count, static_cast<off_t>(count));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) break;
    count += static_cast<std::size_t>(got);
  }
  bytes.resize(count);
}

}  // namespace quorvel
