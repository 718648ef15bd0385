// Channels of pixels side by side: the vector operations that the pixel kernels share, for SSE2 (x86-64), NEON (64-bit
// ARM) and plain C++. Included by sources only; PixelLanesWide.h has the same in AVX2.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#if defined(__SSE2__)
#include <emmintrin.h>
#elif defined(__ARM_NEON) && defined(__aarch64__)
#include <arm_neon.h>
#endif

namespace quorvel::pixels {

/// Two signed 16-bit factors, for two operands.
struct Factors {
  std::int16_t first;
  std::int16_t second;

  [[nodiscard]] std::int32_t packed() const {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(static_cast<std::uint16_t>(second)) << 16 |
                                     static_cast<std::uint16_t>(first));
  }
};

#if defined(__SSE2__)

struct Lanes {
  static constexpr std::size_t kChannels = 8;
  using Units = __m128i;
  /// The lanes' 32-bit companions; in which order is the width's own affair.
  struct Sums {
    __m128i low, high;
  };
  using Factor = __m128i;

  static __m128i block(const void* from) { return _mm_loadu_si128(static_cast<const __m128i*>(from)); }
  static Units load(const std::uint8_t* from) {
    return _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(from)), _mm_setzero_si128());
  }
  static Units load(const std::uint16_t* from) { return block(from); }
  static Units splat(std::uint16_t unit) { return _mm_set1_epi16(static_cast<short>(unit)); }
  static Units minus(Units a, Units b) { return _mm_sub_epi16(a, b); }
  static Factor factor(Factors factors) { return _mm_set1_epi32(factors.packed()); }
  static Sums zero() { return {_mm_setzero_si128(), _mm_setzero_si128()}; }
  static Sums splatSum(std::uint64_t sum) {
    const __m128i all = _mm_set1_epi32(static_cast<int>(static_cast<std::uint32_t>(sum)));
    return {all, all};
  }
  static Sums plus(Sums a, Sums b) { return {_mm_add_epi32(a.low, b.low), _mm_add_epi32(a.high, b.high)}; }
  static Sums minus(Sums a, Sums b) { return {_mm_sub_epi32(a.low, b.low), _mm_sub_epi32(a.high, b.high)}; }
  /// a times the first factor and b times the second, both as signed numbers.
  static Sums products(Units a, Units b, Factor factor) {
    return {_mm_madd_epi16(_mm_unpacklo_epi16(a, b), factor), _mm_madd_epi16(_mm_unpackhi_epi16(a, b), factor)};
  }
  /// The sums shifted right, which must leave no more than 15 bits.
  static Units narrowed(Sums sums, int shift) {
    const __m128i count = _mm_cvtsi32_si128(shift);
    return _mm_packs_epi32(_mm_srl_epi32(sums.low, count), _mm_srl_epi32(sums.high, count));
  }
  /// The upper half of the product.
  static Units upper(Units a, Units b) { return _mm_mulhi_epu16(a, b); }
  static Units shifted(Units units, int shift) { return _mm_srl_epi16(units, _mm_cvtsi32_si128(shift)); }
  /// Each pixel's four units to their own place.
  static void scatter(Units units, std::uint16_t* to, std::size_t stride) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(to), units);
    _mm_storeh_pi(reinterpret_cast<__m64*>(to + stride), _mm_castsi128_ps(units));
  }
  /// Units below 256 as bytes.
  static void storeBytes(Units units, std::uint8_t* to) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(to), _mm_packus_epi16(units, units));
  }
};

/// Four columns of four pixels, `stride` bytes apart, as rows.
inline void transposeFour(const std::uint8_t* from, std::size_t stride, std::uint8_t* to, std::size_t rowBytes) {
  const __m128i a = Lanes::block(from);
  const __m128i b = Lanes::block(from + stride);
  const __m128i c = Lanes::block(from + 2 * stride);
  const __m128i d = Lanes::block(from + 3 * stride);
  const __m128i ab[2] = {_mm_unpacklo_epi32(a, b), _mm_unpackhi_epi32(a, b)};
  const __m128i cd[2] = {_mm_unpacklo_epi32(c, d), _mm_unpackhi_epi32(c, d)};
  const auto store = [to, rowBytes](std::size_t row, __m128i pixels) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to + row * rowBytes), pixels);
  };
  store(0, _mm_unpacklo_epi64(ab[0], cd[0]));
  store(1, _mm_unpackhi_epi64(ab[0], cd[0]));
  store(2, _mm_unpacklo_epi64(ab[1], cd[1]));
  store(3, _mm_unpackhi_epi64(ab[1], cd[1]));
}

#elif defined(__ARM_NEON) && defined(__aarch64__)

struct Lanes {
  static constexpr std::size_t kChannels = 8;
  using Units = uint16x8_t;
  struct Sums {
    uint32x4_t low, high;
  };
  using Factor = Factors;

