// BlockPages: memory for the many small blocks that a reader makes one after another. They come from pages and go back
// one by one, on any thread; a page goes with its last block, so that one that is kept holds `kPageBytes` at most.
#pragma once

#include <atomic>

#include <quorvel/Platform/Foundation/BlockCache.h>

namespace quorvel::blockcache {

/// Where a block lies: of a page, how far behind its beginning, in steps of `kStep` bytes; 0 for any other.
using PagePlace = std::uint16_t;

class Pages {
 public:
  static constexpr std::size_t kPageBytes = 8 * 1024 - 16;
  static constexpr std::size_t kStep = 8;

  /// `expectedBytes`: about what all blocks together will take.
  explicit Pages(std::size_t expectedBytes) : nextBytes_(pageFor(expectedBytes)) {}
  Pages(const Pages&) = delete;
  Pages& operator=(const Pages&) = delete;
  ~Pages() { retire(); }

  /// A block and its place, which `give` needs; nullptr when there is no memory. Large blocks lie alone.
  [[nodiscard]] void* take(std::size_t bytes, PagePlace& place) noexcept {
    const std::size_t steps = (bytes + kStep - 1) / kStep;
    if (steps > left_) return takeElsewhere(bytes, place);
    left_ -= steps;
    ++taken_;
    place = static_cast<PagePlace>(next_);
    next_ += steps;
    return page_ + place * kStep;
  }

  static void give(void* block, PagePlace place) noexcept;

 private:
  using Living = std::atomic<std::uint32_t>;
  /// What a page that is being filled counts beside its blocks.
  static constexpr std::uint32_t kFilling = 1U << 31;

  static std::size_t pageFor(std::size_t expectedBytes);
  void* takeElsewhere(std::size_t bytes, PagePlace& place) noexcept;
  void retire() noexcept;

  std::byte* page_ = nullptr;
  std::size_t nextBytes_;
  std::size_t next_ = 0;  // in steps from the page's beginning
  std::size_t left_ = 0;  // steps
  std::uint32_t taken_ = 0;
};

}  // namespace quorvel::blockcache
