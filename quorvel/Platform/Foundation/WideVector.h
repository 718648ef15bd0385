// The few AVX2 operations that the wide kernels share. Included by their sources only, for x86-64.
#pragma once

#include <cstddef>
#include <cstdint>

#include <immintrin.h>

// The rest of the library is built for every x86-64 processor: only what bears this mark uses more.
#define QUORVEL_WIDE __attribute__((target("avx2,bmi,popcnt")))

namespace quorvel::wide {

constexpr std::size_t kUnits = 16;
constexpr std::size_t kBytes = 32;

QUORVEL_WIDE inline __m256i load(const void* from) { return _mm256_loadu_si256(static_cast<const __m256i*>(from)); }
QUORVEL_WIDE inline __m128i loadHalf(const void* from) { return _mm_loadu_si128(static_cast<const __m128i*>(from)); }
QUORVEL_WIDE inline void storeHalf(void* to, __m128i lanes) { _mm_storeu_si128(static_cast<__m128i*>(to), lanes); }
QUORVEL_WIDE inline __m256i splat(char16_t unit) { return _mm256_set1_epi16(static_cast<short>(unit)); }
QUORVEL_WIDE inline std::uint32_t maskOf(__m256i lanes) {
  return static_cast<std::uint32_t>(_mm256_movemask_epi8(lanes));
}
/// Lanes of all ones where a <= b, unsigned.
QUORVEL_WIDE inline __m256i atMost(__m256i a, __m256i b) { return _mm256_cmpeq_epi16(_mm256_min_epu16(a, b), a); }

}  // namespace quorvel::wide
