#if defined(__x86_64__)

#include <quorvel/Platform/Accelerate/PixelColors.h>
#include <quorvel/Platform/Accelerate/PixelLanesWide.h>

namespace quorvel::pixels {
namespace {

QUORVEL_WIDE inline void storeBlock(void* to, __m256i pixels) {
  _mm256_storeu_si256(static_cast<__m256i*>(to), pixels);
}

QUORVEL_WIDE inline __m128i exactGray(__m128i blue, __m128i green, __m128i red) {
  const __m256d first = _mm256_mul_pd(_mm256_cvtepi32_pd(red), _mm256_set1_pd(0.3));
  const __m256d sum = _mm256_add_pd(first, _mm256_mul_pd(_mm256_cvtepi32_pd(green), _mm256_set1_pd(0.59)));
  return _mm256_cvttpd_epi32(_mm256_add_pd(sum, _mm256_mul_pd(_mm256_cvtepi32_pd(blue), _mm256_set1_pd(0.11))));
}

QUORVEL_WIDE inline __m256i exactGray(__m256i pixels) {
  const __m256i byte = _mm256_set1_epi32(0xFF);
  const __m256i blue = _mm256_and_si256(pixels, byte);
  const __m256i green = _mm256_and_si256(_mm256_srli_epi32(pixels, 8), byte);
  const __m256i red = _mm256_and_si256(_mm256_srli_epi32(pixels, 16), byte);
  const __m128i low =
      exactGray(_mm256_castsi256_si128(blue), _mm256_castsi256_si128(green), _mm256_castsi256_si128(red));
  const __m128i high = exactGray(_mm256_extracti128_si256(blue, 1), _mm256_extracti128_si256(green, 1),
                                 _mm256_extracti128_si256(red, 1));
  return _mm256_set_m128i(high, low);
}

}  // namespace

QUORVEL_WIDE std::size_t matrixRowWide(const std::uint8_t* from, std::uint8_t* to, std::size_t count, Matrix matrix) {
  __m256i blueRed[4];
  __m256i greenAlpha[4];
  for (std::size_t j = 0; j < 4; ++j) {
    blueRed[j] = _mm256_set1_epi32(Factors{matrix[j], matrix[8 + j]}.packed());
    greenAlpha[j] = _mm256_set1_epi32(Factors{matrix[4 + j], matrix[12 + j]}.packed());
  }
  const __m256i even = _mm256_set1_epi16(0xFF);
  const __m256i half = _mm256_set1_epi32(kMatrixDivisor / 2);
  // Four bytes of each of blue, green, red, alpha become four pixels.
  const __m256i pixelOrder = _mm256_setr_epi8(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15,  //
                                              0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
  std::size_t at = 0;
  for (; count - at >= 8; at += 8) {
    const __m256i pixels = wide::load(from + 4 * at);
    const __m256i br = _mm256_and_si256(pixels, even);
    const __m256i ga = _mm256_srli_epi16(pixels, 8);
    __m256i sums[4];
    for (std::size_t j = 0; j < 4; ++j) {
      const __m256i sum = _mm256_add_epi32(_mm256_madd_epi16(br, blueRed[j]), _mm256_madd_epi16(ga, greenAlpha[j]));
      sums[j] = _mm256_srai_epi32(_mm256_add_epi32(sum, half), 8);
    }
    const __m256i planes =
        _mm256_packus_epi16(_mm256_packs_epi32(sums[0], sums[1]), _mm256_packs_epi32(sums[2], sums[3]));
    storeBlock(to + 4 * at, _mm256_shuffle_epi8(planes, pixelOrder));
  }
  return at;
}

QUORVEL_WIDE std::size_t grayRowWide(const std::uint8_t* from, std::uint8_t* to, std::size_t count) {
  const __m256i even = _mm256_set1_epi16(0xFF);
  const __m256i blueRed = _mm256_set1_epi32(Factors{11, 30}.packed());
  const __m256i greenAlpha = _mm256_set1_epi32(Factors{59, 0}.packed());
  const __m256i alpha = _mm256_set1_epi32(static_cast<int>(0xFF000000U));
  std::size_t at = 0;
  for (; count - at >= 8; at += 8) {
    const __m256i pixels = wide::load(from + 4 * at);
    const __m256i sum = _mm256_add_epi32(_mm256_madd_epi16(_mm256_and_si256(pixels, even), blueRed),
                                         _mm256_madd_epi16(_mm256_srli_epi16(pixels, 8), greenAlpha));
    __m256i gray = _mm256_srli_epi16(_mm256_mulhi_epu16(sum, _mm256_set1_epi16(5243)), 3);
    const __m256i whole = _mm256_cmpeq_epi32(_mm256_mullo_epi16(gray, _mm256_set1_epi16(100)), sum);
    if (_mm256_testz_si256(whole, whole) == 0) gray = exactGray(pixels);
    const __m256i pair = _mm256_or_si256(gray, _mm256_slli_epi32(gray, 8));
    const __m256i color = _mm256_or_si256(pair, _mm256_slli_epi32(gray, 16));
    storeBlock(to + 4 * at, _mm256_or_si256(color, _mm256_and_si256(pixels, alpha)));
  }
  return at;
}

}  // namespace quorvel::pixels

#endif
