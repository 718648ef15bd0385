// Base64 (RFC 4648, sections 4 and 5) of bytes, padded, in one line.
// Not here: the families' own forms (NSString+Hash.h, NSString+Additions+Base64.h, String+Base64.h).
#pragma once

#include <optional>
#include <span>
#include <vector>

#include <quorvel/Platform/Foundation/String.h>

namespace quorvel {

/// The two last digits: "+" and "/", or "-" and "_".
enum class Base64Alphabet : std::uint8_t { Standard, URLSafe };

/// Characters of the encoded form of `size` bytes, padding included.
[[nodiscard]] constexpr std::size_t base64Length(std::size_t size) { return size / 3 * 4 + (size % 3 ? 4 : 0); }

/// `base64EncodedStringWithOptions:` without a line length.
[[nodiscard]] String base64EncodedString(std::span<const std::uint8_t> bytes,
                                         Base64Alphabet alphabet = Base64Alphabet::Standard);
/// The same as ASCII at `out`, which has room for `base64Length(bytes.size())` characters.
void encodeBase64(std::span<const std::uint8_t> bytes, char* out, Base64Alphabet alphabet = Base64Alphabet::Standard);

/// The Base64 of a text's UTF-8 bytes; nil when the text is nil or holds an unpaired surrogate.
[[nodiscard]] std::optional<String> base64EncodedUTF8(StringView text);

/// nil unless the text is whole groups of four digits of the one alphabet, the last padded with "=" where it is short,
/// its unused bits zero: each sequence of bytes has exactly one text. No white space.
[[nodiscard]] std::optional<std::vector<std::uint8_t>> decodeBase64(StringView text,
                                                                    Base64Alphabet alphabet = Base64Alphabet::Standard);

}  // namespace quorvel
