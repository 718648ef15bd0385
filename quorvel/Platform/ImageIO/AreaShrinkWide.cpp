#include <quorvel/Platform/ImageIO/AreaKernels.h>

#if defined(__x86_64__)

#include <cstring>

#include <immintrin.h>

#include <quorvel/Platform/Foundation/WideVector.h>

namespace quorvel::area {
namespace {

constexpr std::size_t kPixel = 4;
constexpr std::size_t kBytes = kBlock * kPixel;

/// Four pixels as half words, the channels of the first two alternating, then those of the others.
QUORVEL_WIDE inline __m256i interleaved(const std::uint8_t* block) {
  const __m256i places = _mm256_setr_epi8(0, -1, 4, -1, 1, -1, 5, -1, 2, -1, 6, -1, 3, -1, 7, -1,  //
                                          8, -1, 12, -1, 9, -1, 13, -1, 10, -1, 14, -1, 11, -1, 15, -1);
  const __m128i pixels = _mm_loadu_si128(reinterpret_cast<const __m128i*>(block));
  return _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(pixels), places);
}

QUORVEL_WIDE inline __m256i load(const void* from) { return _mm256_loadu_si256(static_cast<const __m256i*>(from)); }
QUORVEL_WIDE inline void store(void* to, __m256i lanes) { _mm256_storeu_si256(static_cast<__m256i*>(to), lanes); }

/// Whole blocks of the row, and a copy of what is left of it.
template <class Block>
QUORVEL_WIDE inline void forBlocks(const std::uint8_t* row, std::size_t pixels, Block block) {
  std::size_t at = 0;
  for (; pixels - at >= 2 * kBlock; at += 2 * kBlock) {
    block(at * kPixel, row + at * kPixel);
    block((at + kBlock) * kPixel, row + (at + kBlock) * kPixel);
  }
  for (; pixels - at >= kBlock; at += kBlock) block(at * kPixel, row + at * kPixel);
  if (at == pixels) return;
  std::uint8_t rest[kBytes] = {};
  std::memcpy(rest, row + at * kPixel, (pixels - at) * kPixel);
  block(at * kPixel, rest);
}

/// Both sums of two pixels' channels, as words. `kPairs` is 0 or the number of pairs, known to the compiler.
template <std::size_t kPairs>
QUORVEL_WIDE inline __m256i weighted(const std::uint16_t* sums, const Columns& columns, std::size_t padded,
                                     std::size_t pixel) {
  const std::uint16_t* const first = sums + columns.starts[pixel] * kPixel;
  const std::uint16_t* const second = sums + columns.starts[pixel + 1] * kPixel;
  const __m256i fourTimes = _mm256_setr_epi32(0, 0, 0, 0, 1, 1, 1, 1);
  __m256i total = _mm256_setzero_si256();
  for (std::size_t pair = 0; pair < (kPairs ? kPairs : columns.pairs); ++pair) {
    const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(first + 2 * kPixel * pair));
    const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(second + 2 * kPixel * pair));
    const __m128i both = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(columns.weights + pair * padded + pixel));
    const __m256i weights = _mm256_permutevar8x32_epi32(_mm256_castsi128_si256(both), fourTimes);
    total = _mm256_add_epi32(total, _mm256_madd_epi16(_mm256_set_m128i(high, low), weights));
  }
  return total;
}

QUORVEL_WIDE inline __m256i means(__m256i sums, __m256 offset, __m256 reciprocal) {
  return _mm256_cvttps_epi32(_mm256_mul_ps(_mm256_add_ps(_mm256_cvtepi32_ps(sums), offset), reciprocal));
}

template <std::size_t kPairs>
QUORVEL_WIDE void writeMeans(const std::uint16_t* sums, const Columns& columns, std::uint64_t divisor,
                             std::uint8_t* to) {
  const std::uint64_t half = divisor / 2;
  const __m256 offset = _mm256_set1_ps(static_cast<float>(half) + 0.5F);
  const __m256 reciprocal = _mm256_set1_ps(1.0F / static_cast<float>(divisor));
  const std::size_t padded = (columns.count + kBlock - 1) / kBlock * kBlock;
  for (std::size_t pixel = 0; pixel < columns.count; pixel += kBlock) {
    const __m256i first = means(weighted<kPairs>(sums, columns, padded, pixel), offset, reciprocal);
    const __m256i second = means(weighted<kPairs>(sums, columns, padded, pixel + 2), offset, reciprocal);
    const __m256i words = _mm256_packs_epi32(first, second);  // pixels 0, 2 and 1, 3
    const __m256i bytes = _mm256_packus_epi16(words, words);
    const __m128i pixels = _mm_unpacklo_epi32(_mm256_castsi256_si128(bytes), _mm256_extracti128_si256(bytes, 1));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to + pixel * kPixel), pixels);
  }
}

}  // namespace

