#include <quorvel/Platform/Foundation/WideKernels.h>

#if defined(__x86_64__)

#include <array>
#include <atomic>
#include <bit>
#include <cstring>

#include <quorvel/Platform/Foundation/WideVector.h>

namespace quorvel::wide {
namespace {

enum class State : std::uint8_t { Unknown, Off, On };
std::atomic<State> state{State::Unknown};

State probe() { return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi") ? State::On : State::Off; }

}  // namespace

bool isAvailable() {
  State now = state.load(std::memory_order_relaxed);
  if (now == State::Unknown) [[unlikely]] {
    now = probe();
    state.store(now, std::memory_order_relaxed);
  }
  return now == State::On;
}

void setEnabled(bool enabled) { state.store(enabled ? probe() : State::Off, std::memory_order_relaxed); }

QUORVEL_WIDE std::size_t leadingASCII(const char16_t* units, std::size_t size) {
  std::size_t at = 0;
  for (; size - at >= 2 * kUnits; at += 2 * kUnits) {
    const __m256i both = _mm256_or_si256(load(units + at), load(units + at + kUnits));
    if (_mm256_testz_si256(both, splat(0xFF80)) == 0) break;
  }
  return at;
}

namespace {

QUORVEL_WIDE inline __m256i inRange(__m256i units, char16_t low, char16_t span) {
  return atMost(_mm256_sub_epi16(units, splat(low)), splat(span));
}

QUORVEL_WIDE inline __m256i commonOf(__m256i units) {
  return _mm256_or_si256(_mm256_or_si256(inRange(units, 0xAC00, 0xD7A3 - 0xAC00), atMost(units, splat(0x7F))),
                         inRange(units, 0x4E00, 0x9FFF - 0x4E00));
}

template <bool kWithoutCapitals>
QUORVEL_WIDE std::size_t leadingOf(const char16_t* units, std::size_t size) {
  std::size_t at = 0;
  for (; size - at >= 2 * kUnits; at += 2 * kUnits) {
    const __m256i low = load(units + at);
    const __m256i high = load(units + at + kUnits);
    if constexpr (kWithoutCapitals) {
      const __m256i capitals = _mm256_or_si256(inRange(low, u'A', 25), inRange(high, u'A', 25));
      if (_mm256_testz_si256(capitals, capitals) == 0) break;
    }
    if (_mm256_testz_si256(_mm256_or_si256(low, high), splat(0xFF80)) != 0) continue;
    if (maskOf(_mm256_and_si256(commonOf(low), commonOf(high))) != UINT32_MAX) break;
  }
  return at;
}

}  // namespace

QUORVEL_WIDE std::size_t leadingCommon(const char16_t* units, std::size_t size, bool withoutCapitals) {
  return withoutCapitals ? leadingOf<true>(units, size) : leadingOf<false>(units, size);
}

QUORVEL_WIDE std::size_t leadingOutside(const char16_t* units, std::size_t size, char16_t low, char16_t span) {
  const __m256i lows = splat(low);
  const __m256i spans = splat(span);
  std::size_t at = 0;
  for (; size - at >= 2 * kUnits; at += 2 * kUnits) {
    const __m256i first = atMost(_mm256_sub_epi16(load(units + at), lows), spans);
    const __m256i second = atMost(_mm256_sub_epi16(load(units + at + kUnits), lows), spans);
    const __m256i inside = _mm256_or_si256(first, second);
    if (_mm256_testz_si256(inside, inside) == 0) break;
  }
  return at;
}

namespace {

/// The characters of sixteen units that are no members, as bits; nothing where the units are not all ASCII.
QUORVEL_WIDE inline bool othersOf(__m256i units, __m128i rows, std::uint32_t& others) {
  if (_mm256_testz_si256(units, splat(0xFF80)) == 0) return false;
  const __m128i bytes = _mm_packus_epi16(_mm256_castsi256_si128(units), _mm256_extracti128_si256(units, 1));
  const __m128i nibble = _mm_set1_epi8(0x0F);
  const __m128i bits = _mm_setr_epi8(1, 2, 4, 8, 16, 32, 64, -128, 0, 0, 0, 0, 0, 0, 0, 0);
  const __m128i row = _mm_shuffle_epi8(rows, _mm_and_si128(bytes, nibble));
  const __m128i bit = _mm_shuffle_epi8(bits, _mm_and_si128(_mm_srli_epi16(bytes, 4), nibble));
  const __m128i none = _mm_cmpeq_epi8(_mm_and_si128(row, bit), _mm_setzero_si128());
  others = static_cast<std::uint32_t>(_mm_movemask_epi8(none));
  return true;
}

QUORVEL_WIDE inline void copyBlock(const char16_t* from, char16_t* to) {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), load(from));
}

/// By bits for eight lanes to leave out: the bytes of the others, moved together.
alignas(16) constexpr std::array<std::array<std::uint8_t, 16>, 256> kCompact = [] {
  std::array<std::array<std::uint8_t, 16>, 256> table{};
  for (unsigned out = 0; out < 256; ++out) {
    std::size_t at = 0;
    table[out].fill(0x80);
    for (unsigned lane = 0; lane < 8; ++lane) {
      if ((out >> lane & 1) != 0) continue;
      table[out][at++] = static_cast<std::uint8_t>(2 * lane);
      table[out][at++] = static_cast<std::uint8_t>(2 * lane + 1);
    }
  }
  return table;
}();

QUORVEL_WIDE inline char16_t* compact(__m128i units, unsigned out, char16_t* to) {
  storeHalf(to, _mm_shuffle_epi8(units, loadHalf(kCompact[out].data())));
  return to + 8 - std::popcount(out);
}

}  // namespace

