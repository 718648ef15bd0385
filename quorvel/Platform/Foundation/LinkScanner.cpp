#include <algorithm>

#include <quorvel/Platform/Foundation/LinkScanner.h>
#include <quorvel/Platform/Foundation/LinkText.h>
#include <quorvel/Platform/Foundation/UnitScan.h>

namespace quorvel::links {
namespace {

constexpr std::size_t kSchemeLength = 32;
constexpr std::size_t kMailboxLength = 64;  // RFC 5321, section 4.5.3.1.1
constexpr std::size_t kIPv6Length = 47;     // with its brackets

bool equalsIgnoringCase(StringView text, StringView lower) {
  return std::ranges::equal(text.units(), lower.units(),
                            [](char16_t a, char16_t b) { return unitscan::foldASCII(a) == b; });
}

template <std::size_t N>
bool isOneOf(StringView text, const StringView (&words)[N]) {
  return std::ranges::any_of(words, [text](StringView word) { return equalsIgnoringCase(text, word); });
}

/// Schemes whose URLs have a host.
constexpr StringView kHostSchemes[] = {u"http", u"https", u"ftp", u"ftps", u"sftp", u"ws", u"wss"};
/// Schemes that carry something to be run.
constexpr StringView kRefusedSchemes[] = {u"javascript", u"vbscript", u"data"};
/// Top-level names that end the names of files more often than those of hosts.
constexpr StringView kFileExtensions[] = {u"md", u"py", u"rs", u"sh", u"ps", u"so", u"cc", u"mm", u"zip", u"mov"};

bool isMailboxUnit(char16_t unit) {
  return isAlphanumeric(unit) || unit == u'.' || unit == u'_' || unit == u'%' || unit == u'+' || unit == u'-';
}

/// What ends a sentence, or stands around a link, rather than in it.
bool isClosingMark(char16_t unit) {
  return std::u16string_view(u".,;:!?'*~([").find(unit) != std::u16string_view::npos;
}

/// Where the link begins in its first label: behind East Asian words that end in ASCII, and without marks.
std::size_t startOfHost(StringView text, std::size_t from, std::size_t dot) {
  std::size_t start = from;
  for (std::size_t i = dot; i > from;) {
    if (isEastAsian(unicode::previousScalar(text, i))) break;
    if (isAlphanumeric(text[i])) start = i;
    if (text[i] >= 0x80) return from;
  }
  if (start == from && isEastAsian(text[dot - 1])) return from;
  while (start < dot && (text[start] == u'-' || text[start] == u'_')) ++start;
  return start;
}

std::size_t findMark(StringView text, std::size_t from) {
  std::size_t length = 0;
  return unitscan::AnyOf(u":.@").find(text, from, length);
}

}  // namespace

std::optional<Link> LinkScanner::next() {
  while (true) {
    const std::size_t place = findMark(text_, position_);
    if (place >= text_.size()) return std::nullopt;
    position_ = place + 1;
    std::optional<Link> link = text_[place] == u':'   ? linkAtColon(place)
                               : text_[place] == u'.' ? linkAtDot(place)
                                                      : linkAtSign(place);
    if (!link) continue;
    position_ = floor_ = link->end;
    return link;
  }
}

// Schemes

std::size_t LinkScanner::schemeStart(std::size_t colon) const {
  const std::size_t least = std::max(floor_, colon > kSchemeLength ? colon - kSchemeLength : 0);
  std::size_t start = colon;
  while (start > least && (isAlphanumeric(text_[start - 1]) || text_[start - 1] == u'+' || text_[start - 1] == u'-')) {
    --start;
  }
  const std::size_t hyphen = piece(start, colon).units().rfind(u'-');
  if (hyphen != std::u16string_view::npos && isOneOf(piece(start + hyphen + 1, colon), kHostSchemes)) {
    start += hyphen + 1;
  }
  while (start < colon && !isLetter(text_[start])) ++start;
  return start;
}

std::optional<Link> LinkScanner::telephone(std::size_t colon) const {
  static constexpr StringView kSchemes[] = {u"tel", u"sms"};
  const std::size_t start = schemeStart(colon);
  if (!isOneOf(piece(start, colon), kSchemes)) return std::nullopt;
  std::size_t digits = 0;
  std::size_t end = colon + 1;
  for (std::size_t i = end; i < text_.size(); ++i) {
    if (isDigit(text_[i])) {
      ++digits;
      end = i + 1;
    } else if (text_[i] != u'-' && text_[i] != u'.' && (text_[i] != u'+' || i != colon + 1)) {
      break;
    }
  }
  if (digits < 3) return std::nullopt;
  return Link{Link::Form::Whole, start, end, end, end, {}};
}

/// Finds the host of the authority that begins at `from`; false when there is none.
bool LinkScanner::findAuthorityHost(Link& link, std::size_t from) const {
  link.hostStart = from;
  for (std::size_t i = from; isPathScalar(unitAt(i)) && unitAt(i) < 0x80; ++i) {
    if (unitAt(i) == u'/' || unitAt(i) == u'?' || unitAt(i) == u'#') break;
    if (unitAt(i) == u'@') link.hostStart = i + 1;
  }
  if (unitAt(link.hostStart) == u'[') {
    const StringView literal = text_.sub(link.hostStart, kIPv6Length);
    const std::size_t size = literal.units().find_first_not_of(u"0123456789abcdefABCDEF:.", 1);
    if (size == std::u16string_view::npos || size < 4 || literal[size] != u']') return false;
    link.hostEnd = link.hostStart + size + 1;
    for (const char16_t unit : literal.sub(0, size + 1)) link.host += static_cast<char>(unit);
    return true;
  }
  link.hostEnd = endOfHost(text_, link.hostStart, endOfLabels(text_, link.hostStart), Suffix::Any);
  std::optional<std::string> host = asciiHost(piece(link.hostStart, link.hostEnd));
  if (!host || unitAt(link.hostEnd) == u'@' || text_.sub(link.hostEnd, 3) == u"://") return false;
  link.host = std::move(*host);
  return true;
}

std::optional<Link> LinkScanner::linkAtColon(std::size_t colon) {
  if (text_.sub(colon, 3) != u"://") return telephone(colon);
  Link link;
  link.start = schemeStart(colon);
  const StringView scheme = piece(link.start, colon);
  if (scheme.isEmpty() || isOneOf(scheme, kRefusedSchemes)) return std::nullopt;
  const std::size_t rest = colon + 3;
  if (findAuthorityHost(link, rest)) {
    link.end = endOfPortAndPath(link.hostEnd);
    return link;
  }
  if (isOneOf(scheme, kHostSchemes)) return std::nullopt;
  link.host.clear();
  link.end = link.hostStart = link.hostEnd = endOfPath(rest);
  if (link.end == rest) return std::nullopt;
  return link;
}

// Hosts

std::size_t LinkScanner::labelStart(std::size_t dot) const {
  std::size_t start = dot;
  while (start > floor_) {
    std::size_t before = start;
    if (!isHostScalar(unicode::previousScalar(text_, before)) || before < floor_) break;
    start = before;
  }
  return start;
}

/// True when a mailbox and "@" begin at `from`.
bool LinkScanner::isMailbox(std::size_t from) const {
  const std::size_t most = std::min(text_.size(), from + kMailboxLength);
  while (from < most && isMailboxUnit(text_[from])) ++from;
  return unitAt(from) == u'@';
}

/// True for what is more often a file, an hour or two sentences than a host, unless a port, a path or "www." tell.
bool LinkScanner::needsMore(const Link& link) const {
  const StringView host = piece(link.hostStart, link.hostEnd);
  if (link.end > link.hostEnd || equalsIgnoringCase(host.sub(0, 4), u"www.")) return false;
  if (isIPv4(host)) return true;
  const std::size_t dot = host.units().rfind(u'.');
  const StringView last = host.sub(dot + 1);
  if (host.units().find(u'.') == dot && isOneOf(last, kFileExtensions)) return true;
  const bool isTwoLetters = last.size() == 2 && isLetter(last[0]);
  const bool isSentence = isTwoLetters && last[0] < u'a' && last[1] >= u'a';
  const bool isNumber =
      isTwoLetters && host.sub(0, dot).units().find_first_not_of(u"0123456789.") == std::u16string_view::npos;
  return isSentence || isNumber;
}

std::optional<Link> LinkScanner::linkAtDot(std::size_t dot) {
  const std::size_t first = labelStart(dot);
  const std::size_t end = first == dot ? dot : endOfLabels(text_, first);
  position_ = std::max(end, dot + 1);
  if (end <= dot || isMailbox(end)) return std::nullopt;
  if (text_.sub(end, 3) == u"://") return std::nullopt;
  Link link{Link::Form::BareHost, startOfHost(text_, first, dot), 0, 0, 0, {}};
  const char16_t before = link.start > 0 ? text_[link.start - 1] : u'\0';
  if (link.start == dot || before == u'@' || before == u'/' || before == u'\\') return std::nullopt;
  link.hostStart = link.start;
  const bool isNumeric = isIPv4(piece(link.start, end));
  link.hostEnd = isNumeric ? end : endOfHost(text_, link.start, end, Suffix::Known);
  std::optional<std::string> host = asciiHost(piece(link.start, link.hostEnd));
  if (!host || (!isNumeric && !isRegistrable(*host))) return std::nullopt;
  link.host = std::move(*host);
  link.end = endOfPortAndPath(link.hostEnd);
  if (needsMore(link)) return std::nullopt;
  return link;
}

// E-mail addresses

std::optional<Link> LinkScanner::linkAtSign(std::size_t at) {
  const std::size_t least = std::max(floor_, at > kMailboxLength ? at - kMailboxLength : 0);
  std::size_t start = at;
  while (start > least && isMailboxUnit(text_[start - 1])) --start;
  const bool isTooLong = start == least && start > floor_ && isMailboxUnit(text_[start - 1]);
  const std::size_t dots = piece(start, at).units().rfind(u"..");
  if (dots != std::u16string_view::npos) start += dots + 2;
  while (start < at && (text_[start] == u'.' || text_[start] == u'-')) ++start;
  if (isTooLong || start == at || text_[at - 1] == u'.') return std::nullopt;

  const std::size_t end = endOfLabels(text_, at + 1);
  Link link{Link::Form::BareMail, start, 0, at + 1, endOfHost(text_, at + 1, end, Suffix::Known), {}};
  std::optional<std::string> host = asciiHost(piece(at + 1, link.hostEnd));
  if (!host || !isRegistrable(*host) || unitAt(link.hostEnd) == u'@') return std::nullopt;
  link.host = std::move(*host);
  link.end = link.hostEnd;
  constexpr StringView kScheme = u"mailto:";
  if (start >= floor_ + kScheme.size() &&
      equalsIgnoringCase(text_.sub(start - kScheme.size(), kScheme.size()), kScheme)) {
    link.form = Link::Form::Whole;
    link.start = start - kScheme.size();
    if (unitAt(link.end) == u'?') link.end = endOfPath(link.end);
  }
  return link;
}

// What follows a host

/// Behind ":" and a port of 1 to 65535, particles may follow; else the host's end.
std::size_t LinkScanner::endOfPort(std::size_t hostEnd) const {
  if (unitAt(hostEnd) != u':') return hostEnd;
  std::size_t end = hostEnd + 1;
  std::uint32_t port = 0;
  while (isDigit(unitAt(end)) && port <= 0xFFFF) port = port * 10 + static_cast<std::uint32_t>(unitAt(end++) - u'0');
  if (port == 0 || port > 0xFFFF) return hostEnd;
  const std::size_t wordEnd = endOfLabels(text_, end);
  return wordEnd == end || areParticles(piece(end, wordEnd)) ? end : hostEnd;
}

std::size_t LinkScanner::endOfPortAndPath(std::size_t hostEnd) const {
  const std::size_t end = endOfPort(hostEnd);
  const char16_t mark = unitAt(end);
  const char16_t after = unitAt(end + 1);
  const bool isPath = mark == u'/' || ((mark == u'?' || mark == u'#') && after > u' ' && after < 0x80);
  return isPath ? endOfPath(end) : end;
}

/// The end of path, query and fragment: before a closing bracket that nothing opened, without what ends a sentence and
/// without particles behind ASCII.
std::size_t LinkScanner::endOfPath(std::size_t from) const {
  int rounds = 0;
  int squares = 0;
  std::size_t end = from;
  while (end < text_.size()) {
    const char16_t unit = text_[end];
    rounds += unit == u'(' ? 1 : unit == u')' ? -1 : 0;
    squares += unit == u'[' ? 1 : unit == u']' ? -1 : 0;
    std::size_t next = end;
    if (rounds < 0 || squares < 0 || !isPathScalar(unicode::nextScalar(text_, next))) break;
    end = next;
  }
  while (end > from && isClosingMark(text_[end - 1])) --end;
  const std::size_t syllables = startOfSyllables(text_, from, end);
  if (syllables == end || syllables == from) return end;
  const char16_t before = text_[syllables - 1];
  const bool follows = isAlphanumeric(before) || before == u')' || (before == u'/' && syllables == from + 1);
  return follows && areParticles(piece(syllables, end)) ? syllables : end;
}

}  // namespace quorvel::links
