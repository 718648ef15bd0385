#include <algorithm>
#include <cstring>
#include <new>
#include <numeric>

#if defined(__SSE2__)
#include <emmintrin.h>
#elif defined(__ARM_NEON) && defined(__aarch64__)
#include <arm_neon.h>
#endif

#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/ImageIO/AreaShrink.h>

namespace quorvel {
namespace {

constexpr std::size_t kChannels = 4;

template <class Element>
std::unique_ptr<Element[]> zeros(std::size_t count) {
  return std::unique_ptr<Element[]>(new (std::nothrow) Element[count]());
}

/// One direction in its smallest whole numbers: a source pixel is `part` units long, a result pixel `whole` units.
struct Axis {
  std::uint32_t part;
  std::uint32_t whole;

  Axis(std::uint32_t source, std::uint32_t result)
      : part(result / std::gcd(source, result)), whole(source / std::gcd(source, result)) {}

  [[nodiscard]] std::uint32_t firstPixel(std::uint32_t result) const {
    return static_cast<std::uint32_t>(std::uint64_t{result} * whole / part);
  }
  /// Units that a result pixel shares with a source pixel.
  [[nodiscard]] std::uint32_t shared(std::uint32_t result, std::uint32_t pixel) const {
    const std::uint64_t low = std::max(std::uint64_t{result} * whole, std::uint64_t{pixel} * part);
    const std::uint64_t high = std::min((result + std::uint64_t{1}) * whole, (pixel + std::uint64_t{1}) * part);
    return low < high ? static_cast<std::uint32_t>(high - low) : 0;
  }
  [[nodiscard]] std::uint32_t mostPixels(std::uint32_t results) const {
    std::uint32_t most = 1;
    for (std::uint32_t i = 0; i < results; ++i) {
      const auto end = static_cast<std::uint32_t>(((i + std::uint64_t{1}) * whole - 1) / part);
      most = std::max(most, end - firstPixel(i) + 1);
    }
    return most;
  }
};

/// Up to here a column's sum fits a signed half word, so that two pixels are weighed by one instruction.
constexpr std::uint32_t kNarrowWhole = 128;
/// (sum + 1/2) / divisor is at least 1/2 / divisor away from a whole number; the product with the rounded reciprocal
/// errs by at most 256 / 2^23 in single precision, so that its whole part is the quotient's.
constexpr std::uint64_t kSingleDivisor = 16'000;

template <class Real, class Sum>
void writeMeans(const Sum* sums, std::size_t count, std::uint64_t divisor, std::uint8_t* to) {
  const Real offset = static_cast<Real>(divisor / 2) + Real{0.5};
  const Real reciprocal = Real{1} / static_cast<Real>(divisor);
  for (std::size_t i = 0; i < count; ++i) {
    to[i] = static_cast<std::uint8_t>(static_cast<std::int32_t>((static_cast<Real>(sums[i]) + offset) * reciprocal));
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
  const std::uint64_t divisor;
  std::uint32_t sourceRow = 0;
  std::uint32_t resultRow = 0;

  /// The weighted sums of the rows so far, channel by channel: half words or words, and zeros behind them.
  std::unique_ptr<std::uint16_t[]> narrow{};
  std::unique_ptr<std::uint32_t[]> wide{};
  /// Of narrow sums: the first pixel under each result pixel, and the weights in pairs, equally many for each.
  std::unique_ptr<std::uint32_t[]> starts{};
  std::unique_ptr<std::uint32_t[]> weights{};
  std::unique_ptr<std::int32_t[]> pixelSums{};
  std::size_t pairs = 0;

  State(PixelSize from, CGBitmap& to)
      : result(to),
        source(from),
        columns(from.width, static_cast<std::uint32_t>(to.width())),
        rows(from.height, static_cast<std::uint32_t>(to.height())),
        divisor(std::uint64_t{columns.whole} * rows.whole) {}

  [[nodiscard]] bool isCopy() const { return divisor == 1; }
  [[nodiscard]] bool prepare();
  void prepareWeights();
  void add(const std::uint8_t* row, std::uint32_t weight, bool isFirst);
  void finishRow();
  template <std::size_t kPairs>
  void sumNarrow();
  void sumWide(std::uint8_t* to);
};

namespace {

template <class Sum>
void addWeighted(Sum* sums, const std::uint8_t* row, std::size_t count, std::uint32_t weight, bool isFirst) {
  const auto factor = static_cast<std::uint16_t>(weight);
  if (isFirst) {
    for (std::size_t i = 0; i < count; ++i) sums[i] = static_cast<Sum>(std::uint16_t{row[i]} * factor);
  } else {
    for (std::size_t i = 0; i < count; ++i) sums[i] = static_cast<Sum>(sums[i] + std::uint16_t{row[i]} * factor);
  }
}

}  // namespace

bool AreaShrink::State::prepare() {
  const std::size_t count = std::size_t{source.width} * kChannels;
  if (isCopy()) return true;
  if (rows.whole > kNarrowWhole) {
    wide = zeros<std::uint32_t>(count);
    return wide != nullptr;
  }
  pairs = (columns.mostPixels(static_cast<std::uint32_t>(result.width())) + 1) / 2;
  narrow = zeros<std::uint16_t>(count + 2 * pairs * kChannels);
  starts = zeros<std::uint32_t>(result.width());
  weights = zeros<std::uint32_t>(result.width() * pairs);
  pixelSums = zeros<std::int32_t>(result.width() * kChannels);
  if (!narrow || !starts || !weights || !pixelSums) return false;
  prepareWeights();
  return true;
}

void AreaShrink::State::prepareWeights() {
  for (std::uint32_t i = 0; i < result.width(); ++i) {
    starts[i] = columns.firstPixel(i);
    for (std::uint32_t pair = 0; pair < pairs; ++pair) {
      const std::uint32_t pixel = starts[i] + 2 * pair;
      weights[i * pairs + pair] = columns.shared(i, pixel) | columns.shared(i, pixel + 1) << 16;
    }
  }
}

void AreaShrink::State::add(const std::uint8_t* row, std::uint32_t weight, bool isFirst) {
  const std::size_t count = std::size_t{source.width} * kChannels;
  if (narrow) {
    addWeighted(narrow.get(), row, count, weight, isFirst);
  } else {
    addWeighted(wide.get(), row, count, weight, isFirst);
  }
}

template <std::size_t kPairs>
void AreaShrink::State::sumNarrow() {
  const std::size_t perPixel = kPairs ? kPairs : pairs;
  for (std::size_t i = 0; i < result.width(); ++i) {
    const std::uint16_t* pixels = narrow.get() + starts[i] * kChannels;
    const std::uint32_t* pixelWeights = weights.get() + i * perPixel;
    PixelSum sum;
    for (std::size_t pair = 0; pair < perPixel; ++pair) sum.add(pixels + 2 * kChannels * pair, pixelWeights[pair]);
    sum.store(pixelSums.get() + i * kChannels);
  }
}

/// Whole pixels are added without their weight, which they share; the two at the borders are weighed.
void AreaShrink::State::sumWide(std::uint8_t* to) {
  for (std::uint32_t i = 0; i < result.width(); ++i) {
    const std::uint32_t first = columns.firstPixel(i);
    const auto last = static_cast<std::uint32_t>(((i + std::uint64_t{1}) * columns.whole - 1) / columns.part);
    std::uint64_t sums[kChannels] = {};
    for (std::uint32_t pixel = first + 1; pixel < last; ++pixel) {
      for (std::size_t c = 0; c < kChannels; ++c) sums[c] += wide[pixel * kChannels + c];
    }
    const std::uint64_t firstWeight = columns.shared(i, first);
    const std::uint64_t lastWeight = last > first ? columns.shared(i, last) : 0;
    std::int64_t total[kChannels];
    for (std::size_t c = 0; c < kChannels; ++c) {
      total[c] = static_cast<std::int64_t>(sums[c] * columns.part + wide[first * kChannels + c] * firstWeight +
                                           wide[last * kChannels + c] * lastWeight);
    }
    writeMeans<double>(total, kChannels, divisor, to + i * kChannels);
  }
}

void AreaShrink::State::finishRow() {
  std::uint8_t* const to = result.row(resultRow++);
  if (wide) return sumWide(to);
  switch (pairs) {
    case 1:
      sumNarrow<1>();
      break;
    case 2:
      sumNarrow<2>();
      break;
    case 3:
      sumNarrow<3>();
      break;
    default:
      sumNarrow<0>();
  }
  const std::size_t count = result.width() * kChannels;
  if (divisor <= kSingleDivisor) {
    writeMeans<float>(pixelSums.get(), count, divisor, to);
  } else {
    writeMeans<double>(pixelSums.get(), count, divisor, to);
  }
}

AreaShrink::AreaShrink(std::unique_ptr<State> state) : state_(std::move(state)) {}
AreaShrink::AreaShrink(AreaShrink&&) noexcept = default;
AreaShrink::~AreaShrink() = default;

std::optional<AreaShrink> AreaShrink::make(PixelSize source, CGBitmap& result) {
  if (result.width() > source.width || result.height() > source.height) return std::nullopt;
  if (source.width > limits::kImageSide || source.height > limits::kImageSide) return std::nullopt;
  std::unique_ptr<State> state(new (std::nothrow) State(source, result));
  if (!state || !state->prepare()) return std::nullopt;
  return AreaShrink(std::move(state));
}

void AreaShrink::addRow(const std::uint8_t* premultipliedBGRA) {
  State& state = *state_;
  if (state.sourceRow == state.source.height) return;
  const std::uint32_t row = state.sourceRow++;
  if (state.isCopy()) {
    std::memcpy(state.result.row(state.resultRow++), premultipliedBGRA, state.result.width() * kChannels);
    return;
  }
  const std::uint32_t weight = state.rows.shared(state.resultRow, row);
  state.add(premultipliedBGRA, weight, state.rows.firstPixel(state.resultRow) == row);
  if ((row + std::uint64_t{1}) * state.rows.part < (state.resultRow + std::uint64_t{1}) * state.rows.whole) return;
  state.finishRow();
  if (weight < state.rows.part) state.add(premultipliedBGRA, state.rows.part - weight, true);
}

std::uint32_t AreaShrink::rowsDone() const { return state_->resultRow; }

}  // namespace quorvel
