#include <chrono>
#include <cstring>
#include <random>

#include <sys/random.h>

#include <quorvel/Platform/Foundation/Hash.h>

namespace quorvel::hashing {
namespace {

std::uint64_t drawSeed() {
  std::uint64_t drawn = 0;
  if (::getrandom(&drawn, sizeof drawn, GRND_NONBLOCK) == sizeof drawn) return drawn;
  // Early in boot the kernel may have nothing yet; a clock and an address still differ between processes.
  return static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count()) ^
         reinterpret_cast<std::uintptr_t>(&drawn);
}

std::uint64_t load(const char* from, std::size_t size) {
  std::uint64_t word = 0;
  std::memcpy(&word, from, size);
  return word;
}

std::uint64_t multiplyFold(std::uint64_t a, std::uint64_t b) {
  __extension__ using Wide = unsigned __int128;
  const Wide product = static_cast<Wide>(a) * b;
  return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

}  // namespace

std::uint64_t seed() {
  static const std::uint64_t value = drawSeed();
  return value;
}

std::uint64_t mix(std::uint64_t a, std::uint64_t b) {
  return multiplyFold(a ^ seed() ^ 0x2D358DCCAA6C78A5, b ^ 0x8BB84B93962EACC9);
}

std::uint64_t bytes(const void* data, std::size_t size) {
  const char* at = static_cast<const char*>(data);
  std::uint64_t state = seed() ^ size;
  std::size_t left = size;
  for (; left > 16; left -= 16, at += 16) {
    state = multiplyFold(load(at, 8) ^ 0x2D358DCCAA6C78A5, load(at + 8, 8) ^ state);
  }
  const std::uint64_t low = load(at, left < 8 ? left : 8);
  const std::uint64_t high = left > 8 ? load(at + 8, left - 8) : 0;
  return multiplyFold(multiplyFold(low ^ 0x8BB84B93962EACC9, high ^ state), size ^ 0x4B33A62ED433D4A3);
}

}  // namespace quorvel::hashing
