#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <numeric>

#if defined(__SSE2__)
#include <emmintrin.h>
#elif defined(__ARM_NEON) && defined(__aarch64__)
#include <arm_neon.h>
#endif

#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/Foundation/WideKernels.h>
#include <quorvel/Platform/ImageIO/AreaKernels.h>
#include <quorvel/Platform/ImageIO/AreaShrink.h>

namespace quorvel {
namespace {

using area::kBlock;
using area::kNarrowWhole;

constexpr std::size_t kChannels = 4;

struct Freed {
  void operator()(void* memory) const { std::free(memory); }
};
template <class Element>
using Buffer = std::unique_ptr<Element[], Freed>;

/// Begins with a line of the cache, so that no vector lies across two.
template <class Element>
Buffer<Element> zeros(std::size_t count) {
  constexpr std::size_t kLine = 64;
  const std::size_t size = (count * sizeof(Element) + kLine - 1) / kLine * kLine;
  void* const memory = std::aligned_alloc(kLine, size);
  if (memory) std::memset(memory, 0, size);
  return Buffer<Element>(static_cast<Element*>(memory));
}

/// Weights are signed half words, so that two pixels are weighed by one instruction.
constexpr std::uint32_t kMostWeight = 32'767;

/// One direction in its smallest whole numbers: a source pixel is `part` units long, a result pixel `whole` units.
/// Their weights come to `total` for each result pixel: the units, or where these are too many, units rounded.
struct Axis {
  std::uint32_t part;
  std::uint32_t whole;
  std::uint32_t total;

  /// `eighths` of a pixel are what the source's pixels of this direction make up.
  Axis(std::uint32_t eighths, std::uint32_t results)
      : part(results * 8 / std::gcd(eighths, results * 8)),
        whole(eighths / std::gcd(eighths, results * 8)),
        total(std::min(whole, kMostWeight)) {}

  [[nodiscard]] std::uint32_t firstPixel(std::uint32_t result) const {
    return static_cast<std::uint32_t>(std::uint64_t{result} * whole / part);
  }
  [[nodiscard]] std::uint32_t lastPixel(std::uint32_t result) const {
    return static_cast<std::uint32_t>(((result + std::uint64_t{1}) * whole - 1) / part);
  }
  /// The weight of a source pixel in a result pixel.
  [[nodiscard]] std::uint32_t shared(std::uint32_t result, std::uint32_t pixel) const {
    const std::uint64_t start = std::uint64_t{result} * whole;
    const std::uint64_t low = std::max(start, std::uint64_t{pixel} * part);
    const std::uint64_t high = std::min(start + whole, (pixel + std::uint64_t{1}) * part);
    return low < high ? rounded(high - start) - rounded(low - start) : 0;
  }
  [[nodiscard]] std::uint32_t mostPixels(std::uint32_t results) const {
    std::uint32_t most = 1;
    for (std::uint32_t i = 0; i < results; ++i) most = std::max(most, lastPixel(i) - firstPixel(i) + 1);
    return most;
  }

 private:
  [[nodiscard]] std::uint32_t rounded(std::uint64_t units) const {
    return static_cast<std::uint32_t>(total == whole ? units : (units * total + whole / 2) / whole);
  }
};

/// Rounds to the nearest. Up to a divisor of 16,000 exactly: (sum + 1/2) / divisor is at least 1/2 / divisor away from
/// a whole number, and the product with the rounded reciprocal errs by at most 256 / 2^23. Beyond, a mean that close to
/// a half may go either way.
void writeMeans(const std::int32_t* sums, std::size_t count, std::uint64_t divisor, std::uint8_t* to) {
  const std::uint64_t half = divisor / 2;
  const float offset = static_cast<float>(half) + 0.5F;
  const float reciprocal = 1.0F / static_cast<float>(divisor);
  for (std::size_t i = 0; i < count; ++i) {
    to[i] = static_cast<std::uint8_t>(static_cast<std::int32_t>((static_cast<float>(sums[i]) + offset) * reciprocal));
  }
}

template <class Sum>
void addWeighted(Sum* sums, const std::uint8_t* row, std::size_t count, std::uint32_t weight, bool isFirst) {
  const auto factor = static_cast<std::uint16_t>(weight);
  if (isFirst) {
    for (std::size_t i = 0; i < count; ++i) sums[i] = static_cast<Sum>(std::uint32_t{row[i]} * factor);
  } else {
    for (std::size_t i = 0; i < count; ++i) sums[i] = static_cast<Sum>(sums[i] + std::uint32_t{row[i]} * factor);
  }
}

/// Brings sums of `total` units to kNarrowWhole units; below 2^23, so that they are exact in single precision.
void narrowSums(const std::uint32_t* wide, std::size_t count, std::uint32_t total, std::uint16_t* narrow) {
  const float factor = static_cast<float>(kNarrowWhole) / static_cast<float>(total);
  for (std::size_t i = 0; i < count; ++i) {
    const float sum = static_cast<float>(static_cast<std::int32_t>(wide[i]));
    const float rounded = sum * factor + 0.5F;  // positive, then cut: as the vectors do it
    narrow[i] = static_cast<std::uint16_t>(static_cast<std::int32_t>(rounded));
  }
}

/// The weighted sum of the columns under one result pixel, taken two pixels at a time.
#if defined(__SSE2__)
class PixelSum {
 public:
  void add(const std::uint16_t* twoPixels, std::uint32_t weights) {
    const __m128i pixels = _mm_loadu_si128(reinterpret_cast<const __m128i*>(twoPixels));
    const __m128i pairs = _mm_unpacklo_epi16(pixels, _mm_unpackhi_epi64(pixels, pixels));
    sum_ = _mm_add_epi32(sum_, _mm_madd_epi16(pairs, _mm_set1_epi32(static_cast<int>(weights))));
  }
  void store(std::int32_t* to) const { _mm_storeu_si128(reinterpret_cast<__m128i*>(to), sum_); }

