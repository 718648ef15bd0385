#include <quorvel/Extensions/Foundation/NSString+Query.h>
#include <quorvel/Extensions/Foundation/NSString+URLEncoding.h>
#include <quorvel/Extensions/Foundation/QueryPairs.h>

namespace quorvel {

Dictionary parseQuery(const String& text) {
  Dictionary result;
  detail::forEachQueryPair(text, [&](StringView key, StringView value) {
    result.set(stringByDecodingPercentChars(key), stringByDecodingPercentChars(value));
  });
  return result;
}

}  // namespace quorvel
