#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <functional>
#include <random>

#include <gtest/gtest.h>
#include <tests/support/JPEGFiles.h>
#include <tests/support/Row.h>

#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/ImageIO/AreaShrink.h>
#include <quorvel/Platform/ImageIO/JPEGReader.h>

namespace quorvel {
namespace {

using test::declaring;
using test::JPEGKind;
using test::makeJPEG;
using test::photograph;
using test::Samples;

using Bytes = std::vector<std::uint8_t>;

ImageFacts factsOf(std::uint32_t width, std::uint32_t height) {
  ImageFacts facts;
  facts.format = ImageFormat::JPEG;
  facts.width = width;
  facts.height = height;
  return facts;
}

/// From an allocation of exactly the file's size, so that a sanitizer sees what reads on.
std::shared_ptr<CGBitmap> read(const Bytes& file, PixelSize size, PixelSize wanted, const ImageWork& work = {}) {
  const Bytes exact(file.begin(), file.end());
  return readPixels(exact, factsOf(size.width, size.height), wanted, work);
}

/// The same, decoded at so many eighths although it is small.
std::shared_ptr<CGBitmap> readAt(std::uint32_t eighths, const Bytes& file, PixelSize size, PixelSize wanted) {
  const Bytes exact(file.begin(), file.end());
  return readJPEG(exact, factsOf(size.width, size.height), wanted, eighths);
}

void addInks(const std::uint8_t* pixel, bool isInverted, std::vector<std::uint8_t>& row) {
  const auto ink = [&](std::size_t i) { return isInverted ? pixel[i] : 255 - pixel[i]; };
  for (const std::size_t channel : {2U, 1U, 0U}) {
    row.push_back(static_cast<std::uint8_t>(std::lround(ink(channel) * ink(3) / 255.0)));
  }
}

/// The whole decode by libjpeg's plainest way, and exact means of it.
class Reference {
 public:
  explicit Reference(const Bytes& file, bool isInverted = false) {
    const Samples whole = test::decodeWhole(file);
    size_ = {whole.width, whole.height};
    for (std::size_t i = 0; i < whole.bytes.size(); i += whole.channels) {
      const std::uint8_t* const pixel = whole.bytes.data() + i;
      if (whole.channels == 4) {
        addInks(pixel, isInverted, pixels_);
      } else {
        pixels_.insert(pixels_.end(), {pixel[2], pixel[1], pixel[0]});
      }
      pixels_.push_back(255);
    }
  }

  [[nodiscard]] std::shared_ptr<CGBitmap> at(PixelSize wanted) const {
    auto result = CGBitmap::make(wanted.width, wanted.height);
    auto shrink = AreaShrink::make(size_, *result);
    for (std::size_t y = 0; y < size_.height; ++y) shrink->addRow(pixels_.data() + y * 4 * size_.width);
    return result;
  }

