#include <algorithm>

#include <quorvel/Platform/Accelerate/PixelColors.h>
#include <quorvel/Platform/Accelerate/PixelLanes.h>
#include <quorvel/Platform/Foundation/WideKernels.h>

namespace quorvel::pixels {
namespace {

/// The quotient rounded to the nearest, halves upwards, for results of zero and more; others may become zero.
std::int64_t divided(std::int64_t sum, std::int32_t divisor) {
  return (2 * sum + divisor) / (2 * std::int64_t{divisor});
}

void matrixPixel(const std::uint8_t* from, std::uint8_t* to, Matrix matrix, std::int32_t divisor) {
  std::uint8_t result[4];
  for (std::size_t j = 0; j < 4; ++j) {
    std::int64_t sum = 0;
    for (std::size_t i = 0; i < 4; ++i) sum += std::int64_t{from[i]} * matrix[4 * i + j];
    result[j] = static_cast<std::uint8_t>(std::clamp<std::int64_t>(divided(sum, divisor), 0, 255));
  }
  std::memcpy(to, result, sizeof result);
}

void grayPixel(const std::uint8_t* from, std::uint8_t* to) {
  const auto gray = static_cast<std::uint8_t>(0.3 * from[2] + 0.59 * from[1] + 0.11 * from[0]);
  to[0] = to[1] = to[2] = gray;
  to[3] = from[3];
}

#if defined(__SSE2__)

__m128i block(const void* from) { return _mm_loadu_si128(static_cast<const __m128i*>(from)); }
void storeBlock(void* to, __m128i pixels) { _mm_storeu_si128(static_cast<__m128i*>(to), pixels); }

std::size_t matrixBlocks(const std::uint8_t* from, std::uint8_t* to, std::size_t count, Matrix matrix) {
  __m128i blueRed[4];
  __m128i greenAlpha[4];
  for (std::size_t j = 0; j < 4; ++j) {
    blueRed[j] = _mm_set1_epi32(Factors{matrix[j], matrix[8 + j]}.packed());
    greenAlpha[j] = _mm_set1_epi32(Factors{matrix[4 + j], matrix[12 + j]}.packed());
  }
  const __m128i even = _mm_set1_epi16(0xFF);
  const __m128i half = _mm_set1_epi32(kMatrixDivisor / 2);
  std::size_t at = 0;
  for (; count - at >= 4; at += 4) {
    const __m128i pixels = block(from + 4 * at);
    const __m128i br = _mm_and_si128(pixels, even);
    const __m128i ga = _mm_srli_epi16(pixels, 8);
    __m128i sums[4];
    for (std::size_t j = 0; j < 4; ++j) {
      const __m128i sum = _mm_add_epi32(_mm_madd_epi16(br, blueRed[j]), _mm_madd_epi16(ga, greenAlpha[j]));
      sums[j] = _mm_srai_epi32(_mm_add_epi32(sum, half), 8);
    }
    // Four bytes of each of blue, red, green, alpha: interleaved twice they are pixels.
    const __m128i planes = _mm_packus_epi16(_mm_packs_epi32(sums[0], sums[2]), _mm_packs_epi32(sums[1], sums[3]));
    const __m128i pairs = _mm_unpacklo_epi8(planes, _mm_srli_si128(planes, 8));
    storeBlock(to + 4 * at, _mm_unpacklo_epi16(pairs, _mm_srli_si128(pairs, 8)));
  }
  return at;
}

/// The rule itself, for two pixels whose channels stand in the low lanes.
__m128i exactGray(__m128i blue, __m128i green, __m128i red) {
  const __m128d first = _mm_mul_pd(_mm_cvtepi32_pd(red), _mm_set1_pd(0.3));
  const __m128d sum = _mm_add_pd(first, _mm_mul_pd(_mm_cvtepi32_pd(green), _mm_set1_pd(0.59)));
  return _mm_cvttpd_epi32(_mm_add_pd(sum, _mm_mul_pd(_mm_cvtepi32_pd(blue), _mm_set1_pd(0.11))));
}

__m128i exactGray(__m128i pixels) {
  const __m128i byte = _mm_set1_epi32(0xFF);
  const __m128i blue = _mm_and_si128(pixels, byte);
  const __m128i green = _mm_and_si128(_mm_srli_epi32(pixels, 8), byte);
  const __m128i red = _mm_and_si128(_mm_srli_epi32(pixels, 16), byte);
  const __m128i low = exactGray(blue, green, red);
  const __m128i high = exactGray(_mm_srli_si128(blue, 8), _mm_srli_si128(green, 8), _mm_srli_si128(red, 8));
  return _mm_unpacklo_epi64(low, high);
}

/// (30 red + 59 green + 11 blue) / 100 rounded down is what the rule gives, but where the division leaves nothing:
/// there the floating point sum may be just below, and is computed.
std::size_t grayBlocks(const std::uint8_t* from, std::uint8_t* to, std::size_t count) {
  const __m128i even = _mm_set1_epi16(0xFF);
  const __m128i blueRed = _mm_set1_epi32(Factors{11, 30}.packed());
  const __m128i greenAlpha = _mm_set1_epi32(Factors{59, 0}.packed());
  const __m128i alpha = _mm_set1_epi32(static_cast<int>(0xFF000000U));
  std::size_t at = 0;
  for (; count - at >= 4; at += 4) {
    const __m128i pixels = block(from + 4 * at);
    const __m128i sum = _mm_add_epi32(_mm_madd_epi16(_mm_and_si128(pixels, even), blueRed),
                                      _mm_madd_epi16(_mm_srli_epi16(pixels, 8), greenAlpha));
    __m128i gray = _mm_srli_epi16(_mm_mulhi_epu16(sum, _mm_set1_epi16(5243)), 3);  // 5243 / 2^19: by 100, to 43,698
    const __m128i whole = _mm_cmpeq_epi32(_mm_mullo_epi16(gray, _mm_set1_epi16(100)), sum);
    if (_mm_movemask_epi8(whole) != 0) gray = exactGray(pixels);
    const __m128i pair = _mm_or_si128(gray, _mm_slli_epi32(gray, 8));
    const __m128i color = _mm_or_si128(pair, _mm_slli_epi32(gray, 16));
    storeBlock(to + 4 * at, _mm_or_si128(color, _mm_and_si128(pixels, alpha)));
  }
  return at;
}

#else

std::size_t matrixBlocks(const std::uint8_t* /*from*/, std::uint8_t* /*to*/, std::size_t /*count*/, Matrix /*matrix*/) {
  return 0;
}

/// The integer form, and the rule where it may differ: a loop with a branch that is rarely taken.
std::size_t grayBlocks(const std::uint8_t* from, std::uint8_t* to, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i, from += 4, to += 4) {
    const unsigned sum = 30U * from[2] + 59U * from[1] + 11U * from[0];
    const unsigned gray = sum / 100;
    if (gray * 100 == sum) {
      grayPixel(from, to);
    } else {
      to[3] = from[3];
      to[0] = to[1] = to[2] = static_cast<std::uint8_t>(gray);
    }
  }
  return count;
}

#endif

}  // namespace

void matrixRow(const std::uint8_t* from, std::uint8_t* to, std::size_t count, Matrix matrix, std::int32_t divisor) {
  std::size_t at = 0;
  if (divisor == kMatrixDivisor) {
#if defined(__x86_64__)
    if (wide::isAvailable()) at = matrixRowWide(from, to, count, matrix);
#endif
    at += matrixBlocks(from + 4 * at, to + 4 * at, count - at, matrix);
  }
  for (; at < count; ++at) matrixPixel(from + 4 * at, to + 4 * at, matrix, divisor);
}

void grayRow(const std::uint8_t* from, std::uint8_t* to, std::size_t count) {
  std::size_t at = 0;
#if defined(__x86_64__)
  if (wide::isAvailable()) at = grayRowWide(from, to, count);
#endif
  at += grayBlocks(from + 4 * at, to + 4 * at, count - at);
  for (; at < count; ++at) grayPixel(from + 4 * at, to + 4 * at);
}

}  // namespace quorvel::pixels
