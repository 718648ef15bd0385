// NSHTTPCookieStorage: the application's cookies, shared by its threads and processes.
// Not here: what a cookie is and when it belongs to a URL (NSHTTPCookie.h).
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <quorvel/Platform/Foundation/NSHTTPCookie.h>

namespace quorvel {

/// A JSON file of mode 0600 in a folder of mode 0700. Nothing is cached: every question reads the file, every change
/// replaces it. Cookies of the session are in the file too, so that all processes of the application see them; the
/// application ends the session by `removeSessionCookies`. Copies are the same storage.
class NSHTTPCookieStorage {
 public:
  enum class AcceptPolicy : std::uint8_t { Always, Never };

  /// `sharedHTTPCookieStorage`: what `setShared` named, else the file cookies.json in "quorvel" and the application's
  /// name (`folders::applicationName`) in the data folder.
  [[nodiscard]] static NSHTTPCookieStorage shared();
  static void setShared(const NSHTTPCookieStorage& storage);
  /// The storage in the file cookies.json of this folder, which is made if it is missing and belongs to the storage.
  [[nodiscard]] static NSHTTPCookieStorage at(std::string_view folder);

  /// `cookies`: all that have not expired, in the order in which they came first; nil when the storage cannot be read.
  [[nodiscard]] std::optional<std::vector<NSHTTPCookie>> cookies() const;
  /// `cookiesForURL:`: those that a request for the URL carries, longer paths first; none when the storage cannot be
  /// read.
  [[nodiscard]] std::vector<NSHTTPCookie> cookiesForURL(const NSURL& url) const;

  // Each is true when it is done and on the disk; what went wrong is in the log.

  /// `setCookie:`: in place of the one with the same name, domain and path; an expired one deletes that. Dropped when
  /// the policy says so.
  bool setCookie(const NSHTTPCookie& cookie) const;
  /// `deleteCookie:`: the one with the same name, domain and path, if there is one.
  bool deleteCookie(const NSHTTPCookie& cookie) const;
  /// Deletes the cookies of the session.
  bool removeSessionCookies() const;

  /// `cookieAcceptPolicy`, of this storage and its copies, not kept in the file.
  [[nodiscard]] AcceptPolicy cookieAcceptPolicy() const;
  void setCookieAcceptPolicy(AcceptPolicy policy) const;

 private:
  struct Contents;
  explicit NSHTTPCookieStorage(std::shared_ptr<Contents> contents) : contents_(std::move(contents)) {}
  template <class Change>
  bool change(Change change) const;

  std::shared_ptr<Contents> contents_;
};

}  // namespace quorvel
