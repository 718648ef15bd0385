// BlockCache: small blocks that a thread gave back, kept for what it allocates next. Texts come and go one at a time;
// the general allocator would take most of the time of the short ones.
#pragma once

#include <cstddef>
#include <cstdint>

namespace quorvel::blockcache {

/// Blocks of one class have one size; those of `kLarge` have their own and are not kept.
using SizeClass = std::uint8_t;
inline constexpr SizeClass kClasses = 16;
inline constexpr SizeClass kLarge = kClasses;
/// False under sanitizers, which are to see every block come and go.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kKeepsBlocks = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
inline constexpr bool kKeepsBlocks = false;
#else
inline constexpr bool kKeepsBlocks = true;
#endif
#else
inline constexpr bool kKeepsBlocks = true;
#endif

/// Bytes of the blocks of a class: what the general allocator gives without a loss.
constexpr std::size_t bytesOf(SizeClass sizeClass) { return 24 + 16 * std::size_t{sizeClass}; }
constexpr SizeClass classFor(std::size_t bytes) {
  if (bytes <= bytesOf(0)) return 0;
  return bytes > bytesOf(kClasses - 1) ? kLarge : static_cast<SizeClass>((bytes - bytesOf(0) + 15) / 16);
}

/// A block of the class, or of `bytes` for `kLarge`; nullptr when there is no memory.
[[nodiscard]] void* take(SizeClass sizeClass, std::size_t bytes) noexcept;
/// Gives back a block to the thread that is running, whichever took it.
void give(void* block, SizeClass sizeClass) noexcept;

}  // namespace quorvel::blockcache
