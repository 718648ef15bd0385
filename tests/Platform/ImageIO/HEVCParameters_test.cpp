#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <quorvel/Platform/ImageIO/HEVCParameters.h>

namespace quorvel {
namespace {

/// A sequence parameter set of 64 by 48 samples in blocks of 8 to 32, up to the depths of transforms.
struct Set {
  unsigned layer = 0;
  unsigned subLayers = 1;
  std::uint64_t identifier = 0;
  std::uint64_t chroma = 1;
  std::uint64_t width = 64;
  std::uint64_t height = 48;
  bool isCropped = false;
  std::uint64_t lumaDepth = 8;
  std::uint64_t chromaDepth = 8;
  std::uint64_t leastCoding = 3;
  std::uint64_t moreCoding = 2;
  std::uint64_t leastTransform = 2;
  std::uint64_t moreTransform = 3;
  std::uint64_t interDepth = 1;
  std::uint64_t intraDepth = 1;
};

class Writer {
 public:
  std::vector<std::uint8_t> bytes;
  void bit(bool value) {
    if (used_++ % 8 == 0) bytes.push_back(0);
    bytes.back() = static_cast<std::uint8_t>(bytes.back() | value << (7 - (used_ - 1) % 8));
  }
  void bits(std::uint64_t value, unsigned count) {
    while (count-- > 0) bit(count < 64 && (value >> count & 1));
  }
  void number(std::uint64_t value) {
    unsigned width = 0;
    while ((value + 1) >> (width + 1)) ++width;
    bits(0, width);
    bits(value + 1, width + 1);
  }

