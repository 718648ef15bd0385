#include <quorvel/Extensions/Foundation/NSString+Additions+Links.h>

namespace quorvel {

const NSDataDetector& qv_linkDetector(StringView) {
  static const NSDataDetector detector = *NSDataDetector::withTypes(kTextCheckingTypeLink);
  return detector;
}

std::optional<NSURL> qv_URL(StringView text) {
  if (std::optional<NSTextCheckingResult> link = qv_linkDetector(text).firstMatch(text)) return std::move(link->url);
  return NSURL::withString(text);
}

}  // namespace quorvel
