#include <quorvel/Extensions/Foundation/NSString+Additions+Base64.h>
#include <quorvel/Platform/Foundation/Base64.h>

namespace quorvel::NSStringAdditions {

std::optional<String> qv_URLSafeBase64StringWithData(const std::optional<Data>& data) {
  if (!data) return nil;
  return base64EncodedString(data->bytes(), Base64Alphabet::URLSafe);
}

}  // namespace quorvel::NSStringAdditions
