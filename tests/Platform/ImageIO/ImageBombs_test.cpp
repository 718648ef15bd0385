#include <bit>
#include <cstdio>
#include <cstring>
#include <functional>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <tests/support/ImageFiles.h>
#include <tests/support/JPEGFiles.h>
#include <tests/support/PNGFiles.h>
#include <unistd.h>
#include <webp/encode.h>

#include <quorvel/Platform/ImageIO/CGImageSource.h>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define QUORVEL_TEST_MEASURES 0
#else
#define QUORVEL_TEST_MEASURES 1
#endif

namespace quorvel {
namespace {

using test::ByteWriter;
using test::declaring;
using test::FileBytes;
using test::isoBox;
using test::isoFullBox;
using test::joined;
using test::textBytes;
using test::TIFFWriter;
using test::webpChunk;

/// What can be asked of a file, as bits.
enum Answer : unsigned { Known = 1, Thumbnail = 2, Whole = 4 };
constexpr unsigned kNothing = 0;
constexpr unsigned kPicture = Known | Thumbnail | Whole;

// --- PNG

FileBytes png(std::uint32_t width, std::uint32_t height, const FileBytes& extra, const FileBytes& packedRows) {
  test::PNGSpec spec;
  spec.width = width;
  spec.height = height;
  spec.color = 6;
  spec.extra = extra;
  return test::pngFile(spec, packedRows);
}
FileBytes packedZeros(std::size_t count) { return test::packed(FileBytes(count)); }
/// 200 MB of them.
const FileBytes& manyZeros() {
  static const FileBytes zeros = packedZeros(200'000'000);
  return zeros;
}
FileBytes interlacedPNG(std::uint32_t side, const FileBytes& packedRows) {
  test::PNGSpec spec;
  spec.width = spec.height = side;
  spec.color = 6;
  spec.isInterlaced = true;
  return test::pngFile(spec, packedRows);
}
FileBytes smallPNG(const FileBytes& extra) { return png(8, 8, extra, packedZeros(8 * 33)); }
FileBytes packedText(const char* type, std::string_view head) {
  return test::pngChunk(type, joined({textBytes(head), manyZeros()}));
}

// --- JPEG

FileBytes jpeg(bool isProgressive, std::uint32_t side = 64) {
  test::JPEGKind kind;
  kind.isProgressive = isProgressive;
  return test::makeJPEG(test::photograph(side, side), kind);
}
/// As far as the end of its frame header.
FileBytes withoutScans(FileBytes file) {
  const std::size_t at = test::frameOf(file);
  file.resize(at + 2 + (std::size_t{file[at + 2]} << 8 | file[at + 3]));
  return joined({file, {0xFF, 0xD9}});
}
/// Scans of the lowest bits that are missing, again and again.
FileBytes withScans(std::size_t count, std::uint32_t side = 64) {
  FileBytes file = jpeg(true, side);
  file.resize(file.size() - 2);
  ByteWriter writer;
  writer.add(file);
  for (std::size_t i = 0; i < count; ++i) {
    writer.add(test::jpegSegment(0xDA, ByteWriter().u8(1).u8(1).u8(0).u8(1).u8(63).u8(0x00).file)).u8(0);
  }
  return writer.u16(0xFFD9).file;
}
FileBytes withSegments(std::uint8_t marker, std::string_view head, std::size_t count) {
  const FileBytes plain = jpeg(false);
  FileBytes body = textBytes(head);
  body.resize(65'533);
  ByteWriter writer;
  writer.u16(0xFFD8);
  for (std::size_t i = 0; i < count; ++i) writer.add(test::jpegSegment(marker, body));
  return writer.add({plain.begin() + 2, plain.end()}).file;
}

// --- GIF, WebP

FileBytes repeated(const FileBytes& piece, std::size_t count) {
  ByteWriter writer;
  for (std::size_t i = 0; i < count; ++i) writer.add(piece);
  return writer.file;
}
FileBytes garbledGIF() {
  FileBytes garbage(255, 0xA7);
  ByteWriter frame(true);
  frame.u8(0x2C).u32(0).u16(4000).u16(4000).u8(0).u8(8);
  for (int i = 0; i < 20'000; ++i) frame.u8(255).add(garbage);
  return test::gifFile(4000, 4000, frame.u8(0).file);
}
/// One colour: each code stands for a pixel more than the one before, until the table is full and cleared.
FileBytes packedGIF() {
  FileBytes codes;
  std::uint64_t bits = 0;
  unsigned count = 0;
  const auto put = [&](unsigned code, unsigned width) {
    bits |= std::uint64_t{code} << count;
    for (count += width; count >= 8; count -= 8, bits >>= 8) codes.push_back(static_cast<std::uint8_t>(bits));
  };
  for (int part = 0; part < 5; ++part) {
    put(256, part == 0 ? 9 : 12);
    put(0, 9);
    for (unsigned code = 258; code < 4096; ++code) put(code, static_cast<unsigned>(std::bit_width(code)));
  }
  ByteWriter frame(true);
  frame.u8(0x2C).u32(0).u16(5'800).u16(5'800).u8(0).u8(8);
  for (std::size_t at = 0; at < codes.size(); at += 255) {
    const std::size_t size = std::min<std::size_t>(255, codes.size() - at);
    const auto first = codes.begin() + static_cast<std::ptrdiff_t>(at);
    frame.u8(size).add({first, first + static_cast<std::ptrdiff_t>(size)});
  }
  return test::gifFile(5'800, 5'800, frame.u8(0).file);
}
FileBytes webpAnimation(std::uint32_t side, std::size_t frames) {
  const FileBytes frame = webpChunk("ANMF", ByteWriter(true)
                                                .u24(0)
                                                .u24(0)
                                                .u24(side - 1)
                                                .u24(side - 1)
                                                .u24(10)
                                                .u8(0)
                                                .add(test::webpLossless(side, side, false))
                                                .file);
  return test::webpFile(
      joined({test::webpExtended(side, side, 2), webpChunk("ANIM", FileBytes(6)), repeated(frame, frames)}));
}

// --- HEIC, AVIF

FileBytes heif(std::string_view brand, std::string_view type, std::uint32_t side, const FileBytes& more) {
  return joined({test::isoType(brand, "mif1"), test::isoMeta({{1, type, {1}}}, test::isoSize(side, side), more),
                 isoBox("mdat", FileBytes(64))});
}
FileBytes location(std::uint32_t offset, std::uint32_t length) {
  return isoFullBox("iloc", ByteWriter().u16(0x4400).u16(1).u16(1).u16(0).u16(1).u32(offset).u32(length).file);
}
FileBytes deepBoxes() {
  FileBytes box = isoBox("free", {});
  for (int i = 0; i < 5'000; ++i) box = isoBox(i % 2 ? "iprp" : "ipco", box);
  return heif("heic", "hvc1", 64, box);
}

// --- TIFF

std::vector<TIFFWriter::Field> fields(const TIFFWriter& writer, std::uint32_t width, std::uint32_t height) {
  return {writer.longs(256, {width}), writer.longs(257, {height}), writer.shorts(258, {8}),
          writer.shorts(259, {1}),    writer.shorts(262, {1}),     writer.longs(273, {8}),
          writer.shorts(277, {1}),    writer.longs(278, {height}), writer.longs(279, {0xFFFFFFF0})};
}
FileBytes tiff(std::uint32_t width, std::uint32_t height) {
  TIFFWriter writer(true);
  return writer.file(writer.add(fields(writer, width, height)));
}
FileBytes tiledTIFF(std::uint32_t tile) {
  TIFFWriter writer(true);
  return writer.file(
      writer.add({writer.longs(256, {9'000}), writer.longs(257, {9'000}), writer.shorts(258, {8}),
                  writer.shorts(259, {1}), writer.shorts(262, {1}), writer.shorts(277, {1}), writer.longs(322, {tile}),
                  writer.longs(323, {tile}), writer.longs(324, {8}), writer.longs(325, {0x7FFFFFFF})}));
}
FileBytes cyclicTIFF() {
  TIFFWriter writer(true);
  const auto first = writer.add(fields(writer, 9'000, 9'000));
  const auto second = writer.add({writer.longs(256, {1})}, first);
  const auto third = writer.add(fields(writer, 9'000, 9'000), second);
  return writer.file(third);
}
FileBytes longTIFF(std::size_t count) {
  TIFFWriter writer(true);
  std::uint64_t next = 0;
  for (std::size_t i = 0; i < count; ++i) next = writer.add(fields(writer, 9'000, 9'000), next);
  return writer.file(next);
}

// --- The rest

FileBytes endlessSVG() {
  std::string text = "<?xml version='1.0'?><!DOCTYPE svg [<!ENTITY a 'aaaaaaaaaa'>";
  for (char name = 'b'; name <= 'z'; ++name) {
    text += std::string("<!ENTITY ") + name + " '";
    for (int i = 0; i < 10; ++i) text += std::string("&") + static_cast<char>(name - 1) + ";";
    text += "'>";
  }
  return textBytes(text + "]><svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'><text>&z;</text></svg>");
}
FileBytes iconOf(const FileBytes& file) { return test::icoFile({{0, 0, file}}); }

struct BombRow {
  const char* name;
  std::function<FileBytes()> file;
  unsigned right;
  const char* why;
};

const BombRow kBombs[] = {
    {"PNG of 60,000 squared", [] { return png(60'000, 60'000, {}, packedZeros(9)); }, Known, "beyond the limits"},
    {"PNG of 30,000 by 3,000", [] { return png(30'000, 3'000, {}, packedZeros(50)); }, Known, "no row in its bytes"},
    {"PNG of 10,000 squared, packed well", [] { return png(10'000, 9'999, {}, packedZeros(50'000'000)); },
     Known | Thumbnail, "the whole would be 400 MB, rows one by one are fine"},
    {"PNG of 3,000 squared", [] { return png(3'000, 3'000, {}, manyZeros()); }, kPicture,
     "and 164 MB that nobody wants"},
    {"interlaced PNG of 3,000 squared", [] { return interlacedPNG(3'000, manyZeros()); }, kPicture,
     "the same in passes"},
    {"PNG with far more than its rows", [] { return png(8, 8, {}, manyZeros()); }, kPicture,
     "what follows the last row is not unpacked"},
    {"PNG with 200 MB of zTXt", [] { return smallPNG(packedText("zTXt", std::string_view("t\0\0", 3))); }, kPicture,
     "text is passed over"},
    {"PNG with 200 MB of iTXt",
     [] { return smallPNG(packedText("iTXt", std::string_view("XML:com.adobe.xmp\0\1\0\0\0", 22))); }, kPicture,
     "text is passed over"},
    {"PNG with 200 MB of profile", [] { return smallPNG(packedText("iCCP", std::string_view("p\0\0", 3))); }, kPicture,
     "a profile of such a size is none"},
    {"APNG of 4,000,000,000 frames", [] { return smallPNG(test::pngAnimation(4'000'000'000U)); }, kPicture,
     "only counted"},
    {"JPEG of 65,500 squared", [] { return declaring(jpeg(false), 65'500, 65'500); }, Known, "beyond the limits"},
    {"progressive JPEG of 65,500 squared", [] { return declaring(jpeg(true), 65'500, 65'500); }, Known,
     "beyond the limits"},
    {"progressive JPEG of 30,000 by 3,000 without scans",
     [] { return withoutScans(declaring(jpeg(true), 30'000, 3'000)); }, Known, "nothing to show"},
    {"progressive JPEG of 30,000 by 3,000", [] { return declaring(jpeg(true), 30'000, 3'000); }, Known,
     "600 MB of coefficients"},
    {"JPEG of 2,000 scans", [] { return withScans(2'000); }, Known, "more scans than are decoded"},
    {"JPEG of 99 scans of 3,000 squared", [] { return declaring(withScans(90), 3'000, 3'000); }, Known,
     "no row in its first scan"},
    {"JPEG of 99 scans of 2,000 squared", [] { return withScans(90, 2'000); }, kPicture, "as many as may be"},
    {"JPEG with 60 MB of APP segments", [] { return withSegments(0xE5, "", 900); }, kPicture, "passed over"},
    {"JPEG with 255 pieces of profile",
     [] { return withSegments(0xE2, std::string_view("ICC_PROFILE\0\1\377", 14), 255); }, kPicture,
     "16 MB that are no profile"},
    {"JPEG with 60 MB of EXIF",
     [] { return withSegments(0xE1, std::string_view("Exif\0\0II*\0\10\0\0\0\377\377", 16), 900); }, kPicture,
     "directories of 65,535 empty entries"},
    {"GIF of 65,535 squared, 10,000 frames",
     [] { return test::gifFile(65'535, 65'535, repeated(test::gifFrame(65'535, 65'535), 10'000)); }, Known,
     "beyond the limits"},
    {"GIF of a small frame on 9,000 squared", [] { return test::gifFile(9'000, 9'000, test::gifFrame(2, 2)); },
     Known | Thumbnail, "the whole would be 324 MB"},
    {"GIF of garbage", garbledGIF, Known, "5 MB of codes, none of them known"},
    {"GIF of 5,800 squared in 60 KB", packedGIF, kPicture, "135 MB"},
    {"lossy WebP of 16,383 squared", [] { return test::webpFile(test::webpLossy(16'383, 16'383)); }, Known,
     "beyond the limits"},
    {"lossless WebP of 16,383 squared", [] { return test::webpFile(test::webpLossless(16'383, 16'383, true)); }, Known,
     "beyond the limits"},
    {"lossless WebP of 9,900 squared", [] { return test::webpFile(test::webpLossless(9'900, 9'900, true)); }, Known,
     "no row in its bytes"},
    {"WebP of 10,000 frames", [] { return webpAnimation(2'000, 10'000); }, Known, "no frame has pixels"},
    {"HEIC of 2^30 pixels", [] { return heif("heic", "hvc1", 32'767, location(100, 64)); }, Known, "beyond the limits"},
    {"AVIF of 2^62 pixels", [] { return heif("avif", "av01", 0x7FFFFFFF, location(100, 64)); }, Known,
     "beyond the limits"},
    {"HEIC with 5,000 boxes in each other", deepBoxes, Known, "nothing to decode"},
    {"HEIC whose pixels lie past the end", [] { return heif("heic", "hvc1", 64, location(0xFFFFFFF0, 0xFFFFFFF0)); },
     Known, "nothing to decode"},
    {"TIFF of one strip of 4 GB", [] { return tiff(9'999, 9'999); }, Known, "no strip in its bytes"},
    {"TIFF of 2^31 squared", [] { return tiff(0x80000000, 0x80000000); }, Known, "beyond the limits"},
    {"TIFF whose directories go round", cyclicTIFF, Known, "no strip in its bytes"},
    {"TIFF of 60,000 directories", [] { return longTIFF(60'000); }, Known | Thumbnail,
     "its directories, taken for pixels; the whole would be 324 MB"},
    {"TIFF of a tile of 2 GB", [] { return tiledTIFF(0x7FFFFFF0); }, Known, "no tile in its bytes"},
    {"TIFF of tiles of a pixel", [] { return tiledTIFF(1); }, Known, "81,000,000 tiles"},
    {"BMP of 2^31 squared", [] { return test::bmpFile(0x7FFFFFFF, -0x7FFFFFFF); }, Known, "not decoded"},
    {"ICO of a PNG of 60,000 squared", [] { return iconOf(png(60'000, 60'000, {}, packedZeros(9))); }, Known,
     "not decoded"},
    {"SVG of 10^26 letters", endlessSVG, Known, "entities are not put in"},
    {"PDF", [] { return textBytes("%PDF-1.7\n1 0 obj<</Type/Pages/Kids[1 0 R]/Count 2147483647>>endobj\n"); }, Known,
     "its pages are not counted"},
};

/// Of this process, in KiB.
long statusOf(const char* field) {
  char text[4096] = {};
  const int file = ::open("/proc/self/status", O_RDONLY | O_CLOEXEC);
  const ssize_t size = ::read(file, text, sizeof text - 1);
  ::close(file);
  const char* const found = size > 0 ? std::strstr(text, field) : nullptr;
  return found ? std::strtol(found + std::strlen(field), nullptr, 10) : -1;
}

struct Cost {
  unsigned answer = 0;
  long kibibytes = -1;
  double seconds = 0;
};

double processorTime() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  const auto of = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
  };
  return of(usage.ru_utime) + of(usage.ru_stime);
}

Cost askEverything(const Data& file) {
  Cost cost;
  const int reset = ::open("/proc/self/clear_refs", O_WRONLY | O_CLOEXEC);
  const bool isReset = ::write(reset, "5", 1) == 1;
  ::close(reset);
  const long before = statusOf("VmRSS:");
  const double start = processorTime();
  if (auto source = CGImageSource::withData(file)) {
    (void)source->count();
    if (source->properties()) cost.answer |= Known;
    if (source->thumbnail(100)) cost.answer |= Thumbnail;
    if (source->image()) cost.answer |= Whole;
  }
  cost.seconds = processorTime() - start;
  if (isReset) cost.kibibytes = statusOf("VmHWM:") - before;
  return cost;
}

/// In a process of its own, whose end is `status`.
Cost askElsewhere(const Data& file, int& status) {
  int ends[2];
  EXPECT_EQ(::pipe(ends), 0);
  const pid_t child = ::fork();
  if (child == 0) {
    const Cost cost = askEverything(file);
    const bool isTold = ::write(ends[1], &cost, sizeof cost) == sizeof cost;
    std::_Exit(isTold ? 0 : 1);
  }
  ::close(ends[1]);
  Cost cost;
  EXPECT_EQ(::read(ends[0], &cost, sizeof cost), static_cast<ssize_t>(sizeof cost));
  ::close(ends[0]);
  ::waitpid(child, &status, 0);
  return cost;
}

TEST(ImageBombs, CostNextToNothing) {
  constexpr double kSeconds = 1;
  constexpr long kKibibytes = 300 * 1024;
  for (const auto& [name, file, right, why] : kBombs) {
    const Data data{std::span<const std::uint8_t>(file())};
    int status = -1;
    const Cost cost = askElsewhere(data, status);
    EXPECT_EQ(status, 0) << name << ": " << why;
    EXPECT_EQ(cost.answer, right) << name << ": " << why;
    if (std::getenv("QUORVEL_SHOW_COSTS")) {
      std::printf("%-52s %6.3f s %8ld KiB  %u\n", name, cost.seconds, cost.kibibytes, cost.answer);
    }
    if (!QUORVEL_TEST_MEASURES) continue;
    EXPECT_LE(cost.seconds, kSeconds) << name << ": " << why;
    EXPECT_LE(cost.kibibytes, kKibibytes) << name << ": " << why;
  }
}

}  // namespace
}  // namespace quorvel
