// Eight UTF-16 units or sixteen bytes side by side: the few vector operations that the text kernels use, for SSE2
// (x86-64), NEON (64-bit ARM) and plain C++. Included by sources only, so that headers stay light.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#elif defined(__ARM_NEON) && defined(__aarch64__)
#include <arm_neon.h>
#endif

namespace quorvel::vector {

inline constexpr std::size_t kLanes = 8;
inline constexpr std::size_t kByteLanes = 16;

/// Which of eight lanes hold: eight bits, lane 0 in the lowest.
struct Lanes {
  std::uint32_t bits;
  [[nodiscard]] bool any() const { return bits != 0; }
  [[nodiscard]] bool all() const { return bits == 0xFF; }
  [[nodiscard]] unsigned first() const { return static_cast<unsigned>(std::countr_zero(bits)); }
  [[nodiscard]] unsigned last() const { return 31U - static_cast<unsigned>(std::countl_zero(bits)); }
  [[nodiscard]] unsigned count() const { return static_cast<unsigned>(std::popcount(bits)); }
};

#if defined(__SSE2__)

struct Units {
  __m128i lanes;

  [[nodiscard]] static Units load(const char16_t* from) {
    return {_mm_loadu_si128(reinterpret_cast<const __m128i*>(from))};
  }
  [[nodiscard]] static Units splat(char16_t unit) { return {_mm_set1_epi16(static_cast<short>(unit))}; }
  void store(char16_t* to) const { _mm_storeu_si128(reinterpret_cast<__m128i*>(to), lanes); }

  friend Units operator|(Units a, Units b) { return {_mm_or_si128(a.lanes, b.lanes)}; }
  friend Units operator&(Units a, Units b) { return {_mm_and_si128(a.lanes, b.lanes)}; }
  friend Units operator+(Units a, Units b) { return {_mm_add_epi16(a.lanes, b.lanes)}; }
  friend Units operator-(Units a, Units b) { return {_mm_sub_epi16(a.lanes, b.lanes)}; }
  /// Lanes of all ones where the units are equal.
  friend Units equal(Units a, Units b) { return {_mm_cmpeq_epi16(a.lanes, b.lanes)}; }
  /// Lanes of all ones where a <= b, unsigned.
  friend Units atMost(Units a, Units b) {
    return {_mm_cmpeq_epi16(_mm_subs_epu16(a.lanes, b.lanes), _mm_setzero_si128())};
  }
  /// The lanes of a comparison's result.
  [[nodiscard]] Lanes lanesSet() const {
    return {static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_packs_epi16(lanes, _mm_setzero_si128())))};
  }
  [[nodiscard]] bool noneSet() const { return _mm_movemask_epi8(lanes) == 0; }
  /// Widens eight bytes.
  [[nodiscard]] static Units widen(const char* from) {
    return {_mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(from)), _mm_setzero_si128())};
  }
  /// Writes the low bytes of lanes that hold 0 to 255.
  void narrow(char* to) const { _mm_storel_epi64(reinterpret_cast<__m128i*>(to), _mm_packus_epi16(lanes, lanes)); }
};

struct Bytes {
  __m128i lanes;

  [[nodiscard]] static Bytes load(const char* from) {
    return {_mm_loadu_si128(reinterpret_cast<const __m128i*>(from))};
  }
  [[nodiscard]] static Bytes splat(char byte) { return {_mm_set1_epi8(byte)}; }

  friend Bytes operator|(Bytes a, Bytes b) { return {_mm_or_si128(a.lanes, b.lanes)}; }
  friend Bytes equal(Bytes a, Bytes b) { return {_mm_cmpeq_epi8(a.lanes, b.lanes)}; }
  /// Lanes of all ones where a <= b, unsigned.
  friend Bytes atMost(Bytes a, Bytes b) { return {_mm_cmpeq_epi8(_mm_min_epu8(a.lanes, b.lanes), a.lanes)}; }
  /// The highest bit of each byte, lane 0 in the lowest bit.
  [[nodiscard]] std::uint32_t highBits() const { return static_cast<std::uint32_t>(_mm_movemask_epi8(lanes)); }
  [[nodiscard]] Units widenLow() const { return {_mm_unpacklo_epi8(lanes, _mm_setzero_si128())}; }
  [[nodiscard]] Units widenHigh() const { return {_mm_unpackhi_epi8(lanes, _mm_setzero_si128())}; }
};

