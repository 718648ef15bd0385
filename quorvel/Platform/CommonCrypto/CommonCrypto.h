// The platform's digests: MD5 (RFC 1321) and keyed hashing with SHA-256 (RFC 2104, FIPS 180-4).
// Not here: their textual forms (NSString+Hash.h). MD5 protects nothing; it names things.
#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace quorvel {

inline constexpr std::size_t kMD5DigestBytes = 16;
inline constexpr std::size_t kSHA256DigestBytes = 32;

/// `CC_MD5`: the digest of the bytes. Answers in a process that is bound to approved algorithms (FIPS mode) too.
[[nodiscard]] std::array<std::uint8_t, kMD5DigestBytes> CC_MD5(std::span<const std::uint8_t> bytes);

/// The platform's number of the one algorithm that is here.
inline constexpr std::uint32_t kCCHmacAlgSHA256 = 2;

/// `CCHmac` with `kCCHmacAlgSHA256`: the code of the bytes under the key; both may be empty. Each thread keeps the
/// state of its last key of at most 64 bytes, wiped when another key comes or the thread ends.
[[nodiscard]] std::array<std::uint8_t, kSHA256DigestBytes> CCHmacSHA256(std::span<const std::uint8_t> key,
                                                                        std::span<const std::uint8_t> bytes);

}  // namespace quorvel