 private:
  PixelSize size_;
  Bytes pixels_;
};

struct Difference {
  double mean = 0;
  double noise = 0;  // peak signal to noise, in decibels
  int largest = 0;
  bool isOpaque = true;
};

Difference difference(const CGBitmap& a, const CGBitmap& b) {
  Difference result;
  double squares = 0;
  const double count = 3.0 * static_cast<double>(a.width() * a.height());
  for (std::size_t y = 0; y < a.height(); ++y) {
    for (std::size_t i = 0; i < 4 * a.width(); ++i) {
      if (i % 4 == 3) result.isOpaque = result.isOpaque && a.row(y)[i] == 255;
      const int step = std::abs(a.row(y)[i] - b.row(y)[i]);
      result.mean += step / count;
      squares += step * step;
      result.largest = std::max(result.largest, step);
    }
  }
  result.noise = squares > 0 ? 10 * std::log10(255 * 255 * count / squares) : 99;
  return result;
}

std::size_t startOfData(const Bytes& file) {
  const std::uint8_t kScan[] = {0xFF, 0xDA};
  const auto found = std::search(file.begin(), file.end(), kScan, kScan + 2);
  return static_cast<std::size_t>(found - file.begin()) + 4 + found[3] - 2;
}

struct KindRow {
  std::uint32_t channels;
  JPEGKind kind;
  const char* why;
};

JPEGKind sampled(int across, int down) {
  JPEGKind kind;
  kind.across = across;
  kind.down = down;
  return kind;
}

JPEGKind with(const std::function<void(JPEGKind&)>& change) {
  JPEGKind kind;
  change(kind);
  return kind;
}

std::vector<KindRow> kinds() {
  return {
      {3, sampled(1, 1), "4:4:4"},
      {3, sampled(2, 1), "4:2:2"},
      {3, sampled(1, 2), "4:4:0"},
      {3, sampled(2, 2), "4:2:0"},
      {3, sampled(4, 1), "4:1:1"},
      {3, sampled(4, 2), "4:1:0"},
      {1, {}, "grey"},
      {1, with([](JPEGKind& kind) { kind.isProgressive = true; }), "grey, progressive"},
      {3, with([](JPEGKind& kind) { kind.isProgressive = true; }), "progressive"},
      {3, with([](JPEGKind& kind) { kind.isSeparate = true; }), "a scan for each component"},
      {3, with([](JPEGKind& kind) { kind.isDirect = true; }), "RGB as it is"},
      {3, with([](JPEGKind& kind) { kind.restartInterval = 3; }), "restart markers"},
      {3, with([](JPEGKind& kind) {
         kind.isProgressive = true;
         kind.restartInterval = 5;
       }),
       "both"},
      {4, {}, "YCCK, inverted"},
      {4, with([](JPEGKind& kind) { kind.isDirect = true; }), "CMYK, inverted"},
      {4, with([](JPEGKind& kind) { kind.isDirect = kind.isProgressive = true; }), "CMYK, progressive"},
      {4, with([](JPEGKind& kind) {
         kind.isDirect = true;
         kind.hasAdobeMarker = false;
       }),
       "CMYK as it is"},
  };
}

Samples samplesOf(const Samples& picture, std::uint32_t channels) {
  return channels == 1 ? test::gray(picture) : channels == 4 ? test::inks(picture) : picture;
}

TEST(JPEGReader, WholePicturesAreThoseOfAPlainDecode) {
  const Samples picture = photograph(203, 155);
  for (const auto& [channels, kind, why] : kinds()) {
    const Bytes file = makeJPEG(samplesOf(picture, channels), kind);
    const auto result = read(file, {203, 155}, {203, 155});
    ASSERT_TRUE(result) << why;
    const Difference found = difference(*result, *Reference(file, kind.hasAdobeMarker).at({203, 155}));
    EXPECT_LE(found.largest, channels == 4 ? 1 : 0) << why;
    EXPECT_TRUE(found.isOpaque) << why;
  }
}

TEST(JPEGReader, SmallOnesAreTheMeanOfWhatTheyCover) {
  // Neither side a multiple of 8: the last column and row of blocks reach beyond the picture.
  const Samples picture = photograph(1203, 899);
  for (const auto& [channels, kind, why] : kinds()) {
    const Bytes file = makeJPEG(samplesOf(picture, channels), kind);
    const Reference whole(file, kind.hasAdobeMarker);
    for (const double side : {1.0, 60.0, 100.0, 101.0, 200.0, 300.0, 601.0, 602.0}) {
      const PixelSize wanted = thumbnailSize({1203, 899}, side);
      const auto result = read(file, {1203, 899}, wanted);
      ASSERT_TRUE(result) << why << " " << side;
      const Difference found = difference(*result, *whole.at(wanted));
      EXPECT_GE(found.noise, 36) << why << " " << side << ", mean " << found.mean;
      EXPECT_LE(found.mean, 1.5) << why << " " << side;
      EXPECT_TRUE(found.isOpaque) << why << " " << side;
    }
  }
}

TEST(JPEGReader, ProgressiveShowsWhatBaselineShows) {
  const Samples picture = photograph(1600, 1200);
  for (const int quality : {30, 90}) {
    for (const int sampling : {1, 2}) {
      JPEGKind kind = sampled(sampling, sampling);
      kind.quality = quality;
      const Bytes baseline = makeJPEG(picture, kind);
      kind.isProgressive = true;
      const Bytes progressive = makeJPEG(picture, kind);
      for (const double side : {50.0, 133.0, 320.0, 700.0}) {
        const PixelSize wanted = thumbnailSize({1600, 1200}, side);
        const auto result = read(progressive, {1600, 1200}, wanted);
        ASSERT_TRUE(result);
        const Difference found = difference(*result, *read(baseline, {1600, 1200}, wanted));
        // The coefficients are the same, so that scans passed over would show; only chroma at an eighth lacks its last.
        const bool isCoarse = sampling == 2 && side <= 133;
        EXPECT_TRUE(isCoarse || found.largest == 0) << side << " in " << quality;
        EXPECT_LE(found.mean, 0.75) << side << " in " << quality;
        EXPECT_LE(found.largest, 24) << side << " in " << quality;
      }
    }
  }
}

TEST(JPEGReader, ReadsTheLastBitsOfGreyMeans) {
  JPEGKind kind;
  const Samples picture = test::gray(photograph(160, 120));
  const auto baseline = readAt(1, makeJPEG(picture, kind), {160, 120}, {20, 15});
  kind.isProgressive = true;
  const auto progressive = readAt(1, makeJPEG(picture, kind), {160, 120}, {20, 15});
  ASSERT_TRUE(baseline && progressive);
  EXPECT_EQ(difference(*progressive, *baseline).largest, 0) << "its scan is of one component as those passed over are";
}

TEST(JPEGReader, PassesOverScansWithoutReadingThem) {
  // What is damaged there cannot show.
  JPEGKind kind = sampled(1, 1);
  kind.isProgressive = true;
  Bytes file = makeJPEG(photograph(160, 120), kind);
  const auto small = readAt(1, file, {160, 120}, {20, 15});
  const auto whole = read(file, {160, 120}, {160, 120});
  std::size_t damaged = 0;
  for (std::size_t at = startOfData(file); at + 10 < file.size(); ++at) {
    if (file[at] != 0xFF || file[at + 1] != 0xDA || file[at + 4] != 1 || file[at + 7] == 0) continue;
    for (std::size_t i = at + 10; i + 1 < file.size() && file[i + 1] != 0xFF; ++i, ++damaged) file[i] = 0x55;
  }
  ASSERT_GT(damaged, 1000U);
  EXPECT_EQ(difference(*readAt(1, file, {160, 120}, {20, 15}), *small).largest, 0);
  EXPECT_GT(difference(*read(file, {160, 120}, {160, 120}), *whole).largest, 10);
}

struct EighthsRow {
  PixelSize picture, wanted;
  std::uint32_t eighths;
  const char* why;
};

TEST(JPEGReader, DecodesTheSmallestThatIsGoodEnough) {
  const EighthsRow rows[] = {
      {{4032, 3024}, {320, 240}, 1, "a camera's picture"},
      {{4032, 3024}, {336, 252}, 1, "half as many blocks again"},
      {{4032, 3024}, {337, 253}, 2, "one pixel more"},
      {{4032, 3024}, {504, 378}, 1, "exactly an eighth"},
      {{4032, 3024}, {673, 505}, 4, "more than two thirds of a quarter"},
      {{4032, 3024}, {2016, 1512}, 4, "half"},
      {{4032, 3024}, {2017, 1513}, 8, "more than half"},
      {{4033, 3025}, {2017, 1513}, 8, "the last block is not a whole pixel"},
      {{9000, 120}, {750, 11}, 2, "the other side decides"},
      {{200'000, 7}, {1, 1}, 2, "an eighth would be less than a pixel"},
      {{1000, 1000}, {10, 10}, 8, "small and sharp"},
      {{1000, 1001}, {10, 10}, 1, "no longer"},
      {{1, 1}, {1, 1}, 8, "the least"},
  };
  for (const auto& [picture, wanted, eighths, why] : rows) {
    EXPECT_EQ(jpeg::decodedEighths(picture, wanted), eighths) << why;
  }
}

TEST(JPEGReader, EndedAnywhereItGivesTheRowsThatCame) {
  const Samples picture = photograph(61, 70);
  for (const bool isProgressive : {false, true}) {
    JPEGKind kind = sampled(1, 1);
    kind.isProgressive = isProgressive;
    const Bytes file = makeJPEG(picture, kind);
    const auto whole = read(file, {61, 70}, {61, 70});
    std::size_t sameRows = 0;
    std::size_t answers = 0;
    for (std::size_t size = 0; size < file.size(); ++size) {
      const Bytes part(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(size));
      const auto result = read(part, {61, 70}, {61, 70});
      const auto small = readAt(4, part, {61, 70}, {20, 23});
      EXPECT_EQ(small != nullptr, result != nullptr) << size;
      EXPECT_TRUE(result || size <= startOfData(file) || answers == 0)
          << "once there are rows there are always: " << size << " of " << file.size();
      if (!result) continue;
      ++answers;
      EXPECT_GT(size, startOfData(file));
      if (isProgressive) continue;
      std::size_t same = 0;
      while (same < 70 && std::memcmp(result->row(same), whole->row(same), 4 * 61) == 0) ++same;
      EXPECT_GE(same, std::max<std::size_t>(sameRows, 8)) << size;
      sameRows = same;
      const std::uint8_t grey[4] = {128, 128, 128, 255};
      if (same <= 48) {
        EXPECT_EQ(std::memcmp(result->row(69) + 4 * 60, grey, 4), 0) << size;
      }
    }
    EXPECT_GT(answers, file.size() / 3);
  }
}

TEST(JPEGReader, GoesOnBehindARestartMarker) {
  JPEGKind kind = sampled(1, 1);
  kind.restartInterval = 3;
  Bytes file = makeJPEG(photograph(64, 48), kind);
  const auto whole = read(file, {64, 48}, {64, 48});
  const auto data = file.begin() + static_cast<std::ptrdiff_t>(startOfData(file));
  constexpr std::uint8_t kRestart[] = {0xFF, 0xD0};
  file.erase(data + 1, std::search(data, file.end(), std::begin(kRestart), std::end(kRestart)));
  const auto result = read(file, {64, 48}, {64, 48});
  ASSERT_TRUE(result) << "only the first of the intervals in the first row is damaged";
  EXPECT_EQ(std::memcmp(result->row(47), whole->row(47), 4 * 64), 0);
}

TEST(JPEGReader, AnswersDamagedFilesOfEveryKind) {
  const Samples picture = photograph(40, 33);
  std::mt19937 random(3);
  for (const auto& [channels, kind, why] : kinds()) {
    const Bytes file = makeJPEG(samplesOf(picture, channels), kind);
    const auto tryOut = [&](const Bytes& damaged) {
      for (const std::uint32_t eighths : {1U, 2U, 4U, 8U}) {
        const PixelSize wanted{40 * eighths / 8, 33 * eighths / 8};
        const auto result = readAt(eighths, damaged, {40, 33}, wanted);
        if (result) {
          EXPECT_EQ(result->width(), wanted.width);
        }
      }
    };
    const std::size_t headers = std::min<std::size_t>(startOfData(file), 700);
    for (std::size_t at = 0; at < headers; ++at) {
      Bytes damaged = file;
      damaged[at] = static_cast<std::uint8_t>(damaged[at] ^ 1U << at % 8);
      tryOut(damaged);
    }
    for (int round = 0; round < 60; ++round) {
      Bytes damaged = file;
      for (int i = 0; i < 4; ++i) {
        const std::size_t at = startOfData(file) + random() % (file.size() - startOfData(file));
        damaged[at] = static_cast<std::uint8_t>(random());
      }
      tryOut(damaged);
    }
  }
}

/// A progressive grey file with so many scans more, of one coefficient each and without data.
Bytes withScans(int count) {
  JPEGKind kind;
  kind.isProgressive = true;
  Bytes file = makeJPEG(test::gray(photograph(64, 64)), kind);
  constexpr std::uint8_t kScan[] = {0xFF, 0xDA, 0, 8, 1, 1, 0, 63, 63, 0, 0};
  for (int i = 0; i < count; ++i) file.insert(file.end() - 2, std::begin(kScan), std::end(kScan));
  return file;
}

struct RefusedRow {
  Bytes file;
  PixelSize size;
  const char* why;
};

TEST(JPEGReader, RefusesBombsAtOnce) {
  const Samples picture = photograph(64, 64);
  const Bytes baseline = makeJPEG(picture);
  JPEGKind progressive = sampled(1, 1);
  progressive.isProgressive = true;
  const RefusedRow rows[] = {
      {declaring(baseline, 65'500, 65'500), {65'500, 65'500}, "larger than any"},
      {declaring(baseline, 65'500, 65'500), {64, 64}, "not what the facts say"},
      {declaring(baseline, 64, 65), {64, 64}, "not what the facts say, by a row"},
      {declaring(makeJPEG(picture, progressive), 10'000, 9'999), {10'000, 9'999}, "600 MB of coefficients"},
      {withScans(2000), {64, 64}, "2,000 scans"},
      {declaring(withScans(90), 10'000, 9'999), {10'000, 9'999}, "96 scans of a large one"},
  };
  // Both the coefficients and the result count.
  EXPECT_FALSE(read(declaring(makeJPEG(picture, progressive), 6'000, 5'000), {6'000, 5'000}, {6'000, 5'000}));
  EXPECT_FALSE(read(declaring(baseline, 10'000, 9'999), {10'000, 9'999}, {10'000, 9'999})) << "400 MB of pixels";
  for (const auto& [file, size, why] : rows) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(read(file, size, {size.width / 8, size.height / 8})) << why;
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1)) << why;
  }
  EXPECT_TRUE(read(withScans(94), {64, 64}, {64, 64})) << "100 scans";
  EXPECT_FALSE(read(withScans(95), {64, 64}, {64, 64})) << "101 scans";
}

TEST(JPEGReader, RefusesWhatItCannotRead) {
  const Bytes file = makeJPEG(photograph(64, 64));
  Bytes twelveBits = file;
  twelveBits[test::frameOf(file) + 4] = 12;
  Bytes twoComponents = file;
  twoComponents[test::frameOf(file) + 9] = 2;
  EXPECT_FALSE(read(twelveBits, {64, 64}, {64, 64}));
  EXPECT_FALSE(read(twoComponents, {64, 64}, {64, 64}));
  EXPECT_FALSE(read(file, {64, 64}, {65, 64}));
  EXPECT_FALSE(read(file, {64, 64}, {0, 64}));
  EXPECT_FALSE(read({}, {64, 64}, {64, 64}));
  for (const std::uint32_t eighths : {0U, 3U, 9U}) EXPECT_FALSE(readAt(eighths, file, {64, 64}, {32, 32})) << eighths;
}

TEST(JPEGReader, TellsHowFarItIsAndStops) {
  const Samples picture = photograph(640, 480);
  for (const bool isProgressive : {false, true}) {
    JPEGKind kind;
    kind.isProgressive = isProgressive;
    const Bytes file = makeJPEG(picture, kind);
    std::vector<double> told;
    ImageWork work;
    work.progress = [&told](double done) { told.push_back(done); };
    ASSERT_TRUE(read(file, {640, 480}, {640, 480}, work));
    EXPECT_GT(told.size(), 5U);
    EXPECT_GT(told.front(), 0);
    EXPECT_TRUE(std::is_sorted(told.begin(), told.end()));
    EXPECT_EQ(told.back(), 1);
    for (const double limit : {0.0, 0.3, 0.9}) {
      std::stop_source source;
      ImageWork stopped;
      stopped.stop = source.get_token();
      stopped.progress = [&source, limit](double done) {
        if (done > limit) source.request_stop();
      };
      EXPECT_FALSE(read(file, {640, 480}, {640, 480}, stopped)) << limit;
    }
  }
}

}  // namespace
}  // namespace quorvel