#elif defined(__ARM_NEON) && defined(__aarch64__)

struct Units {
  uint16x8_t lanes;

  [[nodiscard]] static Units load(const char16_t* from) {
    return {vld1q_u16(reinterpret_cast<const std::uint16_t*>(from))};
  }
  [[nodiscard]] static Units splat(char16_t unit) { return {vdupq_n_u16(unit)}; }
  void store(char16_t* to) const { vst1q_u16(reinterpret_cast<std::uint16_t*>(to), lanes); }

  friend Units operator|(Units a, Units b) { return {vorrq_u16(a.lanes, b.lanes)}; }
  friend Units operator&(Units a, Units b) { return {vandq_u16(a.lanes, b.lanes)}; }
  friend Units operator+(Units a, Units b) { return {vaddq_u16(a.lanes, b.lanes)}; }
  friend Units operator-(Units a, Units b) { return {vsubq_u16(a.lanes, b.lanes)}; }
  friend Units equal(Units a, Units b) { return {vceqq_u16(a.lanes, b.lanes)}; }
  friend Units atMost(Units a, Units b) { return {vcleq_u16(a.lanes, b.lanes)}; }
  [[nodiscard]] Lanes lanesSet() const {
    static constexpr std::uint16_t kBits[8] = {1, 2, 4, 8, 16, 32, 64, 128};
    return {vaddvq_u16(vandq_u16(lanes, vld1q_u16(kBits)))};
  }
  [[nodiscard]] bool noneSet() const { return vmaxvq_u16(lanes) == 0; }
  [[nodiscard]] static Units widen(const char* from) {
    return {vmovl_u8(vld1_u8(reinterpret_cast<const std::uint8_t*>(from)))};
  }
  void narrow(char* to) const { vst1_u8(reinterpret_cast<std::uint8_t*>(to), vqmovn_u16(lanes)); }
};

struct Bytes {
  uint8x16_t lanes;

  [[nodiscard]] static Bytes load(const char* from) { return {vld1q_u8(reinterpret_cast<const std::uint8_t*>(from))}; }
  [[nodiscard]] static Bytes splat(char byte) { return {vdupq_n_u8(static_cast<std::uint8_t>(byte))}; }

  friend Bytes operator|(Bytes a, Bytes b) { return {vorrq_u8(a.lanes, b.lanes)}; }
  friend Bytes equal(Bytes a, Bytes b) { return {vceqq_u8(a.lanes, b.lanes)}; }
  friend Bytes atMost(Bytes a, Bytes b) { return {vcleq_u8(a.lanes, b.lanes)}; }
  [[nodiscard]] std::uint32_t highBits() const {
    static constexpr std::int8_t kShifts[16] = {-7, -6, -5, -4, -3, -2, -1, 0, -7, -6, -5, -4, -3, -2, -1, 0};
    const uint8x16_t bits = vshlq_u8(vandq_u8(lanes, vdupq_n_u8(0x80)), vld1q_s8(kShifts));
    return vaddv_u8(vget_low_u8(bits)) | static_cast<std::uint32_t>(vaddv_u8(vget_high_u8(bits))) << 8;
  }
  [[nodiscard]] Units widenLow() const { return {vmovl_u8(vget_low_u8(lanes))}; }
  [[nodiscard]] Units widenHigh() const { return {vmovl_u8(vget_high_u8(lanes))}; }
};

#else

struct Units {
  std::uint16_t lanes[kLanes];

  [[nodiscard]] static Units load(const char16_t* from) {
    Units result;
    std::memcpy(result.lanes, from, sizeof result.lanes);
    return result;
  }
  [[nodiscard]] static Units splat(char16_t unit) {
    return map([unit](std::size_t) { return unit; });
  }
  void store(char16_t* to) const { std::memcpy(to, lanes, sizeof lanes); }

