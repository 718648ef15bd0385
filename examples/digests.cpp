// Digests, message codes and Base64 of texts and bytes.
#include <array>
#include <iostream>

#include <quorvel/Extensions/Foundation/NSString+Additions+Base64.h>
#include <quorvel/Extensions/Foundation/NSString+Hash.h>
#include <quorvel/Extensions/Foundation/NSString+URLEncoding.h>
#include <quorvel/Extensions/Foundation/String+Base64.h>

using namespace quorvel;

int main() {
  for (const String& text : {String(u"abc"), String(u"한글"), String()}) {
    std::cout << "'" << text << "': " << stringFromMD5(text) << ' ' << hashMD5(text) << '\n'
              << "  " << qv_HMAC_SHA256HashWithKey(text, u"key") << ' ' << stringByEncodingBase64(text) << ' '
              << base64Encoded(text) << '\n';
  }
  const std::array<std::uint8_t, 2> bytes{0xFB, 0xFF};
  std::cout << NSStringAdditions::qv_URLSafeBase64StringWithData(Data(bytes)) << ' '
            << qv_HMAC_SHA256HashWithKey(u"no key", nil) << '\n';
}
