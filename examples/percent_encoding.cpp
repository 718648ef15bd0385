// The encoders, which differ in the characters that they leave, and the decoders, which differ in how they fail.
#include <iostream>

#include <quorvel/Extensions/Foundation/NSString+Additions+Parameters.h>
#include <quorvel/Extensions/Foundation/NSString+URLEncoding.h>
#include <quorvel/Extensions/Foundation/String+URLEncoding.h>

using namespace quorvel;

int main() {
  const String texts[] = {u"a b&c=d", u"여행/회의.pdf", u"[e\u0301]?~{|}", u"50%+1\t"};
  for (const String& text : texts) {
    std::cout << text << "\n  stringByEncodingCharacterSet  " << stringByEncodingCharacterSet(text)
              << "\n  stringByURLEncoding           " << stringByURLEncoding(text)
              << "\n  urlEncodeString               " << urlEncodeString(text) << "\n  urlEncodedString(false)       "
              << urlEncodedString(text, false) << "\n  urlEncodedString(true)        " << urlEncodedString(text, true)
              << "\n  query value                   "
              << NSStringAdditions::qv_percentEscapedQueryStringValueFromStringWithEncoding(text, 4) << '\n';
  }
  const String encoded[] = {u"%ED%95%9C+%f0%9f%a7%b3", u"100%", u"%C0%80", u"%2525"};
  for (const String& text : encoded) {
    std::cout << text << " decoded: " << stringByDecodingPercentChars(text) << ", " << urlDecodeString(text) << '\n';
  }
  const String unpaired = u"\xD83D!";
  std::cout << "an unpaired surrogate: '" << stringByEncodingCharacterSet(unpaired) << "', '"
            << urlEncodeString(unpaired) << "', '" << urlEncodedString(unpaired, true) << "'\n"
            << NSStringAdditions::qv_parameterStringWithKey(u"q", u"a&b=c d") << ", "
            << NSStringAdditions::qv_parameterStringWithKey(u"page", 5) << ", "
            << NSStringAdditions::qv_parameterStringWithArray(List{u"a=1", u"b=2"}) << ", "
            << NSStringAdditions::qv_parameterStringWithArray(List{}) << '\n'
            << "'" << removeControlCharacterSet(u"a\t\tb\r\nc") << "', '" << removeWhiteCharacterSet(u"a\tb\u00A0c")
            << "'\n";
}
