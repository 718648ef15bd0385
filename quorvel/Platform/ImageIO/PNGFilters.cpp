#include <algorithm>
#include <cstdlib>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include <quorvel/Platform/ImageIO/PNGFilters.h>

namespace quorvel {
namespace {

std::uint8_t paeth(int left, int above, int corner) {
  const int toLeft = std::abs(above - corner);
  const int toAbove = std::abs(left - corner);
  const int toCorner = std::abs(left + above - 2 * corner);
  if (toLeft <= toAbove && toLeft <= toCorner) return static_cast<std::uint8_t>(left);
  return static_cast<std::uint8_t>(toAbove <= toCorner ? above : corner);
}

void undoUp(const std::uint8_t* from, const std::uint8_t* above, std::uint8_t* to, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) to[i] = static_cast<std::uint8_t>(from[i] + above[i]);
}

void undoSub(const std::uint8_t* from, std::uint8_t* to, std::size_t size, std::size_t step) {
  std::memmove(to, from, std::min(step, size));
  for (std::size_t i = step; i < size; ++i) to[i] = static_cast<std::uint8_t>(from[i] + to[i - step]);
}

void undoAverage(const std::uint8_t* from, const std::uint8_t* above, std::uint8_t* to, std::size_t size,
                 std::size_t step) {
  for (std::size_t i = 0; i < size; ++i) {
    const unsigned left = i < step ? 0 : to[i - step];
    to[i] = static_cast<std::uint8_t>(from[i] + (left + above[i]) / 2);
  }
}

void undoPaeth(const std::uint8_t* from, const std::uint8_t* above, std::uint8_t* to, std::size_t size,
               std::size_t step) {
  const std::size_t first = std::min(step, size);
  undoUp(from, above, to, first);
  for (std::size_t i = first; i < size; ++i) {
    to[i] = static_cast<std::uint8_t>(from[i] + paeth(to[i - step], above[i], above[i - step]));
  }
}

#if defined(__SSE2__)

/// Three bytes are taken as four; what the fourth becomes is written over by the next pixel.
__m128i pixelAt(const std::uint8_t* from) {
  int pixel;
  std::memcpy(&pixel, from, sizeof pixel);
  return _mm_cvtsi32_si128(pixel);
}

void put(__m128i pixel, std::uint8_t* to) {
  const int bytes = _mm_cvtsi128_si32(pixel);
  std::memcpy(to, &bytes, sizeof bytes);
}

__m128i magnitude(__m128i units) { return _mm_max_epi16(units, _mm_sub_epi16(_mm_setzero_si128(), units)); }
__m128i choose(__m128i mask, __m128i yes, __m128i no) {
  return _mm_or_si128(_mm_and_si128(mask, yes), _mm_andnot_si128(mask, no));
}

template <std::size_t kStep>
void undoSubPixels(const std::uint8_t* from, std::uint8_t* to, std::size_t size) {
  __m128i left = _mm_setzero_si128();
  for (std::size_t i = 0; i < size; i += kStep) {
    left = _mm_add_epi8(left, pixelAt(from + i));
    put(left, to + i);
  }
}

template <std::size_t kStep>
void undoAveragePixels(const std::uint8_t* from, const std::uint8_t* above, std::uint8_t* to, std::size_t size) {
  __m128i left = _mm_setzero_si128();
  for (std::size_t i = 0; i < size; i += kStep) {
    const __m128i up = pixelAt(above + i);
    // The instruction rounds up; the filter does not.
    const __m128i odd = _mm_and_si128(_mm_xor_si128(left, up), _mm_set1_epi8(1));
    left = _mm_add_epi8(pixelAt(from + i), _mm_sub_epi8(_mm_avg_epu8(left, up), odd));
    put(left, to + i);
  }
}

/// One row under way: what lies to the left and above it, in units of 16 bits.
struct PaethRow {
  __m128i left = _mm_setzero_si128();
  __m128i corner = _mm_setzero_si128();

