#include <quorvel/Platform/Foundation/WideKernels.h>

#if defined(__x86_64__)

#include <array>
#include <bit>
#include <cstring>

#include <quorvel/Platform/Foundation/WideVector.h>

namespace quorvel::wide {
namespace {

// ---- UTF-8 to UTF-16: four sequences of one to three bytes a step. The ends of sequences, as bits, pick the shuffle
// that gives each its lane; the value of a lane is checked against the bounds that its length sets.

struct Lanes4 {
  alignas(16) std::array<std::uint8_t, 16> shuffle;
  alignas(16) std::array<std::int32_t, 4> bias;  // what the marks of lead and continuation bytes add up to
  alignas(16) std::array<std::int32_t, 4> low;
  alignas(16) std::array<std::int32_t, 4> high;
};
struct Step {
  std::uint8_t lanes;     // an index of kLanes
  std::uint8_t consumed;  // bytes; none where one of the four is longer than three
};

constexpr std::size_t kStepBits = 12;

constexpr std::array<Lanes4, 81> kLanes = [] {
  std::array<Lanes4, 81> table{};
  for (unsigned index = 0; index < 81; ++index) {
    unsigned digits = index;
    std::uint8_t start = 0;
    for (std::size_t lane = 0; lane < 4; ++lane, digits /= 3) {
      const unsigned length = digits % 3 + 1;
      for (unsigned i = 0; i < 4; ++i) {  // the last byte first, then those before it
        table[index].shuffle[4 * lane + i] = static_cast<std::uint8_t>(i < length ? start + length - 1 - i : 0x80);
      }
      start = static_cast<std::uint8_t>(start + length);
      constexpr std::int32_t kBias[] = {0, (0xC0 << 6) + 0x80, (0xE0 << 12) + (0x80 << 6) + 0x80};
      constexpr std::int32_t kLow[] = {0, 0x80, 0x800};
      constexpr std::int32_t kHigh[] = {0x7F, 0x7FF, 0xFFFF};
      table[index].bias[lane] = kBias[length - 1];
      table[index].low[lane] = kLow[length - 1];
      table[index].high[lane] = kHigh[length - 1];
    }
  }
  return table;
}();

constexpr std::array<Step, 1U << kStepBits> kSteps = [] {
  std::array<Step, 1U << kStepBits> table{};
  for (unsigned ends = 0; ends < table.size(); ++ends) {
    unsigned at = 0;
    unsigned index = 0;
    unsigned scale = 1;
    bool fits = true;
    for (unsigned lane = 0; lane < 4 && fits; ++lane, scale *= 3) {
      unsigned length = 1;
      while (length <= 3 && at + length <= kStepBits && (ends >> (at + length - 1) & 1) == 0) ++length;
      fits = length <= 3 && at + length <= kStepBits;
      index += scale * (length - 1);
      at += length;
    }
    if (fits) table[ends] = {static_cast<std::uint8_t>(index), static_cast<std::uint8_t>(at)};
  }
  return table;
}();

constexpr std::size_t kWindow = 64;
constexpr std::size_t kStepReach = 16;  // bytes that a step loads
constexpr std::size_t kStop = kWindow - kStepReach + 1;

QUORVEL_WIDE inline void widen(__m256i bytes, char16_t* out) {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), _mm256_cvtepu8_epi16(_mm256_castsi256_si128(bytes)));
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + kUnits),
                      _mm256_cvtepu8_epi16(_mm256_extracti128_si256(bytes, 1)));
}

/// Four units of sequences that lie so; false when one is ill-formed.
QUORVEL_WIDE inline bool decodeFour(const char* at, const Lanes4& lanes, char16_t* out) {
  const __m128i bytes = _mm_shuffle_epi8(loadHalf(at), loadHalf(lanes.shuffle.data()));
  // Last byte, that before it times 64, the first times 4,096.
  const __m128i pairs = _mm_maddubs_epi16(bytes, _mm_set1_epi32(0x00404001));
  const __m128i sums = _mm_madd_epi16(pairs, _mm_set1_epi32(0x00400001));
  const __m128i values = _mm_sub_epi32(sums, loadHalf(lanes.bias.data()));
  const __m128i tooLow = _mm_cmpgt_epi32(loadHalf(lanes.low.data()), values);
  const __m128i tooHigh = _mm_cmpgt_epi32(values, loadHalf(lanes.high.data()));
  const __m128i surrogates = _mm_cmpeq_epi32(_mm_and_si128(values, _mm_set1_epi32(0xF800)), _mm_set1_epi32(0xD800));
  if (_mm_movemask_epi8(_mm_or_si128(_mm_or_si128(tooLow, tooHigh), surrogates)) != 0) return false;
  _mm_storel_epi64(reinterpret_cast<__m128i*>(out), _mm_packus_epi32(values, values));
  return true;
}