QUORVEL_WIDE std::size_t leadingMembers(const char16_t* units, std::size_t size, const ASCIISet& set) {
  const __m128i rows = loadHalf(set.rows);
  std::size_t at = 0;
  for (std::uint32_t others = 0; size - at >= kUnits; at += kUnits) {
    if (!othersOf(load(units + at), rows, others)) return at;
    if (others != 0) return at + static_cast<std::size_t>(std::countr_zero(others));
  }
  return at;
}

QUORVEL_WIDE Progress percentLength(const char16_t* units, std::size_t size, const ASCIISet& set) {
  const __m128i rows = loadHalf(set.rows);
  std::size_t at = 0;
  std::size_t escapes = 0;
  for (std::uint32_t others = 0; size - at >= kUnits; at += kUnits) {
    if (!othersOf(load(units + at), rows, others)) break;
    escapes += static_cast<std::size_t>(std::popcount(others));
  }
  return {at, at + 2 * escapes};
}

QUORVEL_WIDE Progress percentEncode(const char16_t* units, std::size_t size, const ASCIISet& set,
                                    const std::uint64_t* escapes, char16_t* const start) {
  const __m128i rows = loadHalf(set.rows);
  char16_t* out = start;
  std::size_t at = 0;
  // A run is copied as a whole vector from anywhere in its block.
  for (std::uint32_t others = 0; size - at >= 2 * kUnits;) {
    if (!othersOf(load(units + at), rows, others)) break;
    const std::size_t end = at + kUnits;
    while (true) {
      copyBlock(units + at, out);
      if (others == 0) break;
      const std::size_t place = end - kUnits + static_cast<std::size_t>(std::countr_zero(others));
      out += place - at;
      std::memcpy(out, &escapes[units[place]], sizeof *escapes);
      out += 3;
      at = place + 1;
      others &= others - 1;
    }
    out += end - at;
    at = end;
  }
  return {at, static_cast<std::size_t>(out - start)};
}

