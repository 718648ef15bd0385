#include <array>
#include <cstdlib>
#include <utility>

#include <quorvel/Platform/Foundation/BlockCache.h>

namespace quorvel::blockcache {
namespace {

constexpr std::uint8_t kKept = kKeepsBlocks ? 32 : 0;  // blocks of a class: at most 72 KiB for a thread

struct Block {
  Block* next;
};

/// Without a constructor and a destructor, so that it costs no question whether it lives.
struct Shelf {
  std::array<Block*, kClasses> blocks;
  std::array<std::uint8_t, kClasses> counts;
  bool isWatched;  // its thread will clear it in the end
  bool isClosed;   // its thread has done so, and still frees
};
constinit thread_local Shelf shelf{};

/// Clears the shelf of a thread that ends.
struct Watcher {
  Watcher() = default;
  Watcher(const Watcher&) = delete;
  Watcher& operator=(const Watcher&) = delete;
  ~Watcher() {
    shelf.isClosed = true;
    for (Block*& first : shelf.blocks) {
      while (first) std::free(std::exchange(first, first->next));
    }
  }
};

[[gnu::noinline]] void watch() {
  static thread_local Watcher watcher;
  static_cast<void>(&watcher);
  shelf.isWatched = true;
}

}  // namespace

void* take(SizeClass sizeClass, std::size_t bytes) noexcept {
  if (sizeClass == kLarge) return std::malloc(bytes);
  Block*& first = shelf.blocks[sizeClass];
  if (!first) return std::malloc(bytesOf(sizeClass));
  --shelf.counts[sizeClass];
  return std::exchange(first, first->next);
}

void give(void* block, SizeClass sizeClass) noexcept {
  if (sizeClass == kLarge || shelf.isClosed || shelf.counts[sizeClass] >= kKept) return std::free(block);
  if (!shelf.isWatched) [[unlikely]]
    watch();
  ++shelf.counts[sizeClass];
  Block*& first = shelf.blocks[sizeClass];
  first = ::new (block) Block{first};
}

}  // namespace quorvel::blockcache
