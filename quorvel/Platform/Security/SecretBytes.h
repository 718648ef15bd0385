// SecretBytes: keys in memory of their own, kept out of core files and the swap space where the system allows it.
// Not here: items' values, which are answered as `Data::secret`.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

namespace quorvel {

/// A buffer of fixed size that is overwritten before its memory is given back. Moves, does not copy.
class SecretBytes {
 public:
  constexpr SecretBytes() noexcept = default;
  /// Zeros. Throws std::bad_alloc.
  explicit SecretBytes(std::size_t size);
  explicit SecretBytes(std::span<const std::uint8_t> bytes);
  SecretBytes(SecretBytes&& other) noexcept
      : memory_(std::exchange(other.memory_, nullptr)), size_(std::exchange(other.size_, 0)) {}
  SecretBytes& operator=(SecretBytes&& other) noexcept {
    std::swap(memory_, other.memory_);
    std::swap(size_, other.size_);
    return *this;
  }
  SecretBytes(const SecretBytes&) = delete;
  SecretBytes& operator=(const SecretBytes&) = delete;
  ~SecretBytes();

  [[nodiscard]] bool isEmpty() const noexcept { return size_ == 0; }
  [[nodiscard]] std::span<std::uint8_t> bytes() noexcept { return {memory_, size_}; }
  [[nodiscard]] std::span<const std::uint8_t> bytes() const noexcept { return {memory_, size_}; }

 private:
  std::uint8_t* memory_ = nullptr;
  std::size_t size_ = 0;
};

/// Fills from the system's generator; false when it has none.
[[nodiscard]] bool fillRandom(std::span<std::uint8_t> bytes);

/// Overwrites in a way that no compiler leaves out.
void wipe(std::span<std::uint8_t> bytes);

}  // namespace quorvel