 private:
  __m128i sum_ = _mm_setzero_si128();
};
#elif defined(__ARM_NEON) && defined(__aarch64__)
class PixelSum {
 public:
  void add(const std::uint16_t* twoPixels, std::uint32_t weights) {
    const int16x8_t pixels = vreinterpretq_s16_u16(vld1q_u16(twoPixels));
    sum_ = vmlal_n_s16(sum_, vget_low_s16(pixels), static_cast<std::int16_t>(weights));
    sum_ = vmlal_n_s16(sum_, vget_high_s16(pixels), static_cast<std::int16_t>(weights >> 16));
  }
  void store(std::int32_t* to) const { vst1q_s32(to, sum_); }

 private:
  int32x4_t sum_ = vdupq_n_s32(0);
};
#else
class PixelSum {
 public:
  void add(const std::uint16_t* twoPixels, std::uint32_t weights) {
    for (std::size_t i = 0; i < kChannels; ++i) {
      sum_[i] +=
          static_cast<std::int32_t>(twoPixels[i] * (weights & 0xFFFF) + twoPixels[kChannels + i] * (weights >> 16));
    }
  }
  void store(std::int32_t* to) const { std::memcpy(to, sum_, sizeof sum_); }

 private:
  std::int32_t sum_[kChannels] = {};
};
#endif

}  // namespace

struct AreaShrink::State {
  CGBitmap& result;
  const PixelSize source;
  const Axis columns;
  const Axis rows;
  const bool isWide = wide::isAvailable();
  std::uint32_t sourceRow = 0;
  std::uint32_t resultRow = 0;
  bool isRowEmpty = true;

  /// The weighted sums of the rows so far, channel by channel, as words where half words do not hold them exactly.
  Buffer<std::uint32_t> words{};
  /// Half words, and zeros behind them.
  Buffer<std::uint16_t> sums{};
  Buffer<std::uint16_t> endedSums{};
  /// The first pixel under each result pixel, and the weights in pairs, equally many for each.
  Buffer<std::uint32_t> starts{};
  Buffer<std::uint32_t> weights{};
  Buffer<std::int32_t> pixelSums{};
  std::size_t pairs = 0;

  State(PixelSize picture, std::uint32_t eighths, CGBitmap& to)
      : result(to),
        source{(picture.width * eighths + 7) / 8, (picture.height * eighths + 7) / 8},
        columns(picture.width * eighths, static_cast<std::uint32_t>(to.width())),
        rows(picture.height * eighths, static_cast<std::uint32_t>(to.height())) {}

  [[nodiscard]] bool isCopy() const { return columns.whole == 1 && rows.whole == 1; }
  [[nodiscard]] bool hasWords() const { return rows.whole > kNarrowWhole; }
  [[nodiscard]] std::uint64_t divisor() const {
    return std::uint64_t{columns.total} * (hasWords() ? kNarrowWhole : rows.total);
  }
  [[nodiscard]] std::size_t paddedWidth() const { return (result.width() + kBlock - 1) / kBlock * kBlock; }