namespace {

/// Where the second and the third byte's digits come from, for units 2i and 2i + 1 of eight in the two halves: lanes
/// that take the whole unit but for the last, which takes its low byte as the high one, for the shift to come.
struct DigitSources {
  alignas(32) std::array<std::array<std::uint8_t, kBytes>, 4> pairs{};
};
constexpr DigitSources kDigitSources = [] {
  DigitSources sources;
  for (std::size_t unit = 0; unit < 8; ++unit) {
    const auto low = static_cast<std::uint8_t>(2 * unit);
    const auto high = static_cast<std::uint8_t>(2 * unit + 1);
    const auto none = std::uint8_t{0x80};
    const std::uint8_t lanes[16] = {none, none, low, high, low, high, none, none, low, high, none, low};
    for (std::size_t i = 0; i < 12; ++i) sources.pairs[unit / 2][unit % 2 * 16 + i] = lanes[i];
  }
  return sources;
}();

/// Units of the basic plane that take one byte or three.
QUORVEL_WIDE bool areOneOrThreeBytes(__m128i units) {
  const __m128i surrogates =
      _mm_cmpeq_epi16(_mm_and_si128(units, _mm_set1_epi16(short(0xF800))), _mm_set1_epi16(short(0xD800)));
  const __m128i above = _mm_sub_epi16(units, _mm_set1_epi16(0x80));
  const __m128i two = _mm_cmpeq_epi16(_mm_min_epu16(above, _mm_set1_epi16(0x77F)), above);
  const __m128i others = _mm_or_si128(surrogates, two);
  return _mm_testz_si128(others, others) != 0;
}

template <class... Lanes>
QUORVEL_WIDE __m256i twice(Lanes... lanes) {
  return _mm256_broadcastsi128_si256(_mm_setr_epi16(static_cast<short>(lanes)...));
}

/// "%XX%XX" for the last two bytes of two units, the second in the upper half: digits are what is left of the unit
/// after a shift (by multiplication) and a mask, with the 8 of a byte that goes on.
QUORVEL_WIDE __m256i lastTwoEscapes(__m256i eightTwice, const std::array<std::uint8_t, kBytes>& sources) {
  constexpr int kNone = 0x8080;  // gives no digit
  constexpr int kEight = 0x8008;
  constexpr int kDigit = 0x8000;
  const __m256i shifts = twice(0, 1 << 6, 1 << 10, 0, 1 << 12, 1 << 8, 0, 0);
  const __m256i masks = twice(0, 3, 15, 0, 3, 15, 0, 0);
  const __m256i bits = twice(kNone, kEight, kDigit, kNone, kEight, kDigit, kNone, kNone);
  const __m256i percents = twice('%', 0, 0, '%', 0, 0, 0, 0);
  const __m256i digits = _mm256_broadcastsi128_si256(loadHalf("0123456789ABCDEF"));
  const __m256i shifted = _mm256_mulhi_epu16(_mm256_shuffle_epi8(eightTwice, load(sources.data())), shifts);
  const __m256i values = _mm256_or_si256(_mm256_and_si256(shifted, masks), bits);
  return _mm256_or_si256(_mm256_shuffle_epi8(digits, values), percents);
}

/// Writes a unit whose last two escapes are known, without a branch on how many bytes it takes.
QUORVEL_WIDE char16_t* putOneOrThree(std::uint32_t unit, __m128i lastTwo, const std::array<std::uint64_t, 256>& written,
                                     char16_t* out) {
  const std::uint32_t isLong = 0U - (unit >= 0x80);
  const std::uint64_t first = written[(unit & ~isLong) | ((0xE0U | unit >> 12) & isLong)];
  std::memcpy(out, &first, sizeof first);
  storeHalf(out + 3, lastTwo);
  return out + (first >> 48) + (6 & isLong);
}

}  // namespace

QUORVEL_WIDE Progress percentEncodeBytes(const char16_t* units, std::size_t size,
                                         const std::array<std::uint64_t, 256>& written, char16_t* const start) {
  char16_t* out = start;
  std::size_t at = 0;
  for (; size - at >= 8; at += 8) {
    const __m128i eight = loadHalf(units + at);
    if (!areOneOrThreeBytes(eight)) break;
    const __m256i eightTwice = _mm256_broadcastsi128_si256(eight);
    for (std::size_t pair = 0; pair < 4; ++pair) {
      const __m256i escapes = lastTwoEscapes(eightTwice, kDigitSources.pairs[pair]);
      const char16_t* const two = units + at + 2 * pair;
      out = putOneOrThree(two[0], _mm256_castsi256_si128(escapes), written, out);
      out = putOneOrThree(two[1], _mm256_extracti128_si256(escapes, 1), written, out);
    }
  }
  return {at, static_cast<std::size_t>(out - start)};
}

