#include <chrono>
#include <cmath>

#include <quorvel/Platform/Foundation/NSHTTPCookie.h>
#include <quorvel/Platform/Foundation/Unicode.h>

namespace quorvel {
namespace {

constexpr bool isControl(char16_t unit) { return unit < 0x20 || unit == 0x7F; }

bool isCookieText(StringView text) {
  for (const char16_t unit : text) {
    if (isControl(unit) || unit == u';') return false;
  }
  return !text.isNil() && unicode::isWellFormed(text);
}

bool isName(StringView text) {
  return isCookieText(text) && !text.isEmpty() && text.units().find(u'=') == std::u16string_view::npos;
}

/// A host, or a dot and a host. Characters beyond ASCII are left to the application.
bool isDomain(StringView text) {
  constexpr std::u16string_view kNeverInHosts = u" \"#%/<>?@\\^`{|},";
  return isCookieText(text) && !text.isEmpty() && text != u"." &&
         text.units().find_first_of(kNeverInHosts) == std::u16string_view::npos;
}

String withSmallLetters(StringView text) {
  return String::build(text.size(), [&](char16_t* out) {
    for (const char16_t unit : text) *out++ = unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit | 0x20) : unit;
    return text.size();
  });
}

String hostOf(const Value& origin) {
  const NSURL* given = origin.as<NSURL>();
  const std::optional<NSURL> url = given ? std::optional(*given) : NSURL::withString(origin.text());
  return url ? withSmallLetters(url->host()) : String();
}

bool isTrue(const Value& value) {
  const auto number = value.asNumber();
  return number ? number->boolValue() : value.text() == u"TRUE";
}

/// Seconds of a number, or of a text of digits with "-" before them or not.
std::optional<double> secondsOf(const Value& value) {
  if (const auto number = value.asNumber()) return number->doubleValue();
  StringView text = value.text();
  const bool isNegative = !text.isEmpty() && text.front() == u'-';
  if (isNegative) text = text.sub(1);
  if (text.isEmpty()) return nil;
  double seconds = 0;
  for (const char16_t unit : text) {
    if (unit < u'0' || unit > u'9') return nil;
    seconds = seconds * 10 + (unit - u'0');
  }
  return isNegative ? -seconds : seconds;
}

std::optional<Date> expiryOf(const Dictionary& properties, Date now) {
  std::optional<double> end;
  if (const auto date = properties[NSHTTPCookieExpires].asDate()) end = date->secondsSince1970;
  if (const auto age = secondsOf(properties[NSHTTPCookieMaximumAge])) end = now.secondsSince1970 + *age;
  if (!end || !std::isfinite(*end) || isTrue(properties[NSHTTPCookieDiscard])) return nil;
  return Date{*end};
}

Date currentDate() {
  const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
  return Date{std::chrono::duration<double>(sinceEpoch).count()};
}

bool hostMatches(StringView host, StringView domain) {
  if (domain.front() != u'.') return host == domain;
  return host == domain.sub(1) || (host.size() > domain.size() && host.sub(host.size() - domain.size()) == domain);
}

bool pathMatches(StringView path, StringView prefix) {
  if (path.sub(0, prefix.size()) != prefix) return false;
  return path.size() == prefix.size() || prefix.back() == u'/' || path[prefix.size()] == u'/';
}

}  // namespace

bool NSHTTPCookie::takeTexts(const Dictionary& properties) {
  name_ = properties[NSHTTPCookieName].text();
  path_ = properties[NSHTTPCookiePath].text();
  const StringView value = properties[NSHTTPCookieValue].text();
  const StringView domain = properties[NSHTTPCookieDomain].text();
  value_ = value;
  domain_ = domain.isEmpty() ? hostOf(properties[NSHTTPCookieOriginURL]) : withSmallLetters(domain);
  return isName(name_) && isCookieText(value) && isDomain(domain_) && isCookieText(path_) && !path_.isEmpty() &&
         path_[0] == u'/';
}

std::optional<NSHTTPCookie> NSHTTPCookie::withProperties(const Dictionary& properties, Date now) {
  NSHTTPCookie cookie;
  if (!cookie.takeTexts(properties)) return nil;
  cookie.expires_ = expiryOf(properties, now);
  cookie.isSecure_ = isTrue(properties[NSHTTPCookieSecure]);
  cookie.isHTTPOnly_ = isTrue(properties[NSHTTPCookieHTTPOnly]);
  return cookie;
}

std::optional<NSHTTPCookie> NSHTTPCookie::withProperties(const Dictionary& properties) {
  return withProperties(properties, currentDate());
}

Dictionary NSHTTPCookie::properties() const {
  Dictionary result{
      {NSHTTPCookieName, name_}, {NSHTTPCookieValue, value_}, {NSHTTPCookieDomain, domain_}, {NSHTTPCookiePath, path_}};
  if (expires_) result.set(NSHTTPCookieExpires, *expires_);
  if (isSecure_) result.set(NSHTTPCookieSecure, u"TRUE");
  if (isHTTPOnly_) result.set(NSHTTPCookieHTTPOnly, u"TRUE");
  return result;
}

bool NSHTTPCookie::isSamePlaceAs(const NSHTTPCookie& other) const {
  return name_ == other.name_ && domain_ == other.domain_ && path_ == other.path_;
}

bool NSHTTPCookie::belongsTo(const NSURL& url) const {
  const String scheme = withSmallLetters(url.scheme());
  if (isSecure_ && scheme != u"https" && scheme != u"wss") return false;
  const String path = url.path().value_or(u"");
  return hostMatches(withSmallLetters(url.host()), domain_) &&
         pathMatches(path.isEmpty() ? StringView(u"/") : StringView(path), path_);
}

}  // namespace quorvel