/// The pair of a sequence of four bytes; false when it is none (RFC 3629, section 4).
inline bool decodePair(const char* at, char16_t* out) {
  std::uint32_t word;
  std::memcpy(&word, at, sizeof word);
  if ((word & 0xC0C0C0F8) != 0x808080F0) return false;
  const std::uint32_t scalar =
      (word & 7) << 18 | (word >> 8 & 0x3F) << 12 | (word >> 16 & 0x3F) << 6 | (word >> 24 & 0x3F);
  if (scalar < 0x10000 || scalar > 0x10FFFF) return false;
  out[0] = static_cast<char16_t>(0xD7C0 + (scalar >> 10));
  out[1] = static_cast<char16_t>(0xDC00 | (scalar & 0x3FF));
  return true;
}

/// The unit of a sequence of one to three bytes, whose other bytes are known to continue it; false when it is
/// ill-formed.
inline bool decodeShort(const char* at, std::size_t length, char16_t* out) {
  const auto byte = [at](std::size_t index) { return std::uint32_t{static_cast<unsigned char>(at[index])}; };
  constexpr std::uint32_t kMarks[] = {0x00, 0xC0, 0xE0};
  constexpr std::uint32_t kMasks[] = {0x80, 0xE0, 0xF0};
  constexpr std::uint32_t kLow[] = {0, 0x80, 0x800};
  if ((byte(0) & kMasks[length - 1]) != kMarks[length - 1]) return false;
  std::uint32_t value = byte(0) & ~kMasks[length - 1];
  for (std::size_t i = 1; i < length; ++i) value = value << 6 | (byte(i) & 0x3F);
  *out = static_cast<char16_t>(value);
  return value >= kLow[length - 1] && (value & 0xF800) != 0xD800;
}

/// One sequence of a given length, and how many units it makes; none when it is ill-formed.
inline std::size_t decodeOne(const char* at, std::size_t length, char16_t* out) {
  if (length <= 3) return decodeShort(at, length, out) ? 1 : 0;
  return length == 4 && decodePair(at, out) ? 2 : 0;
}

/// Converts the sequences that begin before `stop`, and up to three more; `well` turns false at an ill-formed one.
QUORVEL_WIDE inline Progress convertWindow(const char* window, std::size_t stop, char16_t* const start, bool& well) {
  // Continuation bytes are -128 to -65.
  const __m256i bound = _mm256_set1_epi8(-65);
  const std::uint64_t starts = std::uint64_t{maskOf(_mm256_cmpgt_epi8(load(window), bound))} |
                               std::uint64_t{maskOf(_mm256_cmpgt_epi8(load(window + kBytes), bound))} << kBytes;
  const std::uint64_t ends = starts >> 1;
  char16_t* out = start;
  std::size_t at = 0;
  while (well && at < stop) {
    const Step step = kSteps[ends >> at & ((1U << kStepBits) - 1)];
    if (step.consumed != 0) [[likely]] {
      well = decodeFour(window + at, kLanes[step.lanes], out);
      at += well ? step.consumed : 0U;
      out += well ? 4 : 0;
      continue;
    }
    const std::size_t length = static_cast<std::size_t>(std::countr_zero(ends >> at | std::uint64_t{1} << 4)) + 1;
    const std::size_t count = decodeOne(window + at, length, out);
    well = count > 0;
    at += well ? length : 0U;
    out += count;
  }
  return {at, static_cast<std::size_t>(out - start)};
}

/// The same for fewer bytes than a window, at the end of a text: zeros stand behind them, so that a sequence that is
/// cut off shows, and their units are not counted.
QUORVEL_WIDE Progress convertEnd(const char* bytes, std::size_t size, char16_t* out, bool& well) {
  alignas(32) char window[kWindow] = {};
  char16_t units[kWindow + 4];
  std::memcpy(window, bytes, size);
  const Progress all = convertWindow(window, size < kStop ? size : kStop, units, well);
  const std::size_t zeros = all.read > size ? all.read - size : 0;
  std::memcpy(out, units, (all.written - zeros) * sizeof(char16_t));
  return {all.read - zeros, all.written - zeros};
}

// ---- UTF-16 to UTF-8: each unit as lead, middle and last byte in a lane of four; a shuffle drops what it does not
// need.

