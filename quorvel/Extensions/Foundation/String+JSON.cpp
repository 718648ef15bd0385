#include <quorvel/Extensions/Foundation/String+JSON.h>
#include <quorvel/Platform/Foundation/NSJSONSerialization.h>

namespace quorvel {

std::optional<Dictionary> jsonObject(StringView text) {
  Value value = NSJSONSerialization::parse(text);
  if (!value.isDictionary()) return nil;
  return std::move(*value.mutableDictionary());
}

}  // namespace quorvel
