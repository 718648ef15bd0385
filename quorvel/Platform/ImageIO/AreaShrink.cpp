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

/// Weights are signed half words, so that two pixels are weighed by one instruction.
constexpr std::uint32_t kMostWeight = 32'767;
/// Up to here the exact sum of a column fits a half word too.
constexpr std::uint32_t kNarrowWhole = 128;

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

/// (sum + 1/2) / divisor is at least 1/2 / divisor away from a whole number; the product with the rounded reciprocal
/// errs by at most 256 / 2^23 in single precision, so that its whole part is the quotient's.
constexpr std::uint64_t kSingleDivisor = 16'000;

template <class Real>
void writeMeans(const std::int32_t* sums, std::size_t count, std::uint64_t divisor, std::uint8_t* to) {
  const Real offset = static_cast<Real>(divisor / 2) + Real{0.5};
  const Real reciprocal = Real{1} / static_cast<Real>(divisor);
  for (std::size_t i = 0; i < count; ++i) {
    to[i] = static_cast<std::uint8_t>(static_cast<std::int32_t>((static_cast<Real>(sums[i]) + offset) * reciprocal));
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
    narrow[i] = static_cast<std::uint16_t>(static_cast<std::int32_t>(sum * factor + 0.5F));
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
  std::uint32_t sourceRow = 0;
  std::uint32_t resultRow = 0;
  bool isRowEmpty = true;

  /// The weighted sums of the rows so far, channel by channel, as words where half words do not hold them exactly.
  std::unique_ptr<std::uint32_t[]> wide{};
  /// Half words, and zeros behind them.
  std::unique_ptr<std::uint16_t[]> narrow{};
  /// The first pixel under each result pixel, and the weights in pairs, equally many for each.
  std::unique_ptr<std::uint32_t[]> starts{};
  std::unique_ptr<std::uint32_t[]> weights{};
  std::unique_ptr<std::int32_t[]> pixelSums{};
  std::size_t pairs = 0;

  State(PixelSize picture, std::uint32_t eighths, CGBitmap& to)
      : result(to),
        source{(picture.width * eighths + 7) / 8, (picture.height * eighths + 7) / 8},
        columns(picture.width * eighths, static_cast<std::uint32_t>(to.width())),
        rows(picture.height * eighths, static_cast<std::uint32_t>(to.height())) {}

  [[nodiscard]] bool isCopy() const { return columns.whole == 1 && rows.whole == 1; }
  [[nodiscard]] bool hasWideSums() const { return rows.whole > kNarrowWhole; }
  [[nodiscard]] bool prepare();
  void prepareWeights();
  void addRow(const std::uint8_t* row);
  void add(const std::uint8_t* row, std::uint32_t weight);
  void finishRow();
  template <std::size_t kPairs>
  void sumColumns();
};

bool AreaShrink::State::prepare() {
  if (isCopy()) return true;
  const std::size_t count = std::size_t{source.width} * kChannels;
  pairs = (columns.mostPixels(static_cast<std::uint32_t>(result.width())) + 1) / 2;
  if (hasWideSums()) wide = zeros<std::uint32_t>(count);
  narrow = zeros<std::uint16_t>(count + 2 * pairs * kChannels);
  starts = zeros<std::uint32_t>(result.width());
  weights = zeros<std::uint32_t>(result.width() * pairs);
  pixelSums = zeros<std::int32_t>(result.width() * kChannels);
  if (hasWideSums() != (wide != nullptr) || !narrow || !starts || !weights || !pixelSums) return false;
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

void AreaShrink::State::addRow(const std::uint8_t* row) {
  const std::uint64_t end = (sourceRow + std::uint64_t{1}) * rows.part;
  const std::uint64_t resultEnd = (resultRow + std::uint64_t{1}) * rows.whole;
  add(row, rows.shared(resultRow, sourceRow));
  if (end >= resultEnd) finishRow();
  if (end > resultEnd && resultRow < result.height()) add(row, rows.shared(resultRow, sourceRow));
  ++sourceRow;
}

void AreaShrink::State::add(const std::uint8_t* row, std::uint32_t weight) {
  const std::size_t count = std::size_t{source.width} * kChannels;
  if (wide) {
    addWeighted(wide.get(), row, count, weight, isRowEmpty);
  } else {
    addWeighted(narrow.get(), row, count, weight, isRowEmpty);
  }
  isRowEmpty = false;
}

template <std::size_t kPairs>
void AreaShrink::State::sumColumns() {
  const std::size_t perPixel = kPairs ? kPairs : pairs;
  for (std::size_t i = 0; i < result.width(); ++i) {
    const std::uint16_t* const pixels = narrow.get() + starts[i] * kChannels;
    const std::uint32_t* const pixelWeights = weights.get() + i * perPixel;
    PixelSum sum;
    for (std::size_t pair = 0; pair < perPixel; ++pair) sum.add(pixels + 2 * kChannels * pair, pixelWeights[pair]);
    sum.store(pixelSums.get() + i * kChannels);
  }
}

void AreaShrink::State::finishRow() {
  if (wide) narrowSums(wide.get(), std::size_t{source.width} * kChannels, rows.total, narrow.get());
  switch (pairs) {
    case 1:
      sumColumns<1>();
      break;
    case 2:
      sumColumns<2>();
      break;
    case 3:
      sumColumns<3>();
      break;
    default:
      sumColumns<0>();
  }
  const std::size_t count = result.width() * kChannels;
  const std::uint64_t divisor = std::uint64_t{columns.total} * (wide ? kNarrowWhole : rows.total);
  std::uint8_t* const to = result.row(resultRow++);
  if (divisor <= kSingleDivisor || wide) {
    writeMeans<float>(pixelSums.get(), count, divisor, to);
  } else {
    writeMeans<double>(pixelSums.get(), count, divisor, to);
  }
  isRowEmpty = true;
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