  /// The next pixel, below `above` and different from what is foretold by `delta`; all in bytes taken as units.
  __m128i next(__m128i above, __m128i delta) {
    const __m128i leftward = _mm_sub_epi16(above, corner);
    const __m128i upward = _mm_sub_epi16(left, corner);
    const __m128i toLeft = magnitude(leftward);
    const __m128i toAbove = magnitude(upward);
    const __m128i toCorner = magnitude(_mm_add_epi16(leftward, upward));
    const __m128i least = _mm_min_epi16(toCorner, _mm_min_epi16(toLeft, toAbove));
    const __m128i other = choose(_mm_cmpeq_epi16(least, toAbove), above, corner);
    const __m128i foretold = choose(_mm_cmpeq_epi16(least, toLeft), left, other);
    corner = above;
    // As bytes, so that what overflows is dropped.
    left = _mm_add_epi8(foretold, delta);
    return left;
  }
};

__m128i units(__m128i bytes) { return _mm_unpacklo_epi8(bytes, _mm_setzero_si128()); }

template <std::size_t kStep>
void undoPaethPixels(const std::uint8_t* from, const std::uint8_t* above, std::uint8_t* to, std::size_t size) {
  PaethRow row;
  for (std::size_t i = 0; i < size; i += kStep) {
    const __m128i pixel = row.next(units(pixelAt(above + i)), units(pixelAt(from + i)));
    put(_mm_packus_epi16(pixel, pixel), to + i);
  }
}

/// True when a kernel for whole pixels did it.
template <std::size_t kStep>
bool undoPixels(std::uint8_t filter, const std::uint8_t* from, const std::uint8_t* above, std::uint8_t* to,
                std::size_t size) {
  if (filter == 1) undoSubPixels<kStep>(from, to, size);
  if (filter == 3) undoAveragePixels<kStep>(from, above, to, size);
  if (filter == 4) undoPaethPixels<kStep>(from, above, to, size);
  return filter == 1 || filter >= 3;
}

bool undoPixels(std::uint8_t filter, const std::uint8_t* from, const std::uint8_t* above, std::uint8_t* to,
                std::size_t size, std::size_t step) {
  if (step == 3) return undoPixels<3>(filter, from, above, to, size);
  return step == 4 && undoPixels<4>(filter, from, above, to, size);
}

#else

bool undoPixels(std::uint8_t /*filter*/, const std::uint8_t* /*from*/, const std::uint8_t* /*above*/,
                std::uint8_t* /*to*/, std::size_t /*size*/, std::size_t /*step*/) {
  return false;
}

#endif

}  // namespace

void undoPNGFilter(std::uint8_t filter, const std::uint8_t* from, const std::uint8_t* above, std::uint8_t* to,
                   std::size_t size, std::size_t step) {
  if (undoPixels(filter, from, above, to, size, step)) return;
  switch (filter) {
    case 1:
      return undoSub(from, to, size, step);
    case 2:
      return undoUp(from, above, to, size);
    case 3:
      return undoAverage(from, above, to, size, step);
    case 4:
      return undoPaeth(from, above, to, size, step);
    default:
      std::memmove(to, from, size);
  }
}

void applyPNGFilter(std::uint8_t filter, const std::uint8_t* from, const std::uint8_t* above, std::uint8_t* to,
                    std::size_t size, std::size_t step) {
  const std::size_t first = std::min(step, size);
  for (std::size_t i = 0; i < first; ++i) {
    const int foretold = filter == 3 ? above[i] / 2 : filter == 2 || filter == 4 ? above[i] : 0;
    to[i] = static_cast<std::uint8_t>(from[i] - foretold);
  }
  // Without a branch, so that the compiler takes many bytes at once.
  const auto write = [&](auto foretell) {
    for (std::size_t i = first; i < size; ++i) {
      to[i] = static_cast<std::uint8_t>(from[i] - foretell(from[i - step], above[i], above[i - step]));
    }
  };
  switch (filter) {
    case 1:
      return write([](int left, int /*above*/, int /*corner*/) { return left; });
    case 2:
      return write([](int /*left*/, int up, int /*corner*/) { return up; });
    case 3:
      return write([](int left, int up, int /*corner*/) { return (left + up) / 2; });
    case 4:
      return write([](int left, int up, int corner) {
        const auto toLeft = static_cast<std::int16_t>(std::abs(up - corner));
        const auto toAbove = static_cast<std::int16_t>(std::abs(left - corner));
        const auto toCorner = static_cast<std::int16_t>(std::abs(left + up - 2 * corner));
        const int other = toAbove <= toCorner ? up : corner;
        return toLeft <= toAbove && toLeft <= toCorner ? left : other;
      });
    default:
      return write([](int /*left*/, int /*above*/, int /*corner*/) { return 0; });
  }
}

}  // namespace quorvel