QUORVEL_WIDE Progress copyWithout(const char16_t* units, std::size_t size, const char16_t (&members)[4],
                                  char16_t* const start) {
  const __m256i wanted[4] = {splat(members[0]), splat(members[1]), splat(members[2]), splat(members[3])};
  char16_t* out = start;
  std::size_t at = 0;
  for (; size - at >= kUnits; at += kUnits) {
    const __m256i block = load(units + at);
    const __m256i found =
        _mm256_or_si256(_mm256_or_si256(_mm256_cmpeq_epi16(block, wanted[0]), _mm256_cmpeq_epi16(block, wanted[1])),
                        _mm256_or_si256(_mm256_cmpeq_epi16(block, wanted[2]), _mm256_cmpeq_epi16(block, wanted[3])));
    if (_mm256_testz_si256(found, found) != 0) {
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), block);
      out += kUnits;
      continue;
    }
    const __m128i low = _mm256_castsi256_si128(block);
    const __m128i high = _mm256_extracti128_si256(block, 1);
    const auto lanes = static_cast<unsigned>(
        _mm_movemask_epi8(_mm_packs_epi16(_mm256_castsi256_si128(found), _mm256_extracti128_si256(found, 1))));
    out = compact(low, lanes & 0xFF, out);
    out = compact(high, lanes >> 8, out);
  }
  return {at, static_cast<std::size_t>(out - start)};
}

QUORVEL_WIDE std::size_t leadingEqual(const char16_t* a, const char16_t* b, std::size_t size) {
  std::size_t at = 0;
  for (; size - at >= kUnits; at += kUnits) {
    const std::uint32_t same = maskOf(_mm256_cmpeq_epi16(load(a + at), load(b + at)));
    if (same != UINT32_MAX) return at + static_cast<std::size_t>(std::countr_one(same)) / 2;
  }
  return at;
}

QUORVEL_WIDE std::size_t findPair(const char16_t* units, std::size_t size, std::size_t from, const Pair& pair) {
  const __m256i firsts[2] = {splat(pair.first[0]), splat(pair.first[1])};
  const __m256i seconds[2] = {splat(pair.second[0]), splat(pair.second[1])};
  const char16_t* const first = units + pair.firstOffset;
  const char16_t* const second = units + pair.secondOffset;
  const std::size_t reach = (pair.firstOffset > pair.secondOffset ? pair.firstOffset : pair.secondOffset) + 2 * kUnits;
  std::size_t at = from;
  for (; at + reach <= size; at += 2 * kUnits) {
    __m256i hits[2];
    for (int half = 0; half < 2; ++half) {
      const __m256i a = load(first + at + static_cast<std::size_t>(half) * kUnits);
      const __m256i b = load(second + at + static_cast<std::size_t>(half) * kUnits);
      hits[half] =
          _mm256_and_si256(_mm256_or_si256(_mm256_cmpeq_epi16(a, firsts[0]), _mm256_cmpeq_epi16(a, firsts[1])),
                           _mm256_or_si256(_mm256_cmpeq_epi16(b, seconds[0]), _mm256_cmpeq_epi16(b, seconds[1])));
    }
    const __m256i any = _mm256_or_si256(hits[0], hits[1]);
    if (_mm256_testz_si256(any, any) != 0) continue;
    const std::uint64_t lanes = std::uint64_t{maskOf(hits[0])} | std::uint64_t{maskOf(hits[1])} << kBytes;
    return at + static_cast<std::size_t>(std::countr_zero(lanes)) / 2;
  }
  return at;
}

}  // namespace quorvel::wide

#endif
