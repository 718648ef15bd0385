// Links in arbitrary text: ranges in order and apart, URLs that are URLs, and the same links whatever stands before a
// line of its own.
#include <fuzz/FuzzInput.h>

#include <quorvel/Extensions/Foundation/NSString+Additions+Cleaning.h>
#include <quorvel/Extensions/Foundation/NSString+Additions+Links.h>
#include <quorvel/Platform/Foundation/Unicode.h>

using namespace quorvel;
using fuzz::require;

namespace {

using Matches = std::vector<NSTextCheckingResult>;

void checkMatches(const String& text, const Matches& matches) {
  std::uint64_t end = 0;
  for (const NSTextCheckingResult& match : matches) {
    require(match.range.location >= end && match.range.length > 0, "links are in order, apart and not empty");
    end = match.range.end();
    require(end <= text.size(), "links are inside the text");
    const StringView units = StringView(text).sub(match.range.location, match.range.length);
    require(unicode::isWellFormed(units), "a link splits no pair");
    require(NSURL::withString(match.url.absoluteString()) == match.url, "a link's URL is one");
    require(!match.url.scheme().isNil(), "a link's URL has a scheme");
  }
}

/// A line before moves the links and changes none.
void checkMoved(const String& text, const Matches& matches) {
  constexpr std::size_t kBefore = 2;
  StringBuilder moved;
  moved.append(u"x\n");
  moved.append(text);
  const String lines = moved.finish();
  const Matches found = qv_linkDetector().matches(lines);
  require(found.size() == matches.size(), "as many links in a later line");
  for (std::size_t i = 0; i < found.size(); ++i) {
    require(found[i].range.location == matches[i].range.location + kBefore && found[i].url == matches[i].url,
            "the same links in a later line");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const String text = input.rest();
  const Matches matches = qv_linkDetector().matches(text);
  checkMatches(text, matches);
  checkMoved(text, matches);
  const std::optional<NSTextCheckingResult> first = qv_linkDetector().firstMatch(text);
  require(first.has_value() != matches.empty() && (!first || *first == matches[0]), "the first match is the first");
  require(qv_removeToEscapedSymbol(qv_appendToEscapedSymbol(text)) == text, "markup escapes come back");
  require(
      stringByRemovingEmojiCharacters(stringByRemovingEmojiCharacters(text)) == stringByRemovingEmojiCharacters(text),
      "cleaning twice is cleaning once");
  return 0;
}
