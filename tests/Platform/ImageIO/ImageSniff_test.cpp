#include <chrono>

#include <gtest/gtest.h>
#include <tests/support/ImageFiles.h>
#include <tests/support/TemporaryFolder.h>

#include <quorvel/Platform/ImageIO/ImageProperties.h>
#include <quorvel/Platform/ImageIO/ImageSniff.h>
#include <quorvel/Platform/ImageIO/TIFFDirectory.h>

namespace quorvel {
namespace {

using namespace test;
using enum ImageFormat;

enum Trait : unsigned { kPlain = 0, kAnimated = 1, kProgressive = 2, kAlpha = 4, kSwaps = 8 };

struct Expected {
  ImageFormat format;
  std::uint32_t width;
  std::uint32_t height;
  std::size_t frames = 1;
  unsigned traits = kPlain;
  unsigned orientation = 1;
};

struct Sample {
  const char* what;
  FileBytes file;
  Expected expected;
};

FileBytes tiffPages(bool isLittle, bool isBig, std::size_t pages, bool isCyclic = false) {
  TIFFWriter writer(isLittle, isBig);
  const std::vector<TIFFWriter::Field> fields = {writer.longs(256, {300}), writer.shorts(257, {200}),
                                                 writer.shorts(258, {8, 8, 8}), writer.shorts(262, {2}),
                                                 writer.shorts(274, {6})};
  std::uint64_t place = writer.add(fields);
  const std::uint64_t last = place;
  if (isCyclic) writer.setNext(last);
  for (std::size_t page = 1; page < pages; ++page) place = writer.add(fields, place);
  return writer.file(place);
}

FileBytes png(const char* before, const FileBytes& data, std::uint8_t color = 2) {
  return pngFile(640, 480, {.before = pngChunk(before, data), .color = color});
}

FileBytes animatedPNG(std::uint32_t declared, std::uint32_t there) {
  FileBytes frames;
  for (std::uint32_t i = 0; i < there; ++i) frames = joined({frames, pngFrame(i)});
  return pngFile(640, 480, {.before = joined({pngAnimation(declared), frames})});
}

const FileBytes kHEVC = joined({isoSize(4032, 3024), isoFullBox("pixi", {3, 8, 8, 8})});

FileBytes heic(const char* major, const char* compatible, const char* type, const FileBytes& more = {}) {
  return joined({isoType(major, compatible), isoMeta({{1, type, {1, 2}}}, kHEVC, more), isoBox("mdat", {1, 2, 3})});
}

/// A primary item with these properties behind a size, all of them its own.
FileBytes avifWith(const FileBytes& properties, std::vector<std::uint8_t> indexes = {1, 2, 3}) {
  return joined(
      {isoType("avif"), isoMeta({{1, "av01", std::move(indexes)}}, joined({isoSize(1002, 802), properties}))});
}

FileBytes clap(std::uint32_t width, std::uint32_t height) {
  return isoBox("clap", ByteWriter().u32(width).u32(1).u32(height).u32(1).zeros(8).u32(1).u32(1).file);
}

FileBytes grid() {
  const FileBytes parts = ByteWriter().u16(1).u16(2).u16(2).u16(3).file;
  return joined(
      {isoType("mif1", "mif1miaf"),
       isoMeta({{1, "grid", {2}}, {2, "av01", {1}}, {3, "av01", {1}}}, joined({isoSize(512, 512), isoSize(1000, 500)}),
               isoFullBox("iref", isoBox("dimg", ByteWriter().u16(1).u16(2).u16(2).u16(3).file))),
       parts});
}

FileBytes sequence(const char* major, const char* codec, std::uint32_t frames, const FileBytes& meta = {}) {
  const FileBytes entry = isoFullBox("stsd", ByteWriter().u32(1).add(isoBox(codec, FileBytes(8))).file);
  const FileBytes sizes = isoFullBox("stsz", ByteWriter().u32(0).u32(frames).zeros(4 * 3).file);
  const FileBytes media = isoBox("mdia", joined({isoFullBox("hdlr", ByteWriter().u32(0).text("pict").zeros(13).file),
                                                 isoBox("minf", isoBox("stbl", joined({entry, sizes})))}));
  const FileBytes header = isoFullBox("tkhd", ByteWriter().zeros(72).u16(320).u16(0).u16(240).u16(0).file);
  return joined({isoType(major, "msf1"), isoBox("moov", isoBox("trak", joined({header, media}))), meta});
}

std::vector<Sample> samples() {
  const FileBytes exif6 = exifWithOrientation(6);
  return {
      {"JPEG", jpegFile(640, 480), {JPEG, 640, 480}},
      {"JPEG, progressive", jpegFile(640, 480, {.frame = 0xC2}), {JPEG, 640, 480, 1, kProgressive}},
      {"JPEG, a scan for each component", jpegFile(640, 480, {.scanned = 1}), {JPEG, 640, 480, 1, kProgressive}},
      {"JPEG, the table marker of the frames' range in front",
       jpegFile(640, 480, {.segments = jpegSegment(0xC4, FileBytes(17))}),
       {JPEG, 640, 480}},
      {"JPEG, EXIF", jpegFile(640, 480, {.segments = jpegExif(exif6)}), {JPEG, 640, 480, 1, kPlain, 6}},
      {"JPEG, the first EXIF counts",
       jpegFile(640, 480, {.segments = joined({jpegExif(exifWithOrientation(8, true)), jpegExif(exif6)})}),
       {JPEG, 640, 480, 1, kPlain, 8}},
      {"JPEG, orientation 9 is none",
       jpegFile(640, 480, {.segments = jpegExif(exifWithOrientation(9))}),
       {JPEG, 640, 480}},
      {"JPEG, fill bytes and stray bytes between segments",
       jpegFile(640, 480, {.segments = {0xFF, 0xFF, 0xFF, 0xEE, 0, 2, 1, 2, 0xFF, 0, 0xFF, 0x01}}),
       {JPEG, 640, 480}},
      {"JPEG, no frame before its end", {0xFF, 0xD8, 0xFF, 0xD9}, {JPEG, 0, 0, 0}},
      {"PNG", pngFile(640, 480), {PNG, 640, 480}},
      {"PNG, interlaced with alpha",
       pngFile(640, 480, {.color = 6, .isInterlaced = true}),
       {PNG, 640, 480, 1, kProgressive | kAlpha}},
      {"PNG, transparent palette", png("tRNS", {0}, 3), {PNG, 640, 480, 1, kAlpha}},
      {"PNG, EXIF behind its pixels",
       pngFile(640, 480, {.after = pngChunk("eXIf", exif6)}),
       {PNG, 640, 480, 1, kPlain, 6}},
      {"PNG, side beyond 31 bits", pngFile(0x80000000, 480), {PNG, 0, 0, 0}},
      {"PNG, bomb", pngFile(60'000, 60'000), {PNG, 60'000, 60'000}},
      {"APNG", animatedPNG(3, 3), {APNG, 640, 480, 3, kAnimated}},
      {"APNG, more frames than declared", animatedPNG(2, 3), {APNG, 640, 480, 2, kAnimated}},
      {"APNG, four milliards declared, two there", animatedPNG(UINT32_MAX, 2), {APNG, 640, 480, 2, kAnimated}},
      {"APNG, one frame", animatedPNG(1, 1), {APNG, 640, 480}},
      {"PNG, animated only behind its pixels",
       pngFile(640, 480, {.after = joined({pngAnimation(2), pngFrame(0), pngFrame(1)})}),
       {PNG, 640, 480}},
      {"GIF", gifFile(320, 240, gifFrame(320, 240)), {GIF, 320, 240}},
      {"GIF, interlaced", gifFile(320, 240, gifFrame(320, 240, 0x40)), {GIF, 320, 240, 1, kProgressive}},
      {"GIF, two frames, tables, a comment",
       gifFile(320, 240,
               joined({gifLoop(0),
                       gifControl(10, true),
                       gifFrame(9, 9, 0x87),
                       {0x21, 0xFE, 2, 'h', 'i', 0},
                       gifControl(10),
                       gifFrame(320, 240)})),
       {GIF, 320, 240, 2, kAnimated | kAlpha}},
      {"GIF, canvas without a size", gifFile(0, 0, gifFrame(32, 24)), {GIF, 32, 24}},
      {"GIF, rubbish after a frame",
       gifFile(320, 240, joined({gifFrame(1, 1), {0x77}, gifFrame(1, 1)})),
       {GIF, 320, 240}},
      {"GIF, no frame", gifFile(320, 240, {}), {GIF, 320, 240, 0}},
      {"WebP, lossy", webpFile(webpLossy(550, 368)), {WebP, 550, 368}},
      {"WebP, lossy, scaling bits beside the sides", webpFile(webpLossy(550 | 0x4000, 368 | 0xC000)), {WebP, 550, 368}},
      {"WebP, lossless", webpFile(webpLossless(16384, 1, true)), {WebP, 16384, 1, 1, kAlpha}},
      {"WebP, extended with EXIF at its end",
       webpFile(joined({webpExtended(70'000, 500, 0x18), webpLossy(10, 10), webpChunk("EXIF", exif6)})),
       {WebP, 70'000, 500, 1, kAlpha, 6}},
      {"WebP, EXIF behind JPEG's mark",
       webpFile(joined({webpExtended(9, 9, 8), webpLossy(9, 9),
                        webpChunk("EXIF", joined({textBytes(std::string_view("Exif\0\0", 6)), exif6}))})),
       {WebP, 9, 9, 1, kPlain, 6}},
      {"WebP, a chunk of odd length in front",
       webpFile(joined({webpExtended(9, 8, 0), webpChunk("ICCP", {1, 2, 3}), webpLossy(9, 8)})),
       {WebP, 9, 8}},
      {"WebP, animated",
       webpFile(joined({webpExtended(9, 8, 2), webpFrame(), webpFrame()})),
       {WebP, 9, 8, 2, kAnimated}},
      {"WebP, frames without the flag",
       webpFile(joined({webpExtended(9, 8, 0), webpLossy(9, 8), webpFrame(), webpFrame()})),
       {WebP, 9, 8}},
      {"TIFF, little-endian", tiffPages(true, false, 1), {TIFF, 300, 200, 1, kPlain, 6}},
      {"TIFF, big-endian, pages", tiffPages(false, false, 3), {TIFF, 300, 200, 3, kPlain, 6}},
      {"BigTIFF, little-endian", tiffPages(true, true, 2), {TIFF, 300, 200, 2, kPlain, 6}},
      {"BigTIFF, big-endian", tiffPages(false, true, 1), {TIFF, 300, 200, 1, kPlain, 6}},
      {"TIFF, a page that is its own next", tiffPages(true, false, 1, true), {TIFF, 300, 200, 1, kPlain, 6}},
      {"TIFF, the last of nine pages is its own next", tiffPages(true, false, 9, true), {TIFF, 300, 200, 9, kPlain, 6}},
      {"HEIC", heic("heic", "mif1heic", "hvc1"), {HEIC, 4032, 3024}},
      {"HEIC, ten bits", heic("heix", "", "hvc1"), {HEIC, 4032, 3024}},
      {"AVIF", heic("avif", "mif1avifmiaf", "av01"), {AVIF, 4032, 3024}},
      {"open brand, HEVC inside", heic("mif1", "mif1avif", "hvc1"), {HEIC, 4032, 3024}},
      {"open brand, AV1 inside", heic("mif1", "mif1heic", "av01"), {AVIF, 4032, 3024}},
      {"open brand, unknown item, a codec among the brands", heic("mif1", "miafMA1B", "abcd"), {AVIF, 4032, 3024}},
      {"open brand, another codec", heic("mif1", "miaf", "jpeg"), {Unknown, 0, 0, 0}},
      {"foreign brand with an image's beside it", heic("isom", "mif1", "av01"), {AVIF, 4032, 3024}},
      {"film", heic("isom", "mp42", "hvc1"), {Unknown, 0, 0, 0}},
      {"open brand, a grid of AV1", grid(), {AVIF, 1000, 500}},
      {"turned by a quarter and cropped",
       avifWith(joined({isoBox("irot", {3}), clap(1001, 801)})),
       {AVIF, 1001, 801, 1, kSwaps}},
      {"turned by a half", avifWith(isoBox("irot", {2})), {AVIF, 1002, 802}},
      {"properties of others", avifWith(joined({isoBox("irot", {1}), clap(1, 1)}), {1}), {AVIF, 1002, 802}},
      {"clean aperture beyond the picture", avifWith(clap(5000, 801)), {AVIF, 1002, 801}},
      {"alpha beside it",
       avifWith(isoFullBox("auxC", ByteWriter().text("urn:mpeg:mpegB:cicp:systems:auxiliary:alpha").u8(0).file)),
       {AVIF, 1002, 802, 1, kAlpha}},
      {"AVIF sequence", sequence("avis", "av01", 3), {AVIF, 320, 240, 3, kAnimated}},
      {"open sequence, its codec in the track", sequence("msf1", "hvc1", 2), {HEIC, 320, 240, 2, kAnimated}},
      {"sequence that declares more than its table holds",
       sequence("hevc", "hvc1", 1 << 30),
       {HEIC, 320, 240, 3, kAnimated}},
      {"sequence with a primary item behind it",
       sequence("avis", "av01", 3, isoMeta({{1, "av01", {1}}}, isoSize(16, 9))),
       {AVIF, 16, 9, 3, kAnimated}},
      {"BMP", bmpFile(31, 17), {BMP, 31, 17}},
      {"BMP from the top", bmpFile(31, -17), {BMP, 31, 17}},
      {"BMP, the height without a magnitude", bmpFile(31, INT32_MIN), {BMP, 31, 0}},
      {"BMP, width below zero", bmpFile(-31, 17), {BMP, 0, 17}},
      {"BMP, oldest header", bmpFile(31, 17, 12), {BMP, 31, 17}},
      {"BMP, header of 124 bytes with an alpha mask", bmpFile(31, 17, 124, 3, 0xFF000000), {BMP, 31, 17, 1, kAlpha}},
      {"BMP, header of 16 bytes", bmpFile(31, 17, 16), {BMP, 31, 17}},
      {"text that begins with BM", textBytes("BM is a text, no bitmap"), {Unknown, 0, 0, 0}},
      {"ICO",
       icoFile({{16, 16, FileBytes(40)}, {48, 32, FileBytes(40)}, {32, 32, FileBytes(40)}}),
       {ICO, 48, 32, 3, kAlpha}},
      {"ICO with a PNG larger than its entry can say",
       icoFile({{255, 255, FileBytes(40)}, {0, 0, pngFile(512, 300)}}),
       {ICO, 512, 300, 2, kAlpha}},
      {"cursor", icoFile({{0, 0, FileBytes(40)}}, 2), {ICO, 256, 256, 1, kAlpha}},
      {"SVG",
       textBytes("\xEF\xBB\xBF \n<?xml version='1.0'?><!-- <svg> -->"
                 "<!DOCTYPE svg [<!ENTITY a \">\">]>\n<svg width = \"120\" height='80px'>"),
       {SVG, 120, 80, 1, kAlpha}},
      {"SVG with a prefix, in millimetres and points",
       textBytes("<a:svg data-width='7' width='25.4mm' height=' 72pt '/>"),
       {SVG, 96, 96, 1, kAlpha}},
      {"SVG, size of its view", textBytes("<svg viewBox='0,0 300.4 150'>"), {SVG, 300, 150, 1, kAlpha}},
      {"SVG, relative", textBytes("<svg width='100%' height='5em' viewBox='-1 -1 30 15'>"), {SVG, 30, 15, 1, kAlpha}},
      {"SVG, one side and a view", textBytes("<svg height='30' viewBox='0 0 4 2'>"), {SVG, 60, 30, 1, kAlpha}},
      {"SVG without a size", textBytes("<svg>"), {SVG, 0, 0, 1, kAlpha}},
      {"SVG, sides that are none", textBytes("<svg width='-5' height='1e30'>"), {SVG, 0, 0, 1, kAlpha}},
      {"other XML", textBytes("<?xml version='1.0'?><html><svg/></html>"), {Unknown, 0, 0, 0}},
      {"SVG's name is a beginning", textBytes("<svgs width='1'>"), {Unknown, 0, 0, 0}},
      {"PDF", textBytes("%PDF-1.7\n"), {PDF, 0, 0, 0}},
      {"PDF behind 1,019 bytes", textBytes(std::string(1019, '%') + "%PDF-"), {PDF, 0, 0, 0}},
      {"PDF behind 1,020 bytes", textBytes(std::string(1020, 'x') + "%PDF-"), {Unknown, 0, 0, 0}},
      {"nothing", {}, {Unknown, 0, 0, 0}},
  };
}

unsigned traitsOf(const ImageFacts& facts) {
  return (facts.isAnimated ? kAnimated : 0U) | (facts.isProgressive ? kProgressive : 0U) |
         (facts.hasAlpha ? kAlpha : 0U) | (facts.decoderSwapsSides ? kSwaps : 0U);
}

TEST(ImageSniff, TellsWhatAFileIs) {
  for (const auto& [what, file, expected] : samples()) {
    const ImageFacts facts = sniff(file);
    EXPECT_EQ(static_cast<int>(facts.format), static_cast<int>(expected.format)) << what;
    EXPECT_EQ(facts.width, expected.width) << what;
    EXPECT_EQ(facts.height, expected.height) << what;
    EXPECT_EQ(facts.frameCount, expected.frames) << what;
    EXPECT_EQ(traitsOf(facts), expected.traits) << what;
    EXPECT_EQ(facts.exifOrientation, expected.orientation) << what;
    EXPECT_EQ(facts.decodedBytes, 4 * std::uint64_t{expected.width} * expected.height) << what;
  }
}

/// What must hold of any bytes.
void expectSound(const FileBytes& file, const std::string& what) {
  const ImageFacts facts = sniff(file);
  const auto isInside = [&file](ImageFacts::Place place) {
    return place.location <= file.size() && place.length <= file.size() - place.location;
  };
  EXPECT_TRUE(isInside(facts.exif) && isInside(facts.profile)) << what;
  EXPECT_TRUE(facts.exifOrientation >= 1 && facts.exifOrientation <= 8) << what;
  EXPECT_LE(facts.frameCount, file.size()) << what;
  EXPECT_EQ(facts.isAnimated, facts.frameCount > 1 && facts.format != TIFF && facts.format != ICO) << what;
  const auto properties = imageProperties(file, facts);
  EXPECT_EQ(properties.has_value(), facts.frameCount > 0 || facts.format == PDF) << what;
}

TEST(ImageSniff, BeginningsNeverSayWhatTheWholeContradicts) {
  for (const auto& [what, file, expected] : samples()) {
    const ImageFacts whole = sniff(file);
    for (std::size_t size = 0; size < file.size(); ++size) {
      const FileBytes part = beginning(file, size);
      const std::string where = what + (", the first " + std::to_string(size));
      expectSound(part, where);
      const ImageFacts facts = sniff(part);
      if (facts.isSizeFinal()) {
        EXPECT_EQ(facts.width, whole.width) << where;
        EXPECT_EQ(facts.height, whole.height) << where;
      }
      EXPECT_LE(facts.frameCount, whole.frameCount) << where;
      if (!facts.isComplete) continue;
      EXPECT_EQ(static_cast<int>(facts.format), static_cast<int>(whole.format)) << where;
      EXPECT_EQ(facts.frameCount, whole.frameCount) << where;
      EXPECT_EQ(traitsOf(facts), traitsOf(whole)) << where;
      EXPECT_EQ(facts.exif.location, whole.exif.location) << where;
      EXPECT_EQ(facts.profile.length, whole.profile.length) << where;
    }
  }
}

TEST(ImageSniff, EveryByteMayBeWrong) {
  for (auto& [what, file, expected] : samples()) {
    for (std::size_t at = 0; at < file.size(); ++at) {
      const std::uint8_t right = file[at];
      for (const int wrong : {right ^ 0xFF, right ^ 1, right ^ 0x80, 0, 0xFF}) {
        file[at] = static_cast<std::uint8_t>(wrong);
        expectSound(file, what + (", byte " + std::to_string(at)));
      }
      file[at] = right;
    }
  }
}

TEST(ImageSniff, EveryBrandOfImagesIsKnown) {
  struct BrandRow {
    const char* brand;
    ImageFormat format;
  };
  constexpr BrandRow kRows[] = {{"heic", HEIC}, {"heix", HEIC}, {"hevc", HEIC}, {"hevx", HEIC},
                                {"heim", HEIC}, {"heis", HEIC}, {"hevm", HEIC}, {"hevs", HEIC},
                                {"avif", AVIF}, {"avis", AVIF}, {"MA1A", AVIF}, {"MA1B", AVIF},
                                {"mif1", HEIC}, {"mif2", HEIC}, {"msf1", HEIC}, {"miaf", HEIC}};
  for (const auto& [brand, format] : kRows) {
    const ImageFacts facts = sniff(heic(brand, "", "hvc1"));
    EXPECT_EQ(static_cast<int>(facts.format), static_cast<int>(format)) << brand;
    const ImageFacts beside = sniff(heic("abcd", brand, "hvc1"));
    EXPECT_EQ(static_cast<int>(beside.format), static_cast<int>(HEIC)) << brand << " beside a foreign one";
  }
}

TEST(ImageSniff, PlacesOfBlocksAreExact) {
  const FileBytes exif = exifWithOrientation(3);
  const FileBytes profile = iccProfile("P");
  const auto at = [](const FileBytes& file, ImageFacts::Place place) {
    const auto begin = file.begin() + static_cast<std::ptrdiff_t>(place.location);
    return FileBytes(begin, begin + static_cast<std::ptrdiff_t>(place.length));
  };
  const auto piece = [&profile](std::uint8_t number, std::uint8_t count) {
    return jpegSegment(0xE2, joined({textBytes(std::string_view("ICC_PROFILE\0", 12)), {number, count}, profile}));
  };
  const FileBytes jpeg = jpegFile(9, 9, {.segments = joined({piece(1, 1), jpegExif(exif)})});
  EXPECT_EQ(at(jpeg, sniff(jpeg).exif), exif);
  EXPECT_EQ(at(jpeg, sniff(jpeg).profile), profile);
  const FileBytes pieces = jpegFile(9, 9, {.segments = joined({piece(1, 2), piece(2, 2)})});
  EXPECT_EQ(sniff(pieces).profile.length, 0) << "not in one piece";
  const FileBytes webp = webpFile(
      joined({webpExtended(9, 9, 0x28), webpChunk("ICCP", profile), webpLossy(9, 9), webpChunk("EXIF", exif)}));
  EXPECT_EQ(at(webp, sniff(webp).exif), exif);
  EXPECT_EQ(at(webp, sniff(webp).profile), profile);

  // The item of EXIF lies in the box of data within the meta data, or in the file, behind four bytes of distance.
  const FileBytes item = joined({{0, 0, 0, 2, 'x', 'x'}, exif});
  const auto withItem = [&](std::uint16_t method, std::uint32_t location) {
    const FileBytes places = ByteWriter()
                                 .u16(0x4400)
                                 .u16(2)
                                 .u16(7)
                                 .u16(0)
                                 .u16(0)
                                 .u16(2)
                                 .u32(0)
                                 .u32(0)
                                 .u32(0)
                                 .u32(0)
                                 .u16(2)
                                 .u16(method)
                                 .u16(0)
                                 .u16(1)
                                 .u32(location)
                                 .u32(item.size())
                                 .file;
    const FileBytes properties = joined({isoSize(9, 9), isoBox("colr", joined({textBytes("prof"), profile}))});
    return joined({isoType("avif"), isoMeta({{1, "av01", {1, 2}}, {2, "Exif", {}}}, properties,
                                            joined({isoFullBox("iloc", places, 1), isoBox("idat", item)}))});
  };
  const FileBytes inside = withItem(1, 0);
  EXPECT_EQ(at(inside, sniff(inside).exif), exif);
  EXPECT_EQ(at(inside, sniff(inside).profile), profile);
  const FileBytes inFile = withItem(0, static_cast<std::uint32_t>(inside.size() - item.size()));
  EXPECT_EQ(at(inFile, sniff(inFile).exif), exif);
  EXPECT_EQ(sniff(inFile).exifOrientation, 1) << "its decoder turns the picture itself";
  EXPECT_EQ(sniff(withItem(0, 0xFFFFFFF0)).exif.length, 0) << "beyond the file";
  const FileBytes behind = joined({isoSize(9, 9), isoBox("colr", {}), textBytes("prof")});
  const FileBytes empty = joined({isoType("avif"), isoMeta({{1, "av01", {1, 2}}}, behind)});
  EXPECT_EQ(sniff(empty).profile.length, 0) << "what stands behind a box is not in it";
}

/// A bound for a machine that does other things too; what fails it takes minutes.
constexpr std::chrono::seconds kBound{1};

TEST(ImageSniff, TimeGrowsWithTheBytesAlone) {
  FileBytes frames;
  for (int i = 0; i < 10'000; ++i)
    frames.insert(frames.end(), {0x2C, 0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF, 0, 2, 1, 0, 0});
  const FileBytes gif = gifFile(65'535, 65'535, frames);
  TIFFWriter ring;
  std::uint64_t place = ring.add({ring.shorts(256, {1})});
  const std::uint64_t last = place;
  for (int i = 0; i < 60'000; ++i) place = ring.add({ring.shorts(256, {1})}, place);
  FileBytes cycle = ring.file(place);
  // The first page of all now names the last one that was written.
  const FileBytes next = ByteWriter().u32(place).file;
  std::copy(next.begin(), next.end(), cycle.begin() + static_cast<std::ptrdiff_t>(last) + 14);
  // Directories one in the other, each a byte behind the one before: 4 million of them.
  FileBytes nested(4 << 20, 0);
  const FileBytes head = ByteWriter().text("MM").u16(42).u32(8).file;
  std::copy(head.begin(), head.end(), nested.begin());
  const FileBytes boxes = joined({isoType("heic"), isoFullBox("meta", FileBytes(8 << 20, 0))});

  const Stopwatch watch;
  EXPECT_EQ(sniff(gif).frameCount, 10'000);
  EXPECT_EQ(sniff(cycle).frameCount, 60'001);
  (void)sniff(nested);
  (void)sniff(boxes);
  (void)sniff(joined({{0xFF, 0xD8, 0xFF}, FileBytes(8 << 20, 0xFF)}));
  (void)sniff(joined({textBytes("<"), FileBytes(8 << 20, '<')}));
  EXPECT_LT(watch.elapsed(), kBound);
}

TEST(ImageSniff, PagesAreCountedUpToALimit) {
  TIFFWriter writer;
  std::uint64_t place = writer.add({writer.shorts(256, {1})});
  for (std::size_t i = 0; i < TIFFBlock::kPages; ++i) place = writer.add({writer.shorts(256, {1})}, place);
  EXPECT_EQ(sniff(writer.file(place)).frameCount, TIFFBlock::kPages);
}

TEST(ImageSniff, ExtensionsContradictOnlyOtherFormats) {
  struct ExtensionRow {
    StringView extension;
    ImageFormat format;
    bool contradicts;
    const char* why;
  };
  const ExtensionRow rows[] = {
      {u"jpg", JPEG, false, "its own"},
      {u"JPeG", PNG, true, "whatever the case"},
      {u"jfif", JPEG, false, "rarer names are known"},
      {u"png", APNG, false, "an animated PNG is a PNG"},
      {u"apng", PNG, false, "and the other way round"},
      {u"heif", HEIC, false, "the container's name"},
      {u"heic", AVIF, true, "one container, two formats"},
      {u"cur", ICO, false, "cursors and icons are one"},
      {u"pdf", SVG, true, "documents count too"},
      {u"txt", JPEG, false, "no extension of images"},
      {u"", JPEG, false, "none"},
      {nil, JPEG, false, "nil"},
      {u"jpg", Unknown, false, "nothing is known of the file"},
      {u"jpgx", PNG, false, "longer than a known one"},
      {u"\u212Aur", PNG, false, "a Kelvin sign is no k, and neither a c"},
  };
  for (const auto& [extension, format, contradicts, why] : rows) {
    EXPECT_EQ(extensionContradicts(extension, format), contradicts) << extension << ": " << why;
  }
  EXPECT_EQ(typeIdentifier(APNG), u"public.png");
  EXPECT_EQ(typeIdentifier(PDF), u"com.adobe.pdf");
  EXPECT_TRUE(typeIdentifier(Unknown).isNil());
}

}  // namespace
}  // namespace quorvel
