// NSString(Hash): digests of text through its UTF-8 bytes.
// Not here: Base64 of text (NSString+URLEncoding.h, String+Base64.h). MD5 names things and protects nothing.
#pragma once

#include <quorvel/Platform/Foundation/String.h>

namespace quorvel {

/// `stringFromMD5`: the MD5 of the receiver's bytes as 32 lower-case hexadecimal digits. A U+0000 ends the hashed text;
/// an unpaired surrogate counts as U+FFFD. nil for nil and for the empty text.
///
///     stringFromMD5(u"abc")   // "900150983cd24fb0d6963f7d28e17f72"
[[nodiscard]] std::optional<String> stringFromMD5(StringView text);

/// `hashMD5`: the same, but the empty text has the digest of no bytes, 'd41d8cd98f00b204e9800998ecf8427e'.
[[nodiscard]] String hashMD5(const String& text);

/// `qv_HMAC_SHA256HashWithKey:`: the HMAC-SHA256 of the receiver's bytes, all of them, under the key's bytes, in
/// Base64: 44 characters. nil when either is nil or holds an unpaired surrogate.
[[nodiscard]] std::optional<String> qv_HMAC_SHA256HashWithKey(StringView text, StringView key);

}  // namespace quorvel
