#include <quorvel/Platform/Foundation/Format.h>
#include <quorvel/Platform/Foundation/Log.h>
#include <quorvel/Platform/Foundation/NSFileManager.h>
#include <quorvel/Platform/Foundation/NSURLResourceValues.h>
#include <quorvel/Utility/ICloudUtils.h>

namespace quorvel {
namespace {

void logFormat(LogLevel level, StringView format, std::initializer_list<Value> arguments) {
  log(level, formatObjects(format, {arguments.begin(), arguments.size()}).toUTF8Replacing());
}

/// The URL of what is at the path, looked at twice because it may go in between.
std::optional<NSURL> existingItem(StringView path) {
  const NSFileManager manager = NSFileManager::defaultManager();
  std::optional<NSURL> url = manager.fileExistsAtPath(path) ? NSURL::fileURLWithPath(path) : nil;
  if (url && manager.fileExistsAtPath(url->path())) return url;
  logFormat(LogLevel::Warning, u"File or directory does not exist.: %@", {Value(path)});
  return nil;
}

}  // namespace

bool ICloudUtils::addSkipBackupAttributeToItemAtPath(StringView path) {
  const std::optional<NSURL> url = existingItem(path);
  if (!url) return false;
  FileError error;
  const bool isSet = setResourceValue(*url, true, NSURLIsExcludedFromBackupKey, &error);
  if (!isSet) {
    logFormat(LogLevel::Error, u"Error excluding %@ from backup %@", {url->lastPathComponent(), error.description()});
  }
  return isSet;
}

bool ICloudUtils::isSetBackupAttributeToItemAtPath(StringView path) {
  const std::optional<NSURL> url = existingItem(path);
  if (!url) return false;
  FileError error;
  const auto value = getResourceValue(*url, NSURLIsExcludedFromBackupKey, &error).asNumber();
  if (error) {
    logFormat(LogLevel::Error, u"Error get excluding %@ from backup %@",
              {url->lastPathComponent(), error.description()});
  }
  return value && value->boolValue();
}

}  // namespace quorvel
