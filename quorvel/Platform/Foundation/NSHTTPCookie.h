// NSHTTPCookie: one cookie (RFC 6265), checked when it is made.
// Not here: where cookies are kept and which belong to a URL (NSHTTPCookieStorage.h), header lines.
#pragma once

#include <quorvel/Platform/Foundation/NSURL.h>

namespace quorvel {

// The keys of a cookie's properties.
inline constexpr char16_t NSHTTPCookieName[] = u"Name";
inline constexpr char16_t NSHTTPCookieValue[] = u"Value";
inline constexpr char16_t NSHTTPCookieDomain[] = u"Domain";
inline constexpr char16_t NSHTTPCookiePath[] = u"Path";
inline constexpr char16_t NSHTTPCookieOriginURL[] = u"OriginURL";
inline constexpr char16_t NSHTTPCookieExpires[] = u"Expires";
inline constexpr char16_t NSHTTPCookieMaximumAge[] = u"Max-Age";
inline constexpr char16_t NSHTTPCookieDiscard[] = u"Discard";
inline constexpr char16_t NSHTTPCookieSecure[] = u"Secure";
inline constexpr char16_t NSHTTPCookieHTTPOnly[] = u"HttpOnly";

/// Immutable, and cheap to copy.
class NSHTTPCookie {
 public:
  /// `initWithProperties:`: nil without a name, a value (which may be empty), a path that begins with "/", and a domain
  /// or an origin URL (text or NSURL) that has a host; the domain counts when both are there. All are texts, none may
  /// hold a control character, a semicolon or an unpaired surrogate, the name no "=" and the domain nothing that a host
  /// does not hold. A leading dot of the domain stays, its ASCII letters become small.
  ///
  /// It ends at Expires (a date), or Max-Age (seconds, a number or a text of digits) from `now` on, which counts when
  /// both are there; without these, or with Discard true, it is of the session. Discard, Secure and HttpOnly are
  /// true as a number that is not 0 or as the text "TRUE".
  [[nodiscard]] static std::optional<NSHTTPCookie> withProperties(const Dictionary& properties, Date now);
  [[nodiscard]] static std::optional<NSHTTPCookie> withProperties(const Dictionary& properties);

  [[nodiscard]] const String& name() const { return name_; }
  [[nodiscard]] const String& value() const { return value_; }
  [[nodiscard]] const String& domain() const { return domain_; }
  [[nodiscard]] const String& path() const { return path_; }
  /// `expiresDate`: nil for a cookie of the session.
  [[nodiscard]] std::optional<Date> expiresDate() const { return expires_; }
  [[nodiscard]] bool isSessionOnly() const { return !expires_; }
  [[nodiscard]] bool isSecure() const { return isSecure_; }
  [[nodiscard]] bool isHTTPOnly() const { return isHTTPOnly_; }
  /// Properties from which an equal cookie is made.
  [[nodiscard]] Dictionary properties() const;

  /// True when both have the same name, domain and path, so that one takes the other's place.
  [[nodiscard]] bool isSamePlaceAs(const NSHTTPCookie& other) const;
  [[nodiscard]] bool isExpired(Date now) const { return expires_ && *expires_ <= now; }
  /// True when a request for the URL carries it: the host is the domain, or lies below a domain with a leading dot; the
  /// path lies at or below the cookie's (RFC 6265, section 5.1.4); a secure one goes to the schemes https and wss only.
  [[nodiscard]] bool belongsTo(const NSURL& url) const;

  friend bool operator==(const NSHTTPCookie&, const NSHTTPCookie&) = default;

 private:
  NSHTTPCookie() = default;
  [[nodiscard]] bool takeTexts(const Dictionary& properties);

  String name_;
  String value_;
  String domain_;
  String path_;
  std::optional<Date> expires_;
  bool isSecure_ = false;
  bool isHTTPOnly_ = false;
};

}  // namespace quorvel