struct Packing {
  std::array<std::array<std::uint8_t, 16>, 256> shuffle;
  std::array<std::uint8_t, 256> size;
};
/// By four bits for units of one byte and four for units of three.
alignas(16) constexpr Packing kPacking = [] {
  Packing table{};
  for (unsigned key = 0; key < 256; ++key) {
    std::uint8_t size = 0;
    table.shuffle[key].fill(0x80);
    for (unsigned lane = 0; lane < 4; ++lane) {
      const bool one = (key >> lane & 1) != 0;
      const bool three = (key >> (4 + lane) & 1) != 0;
      if (three) table.shuffle[key][size++] = static_cast<std::uint8_t>(4 * lane);
      if (!one) table.shuffle[key][size++] = static_cast<std::uint8_t>(4 * lane + 2);
      table.shuffle[key][size++] = static_cast<std::uint8_t>(4 * lane + 3);
    }
    table.size[key] = size;
  }
  return table;
}();

QUORVEL_WIDE inline char* packFour(__m128i lanes, unsigned key, char* out) {
  storeHalf(out, _mm_shuffle_epi8(lanes, loadHalf(kPacking.shuffle[key].data())));
  return out + kPacking.size[key];
}

/// Eight units, none of them a surrogate.
QUORVEL_WIDE inline char* encodeEight(__m128i units, char* out) {
  const __m128i zero = _mm_setzero_si128();
  const __m128i one = _mm_cmpeq_epi16(_mm_subs_epu16(units, _mm_set1_epi16(0x7F)), zero);
  const __m128i upToTwo = _mm_cmpeq_epi16(_mm_subs_epu16(units, _mm_set1_epi16(0x7FF)), zero);
  const __m128i six = _mm_set1_epi16(0x3F);
  const __m128i mark = _mm_set1_epi16(0x80);
  const __m128i lead = _mm_or_si128(_mm_srli_epi16(units, 12), _mm_set1_epi16(0xE0));
  const __m128i middle = _mm_or_si128(_mm_or_si128(_mm_and_si128(_mm_srli_epi16(units, 6), six), mark),
                                      _mm_and_si128(upToTwo, _mm_set1_epi16(0x40)));
  const __m128i last = _mm_blendv_epi8(_mm_or_si128(_mm_and_si128(units, six), mark), units, one);
  const __m128i behind = _mm_or_si128(middle, _mm_slli_epi16(last, 8));
  const auto keys = static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(one, upToTwo))) ^ 0xFF00U;
  out = packFour(_mm_unpacklo_epi16(lead, behind), (keys & 0x0F) | (keys >> 4 & 0xF0), out);
  return packFour(_mm_unpackhi_epi16(lead, behind), (keys >> 4 & 0x0F) | (keys >> 8 & 0xF0), out);
}

QUORVEL_WIDE inline std::uint32_t surrogatesOf(__m128i units) {
  const __m128i top = _mm_and_si128(units, _mm_set1_epi16(static_cast<short>(0xF800)));
  return static_cast<std::uint32_t>(
      _mm_movemask_epi8(_mm_cmpeq_epi16(top, _mm_set1_epi16(static_cast<short>(0xD800)))));
}

/// One pair as four bytes; false when it is none.
inline bool encodePair(const char16_t* units, char* out) {
  if ((units[0] & 0xFC00) != 0xD800 || (units[1] & 0xFC00) != 0xDC00) return false;
  const std::uint32_t scalar = (std::uint32_t{units[0]} << 10) + units[1] - ((0xD800U << 10) + 0xDC00U - 0x10000U);
  out[0] = static_cast<char>(0xF0 | (scalar >> 18));
  out[1] = static_cast<char>(0x80 | (scalar >> 12 & 0x3F));
  out[2] = static_cast<char>(0x80 | (scalar >> 6 & 0x3F));
  out[3] = static_cast<char>(0x80 | (scalar & 0x3F));
  return true;
}

/// Copies 32 units that are all ASCII.
QUORVEL_WIDE inline bool narrowThirtyTwo(const char16_t* units, char* out) {
  const __m256i low = load(units);
  const __m256i high = load(units + kUnits);
  if (_mm256_testz_si256(_mm256_or_si256(low, high), splat(0xFF80)) == 0) return false;
  // Packing works within halves: put their quarters in order again.
  const __m256i bytes = _mm256_permute4x64_epi64(_mm256_packus_epi16(low, high), 0xD8);
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), bytes);
  return true;
}

}  // namespace

