#include <algorithm>

#include <quorvel/Platform/Foundation/NSFileManager.h>
#include <quorvel/Platform/Foundation/NSHTTPCookieStorage.h>
#include <quorvel/Platform/Foundation/PathOperations.h>
#include <quorvel/Utility/DeviceLockChecker.h>

namespace quorvel {
namespace {

std::optional<NSHTTPCookie> probe() {
  // A name that no server has (RFC 6761), so that no request ever carries the probe.
  return NSHTTPCookie::withProperties({{NSHTTPCookieName, u"com.halvero.DUMMY_COOKIE_AVAILABEL_CHECK"},
                                       {NSHTTPCookieDomain, u".quorvel.invalid"},
                                       {NSHTTPCookiePath, u"/"},
                                       {NSHTTPCookieValue, u"READ"}});
}

Data utf8Data(const String& text) {
  const std::string bytes = text.toUTF8Replacing();
  return Data({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
}

}  // namespace

std::optional<String> DeviceLockChecker::filePath() {
  const auto urls = NSFileManager::defaultManager().URLsForDirectory(NSDocumentDirectory, NSUserDomainMask);
  const std::optional<String> folder = urls.empty() ? nil : urls.front().path();
  if (!folder) return nil;
  return paths::stringByAppendingPathComponent(*folder, Constants::fileName);
}

void DeviceLockChecker::createFileIfNeed(const String& path) {
  const NSFileManager manager = NSFileManager::defaultManager();
  if (manager.fileExistsAtPath(path)) return;
  manager.createFileAtPath(path, utf8Data(Constants::content),
                           {{NSFileProtectionKey, NSFileProtectionCompleteUntilFirstUserAuthentication}});
}

bool DeviceLockChecker::isUnlocked() {
  const std::optional<String> path = filePath();
  if (!path) return false;
  createFileIfNeed(*path);
  return NSFileHandle::fileHandleForReadingAtPath(*path).has_value();
}

bool DeviceLockChecker::isLocked() { return !isUnlocked(); }

bool DeviceLockChecker::isCookieStorageLocked() {
  const NSHTTPCookieStorage storage = NSHTTPCookieStorage::shared();
  const auto before = storage.cookies();
  if (before && !before->empty()) return false;
  const std::optional<NSHTTPCookie> cookie = probe();
  if (!cookie) return false;
  storage.setCookie(*cookie);
  const auto after = storage.cookies();
  storage.deleteCookie(*cookie);
  if (!after) return true;
  return std::none_of(after->begin(), after->end(),
                      [&](const NSHTTPCookie& each) { return each.name() == cookie->name(); });
}

}  // namespace quorvel
