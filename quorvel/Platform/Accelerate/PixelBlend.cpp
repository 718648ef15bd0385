#include <algorithm>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include <quorvel/Platform/Accelerate/PixelBlend.h>

namespace quorvel::pixels {
namespace {

void blendPixel(const std::uint8_t* over, const std::uint8_t* under, std::uint8_t* to) {
  const unsigned rest = 255U - over[3];
  std::uint8_t result[4];
  for (std::size_t i = 0; i < 4; ++i) {
    const unsigned product = under[i] * rest + 128;  // through 255, to the nearest
    result[i] = static_cast<std::uint8_t>(std::min(255U, over[i] + ((product + (product >> 8)) >> 8)));
  }
  std::memcpy(to, result, sizeof result);
}

#if defined(__SSE2__)

__m128i load(const std::uint8_t* from) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from)); }
void store(std::uint8_t* to, __m128i pixels) { _mm_storeu_si128(reinterpret_cast<__m128i*>(to), pixels); }

/// Eight channels times eight factors through 255.
__m128i through255(__m128i channels, __m128i factors) {
  const __m128i sum = _mm_add_epi16(_mm_mullo_epi16(channels, factors), _mm_set1_epi16(128));
  return _mm_mulhi_epu16(sum, _mm_set1_epi16(257));
}

/// 255 less the alpha of both pixels, for each of their channels.
__m128i restOf(__m128i pair) {
  const __m128i low = _mm_shufflelo_epi16(pair, _MM_SHUFFLE(3, 3, 3, 3));
  return _mm_sub_epi16(_mm_set1_epi16(255), _mm_shufflehi_epi16(low, _MM_SHUFFLE(3, 3, 3, 3)));
}

/// Four pixels over what shines through by the rests of the first and the last two.
__m128i blended(__m128i over, __m128i under, __m128i lowRest, __m128i highRest) {
  const __m128i zero = _mm_setzero_si128();
  const __m128i low = through255(_mm_unpacklo_epi8(under, zero), lowRest);
  const __m128i high = through255(_mm_unpackhi_epi8(under, zero), highRest);
  return _mm_adds_epu8(over, _mm_packus_epi16(low, high));
}

std::size_t underBlocks(const std::uint8_t* under, std::uint8_t* row, std::size_t count) {
  const __m128i zero = _mm_setzero_si128();
  const __m128i opaque = _mm_set1_epi32(static_cast<int>(0xFF000000U));
  std::size_t at = 0;
  for (; count - at >= 4; at += 4) {
    const __m128i over = load(row + 4 * at);
    const __m128i isOpaque = _mm_cmpeq_epi32(_mm_and_si128(over, opaque), opaque);
    if (_mm_movemask_epi8(isOpaque) == 0xFFFF) continue;
    const __m128i lowRest = restOf(_mm_unpacklo_epi8(over, zero));
    const __m128i highRest = restOf(_mm_unpackhi_epi8(over, zero));
    store(row + 4 * at, blended(over, load(under + 4 * at), lowRest, highRest));
  }
  return at;
}

std::size_t overBlocks(std::uint32_t pixel, std::uint8_t* row, std::size_t count) {
  const __m128i over = _mm_set1_epi32(static_cast<int>(pixel));
  const __m128i rest = _mm_set1_epi16(static_cast<short>(255 - (pixel >> 24)));
  std::size_t at = 0;
  for (; count - at >= 4; at += 4) store(row + 4 * at, blended(over, load(row + 4 * at), rest, rest));
  return at;
}

#else

std::size_t underBlocks(const std::uint8_t* /*under*/, std::uint8_t* /*row*/, std::size_t /*count*/) { return 0; }
std::size_t overBlocks(std::uint32_t /*pixel*/, std::uint8_t* /*row*/, std::size_t /*count*/) { return 0; }

#endif

}  // namespace

void layUnder(const std::uint8_t* under, std::uint8_t* row, std::size_t count) {
  for (std::size_t at = underBlocks(under, row, count); at < count; ++at) {
    blendPixel(row + 4 * at, under + 4 * at, row + 4 * at);
  }
}

void layOver(std::uint32_t pixel, std::uint8_t* row, std::size_t count) {
  std::uint8_t over[4];
  for (unsigned i = 0; i < 4; ++i) over[i] = static_cast<std::uint8_t>(pixel >> (8 * i));
  for (std::size_t at = overBlocks(pixel, row, count); at < count; ++at) blendPixel(over, row + 4 * at, row + 4 * at);
}

}  // namespace quorvel::pixels
