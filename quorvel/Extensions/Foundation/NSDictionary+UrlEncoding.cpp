#include <quorvel/Extensions/Foundation/NSDictionary+UrlEncoding.h>
#include <quorvel/Extensions/Foundation/NSString+URLEncoding.h>
#include <quorvel/Platform/Foundation/Description.h>

namespace quorvel {

String urlEncode(const Value& value) { return stringByEncodingCharacterSet(description(value)); }

String urlEncodedString(const Dictionary& record) {
  StringBuilder text;
  for (const Entry& entry : record) {
    if (text.size() > 0) text.append(u'&');
    text.append(urlEncode(entry.key));
    text.append(u'=');
    text.append(urlEncode(entry.value));
  }
  return text.finish();
}

}  // namespace quorvel
