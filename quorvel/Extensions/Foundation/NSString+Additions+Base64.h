// NSString(Additions), Base64: the URL-safe form of bytes.
// Not here: Base64 of text (NSString+URLEncoding.h, String+Base64.h).
#pragma once

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel::NSStringAdditions {

/// `qv_URLSafeBase64StringWithData:`: the bytes in Base64 with "-" and "_" for "+" and "/" (RFC 4648, section 5), the
/// padding kept. nil for nil.
[[nodiscard]] std::optional<String> qv_URLSafeBase64StringWithData(const std::optional<Data>& data);

}  // namespace quorvel::NSStringAdditions