QUORVEL_WIDE Progress utf8ToUTF16(const char* bytes, std::size_t size, char16_t* const start) {
  char16_t* out = start;
  std::size_t at = 0;
  bool well = true;
  while (well && size - at >= kWindow) {
    const __m256i low = load(bytes + at);
    const __m256i high = load(bytes + at + kBytes);
    if (maskOf(_mm256_or_si256(low, high)) == 0) {
      widen(low, out);
      widen(high, out + kBytes);
      at += kWindow;
      out += kWindow;
      continue;
    }
    const Progress window = convertWindow(bytes + at, kStop, out, well);
    at += window.read;
    out += window.written;
  }
  while (well && at < size) {
    const Progress rest = convertEnd(bytes + at, size - at, out, well);
    at += rest.read;
    out += rest.written;
  }
  return {at, static_cast<std::size_t>(out - start)};
}

QUORVEL_WIDE Progress utf16ToUTF8(const char16_t* units, std::size_t size, char* const start) {
  char* out = start;
  std::size_t at = 0;
  while (size - at >= 8) {
    if (size - at >= 2 * kUnits && narrowThirtyTwo(units + at, out)) {
      at += 2 * kUnits;
      out += 2 * kUnits;
      continue;
    }
    const __m128i eight = loadHalf(units + at);
    const std::uint32_t surrogates = surrogatesOf(eight);
    if (surrogates == 0) [[likely]] {
      out = encodeEight(eight, out);
      at += 8;
      continue;
    }
    // What stands before the first surrogate, counted by what the pair then overwrites; then the pair.
    const auto before = static_cast<std::size_t>(std::countr_zero(surrogates)) / 2;
    for (std::size_t i = 0; i < before; ++i) {
      const unsigned unit = units[at + i];
      if (unit >= 0x800) *out++ = static_cast<char>(0xE0 | (unit >> 12));
      if (unit >= 0x80) *out++ = static_cast<char>((unit >= 0x800 ? 0x80 : 0xC0) | (unit >> 6 & 0x3F));
      *out++ = static_cast<char>(unit >= 0x80 ? 0x80 | (unit & 0x3F) : unit);
    }
    at += before;
    if (size - at < 2 || !encodePair(units + at, out)) break;
    at += 2;
    out += 4;
  }
  return {at, static_cast<std::size_t>(out - start)};
}

QUORVEL_WIDE Progress utf16Length(const char* bytes, std::size_t size) {
  std::size_t at = 0;
  __m256i total = _mm256_setzero_si256();
  while (size - at >= kBytes) {
    // Lanes of all ones are -1; up to 100 blocks, each of which adds at most two to a lane.
    __m256i counters = _mm256_setzero_si256();
    for (int blocks = 0; blocks < 100 && size - at >= kBytes; ++blocks, at += kBytes) {
      const __m256i block = load(bytes + at);
      const __m256i fours = _mm256_cmpeq_epi8(_mm256_max_epu8(block, _mm256_set1_epi8(-16)), block);
      counters = _mm256_sub_epi8(counters, _mm256_cmpgt_epi8(block, _mm256_set1_epi8(-65)));
      counters = _mm256_sub_epi8(counters, fours);
    }
    total = _mm256_add_epi64(total, _mm256_sad_epu8(counters, _mm256_setzero_si256()));
  }
  alignas(32) std::uint64_t sums[4];
  _mm256_store_si256(reinterpret_cast<__m256i*>(sums), total);
  return {at, sums[0] + sums[1] + sums[2] + sums[3]};
}

QUORVEL_WIDE Progress utf8Length(const char16_t* units, std::size_t size) {
  std::size_t at = 0;
  std::size_t extra = 0;  // bytes beyond one a unit
  while (size - at >= kUnits) {
    __m256i counters = _mm256_setzero_si256();
    for (int blocks = 0; blocks < 1 << 13 && size - at >= kUnits; ++blocks, at += kUnits) {
      const __m256i block = load(units + at);
      const __m256i top = _mm256_and_si256(block, splat(0xF800));
      const __m256i one = atMost(block, splat(0x7F));
      const __m256i upToTwo =
          _mm256_or_si256(_mm256_cmpeq_epi16(top, _mm256_setzero_si256()), _mm256_cmpeq_epi16(top, splat(0xD800)));
      counters = _mm256_add_epi16(counters, _mm256_add_epi16(one, upToTwo));
      counters = _mm256_add_epi16(counters, splat(2));
    }
    alignas(32) std::uint16_t lanes[kUnits];
    _mm256_store_si256(reinterpret_cast<__m256i*>(lanes), counters);
    for (const std::uint16_t lane : lanes) extra += lane;
  }
  return {at, at + extra};
}

}  // namespace quorvel::wide

#endif