 private:
  std::size_t used_ = 0;
};

/// A 3 after every two zeros that a byte up to 3 would follow.
std::vector<std::uint8_t> escaped(const std::vector<std::uint8_t>& bytes) {
  std::vector<std::uint8_t> result;
  int zeros = 0;
  for (const std::uint8_t byte : bytes) {
    if (zeros >= 2 && byte <= 3) {
      result.push_back(3);
      zeros = 0;
    }
    zeros = byte == 0 ? zeros + 1 : 0;
    result.push_back(byte);
  }
  return result;
}

std::vector<std::uint8_t> unitOf(const Set& set) {
  Writer w;
  w.bits(33, 7);
  w.bits(set.layer, 6);
  w.bits(1, 3);
  w.bits(0, 4);
  w.bits(set.subLayers - 1, 3);
  w.bit(true);
  w.bits(0, 88 + 8);  // the profile is all zeros, which takes escapes
  // Of each further layer both parts, of ones.
  for (unsigned i = 1; i < set.subLayers; ++i) w.bits(3, 2);
  for (unsigned i = set.subLayers; set.subLayers > 1 && i <= 8; ++i) w.bits(0, 2);
  for (unsigned i = 1; i < set.subLayers; ++i) {
    for (int byte = 0; byte < 12; ++byte) w.bits(0xFF, 8);
  }
  w.number(set.identifier);
  w.number(set.chroma);
  if (set.chroma == 3) w.bit(false);
  w.number(set.width);
  w.number(set.height);
  w.bit(set.isCropped);
  for (int side = 0; set.isCropped && side < 4; ++side) w.number(5);
  w.number(set.lumaDepth - 8);
  w.number(set.chromaDepth - 8);
  w.number(4);
  w.bit(true);
  for (unsigned i = 0; i < set.subLayers; ++i) {
    for (const std::uint64_t value : {4U, 2U, 0U}) w.number(value);
  }
  w.number(set.leastCoding - 3);
  w.number(set.moreCoding);
  w.number(set.leastTransform - 2);
  w.number(set.moreTransform);
  w.number(set.interDepth);
  w.number(set.intraDepth);
  w.bit(true);
  return escaped(w.bytes);
}

struct SetRow {
  const char* why;
  HEVCUnit kind;
  std::function<void(Set&)> change;
};

TEST(HEVCParameters, TellsWhatADecoderWouldComplainAbout) {
  using enum HEVCUnit;
  const SetRow rows[] = {
      {"as it is", SoundParameters, [](Set&) {}},
      {"another layer", Foreign, [](Set& s) { s.layer = 1; }},
      {"the last bit of the layer", Foreign, [](Set& s) { s.layer = 32; }},
      {"seven sublayers", SoundParameters, [](Set& s) { s.subLayers = 7; }},
      {"two sublayers", SoundParameters, [](Set& s) { s.subLayers = 2; }},
      {"last identifier", SoundParameters, [](Set& s) { s.identifier = 15; }},
      {"identifier beyond", UnsoundParameters, [](Set& s) { s.identifier = 16; }},
      {"planes of full size have a bit more", SoundParameters, [](Set& s) { s.chroma = 3; }},
      {"no such chroma", UnsoundParameters, [](Set& s) { s.chroma = 4; }},
      {"cropped", SoundParameters, [](Set& s) { s.isCropped = true; }},
      {"no width", UnsoundParameters, [](Set& s) { s.width = 0; }},
      {"width off the blocks", UnsoundParameters, [](Set& s) { s.width = 68; }},
      {"height off the blocks", UnsoundParameters, [](Set& s) { s.height = 44; }},
      {"as many pixels as we take", SoundParameters, [](Set& s) { s.width = s.height = 10'000; }},
      {"more", UnsoundParameters, [](Set& s) { s.width = s.height = 10'008; }},
      {"sides whose product would wrap", UnsoundParameters, [](Set& s) { s.width = s.height = 0xFFFFFFF8; }},
      {"sixteen bits", SoundParameters, [](Set& s) { s.lumaDepth = s.chromaDepth = 16; }},
      {"luma of more", UnsoundParameters, [](Set& s) { s.lumaDepth = 17; }},
      {"chroma of more", UnsoundParameters, [](Set& s) { s.chromaDepth = 17; }},
      {"largest blocks", SoundParameters, [](Set& s) { s.moreCoding = 3; }},
      {"blocks beyond", UnsoundParameters, [](Set& s) { s.moreCoding = 4; }},
      {"blocks whose size would wrap", UnsoundParameters, [](Set& s) { s.moreCoding = 0xFFFFFFFE; }},
      {"transforms as small as blocks", UnsoundParameters, [](Set& s) { s.leastTransform = 3; }},
      {"transforms above 32", UnsoundParameters, [](Set& s) { s.moreCoding = 3, s.moreTransform = 4; }},
      {"transforms above blocks", UnsoundParameters, [](Set& s) { s.moreCoding = 1; }},
      {"deepest", SoundParameters, [](Set& s) { s.interDepth = s.intraDepth = 3; }},
      {"too deep between pictures", UnsoundParameters, [](Set& s) { s.interDepth = 4; }},
      {"too deep within", UnsoundParameters, [](Set& s) { s.intraDepth = 4; }},
  };
  for (const SetRow& row : rows) {
    Set set;
    row.change(set);
    const auto unit = unitOf(set);
    EXPECT_EQ(kindOfHEVCUnit(unit), row.kind) << row.why;
    // Its last byte holds the stop bit alone, or bits of the last number with it.
    for (std::size_t cut = 0; cut + 1 < unit.size() && row.kind == SoundParameters; ++cut) {
      const std::vector<std::uint8_t> part(unit.begin(), unit.begin() + static_cast<std::ptrdiff_t>(cut));
      EXPECT_EQ(kindOfHEVCUnit(part), cut < 2 ? Foreign : UnsoundParameters) << row.why << " cut to " << cut;
    }
  }
  const std::vector<std::uint8_t> slice{40, 1, 0xAF};
  EXPECT_EQ(kindOfHEVCUnit(slice), Other);
  const std::vector<std::uint8_t> zeros{66, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  EXPECT_EQ(kindOfHEVCUnit(zeros), UnsoundParameters) << "numbers that never begin";
}

}  // namespace
}  // namespace quorvel
