#include <gif_lib.h>
#include <gtest/gtest.h>
#include <tests/support/PNGFiles.h>

#include <quorvel/Platform/ImageIO/ImageReader.h>

namespace quorvel {
namespace {

using test::Bytes;
using test::ByteWriter;

struct GIFSpec {
  std::uint32_t screenWidth;
  std::uint32_t screenHeight;
  std::uint32_t left;
  std::uint32_t top;
  std::uint32_t width;
  std::uint32_t height;
  unsigned bits;
  bool isInterlaced;
  bool hasOwnColors;
  int transparent;
  const char* why;

  [[nodiscard]] std::uint8_t index(std::uint32_t x, std::uint32_t y) const {
    return static_cast<std::uint8_t>((x * 3 / 2 + y * y / 5 + (x * y) % 7) & ((1U << bits) - 1));
  }
  [[nodiscard]] std::uint32_t color(unsigned i) const {
    const unsigned shift = hasOwnColors ? 90 : 0;
    return 0xFF000000 | ((i * 7 + shift) & 0xFF) << 16 | ((i * 3 + 1) & 0xFF) << 8 | (255 - i);
  }
  [[nodiscard]] std::uint32_t pixel(std::uint32_t x, std::uint32_t y) const {
    if (x < left || x >= left + width || y < top || y >= top + height) return 0;
    const std::uint8_t i = index(x - left, y - top);
    return i == transparent ? 0 : color(i);
  }
};

ColorMapObject* colorsOf(GIFSpec spec, bool own) {
  spec.hasOwnColors = own;
  ColorMapObject* const map = GifMakeMapObject(1 << spec.bits, nullptr);
  for (unsigned i = 0; i < 1U << spec.bits; ++i) {
    const std::uint32_t color = spec.color(i);
    map->Colors[i] = {static_cast<GifByteType>(color >> 16), static_cast<GifByteType>(color >> 8),
                      static_cast<GifByteType>(color)};
  }
  return map;
}

void putRows(GifFileType* gif, const GIFSpec& spec) {
  std::vector<GifPixelType> row(spec.width);
  const auto put = [&](std::uint32_t y) {
    for (std::uint32_t x = 0; x < spec.width; ++x) row[x] = spec.index(x, y);
    EGifPutLine(gif, row.data(), static_cast<int>(spec.width));
  };
  constexpr std::uint32_t kPasses[][2] = {{0, 8}, {4, 8}, {2, 4}, {1, 2}};
  for (std::uint32_t pass = 0; spec.isInterlaced && pass < 4; ++pass) {
    for (std::uint32_t y = kPasses[pass][0]; y < spec.height; y += kPasses[pass][1]) put(y);
  }
  for (std::uint32_t y = 0; !spec.isInterlaced && y < spec.height; ++y) put(y);
}

Bytes gifFile(const GIFSpec& spec) {
  Bytes file;
  int error = 0;
  GifFileType* const gif = EGifOpen(
      &file,
      [](GifFileType* to, const GifByteType* bytes, int count) {
        auto* const all = static_cast<Bytes*>(to->UserData);
        all->insert(all->end(), bytes, bytes + count);
        return count;
      },
      &error);
  EGifSetGifVersion(gif, true);
  ColorMapObject* const shared = colorsOf(spec, false);
  ColorMapObject* const own = colorsOf(spec, true);
  EGifPutScreenDesc(gif, static_cast<int>(spec.screenWidth), static_cast<int>(spec.screenHeight), 8, 1, shared);
  if (spec.transparent >= 0) {
    GraphicsControlBlock control{DISPOSE_BACKGROUND, false, 5, spec.transparent};
    GifByteType bytes[4];
    EGifGCBToExtension(&control, bytes);
    EGifPutExtension(gif, GRAPHICS_EXT_FUNC_CODE, sizeof bytes, bytes);
  }
  EGifPutImageDesc(gif, static_cast<int>(spec.left), static_cast<int>(spec.top), static_cast<int>(spec.width),
                   static_cast<int>(spec.height), spec.isInterlaced, spec.hasOwnColors ? own : nullptr);
  putRows(gif, spec);
  EGifCloseFile(gif, &error);
  GifFreeMapObject(shared);
  GifFreeMapObject(own);
  return file;
}

constexpr GIFSpec kSpecs[] = {
    {20, 15, 0, 0, 20, 15, 8, false, false, -1, "the whole screen"},
    {300, 200, 0, 0, 300, 200, 8, false, false, -1, "more strings than the table holds"},
    {300, 200, 0, 0, 300, 200, 8, true, true, 9, "the same, interlaced"},
    {40, 30, 7, 5, 20, 15, 4, false, false, -1, "a frame within the screen"},
    {40, 30, 7, 5, 20, 17, 4, true, false, 3, "interlaced, transparent"},
    {40, 30, 30, 25, 20, 15, 2, false, true, 1, "beyond the screen's right and bottom"},
    {10, 10, 50, 50, 4, 4, 2, false, false, -1, "beside the screen"},
    {9, 9, 0, 0, 9, 9, 1, true, false, 0, "two colours, a height that no pass divides"},
    {1, 1, 0, 0, 1, 1, 1, false, false, -1, "one pixel"},
    {5, 3, 0, 0, 5, 1, 3, true, false, -1, "passes without rows"},
};

std::shared_ptr<CGBitmap> read(const Bytes& file, const GIFSpec& spec, PixelSize wanted) {
  return readPixels(file, test::factsOf(ImageFormat::GIF, spec.screenWidth, spec.screenHeight), wanted);
}

std::uint32_t rightRows(const CGBitmap& bitmap, const GIFSpec& spec) {
  return test::rightRows(bitmap, [&spec](std::uint32_t x, std::uint32_t y) { return spec.pixel(x, y); });
}

TEST(GIFReader, PutsTheFirstFrameOnATransparentCanvas) {
  for (const GIFSpec& spec : kSpecs) {
    const auto bitmap = read(gifFile(spec), spec, {spec.screenWidth, spec.screenHeight});
    ASSERT_TRUE(bitmap) << spec.why;
    EXPECT_EQ(rightRows(*bitmap, spec), spec.screenHeight) << spec.why;
  }
}

TEST(GIFReader, GivesTheRowsBeforeTheEndOfAFile) {
  const GIFSpec& spec = kSpecs[0];
  const Bytes file = gifFile(spec);
  std::uint32_t last = 0;
  for (std::size_t size = 0; size <= file.size(); ++size) {
    const auto bitmap = read(test::beginning(file, size), spec, {20, 15});
    const std::uint32_t right = bitmap ? rightRows(*bitmap, spec) : 0;
    ASSERT_GE(right, last) << size;
    last = right;
  }
  EXPECT_EQ(last, spec.screenHeight);
}

TEST(GIFReader, SurvivesEveryCutAndFlippedByte) {
  for (const GIFSpec& spec : kSpecs) {
    if (spec.screenWidth > 100) continue;
    const Bytes file = gifFile(spec);
    for (std::size_t i = 0; i < file.size(); ++i) {
      Bytes damaged = file;
      damaged[i] ^= 0xFF;
      (void)read(damaged, spec, {1, 1});
      damaged[i] ^= 0xFE;
      (void)read(damaged, spec, {1, 1});
      (void)read(test::beginning(file, i), spec, {1, 1});
    }
  }
}

/// The header of a file with a frame of these sides on a screen of those, and next to no pixels.
Bytes declared(std::uint16_t screen, std::uint16_t frame, bool isInterlaced) {
  return ByteWriter(true)
      .text("GIF89a")
      .u16(screen)
      .u16(screen)
      .zeros(3)
      .u8(0x2C)
      .zeros(4)
      .u16(frame)
      .u16(frame)
      .u8(isInterlaced ? 0x40 : 0)
      .u8(8)
      .u8(3)
      .zeros(4)
      .file;
}

TEST(GIFReader, TakesNoMemoryForWhatAFileOnlyDeclares) {
  for (const bool isInterlaced : {false, true}) {
    for (const std::uint16_t screen : {std::uint16_t{10}, std::uint16_t{9'000}, std::uint16_t{65'535}}) {
      const Bytes file = declared(screen, 65'535, isInterlaced);
      EXPECT_FALSE(readPixels(file, test::factsOf(ImageFormat::GIF, screen, screen), {5, 5})) << screen;
    }
  }
  const Bytes frameless = declared(0, 7, false);
  EXPECT_TRUE(readPixels(frameless, test::factsOf(ImageFormat::GIF, 7, 7), {7, 7})) << "a screen without sides";
}

}  // namespace
}  // namespace quorvel
