#include <quorvel/Extensions/Foundation/NSString+Badge.h>
#include <quorvel/Platform/Foundation/NumberText.h>

namespace quorvel {

std::optional<String> badgeValue(const String& text) {
  constexpr std::int64_t kMost = 99;
  if (text == String(u"N") || text == String(u"!")) return text;
  const std::int64_t count = integerValue(text);
  if (count < 1) return nil;
  return count > kMost ? String(u"99+") : text;
}

}  // namespace quorvel
