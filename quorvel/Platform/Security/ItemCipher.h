// What a keychain's items are sealed with: AES-256-GCM (NIST SP 800-38D), keyed digests (HMAC-SHA256, RFC 2104) and
// keys derived from a key (HKDF-SHA256, RFC 5869). Not here: whose keys these are (KeychainSession.h).
#pragma once

#include <array>
#include <memory>
#include <optional>
#include <string_view>

#include <quorvel/Platform/Security/SecretBytes.h>

namespace quorvel {

using ConstBytes = std::span<const std::uint8_t>;

inline constexpr std::size_t kKeyBytes = 32;

/// Nonces drawn in blocks. A child process draws its own: the block's memory reads as zeros there.
class NonceBlock {
 public:
  static constexpr std::size_t kNonceBytes = 12;
  NonceBlock();
  NonceBlock(const NonceBlock&) = delete;
  NonceBlock& operator=(const NonceBlock&) = delete;
  ~NonceBlock();
  /// A nonce that was never given before; false when the system gives no random bytes.
  [[nodiscard]] bool next(std::uint8_t* nonce);

 private:
  struct Page;
  Page* page_ = nullptr;  // nullptr: each is drawn singly
};

/// Seals and opens under one key, with contexts that are kept. One thread at a time.
class ItemCipher {
 public:
  /// What sealing adds: the nonce before, the tag behind.
  static constexpr std::size_t kOverheadBytes = NonceBlock::kNonceBytes + 16;

  /// nullopt when libcrypto lacks memory.
  [[nodiscard]] static std::optional<ItemCipher> withKey(ConstBytes key);
  ItemCipher(ItemCipher&&) noexcept;
  ItemCipher& operator=(ItemCipher&&) noexcept;
  ~ItemCipher();

  /// Writes `plain.size() + kOverheadBytes` bytes.
  [[nodiscard]] bool seal(ConstBytes authenticated, ConstBytes plain, std::uint8_t* sealed);
  /// Writes `sealed.size() - kOverheadBytes` bytes; zeros there when the bytes are not what was sealed with
  /// `authenticated` under this key.
  [[nodiscard]] bool open(ConstBytes authenticated, ConstBytes sealed, std::uint8_t* plain);

 private:
  struct State;
  explicit ItemCipher(std::unique_ptr<State> state);
  std::unique_ptr<State> state_;
};

/// HMAC-SHA256 under one key, cut to 64 bits, with a context that is kept. One thread at a time.
class KeyedDigest {
 public:
  using Bytes = std::array<std::uint8_t, 8>;
  [[nodiscard]] static std::optional<KeyedDigest> withKey(ConstBytes key);
  KeyedDigest(KeyedDigest&&) noexcept;
  KeyedDigest& operator=(KeyedDigest&&) noexcept;
  ~KeyedDigest();
  [[nodiscard]] bool digest(ConstBytes bytes, Bytes& out);

 private:
  struct State;
  explicit KeyedDigest(std::unique_ptr<State> state);
  std::unique_ptr<State> state_;
};

/// A key of its own for `purpose`. false when libcrypto lacks memory.
[[nodiscard]] bool deriveKey(ConstBytes from, ConstBytes salt, std::string_view purpose, std::span<std::uint8_t> key);

}  // namespace quorvel
