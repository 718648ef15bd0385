#include <gtest/gtest.h>
#include <tests/support/PNGFiles.h>

#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/ImageIO/ImageReader.h>
#include <quorvel/Platform/ImageIO/Inflater.h>

namespace quorvel {
namespace {

constexpr auto& chunk = test::pngChunk;
using test::Bytes;
using test::joined;
using test::packed;
using test::pngFile;
using test::PNGSpec;

std::shared_ptr<CGBitmap> read(const Bytes& file, const PNGSpec& spec, PixelSize wanted) {
  // Ends with its last byte, so that a sanitizer sees what reads on.
  const std::unique_ptr<std::uint8_t[]> exact(new std::uint8_t[file.size()]);
  std::copy(file.begin(), file.end(), exact.get());
  return readPixels({exact.get(), file.size()}, test::factsOf(ImageFormat::PNG, spec.width, spec.height), wanted);
}

std::shared_ptr<CGBitmap> read(const Bytes& file, const PNGSpec& spec) {
  return read(file, spec, {spec.width, spec.height});
}

/// Rows from the top that are as they must be.
std::uint32_t rightRows(const CGBitmap& bitmap, const PNGSpec& spec) {
  return test::rightRows(bitmap, [&spec](std::uint32_t x, std::uint32_t y) { return test::expectedPixel(spec, x, y); });
}

Bytes ramp(std::size_t count) {
  Bytes bytes;
  for (std::size_t i = 0; i < count; ++i) bytes.push_back(static_cast<std::uint8_t>(i * 37 + 11));
  return bytes;
}

/// Every kind and depth that the format has.
std::vector<PNGSpec> kinds() {
  std::vector<PNGSpec> specs;
  for (const unsigned color : {0U, 2U, 3U, 4U, 6U}) {
    for (const unsigned depth : {1U, 2U, 4U, 8U, 16U}) {
      if (color == 3 ? depth == 16 : color != 0 && depth < 8) continue;
      PNGSpec spec;
      spec.depth = depth;
      spec.color = color;
      if (color == 3) spec.palette = ramp(std::size_t{3} << depth);
      specs.push_back(spec);
    }
  }
  return specs;
}

std::string nameOf(const PNGSpec& spec) {
  return "kind " + std::to_string(spec.color) + ", depth " + std::to_string(spec.depth) + ", " +
         std::to_string(spec.width) + "x" + std::to_string(spec.height) + ", filter " + std::to_string(spec.filter) +
         (spec.isInterlaced ? ", interlaced" : "");
}

TEST(PNGReader, ReadsEveryKindDepthOrderAndFilter) {
  constexpr PixelSize kSizes[] = {{1, 1}, {3, 2}, {4, 5}, {5, 9}, {17, 11}, {33, 10}};
  for (PNGSpec spec : kinds()) {
    for (const PixelSize size : kSizes) {
      for (unsigned variant = 0; variant < 12; ++variant) {
        spec.width = size.width;
        spec.height = size.height;
        spec.isInterlaced = variant % 2 == 1;
        spec.filter = variant / 2;
        SCOPED_TRACE(nameOf(spec));
        const auto bitmap = read(pngFile(spec), spec);
        ASSERT_TRUE(bitmap);
        ASSERT_EQ(rightRows(*bitmap, spec), spec.height);
      }
    }
  }
}

TEST(PNGReader, HidesWhatTransparencySays) {
  for (PNGSpec spec : kinds()) {
    spec.width = 9;
    spec.height = 4;
    if (spec.color >= 4) continue;
    for (unsigned c = 0; c < spec.channels(); ++c) {
      const unsigned sample = spec.sample(2, 1, c);
      spec.transparency.push_back(static_cast<std::uint8_t>(sample >> 8));
      spec.transparency.push_back(static_cast<std::uint8_t>(sample));
    }
    if (spec.color == 3) spec.transparency = {0, 128, 255, 7};
    for (const bool isInterlaced : {false, true}) {
      spec.isInterlaced = isInterlaced;
      SCOPED_TRACE(nameOf(spec));
      const auto bitmap = read(pngFile(spec), spec);
      ASSERT_TRUE(bitmap);
      EXPECT_EQ(rightRows(*bitmap, spec), spec.height);
      EXPECT_TRUE(spec.color == 3 || test::pixelOf(*bitmap, 2, 1) == 0);
    }
  }
}

TEST(PNGReader, ShrinksAsTheMeanOfTheWholePicture) {
  for (PNGSpec spec : kinds()) {
    spec.width = 37;
    spec.height = 23;
    for (const bool isInterlaced : {false, true}) {
      spec.isInterlaced = isInterlaced;
      SCOPED_TRACE(nameOf(spec));
      const auto whole = read(pngFile(spec), spec);
      const auto small = read(pngFile(spec), spec, {10, 7});
      ASSERT_TRUE(small);
      EXPECT_TRUE(test::isSame(*small, *test::shrunk(*whole, {10, 7})));
    }
  }
}

struct ColorRow {
  Bytes extra;
  unsigned expected;
  const char* why;
};

TEST(PNGReader, BringsColorsToSRGB) {
  // The only sample is 64: light of 0.251 under a gamma of one.
  const ColorRow rows[] = {
      {{}, 64, "nothing said"},
      {chunk("gAMA", {0, 0, 0xB1, 0x8F}), 64, "45455 is what we have"},
      {chunk("gAMA", {0, 0, 0xAF, 0xC8}), 64, "a rounded 45000 too"},
      {chunk("gAMA", {0, 1, 0x86, 0xA0}), 136, "100000 is linear: 255 * (64/255)^(1/2.2)"},
      {chunk("gAMA", {0, 0, 0, 0}), 64, "0 means nothing"},
      {chunk("gAMA", {0, 1, 0x86}), 64, "a byte is missing"},
      {joined({chunk("gAMA", {0, 1, 0x86, 0xA0}), chunk("sRGB", {0})}), 64, "sRGB goes first"},
      {chunk("iCCP", {'x', 0, 0, 1, 2, 3}), 64, "a profile that cannot be unpacked"},
      {chunk("iCCP", Bytes(200, 'x')), 64, "a name without an end"},
  };
  for (const auto& [extra, expected, why] : rows) {
    for (const unsigned color : {0U, 2U, 3U, 4U, 6U}) {
      PNGSpec spec;
      spec.color = color;
      spec.extra = extra;
      if (color == 3) spec.palette = {64, 64, 64};
      Bytes samples(1 + spec.channels(), 64);
      samples[0] = 0;
      if (color == 3) samples[1] = 0;
      if (color >= 4) samples.back() = 255;
      const auto bitmap = read(pngFile(spec, packed(samples)), spec);
      ASSERT_TRUE(bitmap) << why;
      EXPECT_EQ(test::pixelOf(*bitmap, 0, 0), 0xFF000000 | expected * 0x010101) << why << ", kind " << color;
    }
  }
}

PNGSpec small(unsigned color, bool isInterlaced) {
  PNGSpec spec;
  spec.width = 6;
  spec.height = 9;
  spec.color = color;
  spec.isInterlaced = isInterlaced;
  if (color == 3) spec.palette = ramp(768);
  spec.part = 13;
  return spec;
}

TEST(PNGReader, GivesTheRowsBeforeTheEndOfAFile) {
  for (const unsigned color : {2U, 3U, 6U}) {
    const PNGSpec spec = small(color, false);
    const Bytes file = pngFile(spec);
    std::uint32_t last = 0;
    for (std::size_t size = 0; size <= file.size(); ++size) {
      const auto bitmap = read(test::beginning(file, size), spec);
      const std::uint32_t right = bitmap ? rightRows(*bitmap, spec) : 0;
      ASSERT_GE(right, last) << "a byte more shows no less; " << size;
      ASSERT_TRUE(!bitmap || right > 0) << size;
      for (std::uint32_t y = right; bitmap && y < spec.height; ++y) {
        for (std::uint32_t x = 0; x < spec.width; ++x) ASSERT_EQ(test::pixelOf(*bitmap, x, y), 0U) << size;
      }
      last = right;
    }
    EXPECT_EQ(last, spec.height);
  }
}

TEST(PNGReader, ShowsEarlyPassesAsBlocks) {
  PNGSpec spec = small(2, true);
  spec.filter = 0;
  spec.width = 16;
  const Bytes rows = test::filteredRows(spec);
  // The first pass has two rows of two pixels; its second row is damaged.
  Bytes first(rows.begin(), rows.begin() + 8);
  first[7] = 9;
  const auto bitmap = read(pngFile(spec, packed(first)), spec);
  ASSERT_TRUE(bitmap);
  for (std::uint32_t y = 0; y < 9; ++y) {
    for (std::uint32_t x = 0; x < 16; ++x) {
      EXPECT_EQ(test::pixelOf(*bitmap, x, y), y < 8 ? test::expectedPixel(spec, x / 8 * 8, 0) : 0U) << x << ", " << y;
    }
  }
}

TEST(PNGReader, SurvivesEveryFlippedByte) {
  for (const bool isInterlaced : {false, true}) {
    const PNGSpec spec = small(6, isInterlaced);
    const Bytes file = pngFile(spec);
    for (std::size_t i = 0; i < file.size(); ++i) {
      for (const unsigned flip : {0x01U, 0x80U, 0xFFU}) {
        Bytes damaged = file;
        damaged[i] = static_cast<std::uint8_t>(damaged[i] ^ flip);
        const auto bitmap = read(damaged, spec, {3, 4});
        // The signature, the header with its checksum.
        EXPECT_FALSE(i < 33 && bitmap) << i;
      }
    }
  }
}

struct DamageRow {
  Bytes file;
  std::uint32_t rows;
  const char* why;
};

TEST(PNGReader, TakesFromDamagedFilesWhatIsThere) {
  const PNGSpec spec = small(2, false);
  const Bytes rows = test::filteredRows(spec);
  const std::size_t rowBytes = 1 + 3 * spec.width;
  Bytes wrongFilter = rows;
  wrongFilter[4 * rowBytes] = 5;
  Bytes more = rows;
  more.resize(more.size() + 100);
  Bytes wrongSum = packed(rows);
  wrongSum.back() ^= 1;
  PNGSpec whole = spec;
  whole.part = SIZE_MAX;
  Bytes wrongCheck = pngFile(whole);
  wrongCheck[wrongCheck.size() - 13] ^= 1;
  PNGSpec other = spec;
  other.extra = chunk("ABCD", {1});
  PNGSpec text = spec;
  text.extra = joined({chunk("zTXt", {'a', 0, 0, 9, 9, 9}), chunk("tEXt", {})});
  const DamageRow damages[] = {
      {pngFile(spec, packed(wrongFilter)), 4, "a filter that does not exist"},
      {pngFile(spec, packed(more)), 9, "more than the rows"},
      {pngFile(spec, wrongSum), 9, "the stream's checksum is wrong"},
      {wrongCheck, 9, "the chunk's checksum is wrong"},
      {pngFile(text), 9, "texts are not unpacked"},
      {pngFile(other), 0, "an unknown chunk that must be known"},
      {pngFile(spec, {1, 2, 3, 4}), 0, "no stream at all"},
      {pngFile(spec, {}), 0, "no pixels"},
  };
  for (const auto& [file, expected, why] : damages) {
    const auto bitmap = read(file, spec);
    EXPECT_EQ(bitmap ? rightRows(*bitmap, spec) : 0, expected) << why;
  }
}

TEST(PNGReader, RefusesWhatTheFactsDoNotSay) {
  const PNGSpec spec = small(2, false);
  PNGSpec wider = spec;
  wider.width = 7;
  EXPECT_FALSE(read(pngFile(spec), wider));
  EXPECT_FALSE(read(pngFile(spec), spec, {7, 9}));
  EXPECT_FALSE(read(pngFile(small(3, false)), spec, {0, 9}));
  PNGSpec palette = small(3, false);
  palette.palette.clear();
  EXPECT_FALSE(read(pngFile(palette), palette)) << "a palette is needed";
}

TEST(PNGReader, StopsWhenAskedTo) {
  PNGSpec spec = small(2, false);
  spec.height = 200;
  const Bytes file = pngFile(spec);
  double last = 0;
  std::stop_source stop;
  ImageWork work;
  work.progress = [&](double done) {
    EXPECT_GT(done, last);
    last = done;
    if (done > 0.5) stop.request_stop();
  };
  const ImageFacts facts = test::factsOf(ImageFormat::PNG, spec.width, spec.height);
  EXPECT_TRUE(readPixels(file, facts, {3, 3}, work));
  EXPECT_GT(last, 0.5);
  last = 0;
  work.stop = stop.get_token();
  EXPECT_FALSE(readPixels(file, facts, {3, 3}, work));
}

TEST(PNGReader, NeverTellsLessThanBefore) {
  PNGSpec spec;
  spec.width = 40;
  spec.height = 900;
  spec.isInterlaced = true;
  Bytes rows = test::filteredRows(spec);
  rows[rows.size() - (1 + std::size_t{3} * 40)] = 7;  // no filter: the whole is read a second time
  std::vector<double> told;
  ImageWork work;
  work.progress = [&told](double done) { told.push_back(done); };
  ASSERT_TRUE(readPixels(pngFile(spec, packed(rows)), test::factsOf(ImageFormat::PNG, spec.width, spec.height),
                         {40, 900}, work));
  EXPECT_GT(told.size(), 30U);
  EXPECT_TRUE(std::is_sorted(told.begin(), told.end()));
}

TEST(Inflater, GivesAllOfASoundStreamOrNothing) {
  const Bytes bytes = ramp(70'000);  // more than a step
  const Bytes stream = packed(bytes);
  EXPECT_EQ(inflateAtMost(stream, bytes.size()), bytes);
  EXPECT_TRUE(inflateAtMost(stream, bytes.size() - 1).empty()) << "longer than the limit";
  for (const std::size_t cut : {std::size_t{1}, std::size_t{5}, stream.size() / 2, stream.size()}) {
    EXPECT_TRUE(inflateAtMost(ImageBytes(stream).first(stream.size() - cut), bytes.size()).empty()) << cut;
  }
  Bytes damaged = stream;
  damaged.back() ^= 1;
  EXPECT_TRUE(inflateAtMost(damaged, bytes.size()).empty()) << "another checksum";
}

/// Declared sizes beside next to no bytes: refused, or small, at once and without their memory.
TEST(PNGReader, TakesNoMemoryForWhatAFileOnlyDeclares) {
  PNGSpec spec;
  for (const PixelSize size : {PixelSize{60'000, 60'000}, PixelSize{32'766, 3'000}, PixelSize{10'000, 10'000}}) {
    spec.width = size.width;
    spec.height = size.height;
    spec.color = 6;
    spec.depth = 16;
    const bool fits = std::uint64_t{size.width} * size.height <= static_cast<std::uint64_t>(limits::kImagePixels);
    for (const bool isInterlaced : {false, true}) {
      spec.isInterlaced = isInterlaced;
      EXPECT_FALSE(read(pngFile(spec, packed({0, 1, 2})), spec, {10, 10}));
      EXPECT_FALSE(read(pngFile(spec, packed({0, 1, 2})), spec));
      const Bytes oneRow(1 + 8 * std::size_t{size.width});
      EXPECT_EQ(read(pngFile(spec, packed(oneRow)), spec, {10, 10}) != nullptr, fits && !isInterlaced);
    }
  }
}

TEST(PNGReader, UnpacksNoProfileOfAnyLength) {
  PNGSpec spec = small(2, false);
  Bytes profile = {'x', 0, 0};
  const Bytes bomb = packed(Bytes(20'000'000));
  profile.insert(profile.end(), bomb.begin(), bomb.end());
  spec.extra = joined({chunk("iCCP", profile), chunk("zTXt", profile)});
  const auto bitmap = read(pngFile(spec), spec);
  ASSERT_TRUE(bitmap);
  EXPECT_EQ(rightRows(*bitmap, spec), spec.height);
}

}  // namespace
}  // namespace quorvel
