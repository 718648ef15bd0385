#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>
#include <numeric>

#include <quorvel/Platform/Foundation/ApplicationFolders.h>
#include <quorvel/Platform/Foundation/GuardedFile.h>
#include <quorvel/Platform/Foundation/JSONStore.h>
#include <quorvel/Platform/Foundation/Log.h>
#include <quorvel/Platform/Foundation/NSHTTPCookieStorage.h>

namespace quorvel {
namespace {

constexpr const char* kFile = "cookies.json";
constexpr char16_t kCookies[] = u"cookies";

using Cookies = std::vector<NSHTTPCookie>;

Date currentDate() {
  const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
  return Date{std::chrono::duration<double>(sinceEpoch).count()};
}

/// JSON knows no dates: there Expires is seconds since 1970.
Value storedForm(const NSHTTPCookie& cookie) {
  Dictionary properties = cookie.properties();
  if (const auto expires = cookie.expiresDate()) properties.set(NSHTTPCookieExpires, expires->secondsSince1970);
  return properties;
}

std::optional<NSHTTPCookie> cookieOf(const Value& stored) {
  if (!stored.isDictionary()) return nil;
  Dictionary properties = *stored.asDictionary();
  const auto expires = properties[NSHTTPCookieExpires].asNumber();
  if (expires) properties.set(NSHTTPCookieExpires, Date{expires->doubleValue()});
  properties.remove(NSHTTPCookieMaximumAge);  // it would begin anew at each reading
  return NSHTTPCookie::withProperties(properties);
}

/// Those of a store that are cookies and have not expired.
Cookies cookiesOf(const Dictionary& entries) {
  Cookies cookies;
  const List* stored = entries[kCookies].asList();
  if (!stored) return cookies;
  const Date now = currentDate();
  for (const Value& value : *stored) {
    std::optional<NSHTTPCookie> cookie = cookieOf(value);
    if (cookie && !cookie->isExpired(now)) cookies.push_back(std::move(*cookie));
  }
  return cookies;
}

std::size_t placeOf(const NSHTTPCookie& cookie, const Cookies& cookies) {
  const auto found = std::find_if(cookies.begin(), cookies.end(),
                                  [&](const NSHTTPCookie& other) { return other.isSamePlaceAs(cookie); });
  return static_cast<std::size_t>(found - cookies.begin());
}

void removeAt(std::size_t place, Cookies& cookies) {
  if (place < cookies.size()) cookies.erase(cookies.begin() + static_cast<std::ptrdiff_t>(place));
}

void put(const NSHTTPCookie& cookie, Cookies& cookies) {
  const std::size_t place = placeOf(cookie, cookies);
  if (cookie.isExpired(currentDate())) {
    removeAt(place, cookies);
  } else if (place < cookies.size()) {
    cookies[place] = cookie;
  } else {
    cookies.push_back(cookie);
  }
}

struct SharedStorage {
  std::mutex mutex;
  std::optional<NSHTTPCookieStorage> storage;
};

SharedStorage& sharedStorage() {
  static SharedStorage holder;
  return holder;
}

}  // namespace

struct NSHTTPCookieStorage::Contents {
  explicit Contents(JSONStore kept) : store(std::move(kept)) {}

  JSONStore store;
  std::atomic<AcceptPolicy> policy{AcceptPolicy::Always};
};

NSHTTPCookieStorage NSHTTPCookieStorage::shared() {
  SharedStorage& holder = sharedStorage();
  const std::lock_guard guard(holder.mutex);
  if (!holder.storage) {
    JSONStore store(folders::data().value_or(""), {"quorvel", folders::applicationName()}, kFile);
    holder.storage = NSHTTPCookieStorage(std::make_shared<Contents>(std::move(store)));
  }
  return *holder.storage;
}

void NSHTTPCookieStorage::setShared(const NSHTTPCookieStorage& storage) {
  SharedStorage& holder = sharedStorage();
  const std::lock_guard guard(holder.mutex);
  holder.storage = storage;
}

NSHTTPCookieStorage NSHTTPCookieStorage::at(std::string_view folder) {
  files::SplitPath parts = files::splitPath(std::string(folder));
  while (parts.name.ends_with('/')) parts.name.pop_back();
  const bool isRoot = parts.name.empty();
  JSONStore store(isRoot ? "" : parts.folder, {parts.name}, kFile);
  return NSHTTPCookieStorage(std::make_shared<Contents>(std::move(store)));
}

std::optional<Cookies> NSHTTPCookieStorage::cookies() const {
  const std::optional<Dictionary> entries = contents_->store.read();
  return entries ? std::optional(cookiesOf(*entries)) : nil;
}

Cookies NSHTTPCookieStorage::cookiesForURL(const NSURL& url) const {
  Cookies found = cookies().value_or(Cookies());
  std::erase_if(found, [&](const NSHTTPCookie& cookie) { return !cookie.belongsTo(url); });
  // The longest path first, of equal ones the older cookie.
  std::vector<std::size_t> order(found.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::ranges::sort(order, [&found](std::size_t a, std::size_t b) {
    const std::size_t first = found[a].path().size();
    const std::size_t second = found[b].path().size();
    return first != second ? first > second : a < b;
  });
  Cookies sorted;
  sorted.reserve(found.size());
  for (const std::size_t place : order) sorted.push_back(std::move(found[place]));
  return sorted;
}

template <class Change>
bool NSHTTPCookieStorage::change(Change change) const {
  const FileError error = contents_->store.change([&](Dictionary& entries) {
    const Cookies before = cookiesOf(entries);
    Cookies after = before;
    change(after);
    if (after == before) return false;
    List stored;
    for (const NSHTTPCookie& cookie : after) stored.append(storedForm(cookie));
    entries.set(kCookies, stored);
    return true;
  });
  if (error) log(LogLevel::Warning, "NSHTTPCookieStorage: " + error.description().toUTF8Replacing());
  return !error;
}

bool NSHTTPCookieStorage::setCookie(const NSHTTPCookie& cookie) const {
  if (cookieAcceptPolicy() == AcceptPolicy::Never) return false;
  return change([&](Cookies& cookies) { put(cookie, cookies); });
}

bool NSHTTPCookieStorage::deleteCookie(const NSHTTPCookie& cookie) const {
  return change([&](Cookies& cookies) { removeAt(placeOf(cookie, cookies), cookies); });
}

bool NSHTTPCookieStorage::removeSessionCookies() const {
  return change([](Cookies& cookies) {
    std::erase_if(cookies, [](const NSHTTPCookie& cookie) { return cookie.isSessionOnly(); });
  });
}

NSHTTPCookieStorage::AcceptPolicy NSHTTPCookieStorage::cookieAcceptPolicy() const { return contents_->policy; }

void NSHTTPCookieStorage::setCookieAcceptPolicy(AcceptPolicy policy) const { contents_->policy = policy; }

}  // namespace quorvel
