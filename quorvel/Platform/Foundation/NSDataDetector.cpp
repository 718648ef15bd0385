#include <quorvel/Platform/Foundation/LinkScanner.h>
#include <quorvel/Platform/Foundation/LinkText.h>
#include <quorvel/Platform/Foundation/NSDataDetector.h>

namespace quorvel {
namespace {

using links::Link;

bool isHexDigit(char16_t unit) { return links::isDigit(unit) || ((unit | 0x20) >= u'a' && (unit | 0x20) <= u'f'); }

void appendEscaped(StringBuilder& out, char32_t scalar) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string bytes;
  unicode::appendUTF8(bytes, scalar);
  for (const char byte : bytes) {
    const auto value = static_cast<unsigned char>(byte);
    const char escape[] = {'%', kDigits[value >> 4], kDigits[value & 15]};
    out.appendASCII({escape, sizeof escape});
  }
}

/// Writes pieces of a link as a URL has them; one "#" begins the fragment, later ones are escaped.
class PieceWriter {
 public:
  explicit PieceWriter(StringBuilder& out) : out_(out) {}

  void append(StringView text) {
    for (std::size_t i = 0; i < text.size();) {
      const std::size_t place = i;
      const char32_t scalar = unicode::nextScalar(text, i);
      const bool isWholeEscape = text.size() - place > 2 && isHexDigit(text[place + 1]) && isHexDigit(text[place + 2]);
      if (scalar > 0x7F || (scalar == u'%' && !isWholeEscape) || (scalar == u'#' && hasFragment_)) {
        appendEscaped(out_, scalar);
      } else {
        out_.append(text[place]);
        hasFragment_ = hasFragment_ || scalar == u'#';
      }
    }
  }

 private:
  StringBuilder& out_;
  bool hasFragment_ = false;
};

std::optional<NSURL> urlOf(StringView text, const Link& link) {
  StringBuilder out;
  if (link.form == Link::Form::BareHost) out.append(u"http://");
  if (link.form == Link::Form::BareMail) out.append(u"mailto:");
  PieceWriter writer(out);
  writer.append(text.sub(link.start, link.hostStart - link.start));
  out.appendASCII(link.host);
  writer.append(text.sub(link.hostEnd, link.end - link.hostEnd));
  return NSURL::withString(out.view());
}

std::optional<NSTextCheckingResult> nextResult(links::LinkScanner& scanner, StringView text) {
  while (const std::optional<Link> link = scanner.next()) {
    if (std::optional<NSURL> url = urlOf(text, *link)) {
      return NSTextCheckingResult{kTextCheckingTypeLink, {link->start, link->end - link->start}, std::move(*url)};
    }
  }
  return nil;
}

}  // namespace

std::optional<NSDataDetector> NSDataDetector::withTypes(std::uint64_t types) {
  if ((types & kTextCheckingTypeLink) == 0) return nil;
  return NSDataDetector();
}

std::vector<NSTextCheckingResult> NSDataDetector::matches(StringView text) const {
  std::vector<NSTextCheckingResult> results;
  links::LinkScanner scanner(text);
  while (std::optional<NSTextCheckingResult> result = nextResult(scanner, text)) results.push_back(std::move(*result));
  return results;
}

std::optional<NSTextCheckingResult> NSDataDetector::firstMatch(StringView text) const {
  links::LinkScanner scanner(text);
  return nextResult(scanner, text);
}

}  // namespace quorvel
