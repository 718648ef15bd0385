#include <array>
#include <cstdlib>
#include <utility>

#include <pthread.h>

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
  bool isClosed;   // its thread has done so and still frees, or cannot
};
constinit thread_local Shelf shelf{};

/// Clears the shelf of a thread that ends.
void clear(void* /*shelf*/) {
  shelf.isWatched = false;
  shelf.isClosed = true;
  for (Block*& first : shelf.blocks) {
    while (first) std::free(std::exchange(first, first->next));
  }
}

/// A key of the thread library's, not an object with a destructor: where there is no memory to remember such an object,
/// the process ends.
struct Key {
  pthread_key_t key{};
  bool isMade = pthread_key_create(&key, &clear) == 0;
};

/// From now on the thread clears its shelf in the end; where that cannot be, it keeps nothing.
[[gnu::noinline]] void watch() {
  static const Key key;
  shelf.isWatched = key.isMade && pthread_setspecific(key.key, &shelf) == 0;
  shelf.isClosed = !shelf.isWatched;
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
  if (!shelf.isWatched) [[unlikely]] {
    watch();
    if (shelf.isClosed) return std::free(block);
  }
  ++shelf.counts[sizeClass];
  Block*& first = shelf.blocks[sizeClass];
  first = ::new (block) Block{first};
}

}  // namespace quorvel::blockcache
