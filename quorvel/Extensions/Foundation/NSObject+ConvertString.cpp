#include <quorvel/Extensions/Foundation/NSObject+ConvertString.h>
#include <quorvel/Platform/Foundation/Description.h>

namespace quorvel {

std::optional<String> toStringValue(const Value& value) {
  if (value.isNil()) return nil;
  return description(value);
}

}  // namespace quorvel
