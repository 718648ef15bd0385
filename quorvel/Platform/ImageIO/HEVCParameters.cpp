#include <algorithm>
#include <vector>

#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/ImageIO/HEVCParameters.h>

namespace quorvel {
namespace {

constexpr std::uint64_t kHeaderBytes = 2;
constexpr unsigned kSequenceParameters = 33;
constexpr unsigned kProfileBits = 88;
constexpr unsigned kLevelBits = 8;
constexpr unsigned kMostSubLayers = 7;
/// More than the longest set takes up to the sizes of its blocks.
constexpr std::size_t kMostBytes = 1024;

/// The bits of a unit's body without the bytes that only keep start marks out of it.
class Bits {
 public:
  explicit Bits(ImageBytes body) {
    unsigned zeros = 0;
    for (const std::uint8_t byte : body) {
      if (zeros >= 2 && byte == 3) {
        zeros = 0;
        continue;
      }
      zeros = byte == 0 ? zeros + 1 : 0;
      bytes_.push_back(byte);
    }
  }

  [[nodiscard]] bool isWithin() const { return at_ <= 8 * bytes_.size(); }
  void skip(std::uint64_t count) { at_ += count; }
  unsigned bit() {
    const std::uint64_t at = at_++;
    return at / 8 < bytes_.size() ? unsigned{bytes_[at / 8]} >> (7 - at % 8) & 1U : 0;
  }
  unsigned take(unsigned count) {
    unsigned number = 0;
    while (count-- > 0) number = number << 1 | bit();
    return number;
  }
  /// ue(v) of 9.2; beyond 32 bits it ends outside.
  std::uint64_t number() {
    unsigned zeros = 0;
    while (isWithin() && bit() == 0) ++zeros;
    if (zeros > 32) skip(8 * bytes_.size() + 1);
    if (!isWithin()) return 0;
    std::uint64_t rest = 0;
    for (unsigned i = 0; i < zeros; ++i) rest = rest << 1 | bit();
    return (std::uint64_t{1} << zeros) - 1 + rest;
  }

 private:
  std::vector<std::uint8_t> bytes_;
  std::uint64_t at_ = 0;
};

/// profile_tier_level of 7.3.3.
void skipProfile(Bits& bits, unsigned subLayers) {
  bits.skip(kProfileBits + kLevelBits);
  unsigned total = 0;
  for (unsigned i = 1; i < subLayers; ++i) {
    total += bits.bit() * kProfileBits;
    total += bits.bit() * kLevelBits;
  }
  if (subLayers > 1) bits.skip(std::uint64_t{2} * (9 - subLayers));
  bits.skip(total);
}

/// From the chroma format to the depth of samples.
bool readPictureFormat(Bits& bits, std::uint64_t& width, std::uint64_t& height) {
  const std::uint64_t chroma = bits.number();
  if (chroma == 3) bits.skip(1);
  width = bits.number();
  height = bits.number();
  if (chroma > 3 || width == 0 || height == 0 || width > limits::kImageSide || height > limits::kImageSide)
    return false;
  if (width * height > static_cast<std::uint64_t>(limits::kImagePixels)) return false;
  if (bits.bit()) {
    for (int side = 0; side < 4; ++side) (void)bits.number();
  }
  const std::uint64_t luma = bits.number();
  return std::max(luma, bits.number()) <= 8;
}

void skipOrdering(Bits& bits, unsigned subLayers) {
  const bool isEach = bits.bit();
  for (unsigned i = isEach ? 0 : subLayers - 1; i < subLayers; ++i) {
    for (int number = 0; number < 3; ++number) (void)bits.number();
  }
}

/// The sizes of blocks, as logarithms.
bool readBlocks(Bits& bits, std::uint64_t width, std::uint64_t height) {
  const std::uint64_t leastCoding = bits.number() + 3;
  const std::uint64_t mostCoding = leastCoding + bits.number();
  const std::uint64_t leastTransform = bits.number() + 2;
  const std::uint64_t mostTransform = leastTransform + bits.number();
  const std::uint64_t depth = std::max(bits.number(), bits.number());
  if (!bits.isWithin() || mostCoding > 6 || mostTransform > std::min<std::uint64_t>(mostCoding, 5)) return false;
  const std::uint64_t side = (std::uint64_t{1} << leastCoding) - 1;
  return leastTransform < leastCoding && depth <= mostCoding - leastTransform && ((width | height) & side) == 0;
}

bool isSound(ImageBytes body) {
  Bits bits(body);
  bits.skip(4);
  const unsigned subLayers = bits.take(3) + 1;
  if (subLayers > kMostSubLayers) return false;
  bits.skip(1);
  skipProfile(bits, subLayers);
  if (bits.number() > 15) return false;
  std::uint64_t width = 0;
  std::uint64_t height = 0;
  if (!readPictureFormat(bits, width, height) || bits.number() > 12) return false;
  skipOrdering(bits, subLayers);
  return readBlocks(bits, width, height);
}

}  // namespace

HEVCUnit kindOfHEVCUnit(ImageBytes unit) {
  if (unit.size() < kHeaderBytes) return HEVCUnit::Foreign;
  const unsigned layer = (unit[0] & 1U) << 5 | unit[1] >> 3;
  if (layer != 0) return HEVCUnit::Foreign;
  if ((unit[0] >> 1 & 0x3FU) != kSequenceParameters) return HEVCUnit::Other;
  return isSound(unit.subspan(kHeaderBytes, std::min(kMostBytes, unit.size() - kHeaderBytes)))
             ? HEVCUnit::SoundParameters
             : HEVCUnit::UnsoundParameters;
}

}  // namespace quorvel