QUORVEL_WIDE void addWide(std::uint16_t* sums, const std::uint8_t* row, std::size_t pixels, std::uint32_t weight,
                          bool isFirst) {
  const __m256i factor = _mm256_set1_epi16(static_cast<short>(weight));
  if (isFirst) {
    forBlocks(row, pixels, [=](std::size_t at, const std::uint8_t* block) QUORVEL_WIDE {
      store(sums + at, _mm256_mullo_epi16(interleaved(block), factor));
    });
  } else {
    forBlocks(row, pixels, [=](std::size_t at, const std::uint8_t* block) QUORVEL_WIDE {
      store(sums + at, _mm256_add_epi16(load(sums + at), _mm256_mullo_epi16(interleaved(block), factor)));
    });
  }
}

QUORVEL_WIDE void splitWide(std::uint16_t* sums, const std::uint8_t* row, std::size_t pixels, std::uint32_t endWeight,
                            std::uint32_t beginWeight, std::uint16_t* ended) {
  const __m256i end = _mm256_set1_epi16(static_cast<short>(endWeight));
  const __m256i begin = _mm256_set1_epi16(static_cast<short>(beginWeight));
  forBlocks(row, pixels, [=](std::size_t at, const std::uint8_t* block) QUORVEL_WIDE {
    const __m256i channels = interleaved(block);
    store(ended + at, _mm256_add_epi16(load(sums + at), _mm256_mullo_epi16(channels, end)));
    store(sums + at, _mm256_mullo_epi16(channels, begin));
  });
}

QUORVEL_WIDE void addWide(std::uint32_t* sums, const std::uint8_t* row, std::size_t pixels, std::uint32_t weight,
                          bool isFirst) {
  const __m256i factor = _mm256_set1_epi32(static_cast<int>(weight));
  const __m256i kept = _mm256_set1_epi32(isFirst ? 0 : -1);
  forBlocks(row, pixels, [=](std::size_t at, const std::uint8_t* block) QUORVEL_WIDE {
    for (std::size_t half = 0; half < kBytes; half += 8) {
      const __m128i bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(block + half));
      // Half words at most on both sides, with nothing above them.
      const __m256i product = _mm256_madd_epi16(_mm256_cvtepu8_epi32(bytes), factor);
      store(sums + at + half, _mm256_add_epi32(_mm256_and_si256(load(sums + at + half), kept), product));
    }
  });
}

QUORVEL_WIDE void narrowWide(const std::uint32_t* wide, std::size_t pixels, std::uint32_t total,
                             std::uint16_t* narrow) {
  const __m256 factor = _mm256_set1_ps(static_cast<float>(kNarrowWhole) / static_cast<float>(total));
  const __m256 half = _mm256_set1_ps(0.5F);
  for (std::size_t at = 0; at < pixels * kPixel; at += 2 * kPixel) {
    const __m256 sums = _mm256_cvtepi32_ps(load(wide + at));
    const __m256i rounded = _mm256_cvttps_epi32(_mm256_add_ps(_mm256_mul_ps(sums, factor), half));
    const __m128i second = _mm_slli_epi32(_mm256_extracti128_si256(rounded, 1), 16);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(narrow + at), _mm_or_si128(_mm256_castsi256_si128(rounded), second));
  }
}

void meansWide(const std::uint16_t* sums, const Columns& columns, std::uint64_t divisor, std::uint8_t* to) {
  switch (columns.pairs) {
    case 1:
      return writeMeans<1>(sums, columns, divisor, to);
    case 2:
      return writeMeans<2>(sums, columns, divisor, to);
    case 3:
      return writeMeans<3>(sums, columns, divisor, to);
    default:
      return writeMeans<0>(sums, columns, divisor, to);
  }
}

}  // namespace quorvel::area

#endif
