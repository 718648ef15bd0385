#include <algorithm>

#include <unistd.h>

#include <quorvel/Platform/Foundation/NSURL.h>
#include <quorvel/Platform/Foundation/PathOperations.h>
#include <quorvel/Platform/Foundation/PercentEncoding.h>

namespace quorvel {
namespace {

constexpr bool isLetter(char16_t unit) { return (unit | 0x20) >= u'a' && (unit | 0x20) <= u'z'; }
constexpr bool isDigit(char16_t unit) { return unit >= u'0' && unit <= u'9'; }
constexpr bool isHexDigit(char16_t unit) { return isDigit(unit) || ((unit | 0x20) >= u'a' && (unit | 0x20) <= u'f'); }
constexpr bool isAllowed(char16_t unit) {
  constexpr std::u16string_view kMarks = u"-._~:/?#[]@!$&'()*+,;=";
  return unit < 0x80 && (isLetter(unit) || isDigit(unit) || kMarks.find(unit) != std::u16string_view::npos);
}

/// True when every unit may stand in a URL, escapes are whole and there is at most one "#".
bool isValid(StringView text) {
  std::size_t fragments = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == u'%') {
      if (text.size() - i < 3 || !isHexDigit(text[i + 1]) || !isHexDigit(text[i + 2])) return false;
      i += 2;
    } else if (!isAllowed(text[i]) || (text[i] == u'#' && ++fragments > 1)) {
      return false;
    }
  }
  return !text.isEmpty();
}

/// The first place at or after `from` of one of `stops`, or the text's size.
std::size_t findAny(StringView text, std::u16string_view stops, std::size_t from) {
  return std::min(text.units().find_first_of(stops, from), text.size());
}

/// Units of the scheme before its colon; 0 when there is none (RFC 3986, section 3.1).
std::size_t schemeSize(StringView text) {
  const std::size_t end = findAny(text, u":/?#", 0);
  if (end == text.size() || text[end] != u':' || !isLetter(end ? text[0] : u':')) return 0;
  const auto isPart = [](char16_t unit) {
    return isLetter(unit) || isDigit(unit) || unit == u'+' || unit == u'-' || unit == u'.';
  };
  return std::all_of(text.begin(), text.begin() + end, isPart) ? end : 0;
}

struct Place {
  std::size_t from;
  std::size_t to;
};

/// Where the authority stands, behind "//"; empty where there is none.
Place authority(StringView text, std::size_t schemeSize) {
  const std::size_t start = schemeSize ? schemeSize + 1 : 0;
  if (text.sub(start, 2) != u"//") return {start, start};
  return {start + 2, findAny(text, u"/?#", start + 2)};
}

/// The host and port: the authority behind its last "@".
Place host(StringView text, Place authority) {
  const std::size_t at = text.sub(authority.from, authority.to - authority.from).units().rfind(u'@');
  return {at == std::u16string_view::npos ? authority.from : authority.from + at + 1, authority.to};
}

String withBracketsEncoded(StringView text) {
  const Place kept = host(text, authority(text, schemeSize(text)));
  StringBuilder out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool isBracket = text[i] == u'[' || text[i] == u']';
    if (!isBracket || (i >= kept.from && i < kept.to)) {
      out.append(text[i]);
    } else {
      out.append(text[i] == u'[' ? StringView(u"%5B") : StringView(u"%5D"));
    }
  }
  return out.finish();
}

/// The working folder with a slash at its end; nil when it has no name that is text.
std::optional<String> workingFolder() {
  char path[4096];
  return ::getcwd(path, sizeof path) ? String::fromUTF8(std::string(path) + "/") : nil;
}

/// The path without its last segment; `path` is not empty.
String deletingLastSegment(StringView path) {
  const bool endsInSlash = path.back() == u'/';
  const StringView segments = path.sub(0, path.size() - (endsInSlash ? 1 : 0));
  const std::size_t slash = segments.units().rfind(u'/');
  const StringView last = slash == std::u16string_view::npos ? segments : segments.sub(slash + 1);
  StringBuilder out;
  if (path == u"/" || last == u"." || last == u"..") {
    out.append(segments);
    out.append(u"/../");
  } else if (slash == std::u16string_view::npos) {
    out.append(u"./");
  } else {
    out.append(segments.sub(0, slash + 1));
  }
  return out.finish();
}

}  // namespace

NSURL::NSURL(String text) : text_(std::move(text)) {
  schemeSize_ = static_cast<std::uint32_t>(quorvel::schemeSize(text_));
  const std::size_t start = authority(text_, schemeSize_).to;
  pathStart_ = static_cast<std::uint32_t>(start);
  pathEnd_ = static_cast<std::uint32_t>(findAny(text_, u"?#", start));
}

std::optional<NSURL> NSURL::withString(StringView text) {
  if (!isValid(text)) return nil;
  const bool hasBrackets = text.units().find_first_of(u"[]") != std::u16string_view::npos;
  return NSURL(hasBrackets ? withBracketsEncoded(text) : String(text));
}

std::optional<NSURL> NSURL::fileURLWithPath(StringView path) {
  if (path.isEmpty() || path.units().find(u'\0') != std::u16string_view::npos) return nil;
  const std::optional<String> folder = path.front() == u'/' ? String() : workingFolder();
  if (!folder) return nil;
  StringBuilder whole;
  whole.append(*folder);
  whole.append(path);
  constexpr PercentAllowed kPath =
      PercentAllowed::only("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/!$&'()*+,=:@");
  const std::optional<String> encoded = addingPercentEncoding(whole.finish(), kPath);
  if (!encoded) return nil;
  StringBuilder text;
  text.append(u"file://");
  text.append(*encoded);
  return NSURL(text.finish());
}

StringView NSURL::scheme() const { return schemeSize_ ? StringView(text_).sub(0, schemeSize_) : StringView(nil); }

StringView NSURL::host() const {
  const Place place = authority(text_, schemeSize_);
  if (place.from == (schemeSize_ ? schemeSize_ + 1 : 0)) return nil;
  const Place inner = quorvel::host(text_, place);
  const StringView text = StringView(text_).sub(inner.from, inner.to - inner.from);
  const std::size_t colon = text.units().find_last_of(u":]");
  return colon == std::u16string_view::npos || text[colon] == u']' ? text : text.sub(0, colon);
}

StringView NSURL::encodedPath() const { return StringView(text_).sub(pathStart_, pathEnd_ - pathStart_); }

std::optional<String> NSURL::path() const {
  StringView path = encodedPath();
  if (path.size() > 1 && path.back() == u'/') path = path.sub(0, path.size() - 1);
  return removingPercentEncoding(path);
}

std::optional<String> NSURL::lastPathComponent() const {
  const std::optional<String> whole = path();
  if (!whole) return nil;
  return String(paths::lastPathComponent(*whole));
}

NSURL NSURL::byDeletingLastPathComponent() const {
  const StringView path = encodedPath();
  if (path.isEmpty() || (schemeSize_ && path.front() != u'/')) return *this;
  const StringView text = text_;
  StringBuilder out;
  out.append(text.sub(0, pathStart_));
  out.append(deletingLastSegment(path));
  out.append(text.sub(pathEnd_));
  return NSURL(out.finish());
}

}  // namespace quorvel
