#include <quorvel/Extensions/Foundation/NSDictionary+ConvertJSON.h>
#include <quorvel/Platform/Foundation/NSJSONSerialization.h>

namespace quorvel {

std::optional<String> toJSONString(const Dictionary& record) { return toJSONString(record, 0); }

std::optional<String> toJSONString(const Dictionary& record, std::uint64_t options) {
  return NSJSONSerialization::write(record, options | NSJSONSerialization::kSortedKeys);
}

}  // namespace quorvel
