#include <quorvel/Extensions/Foundation/NSArray+ConvertJSON.h>
#include <quorvel/Platform/Foundation/NSJSONSerialization.h>

namespace quorvel {

std::optional<String> toJSONString(const List& list) { return toJSONString(list, 0); }

std::optional<String> toJSONString(const List& list, std::uint64_t options) {
  return NSJSONSerialization::write(list, options | NSJSONSerialization::kSortedKeys);
}

}  // namespace quorvel
