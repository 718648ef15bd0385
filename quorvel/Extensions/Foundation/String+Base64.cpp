#include <quorvel/Extensions/Foundation/String+Base64.h>
#include <quorvel/Extensions/Foundation/String+URLEncoding.h>
#include <quorvel/Platform/Foundation/Base64.h>

namespace quorvel {

std::optional<String> base64Encoded(const String& text) {
  const std::optional<String> base64 = base64EncodedUTF8(text);
  if (!base64) return nil;
  return urlEncodedString(*base64, false);
}

}  // namespace quorvel
