// Sixteen channels of pixels in AVX2: what PixelLanes.h has for every processor. Included by sources only, for x86-64.
#pragma once

#include <quorvel/Platform/Accelerate/PixelLanes.h>
#include <quorvel/Platform/Foundation/WideVector.h>

namespace quorvel::pixels {

struct WideLanes {
  static constexpr std::size_t kChannels = 16;
  using Units = __m256i;
  struct Sums {
    __m256i low, high;
  };
  using Factor = __m256i;

  QUORVEL_WIDE static Units load(const std::uint8_t* from) { return _mm256_cvtepu8_epi16(wide::loadHalf(from)); }
  QUORVEL_WIDE static Units load(const std::uint16_t* from) { return wide::load(from); }
  QUORVEL_WIDE static Units splat(std::uint16_t unit) { return _mm256_set1_epi16(static_cast<short>(unit)); }
  QUORVEL_WIDE static Units minus(Units a, Units b) { return _mm256_sub_epi16(a, b); }
  QUORVEL_WIDE static Factor factor(Factors factors) { return _mm256_set1_epi32(factors.packed()); }
  QUORVEL_WIDE static Sums zero() { return {_mm256_setzero_si256(), _mm256_setzero_si256()}; }
  QUORVEL_WIDE static Sums splatSum(std::uint64_t sum) {
    const __m256i all = _mm256_set1_epi32(static_cast<int>(static_cast<std::uint32_t>(sum)));
    return {all, all};
  }
  QUORVEL_WIDE static Sums plus(Sums a, Sums b) {
    return {_mm256_add_epi32(a.low, b.low), _mm256_add_epi32(a.high, b.high)};
  }
  QUORVEL_WIDE static Sums minus(Sums a, Sums b) {
    return {_mm256_sub_epi32(a.low, b.low), _mm256_sub_epi32(a.high, b.high)};
  }
  QUORVEL_WIDE static Sums products(Units a, Units b, Factor factor) {
    return {_mm256_madd_epi16(_mm256_unpacklo_epi16(a, b), factor),
            _mm256_madd_epi16(_mm256_unpackhi_epi16(a, b), factor)};
  }
  QUORVEL_WIDE static Units narrowed(Sums sums, int shift) {
    const __m128i count = _mm_cvtsi32_si128(shift);
    return _mm256_packs_epi32(_mm256_srl_epi32(sums.low, count), _mm256_srl_epi32(sums.high, count));
  }
  QUORVEL_WIDE static Units upper(Units a, Units b) { return _mm256_mulhi_epu16(a, b); }
  QUORVEL_WIDE static Units shifted(Units units, int shift) {
    return _mm256_srl_epi16(units, _mm_cvtsi32_si128(shift));
  }
  QUORVEL_WIDE static void scatter(Units units, std::uint16_t* to, std::size_t stride) {
    const __m128i halves[2] = {_mm256_castsi256_si128(units), _mm256_extracti128_si256(units, 1)};
    for (const __m128i half : halves) {
      _mm_storel_epi64(reinterpret_cast<__m128i*>(to), half);
      _mm_storeh_pi(reinterpret_cast<__m64*>(to + stride), _mm_castsi128_ps(half));
      to += 2 * stride;
    }
  }
  QUORVEL_WIDE static void storeBytes(Units units, std::uint8_t* to) {
    wide::storeHalf(to, _mm_packus_epi16(_mm256_castsi256_si128(units), _mm256_extracti128_si256(units, 1)));
  }
};

}  // namespace quorvel::pixels