  static Units load(const std::uint8_t* from) { return vmovl_u8(vld1_u8(from)); }
  static Units load(const std::uint16_t* from) { return vld1q_u16(from); }
  static Units splat(std::uint16_t unit) { return vdupq_n_u16(unit); }
  static Units minus(Units a, Units b) { return vsubq_u16(a, b); }
  static Factor factor(Factors factors) { return factors; }
  static Sums zero() { return {vdupq_n_u32(0), vdupq_n_u32(0)}; }
  static Sums splatSum(std::uint64_t sum) {
    const uint32x4_t all = vdupq_n_u32(static_cast<std::uint32_t>(sum));
    return {all, all};
  }
  static Sums plus(Sums a, Sums b) { return {vaddq_u32(a.low, b.low), vaddq_u32(a.high, b.high)}; }
  static Sums minus(Sums a, Sums b) { return {vsubq_u32(a.low, b.low), vsubq_u32(a.high, b.high)}; }
  static Sums products(Units a, Units b, Factor factor) {
    const int16x8_t x = vreinterpretq_s16_u16(a);
    const int16x8_t y = vreinterpretq_s16_u16(b);
    const int32x4_t low = vmlal_n_s16(vmull_n_s16(vget_low_s16(x), factor.first), vget_low_s16(y), factor.second);
    const int32x4_t high = vmlal_n_s16(vmull_n_s16(vget_high_s16(x), factor.first), vget_high_s16(y), factor.second);
    return {vreinterpretq_u32_s32(low), vreinterpretq_u32_s32(high)};
  }
  static Units narrowed(Sums sums, int shift) {
    const int32x4_t count = vdupq_n_s32(-shift);
    return vcombine_u16(vmovn_u32(vshlq_u32(sums.low, count)), vmovn_u32(vshlq_u32(sums.high, count)));
  }
  static Units upper(Units a, Units b) {
    return vcombine_u16(vshrn_n_u32(vmull_u16(vget_low_u16(a), vget_low_u16(b)), 16),
                        vshrn_n_u32(vmull_u16(vget_high_u16(a), vget_high_u16(b)), 16));
  }
  static Units shifted(Units units, int shift) {
    return vshlq_u16(units, vdupq_n_s16(static_cast<std::int16_t>(-shift)));
  }
  static void scatter(Units units, std::uint16_t* to, std::size_t stride) {
    vst1_u16(to, vget_low_u16(units));
    vst1_u16(to + stride, vget_high_u16(units));
  }
  static void storeBytes(Units units, std::uint8_t* to) { vst1_u8(to, vmovn_u16(units)); }
};

#endif

/// The same with sums of 64 bits, for kernels too large for 32: plain loops that compilers vectorise.
struct LongLanes {
  static constexpr std::size_t kChannels = 8;
  struct Units {
    std::uint16_t lane[kChannels];
  };
  struct Sums {
    std::uint64_t lane[kChannels];
  };
  using Factor = Factors;

  template <class Result, class Each>
  static Result make(Each each) {
    Result result;
    for (std::size_t i = 0; i < kChannels; ++i) {
      result.lane[i] = static_cast<std::remove_reference_t<decltype(result.lane[0])>>(each(i));
    }
    return result;
  }
  static Units load(const std::uint8_t* from) {
    return make<Units>([=](std::size_t i) { return from[i]; });
  }
  static Units load(const std::uint16_t* from) {
    return make<Units>([=](std::size_t i) { return from[i]; });
  }
  static Units splat(std::uint16_t unit) {
    return make<Units>([=](std::size_t) { return unit; });
  }
  static Units minus(Units a, Units b) {
    return make<Units>([&](std::size_t i) { return a.lane[i] - b.lane[i]; });
  }
  static Factor factor(Factors factors) { return factors; }
  static Sums zero() { return {}; }
  static Sums splatSum(std::uint64_t sum) {
    return make<Sums>([=](std::size_t) { return sum; });
  }
  static Sums plus(const Sums& a, const Sums& b) {
    return make<Sums>([&](std::size_t i) { return a.lane[i] + b.lane[i]; });
  }
  static Sums minus(const Sums& a, const Sums& b) {
    return make<Sums>([&](std::size_t i) { return a.lane[i] - b.lane[i]; });
  }
  static Sums products(Units a, Units b, Factor factor) {
    return make<Sums>([&](std::size_t i) {
      return std::int64_t{static_cast<std::int16_t>(a.lane[i])} * factor.first +
             std::int64_t{static_cast<std::int16_t>(b.lane[i])} * factor.second;
    });
  }
  static Units narrowed(const Sums& sums, int shift) {
    return make<Units>([&](std::size_t i) { return sums.lane[i] >> shift; });
  }
  static Units upper(Units a, Units b) {
    return make<Units>([&](std::size_t i) { return std::uint32_t{a.lane[i]} * b.lane[i] >> 16; });
  }
  static Units shifted(Units units, int shift) {
    return make<Units>([&](std::size_t i) { return units.lane[i] >> shift; });
  }
  static void scatter(Units units, std::uint16_t* to, std::size_t stride) {
    std::memcpy(to, units.lane, 8);
    std::memcpy(to + stride, units.lane + 4, 8);
  }
  static void storeBytes(Units units, std::uint8_t* to) {
    for (std::size_t i = 0; i < kChannels; ++i) to[i] = static_cast<std::uint8_t>(units.lane[i]);
  }
};

#if !defined(__SSE2__)

#if !(defined(__ARM_NEON) && defined(__aarch64__))
using Lanes = LongLanes;
#endif

inline void transposeFour(const std::uint8_t* from, std::size_t stride, std::uint8_t* to, std::size_t rowBytes) {
  for (std::size_t row = 0; row < 4; ++row) {
    for (std::size_t x = 0; x < 4; ++x) std::memcpy(to + row * rowBytes + 4 * x, from + x * stride + 4 * row, 4);
  }
}

#endif

}  // namespace quorvel::pixels
