#include <algorithm>
#include <cerrno>
#include <new>

#include <string.h>  // NOLINT(modernize-deprecated-headers): explicit_bzero
#include <sys/mman.h>
#include <sys/random.h>

#include <quorvel/Platform/Security/SecretBytes.h>

namespace quorvel {

SecretBytes::SecretBytes(std::size_t size) {
  if (size == 0) return;
  void* pages = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (pages == MAP_FAILED) throw std::bad_alloc();
  // A small limit on locked memory is no reason to refuse: the bytes are overwritten all the same.
  (void)::mlock(pages, size);
  (void)::madvise(pages, size, MADV_DONTDUMP);
  memory_ = static_cast<std::uint8_t*>(pages);
  size_ = size;
}

SecretBytes::SecretBytes(std::span<const std::uint8_t> bytes) : SecretBytes(bytes.size()) {
  std::copy(bytes.begin(), bytes.end(), memory_);
}

SecretBytes::~SecretBytes() {
  if (!memory_) return;
  wipe(bytes());
  ::munmap(memory_, size_);
}

bool fillRandom(std::span<std::uint8_t> bytes) {
  while (!bytes.empty()) {
    const ssize_t got = ::getrandom(bytes.data(), bytes.size(), 0);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return false;
    bytes = bytes.subspan(static_cast<std::size_t>(got));
  }
  return true;
}

void wipe(std::span<std::uint8_t> bytes) {
  if (!bytes.empty()) ::explicit_bzero(bytes.data(), bytes.size());
}

}  // namespace quorvel
