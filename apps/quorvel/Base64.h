// Base64 (RFC 4648, section 4) for bytes inside JSON.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include <quorvel/Platform/Foundation/String.h>

namespace quorvel::command {

/// With padding, without line breaks.
[[nodiscard]] std::string encodeBase64(std::span<const std::uint8_t> bytes);
/// nil unless the text is whole groups of four, padded, with unused bits zero.
[[nodiscard]] std::optional<std::vector<std::uint8_t>> decodeBase64(StringView text);

}  // namespace quorvel::command
