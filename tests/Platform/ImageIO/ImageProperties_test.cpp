#include <gtest/gtest.h>
#include <tests/support/PNGFiles.h>

#include <quorvel/Platform/ImageIO/EXIFProperties.h>
#include <quorvel/Platform/ImageIO/ImageProperties.h>
#include <quorvel/Platform/ImageIO/ImageSniff.h>

namespace quorvel {
namespace {

using namespace test;

Dictionary propertiesOf(const FileBytes& file) {
  const auto properties = imageProperties(file, sniff(file));
  EXPECT_TRUE(properties);
  return properties.value_or(Dictionary());
}

/// A camera's block, in either byte order.
FileBytes cameraBlock(bool isLittle) {
  TIFFWriter writer(isLittle);
  const auto exif = writer.add(
      {writer.rationals(33434, {10, 1250}), writer.rationals(33437, {18, 10}), writer.shorts(34855, {64}),
       writer.bytes(36864, "0232"), TIFFWriter::text(36867, "2026:11:24 22:21:48"), writer.bytes(37121, "\1\2\3"),
       writer.rationals(37386, {0, 0}), writer.bytes(37510, std::string_view("ASCII\0\0\0note  ", 14)),
       writer.longs(40962, {4032}), writer.rationals(42034, {24, 1, 70, 1, 28, 10, 0, 0}),
       TIFFWriter::text(42036,
                        "Obj\xE9"
                        "ctif")});
  const auto gps = writer.add({TIFFWriter::text(1, "S"),
                               writer.rationals(2, {37, 1, 30, 1, 1800, 100}),
                               TIFFWriter::text(3, "E"),
                               writer.rationals(4, {126, 1, 5850, 100}),
                               {5, 1, 1, {1}},
                               writer.rationals(6, {2574, 100}),
                               writer.rationals(7, {9, 1, 5, 1, 5999, 100}),
                               writer.rationals(11, {1, 0})});
  return writer.file(
      writer.add({TIFFWriter::text(271, "Maker \0hidden"), TIFFWriter::text(272, "\xEB\xAA\xA8\xEB\x8D\xB8"),
                  writer.shorts(274, {6}), writer.rationals(282, {72, 1}), TIFFWriter::text(305, "   "),
                  writer.longs(34665, {exif}), writer.longs(34853, {gps})}));
}

TEST(ImageProperties, DirectoriesOfEXIFBecomeDictionaries) {
  const Dictionary tiff = {{u"Make", u"Maker"}, {u"Model", u"모델"}, {u"Orientation", 6}, {u"XResolution", 72}};
  const Dictionary exif = {{u"ExposureTime", 0.008},
                           {u"FNumber", 1.8},
                           {u"ISOSpeedRatings", List{64}},
                           {u"ExifVersion", List{0, 2, 3, 2}},
                           {u"DateTimeOriginal", u"2026:11:24 22:21:48"},
                           {u"ComponentsConfiguration", List{1, 2, 3}},
                           {u"UserComment", u"note"},
                           {u"PixelXDimension", 4032},
                           {u"LensSpecification", List{24, 70, 2.8, 0}},
                           {u"LensModel", u"Objéctif"}};
  const Dictionary gps = {{u"LatitudeRef", u"S"},     {u"Latitude", 37.505}, {u"LongitudeRef", u"E"},
                          {u"Longitude", 126.975},    {u"AltitudeRef", 1},   {u"Altitude", 25.74},
                          {u"TimeStamp", u"09:05:59"}};
  for (const bool isLittle : {false, true}) {
    const FileBytes block = cameraBlock(isLittle);
    for (const FileBytes& file :
         {jpegFile(40, 30, {.segments = jpegExif(block)}), pngFile(40, 30, {.after = pngChunk("eXIf", block)}),
          webpFile(joined({webpExtended(40, 30, 8), webpLossy(40, 30), webpChunk("EXIF", block)}))}) {
      const Dictionary properties = propertiesOf(file);
      EXPECT_EQ(properties[kCGImagePropertyTIFFDictionary], Value(tiff)) << isLittle;
      EXPECT_EQ(properties[kCGImagePropertyExifDictionary], Value(exif)) << isLittle;
      EXPECT_EQ(properties[kCGImagePropertyGPSDictionary], Value(gps)) << isLittle;
      EXPECT_EQ(properties[kCGImagePropertyOrientation], 6);
      EXPECT_EQ(properties[kCGImagePropertyPixelWidth], 40) << "as stored";
    }
  }
}

TEST(ImageProperties, WhatIsDamagedIsLeftOut) {
  TIFFWriter writer;
  const FileBytes block = writer.file(writer.add({
      {271, 2, 1000, FileBytes(4)},  // values beyond the block
      {272, 99, 1, FileBytes(4)},    // a type that is none
      {274, 2, 2, textBytes("6")},   // a text for a number
      {282, 5, 0, {}},               // no value
      {305, 2, 3, textBytes("ab")},
      {305, 2, 3, textBytes("cd")},       // a second time
      writer.longs(34665, {0xFFFFFFFF}),  // a directory beyond the block
      writer.longs(34853, {8}),           // the position's directory is the first one
  }));
  const EXIFProperties properties = exifProperties(block);
  EXPECT_EQ(properties.tiff, (Dictionary{{u"Software", u"ab"}}));
  EXPECT_TRUE(properties.exif.isEmpty());
  EXPECT_TRUE(properties.gps.isEmpty());
}

// Fields may be of any type, and floating point numbers hold what is no number.
TEST(ImageProperties, NumbersThatAreNoneAreLeftOut) {
  const FileBytes notANumber = {0, 0, 0xC0, 0x7F};
  const FileBytes infinity = {0, 0, 0x80, 0x7F};
  for (const FileBytes& number : {notANumber, infinity}) {
    const FileBytes three = joined({number, number, number});
    TIFFWriter writer(true);
    const auto exif = writer.add({{33434, 11, 1, number}, {34855, 11, 3, three}});
    const auto gps = writer.add({{2, 11, 3, three}, {7, 11, 3, three}});
    const EXIFProperties properties =
        exifProperties(writer.file(writer.add({writer.longs(34665, {exif}), writer.longs(34853, {gps})})));
    EXPECT_EQ(properties.exif, (Dictionary{{u"ISOSpeedRatings", List{0, 0, 0}}})) << "a list keeps its places";
    EXPECT_TRUE(properties.gps.isEmpty());
  }
}

TEST(ImageProperties, ColoursAreNamed) {
  struct ColorRow {
    const char* what;
    FileBytes file;
    Dictionary expected;
  };
  const FileBytes deep = pngFile(8, 8, {.depth = 16, .color = 4});
  const ColorRow rows[] = {
      {"grey JPEG", jpegFile(8, 8, {.components = 1, .scanned = 1}), {{u"Depth", 8}, {u"ColorModel", u"Gray"}}},
      {"CMYK JPEG", jpegFile(8, 8, {.components = 4, .scanned = 4}), {{u"Depth", 8}, {u"ColorModel", u"CMYK"}}},
      {"deep grey PNG with alpha", deep, {{u"Depth", 16}, {u"ColorModel", u"Gray"}, {u"HasAlpha", true}}},
      {"palette of four colours", pngFile(8, 8, {.depth = 2, .color = 3}), {{u"Depth", 8}, {u"ColorModel", u"RGB"}}},
      {"sRGB PNG",
       pngFile(8, 8, {.before = pngChunk("sRGB", {0})}),
       {{u"Depth", 8}, {u"ColorModel", u"RGB"}, {u"ProfileName", u"sRGB IEC61966-2.1"}}},
  };
  for (const auto& [what, file, expected] : rows) {
    Dictionary all = expected;
    all.set(u"PixelWidth", 8);
    all.set(u"PixelHeight", 8);
    EXPECT_EQ(propertiesOf(file), all) << what;
  }
}

TEST(ImageProperties, ProfilesSayTheirNames) {
  const auto jpegWith = [](const FileBytes& profile) {
    return jpegFile(
        8, 8, {.segments = jpegSegment(0xE2, joined({textBytes(std::string_view("ICC_PROFILE\0\1\2", 14)), profile}))});
  };
  const auto pngWith = [](const FileBytes& data) {
    return pngFile(8, 8, {.before = pngChunk("iCCP", joined({textBytes(std::string_view("Name \xE9\0\0", 8)), data}))});
  };
  FileBytes bomb = iccProfile("Large");
  bomb.resize(8 << 20);
  struct NameRow {
    const char* what;
    FileBytes file;
    StringView name;
  };
  const NameRow rows[] = {
      {"version 2, the first of two pieces", jpegWith(iccProfile("Display P3")), u"Display P3"},
      {"version 4, English and not the first", jpegWith(iccProfile("Display P3", true)), u"Display P3"},
      {"packed", pngWith(packed(iccProfile("Display P3"))), u"Display P3"},
      {"packed badly: the chunk's own name", pngWith({1, 2, 3}), u"Name é"},
      {"too large unpacked: the chunk's own name", pngWith(packed(bomb)), u"Name é"},
      {"no profile", jpegWith(FileBytes(200)), nil},
      {"cut within the name", jpegWith([] {
         FileBytes cut = iccProfile("Display P3");
         cut.resize(cut.size() - 3);
         return cut;
       }()),
       nil},
  };
  for (const auto& [what, file, name] : rows) {
    EXPECT_EQ(propertiesOf(file)[kCGImagePropertyProfileName], Value(name)) << what;
  }
}

TEST(ImageProperties, TimingOfAGIF) {
  struct TimingRow {
    const char* what;
    FileBytes blocks;
    Dictionary expected;
  };
  const FileBytes frame = gifFrame(1, 1);
  const TimingRow rows[] = {
      {"says nothing", frame, {{u"DelayTime", 0.1}, {u"UnclampedDelayTime", 0}, {u"LoopCount", 1}}},
      {"as fast as it goes",
       joined({gifLoop(0), gifControl(1), frame}),
       {{u"DelayTime", 0.1}, {u"UnclampedDelayTime", 0.01}, {u"LoopCount", 0}}},
      {"fast",
       joined({gifLoop(7), gifControl(2), frame, gifControl(90), frame}),
       {{u"DelayTime", 0.02}, {u"UnclampedDelayTime", 0.02}, {u"LoopCount", 7}}},
      {"loop behind the first frame",
       joined({gifControl(50), frame, gifLoop(3), frame}),
       {{u"DelayTime", 0.5}, {u"UnclampedDelayTime", 0.5}, {u"LoopCount", 3}}},
  };
  for (const auto& [what, blocks, expected] : rows) {
    EXPECT_EQ(propertiesOf(gifFile(9, 9, blocks))[kCGImagePropertyGIFDictionary], Value(expected)) << what;
  }
}

TEST(ImageProperties, OrientationStandsWhereItIsStillToBeApplied) {
  TIFFWriter writer(true);
  const FileBytes tiff = writer.file(writer.add(
      {writer.shorts(256, {9}), writer.shorts(257, {9}), writer.shorts(274, {8}), TIFFWriter::text(271, "Scanner")}));
  EXPECT_EQ(propertiesOf(tiff)[kCGImagePropertyOrientation], 8);
  EXPECT_EQ((*propertiesOf(tiff)[kCGImagePropertyTIFFDictionary].asDictionary())[u"Make"], u"Scanner");
  EXPECT_TRUE(propertiesOf(jpegFile(9, 9))[kCGImagePropertyOrientation].isNil()) << "not stated";
  const FileBytes upright = jpegFile(9, 9, {.segments = jpegExif(exifWithOrientation(1))});
  EXPECT_EQ(propertiesOf(upright)[kCGImagePropertyOrientation], 1) << "stated";
  const FileBytes wrong = jpegFile(9, 9, {.segments = jpegExif(exifWithOrientation(0))});
  EXPECT_TRUE(propertiesOf(wrong)[kCGImagePropertyOrientation].isNil()) << "no orientation";
}

}  // namespace
}  // namespace quorvel