  friend Units operator|(Units a, Units b) {
    return map([&](std::size_t i) { return a.lanes[i] | b.lanes[i]; });
  }
  friend Units operator&(Units a, Units b) {
    return map([&](std::size_t i) { return a.lanes[i] & b.lanes[i]; });
  }
  friend Units operator+(Units a, Units b) {
    return map([&](std::size_t i) { return a.lanes[i] + b.lanes[i]; });
  }
  friend Units operator-(Units a, Units b) {
    return map([&](std::size_t i) { return a.lanes[i] - b.lanes[i]; });
  }
  friend Units equal(Units a, Units b) {
    return map([&](std::size_t i) { return a.lanes[i] == b.lanes[i] ? 0xFFFF : 0; });
  }
  friend Units atMost(Units a, Units b) {
    return map([&](std::size_t i) { return a.lanes[i] <= b.lanes[i] ? 0xFFFF : 0; });
  }
  [[nodiscard]] Lanes lanesSet() const {
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < kLanes; ++i) bits |= lanes[i] ? 1U << i : 0U;
    return {bits};
  }
  [[nodiscard]] bool noneSet() const { return !lanesSet().any(); }
  [[nodiscard]] static Units widen(const char* from) {
    return map([from](std::size_t i) { return static_cast<unsigned char>(from[i]); });
  }
  void narrow(char* to) const {
    for (std::size_t i = 0; i < kLanes; ++i) to[i] = static_cast<char>(lanes[i]);
  }

 private:
  template <class Lane>
  static Units map(Lane lane) {
    Units result;
    for (std::size_t i = 0; i < kLanes; ++i) result.lanes[i] = static_cast<std::uint16_t>(lane(i));
    return result;
  }
};

struct Bytes {
  std::uint8_t lanes[kByteLanes];

  [[nodiscard]] static Bytes load(const char* from) {
    Bytes result;
    std::memcpy(result.lanes, from, sizeof result.lanes);
    return result;
  }
  [[nodiscard]] static Bytes splat(char byte) {
    return map([byte](std::size_t) { return static_cast<std::uint8_t>(byte); });
  }

  friend Bytes operator|(Bytes a, Bytes b) {
    return map([&](std::size_t i) { return a.lanes[i] | b.lanes[i]; });
  }
  friend Bytes equal(Bytes a, Bytes b) {
    return map([&](std::size_t i) { return a.lanes[i] == b.lanes[i] ? 0xFF : 0; });
  }
  friend Bytes atMost(Bytes a, Bytes b) {
    return map([&](std::size_t i) { return a.lanes[i] <= b.lanes[i] ? 0xFF : 0; });
  }
  [[nodiscard]] std::uint32_t highBits() const {
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < kByteLanes; ++i) bits |= (lanes[i] >> 7U) << i;
    return bits;
  }
  [[nodiscard]] Units widenLow() const { return Units::widen(reinterpret_cast<const char*>(lanes)); }
  [[nodiscard]] Units widenHigh() const { return Units::widen(reinterpret_cast<const char*>(lanes) + kLanes); }

 private:
  template <class Lane>
  static Bytes map(Lane lane) {
    Bytes result;
    for (std::size_t i = 0; i < kByteLanes; ++i) result.lanes[i] = static_cast<std::uint8_t>(lane(i));
    return result;
  }
};

#endif

/// Lanes of all ones where low <= unit <= low + span.
[[nodiscard]] inline Units inRange(Units units, char16_t low, char16_t span) {
  return atMost(units - Units::splat(low), Units::splat(span));
}

inline constexpr std::size_t kBlock = 4 * kLanes;

/// The places of a unit in a block of 32, as bits.
[[nodiscard]] inline std::uint32_t placesInBlock(const char16_t* block, char16_t unit) {
  const Units wanted = Units::splat(unit);
  std::uint32_t places = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    places |= equal(Units::load(block + i * kLanes), wanted).lanesSet().bits << i * kLanes;
  }
  return places;
}

}  // namespace quorvel::vector
