// Percent coding and query strings on arbitrary text: what is encoded decodes to itself, records come back.
#include <fuzz/FuzzInput.h>

#include <quorvel/Extensions/Foundation/NSDictionary+URL.h>
#include <quorvel/Extensions/Foundation/NSString+Additions+Parameters.h>
#include <quorvel/Extensions/Foundation/NSString+Query.h>
#include <quorvel/Extensions/Foundation/NSString+URLEncoding.h>
#include <quorvel/Extensions/Foundation/String+URLEncoding.h>
#include <quorvel/Platform/Foundation/PercentEncoding.h>
#include <quorvel/Platform/Foundation/Unicode.h>

using namespace quorvel;
using fuzz::require;

namespace {

void checkEncoders(const String& text) {
  const bool wellFormed = unicode::isWellFormed(text);
  require(urlEncodeString(text).has_value() == wellFormed, "encoding fails on unpaired surrogates alone");
  if (!wellFormed) return;
  require(urlDecodeString(*urlEncodeString(text)) == text, "urlEncodeString decodes to the text");
  require(urlDecodeString(stringByEncodingCharacterSet(text)) == text,
          "stringByEncodingCharacterSet decodes to the text");
  require(urlDecodeString(*stringByURLEncoding(text)) == text, "stringByURLEncoding decodes to the text");
  require(urlDecodeString(urlEncodedString(text, false)) == text, "urlEncodedString(false) decodes to the text");
  require(urlDecodeString(urlEncodedString(text, true)) == text, "urlEncodedString(true) decodes to the text");
  require(addingPercentEncoding(text, forceEncodingCharacterSet(text)) == stringByEncodingCharacterSet(text),
          "the set and the fast form of the set encode alike");
}

void checkQuery(const String& key, const String& value) {
  if (!unicode::isWellFormed(key) || !unicode::isWellFormed(value)) return;
  const std::optional<String> query = queryString(Dictionary{{key, value}});
  require(query.has_value() && (*query)[0] == u'?', "a query begins with a question mark");
  const bool hasEquals =
      unicode::findUnit(key, u'=') != unicode::kInvalid || unicode::findUnit(value, u'=') != unicode::kInvalid;
  const Dictionary parsed = parseQuery(StringView(*query).sub(1));
  require(hasEquals || parsed == Dictionary{{key, value}}, "a query parses to its record");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const String key = input.text();
  const String text = input.rest();
  checkEncoders(text);
  checkQuery(key, text);
  require(stringByDecodingPercentChars(text) == urlDecodeString(text).value_or(text), "the decoders agree");
  require(removeControlCharacterSet(text).size() <= text.size(), "cleaning never lengthens");
  require(removeWhiteCharacterSet(text).size() == text.size(), "white space is replaced unit by unit");
  return 0;
}
