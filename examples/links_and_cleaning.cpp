// Links inside a message, and a message made fit for one line, for markup, for a script and for an old database.
#include <iostream>

#include <quorvel/Extensions/Foundation/NSString+Additions+Cleaning.h>
#include <quorvel/Extensions/Foundation/NSString+Additions+Links.h>
#include <quorvel/Extensions/Foundation/NSString+Badge.h>

using namespace quorvel;

int main() {
  for (const StringView text : std::initializer_list<StringView>{
           u"여행은 example.com/여행에서, 문의는 a@b.kr로.",
           u"(see https://ko.wikipedia.org/wiki/A_(b)) and tel:02-123", u"README.md and v1.2.3 are no links"}) {
    std::cout << text << '\n';
    for (const NSTextCheckingResult& link : qv_linkDetector().matches(text)) {
      std::cout << "  " << link.range.location << "+" << link.range.length << ' ' << link.url.absoluteString() << '\n';
    }
  }
  for (const StringView text :
       std::initializer_list<StringView>{u"go to example.com!", u"relative/path", u"not a link"}) {
    const std::optional<NSURL> url = qv_URL(text);
    std::cout << text << ": " << (url ? url->absoluteString() : String(u"no URL")) << '\n';
  }
  const String message = u" <b>\"안녕\"</b> & 👋\n끝 ";
  std::cout << "one line: '" << stringByRemovingNewLineCharacters(stringByTrimmingWhitespaces(message)) << "'\n"
            << "markup: " << qv_appendToEscapedSymbol(message) << '\n'
            << "and back: "
            << (qv_removeToEscapedSymbol(qv_appendToEscapedSymbol(message)) == message ? "same" : "other") << '\n'
            << "script: \"" << qv_stringEscapedForJavasacript(message) << "\"\n"
            << "without emoji: '" << stringByRemovingEmojiCharacters(message) << "'\n"
            << "preview: " << truncatedStringWithMaxLength(message, 8) << '\n';
  for (const StringView count : std::initializer_list<StringView>{u"N", u"0", u"7", u"99", u"100", u"007"}) {
    std::cout << "badge " << count << ": " << badgeValue(count) << '\n';
  }
}
