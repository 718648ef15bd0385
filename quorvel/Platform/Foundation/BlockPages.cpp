#include <algorithm>
#include <cstdlib>
#include <new>

#include <quorvel/Platform/Foundation/BlockPages.h>

namespace quorvel::blockcache {
namespace {

constexpr std::size_t kLeastPage = 512;

}  // namespace

std::size_t Pages::pageFor(std::size_t expectedBytes) { return std::clamp(expectedBytes, kLeastPage, kPageBytes); }

void* Pages::takeElsewhere(std::size_t bytes, PagePlace& place) noexcept {
  place = 0;
  // What would waste much of a page lies alone; and sanitizers are to see every block come and go.
  if (bytes > nextBytes_ / 4 || !kKeepsBlocks) return std::malloc(bytes);
  auto* const page = static_cast<std::byte*>(std::malloc(nextBytes_));
  if (!page) return nullptr;
  retire();
  new (page) Living(kFilling);
  page_ = page;
  next_ = sizeof(std::uint64_t) / kStep;
  left_ = nextBytes_ / kStep - next_;
  nextBytes_ = kPageBytes;
  return take(bytes, place);
}

/// From now on the page counts its blocks alone.
void Pages::retire() noexcept {
  if (!page_) return;
  auto* const living = reinterpret_cast<Living*>(page_);
  const std::uint32_t gone = kFilling - taken_;
  if (living->fetch_sub(gone, std::memory_order_acq_rel) == gone) std::free(page_);
  page_ = nullptr;
  taken_ = 0;
}

void Pages::give(void* block, PagePlace place) noexcept {
  if (place == 0) return std::free(block);
  std::byte* const page = static_cast<std::byte*>(block) - place * kStep;
  auto* const living = reinterpret_cast<Living*>(page);
  // The last block needs no locked instruction: nobody else has one.
  if (living->load(std::memory_order_acquire) == 1 || living->fetch_sub(1, std::memory_order_acq_rel) == 1) {
    std::free(page);
  }
}

}  // namespace quorvel::blockcache
