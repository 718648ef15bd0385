// String extension, Base64: the form of the value type.
// Not here: the class-level form (NSString+URLEncoding.h), Base64 of bytes (NSString+Additions+Base64.h).
#pragma once

#include <quorvel/Platform/Foundation/String.h>

namespace quorvel {

/// `base64Encoded`: the receiver's UTF-8 bytes in Base64, and of that text every character, letters and digits too, as
/// %XX. nil when the receiver holds an unpaired surrogate.
///
///     base64Encoded(u"ab")   // "%59%57%49%3D"
[[nodiscard]] std::optional<String> base64Encoded(const String& text);

}  // namespace quorvel
