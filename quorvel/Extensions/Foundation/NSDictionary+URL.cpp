#include <quorvel/Extensions/Foundation/NSDictionary+URL.h>
#include <quorvel/Extensions/Foundation/NSString+URLEncoding.h>
#include <quorvel/Platform/Foundation/Description.h>

namespace quorvel {

std::optional<String> queryString(const Dictionary& record) {
  if (record.isEmpty()) return nil;
  StringBuilder text;
  for (const auto& [key, value] : record) {
    text.append(text.size() == 0 ? u'?' : u'&');
    if (!value.isNumber() && !value.isString()) continue;
    text.append(urlEncodeString(description(key)).value_or(u"(null)"));
    text.append(u'=');
    text.append(value.isNumber() ? description(value) : urlEncodeString(*value.asString()).value_or(u"(null)"));
  }
  return text.finish();
}

}  // namespace quorvel