  [[nodiscard]] bool prepare();
  void prepareWeights();
  void addRow(const std::uint8_t* row);
  void add(const std::uint8_t* row, std::uint32_t weight);
  void finishRow();
  template <std::size_t kPairs>
  void sumColumns();
  void sumAllColumns();
};

bool AreaShrink::State::prepare() {
  if (isCopy()) return true;
  const auto width = static_cast<std::uint32_t>(result.width());
  // One more where AVX2 begins at even pixels only.
  pairs = (columns.mostPixels(width) + (isWide ? 2 : 1)) / 2;
  const std::size_t count = (source.width + kBlock + 2 * pairs) * kChannels;
  sums = zeros<std::uint16_t>(count);
  if (hasWords()) words = zeros<std::uint32_t>(count);
  if (isWide && !hasWords()) endedSums = zeros<std::uint16_t>(count);
  starts = zeros<std::uint32_t>(paddedWidth());
  weights = zeros<std::uint32_t>(paddedWidth() * pairs);
  if (!isWide) pixelSums = zeros<std::int32_t>(width * kChannels);
  if (!sums || !starts || !weights || (hasWords() && !words)) return false;
  if (isWide ? !hasWords() && !endedSums : !pixelSums) return false;
  prepareWeights();
  return true;
}

void AreaShrink::State::prepareWeights() {
  for (std::uint32_t i = 0; i < result.width(); ++i) {
    starts[i] = columns.firstPixel(i);
    if (isWide) starts[i] &= ~1U;
    for (std::uint32_t pair = 0; pair < pairs; ++pair) {
      const std::uint32_t pixel = starts[i] + 2 * pair;
      weights[isWide ? pair * paddedWidth() + i : i * pairs + pair] =
          columns.shared(i, pixel) | columns.shared(i, pixel + 1) << 16;
    }
  }
}

void AreaShrink::State::addRow(const std::uint8_t* row) {
  const std::uint64_t end = (sourceRow + std::uint64_t{1}) * rows.part;
  const std::uint64_t resultEnd = (resultRow + std::uint64_t{1}) * rows.whole;
  const bool isSplit = end > resultEnd && resultRow + 1 < result.height();
  const std::uint32_t weight = rows.shared(resultRow, sourceRow);
  const std::uint32_t nextWeight = isSplit ? rows.shared(resultRow + 1, sourceRow) : 0;
  ++sourceRow;
#if defined(__x86_64__)
  if (isSplit && !isRowEmpty && endedSums) {
    area::splitWide(sums.get(), row, source.width, weight, nextWeight, endedSums.get());
    sums.swap(endedSums);
    finishRow();
    sums.swap(endedSums);
    isRowEmpty = false;
    return;
  }
#endif
  add(row, weight);
  if (end >= resultEnd) finishRow();
  if (isSplit) add(row, nextWeight);
}

void AreaShrink::State::add(const std::uint8_t* row, std::uint32_t weight) {
  const auto both = [&](auto* to) {
#if defined(__x86_64__)
    if (isWide) return area::addWide(to, row, source.width, weight, isRowEmpty);
#endif
    addWeighted(to, row, std::size_t{source.width} * kChannels, weight, isRowEmpty);
  };
  if (words) {
    both(words.get());
  } else {
    both(sums.get());
  }
  isRowEmpty = false;
}

template <std::size_t kPairs>
void AreaShrink::State::sumColumns() {
  const std::size_t perPixel = kPairs ? kPairs : pairs;
  for (std::size_t i = 0; i < result.width(); ++i) {
    const std::uint16_t* const pixels = sums.get() + starts[i] * kChannels;
    const std::uint32_t* const pixelWeights = weights.get() + i * perPixel;
    PixelSum sum;
    for (std::size_t pair = 0; pair < perPixel; ++pair) sum.add(pixels + 2 * kChannels * pair, pixelWeights[pair]);
    sum.store(pixelSums.get() + i * kChannels);
  }
}

void AreaShrink::State::sumAllColumns() {
  switch (pairs) {
    case 1:
      return sumColumns<1>();
    case 2:
      return sumColumns<2>();
    case 3:
      return sumColumns<3>();
    default:
      return sumColumns<0>();
  }
}

void AreaShrink::State::finishRow() {
  std::uint8_t* const to = result.row(resultRow++);
  isRowEmpty = true;
#if defined(__x86_64__)
  if (isWide) {
    if (words) area::narrowWide(words.get(), source.width, rows.total, sums.get());
    return area::meansWide(sums.get(), {starts.get(), weights.get(), result.width(), pairs}, divisor(), to);
  }
#endif
  if (words) narrowSums(words.get(), std::size_t{source.width} * kChannels, rows.total, sums.get());
  sumAllColumns();
  writeMeans(pixelSums.get(), result.width() * kChannels, divisor(), to);
}

AreaShrink::AreaShrink(std::unique_ptr<State> state) : state_(std::move(state)) {}
AreaShrink::AreaShrink(AreaShrink&&) noexcept = default;
AreaShrink& AreaShrink::operator=(AreaShrink&&) noexcept = default;
AreaShrink::~AreaShrink() = default;

std::optional<AreaShrink> AreaShrink::make(PixelSize source, CGBitmap& result) { return make(source, 8, result); }

std::optional<AreaShrink> AreaShrink::make(PixelSize picture, std::uint32_t eighths, CGBitmap& result) {
  if (picture.width > limits::kImageSide || picture.height > limits::kImageSide) return std::nullopt;
  if (eighths > 8 || result.width() * 8 > std::size_t{picture.width} * eighths) return std::nullopt;
  if (result.height() * 8 > std::size_t{picture.height} * eighths) return std::nullopt;
  std::unique_ptr<State> state(new (std::nothrow) State(picture, eighths, result));
  if (!state || !state->prepare()) return std::nullopt;
  return AreaShrink(std::move(state));
}

void AreaShrink::addRow(const std::uint8_t* premultipliedBGRA) {
  State& state = *state_;
  if (state.resultRow == state.result.height()) return;
  if (!state.isCopy()) return state.addRow(premultipliedBGRA);
  std::memcpy(state.result.row(state.resultRow++), premultipliedBGRA, state.result.width() * kChannels);
}

std::uint32_t AreaShrink::rowsDone() const { return state_->resultRow; }

}  // namespace quorvel
