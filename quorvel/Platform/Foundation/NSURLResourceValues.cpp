#include <cerrno>

#include <quorvel/Platform/Foundation/BackupExclusion.h>
#include <quorvel/Platform/Foundation/NSURLResourceValues.h>

namespace quorvel {
namespace {

std::optional<std::string> pathOf(const NSURL& url) {
  return url.scheme() == u"file" ? files::systemPath(url.path()) : nil;
}

/// Whether a question can be answered at all: 0, or why not.
int refusal(const std::optional<std::string>& path, StringView key) {
  if (!path) return ENOENT;
  return key == NSURLIsExcludedFromBackupKey ? 0 : EINVAL;
}

}  // namespace

bool setResourceValue(const NSURL& url, const Value& value, StringView key, FileError* error) {
  const auto path = pathOf(url);
  const auto number = value.asNumber();
  FileError failure{refusal(path, key)};
  if (!failure) failure = number ? backup::setExcluded(*path, number->boolValue()) : FileError{EINVAL};
  if (error) *error = failure;
  return !failure;
}

Value getResourceValue(const NSURL& url, StringView key, FileError* error) {
  const auto path = pathOf(url);
  FileError failure{refusal(path, key)};
  const auto isExcluded = failure ? nil : backup::isExcluded(*path, &failure);
  if (error) *error = failure;
  return isExcluded;
}

}  // namespace quorvel
