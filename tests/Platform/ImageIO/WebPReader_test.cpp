#include <cmath>

#include <gtest/gtest.h>
#include <tests/support/PNGFiles.h>
#include <webp/encode.h>

#include <quorvel/Platform/ImageIO/ImageReader.h>

namespace quorvel {
namespace {

using test::Bytes;
using test::ByteWriter;
using test::joined;

/// Straight blue, green, red, alpha: slopes with a soft border.
Bytes picture(std::uint32_t width, std::uint32_t height, bool hasAlpha) {
  Bytes bytes;
  for (std::uint32_t y = 0; y < height; ++y) {
    for (std::uint32_t x = 0; x < width; ++x) {
      const double wave = std::sin(x * 0.11) * std::cos(y * 0.07);
      bytes.push_back(static_cast<std::uint8_t>(120 + 100 * wave));
      bytes.push_back(static_cast<std::uint8_t>(x * 255 / width));
      bytes.push_back(static_cast<std::uint8_t>(y * 255 / height));
      bytes.push_back(static_cast<std::uint8_t>(hasAlpha ? std::min(255U, (x + 2 * y) * 3) : 255));
    }
  }
  return bytes;
}

Bytes webpFile(std::uint32_t width, std::uint32_t height, bool hasAlpha, bool isLossless) {
  const Bytes pixels = picture(width, height, hasAlpha);
  const int w = static_cast<int>(width);
  const int h = static_cast<int>(height);
  std::uint8_t* out = nullptr;
  const std::size_t size = isLossless ? WebPEncodeLosslessBGRA(pixels.data(), w, h, 4 * w, &out)
                                      : WebPEncodeBGRA(pixels.data(), w, h, 4 * w, 95, &out);
  Bytes file(out, out + size);
  WebPFree(out);
  return file;
}

std::shared_ptr<CGBitmap> read(const Bytes& file, PixelSize size, PixelSize wanted) {
  return readPixels(file, test::factsOf(ImageFormat::WebP, size.width, size.height), wanted);
}

int greatestDifference(const CGBitmap& a, const CGBitmap& b) {
  int greatest = 0;
  for (std::size_t y = 0; y < a.height(); ++y) {
    for (std::size_t i = 0; i < 4 * a.width(); ++i) greatest = std::max(greatest, std::abs(a.row(y)[i] - b.row(y)[i]));
  }
  return greatest;
}

std::shared_ptr<CGBitmap> expectedPicture(std::uint32_t width, std::uint32_t height, bool hasAlpha) {
  const Bytes bytes = picture(width, height, hasAlpha);
  auto bitmap = CGBitmap::make(width, height);
  for (std::size_t i = 0; i < std::size_t{width} * height; ++i) {
    std::uint8_t* const to = bitmap->row(i / width) + i % width * 4;
    for (std::size_t c = 0; c < 3; ++c) {
      to[c] = static_cast<std::uint8_t>(std::lround(bytes[4 * i + c] * bytes[4 * i + 3] / 255.0));
    }
    to[3] = bytes[4 * i + 3];
  }
  return bitmap;
}

struct WebPRow {
  bool hasAlpha;
  bool isLossless;
  int tolerance;
  int smallTolerance;
  const char* why;
};
// The decoder multiplies alpha in with an error of one level.
constexpr WebPRow kRows[] = {
    {false, true, 0, 1, "without loss"},
    {true, true, 1, 2, "without loss, alpha"},
    {false, false, 12, 4, "with loss"},
    {true, false, 12, 1, "with loss, alpha"},
};

TEST(WebPReader, ReadsAndShrinksStillPictures) {
  for (const auto& [hasAlpha, isLossless, tolerance, smallTolerance, why] : kRows) {
    const Bytes file = webpFile(120, 90, hasAlpha, isLossless);
    const auto whole = read(file, {120, 90}, {120, 90});
    ASSERT_TRUE(whole) << why;
    EXPECT_LE(greatestDifference(*whole, *expectedPicture(120, 90, hasAlpha)), tolerance) << why;
    for (const PixelSize wanted : {PixelSize{60, 45}, PixelSize{119, 89}, PixelSize{31, 7}, PixelSize{1, 1}}) {
      const auto small = read(file, {120, 90}, wanted);
      ASSERT_TRUE(small) << why;
      EXPECT_LE(greatestDifference(*small, *test::shrunk(*whole, wanted)), smallTolerance)
          << why << " " << wanted.width;
    }
  }
}

/// An animation of two frames of 20 by 10 at (6, 4) on a canvas.
Bytes animation(std::uint32_t width, std::uint32_t height) {
  const Bytes still = webpFile(20, 10, true, true);
  const Bytes frame = test::webpChunk(
      "ANMF", ByteWriter(true).u24(3).u24(2).u24(19).u24(9).u24(100).u8(0).add({still.begin() + 12, still.end()}).file);
  return test::webpFile(
      joined({test::webpExtended(width, height, 0x12), test::webpChunk("ANIM", {1, 2, 3, 255, 0, 0}), frame, frame}));
}

TEST(WebPReader, PutsTheFirstFrameOnATransparentCanvas) {
  const Bytes file = animation(40, 30);
  const auto bitmap = read(file, {40, 30}, {40, 30});
  ASSERT_TRUE(bitmap);
  const auto frame = expectedPicture(20, 10, true);
  const auto canvas = CGBitmap::make(40, 30);
  for (std::size_t y = 0; y < 10; ++y) std::copy_n(frame->row(y), 80, canvas->row(y + 4) + 24);
  EXPECT_LE(greatestDifference(*bitmap, *canvas), 1);
  EXPECT_TRUE(read(file, {40, 30}, {4, 3}));
  EXPECT_FALSE(read(file, {41, 30}, {4, 3})) << "another canvas";
  EXPECT_FALSE(read(animation(25, 30), {25, 30}, {4, 3})) << "the frame sticks out";
}

TEST(WebPReader, SurvivesEveryCutAndFlippedByte) {
  for (const Bytes& file : {webpFile(20, 30, true, true), webpFile(20, 30, true, false), animation(40, 30)}) {
    const PixelSize size = file[12 + 3] == 'X' && file[20] == 0x12 ? PixelSize{40, 30} : PixelSize{20, 30};
    for (std::size_t i = 0; i < file.size(); ++i) {
      Bytes damaged = file;
      damaged[i] ^= 0xFF;
      (void)read(damaged, size, {5, 7});
      (void)read(damaged, size, size);
      (void)read(test::beginning(file, i), size, {5, 7});
    }
  }
}

TEST(WebPReader, GivesTheRowsBeforeTheEndOfAFile) {
  for (const bool isLossless : {false, true}) {
    const Bytes file = webpFile(200, 300, false, isLossless);
    const auto whole = read(file, {200, 300}, {200, 300});
    const auto bitmap = read(test::beginning(file, file.size() * 3 / 4), {200, 300}, {200, 300});
    ASSERT_TRUE(bitmap);
    EXPECT_EQ(test::pixelOf(*bitmap, 100, 20), test::pixelOf(*whole, 100, 20));
    EXPECT_EQ(test::pixelOf(*bitmap, 100, 299), 0U) << "transparent below";
  }
}

TEST(WebPReader, TakesNoMemoryForWhatAFileOnlyDeclares) {
  Bytes file = webpFile(20, 30, false, true);
  // The header of what is packed without loss: 14 bits for each side less one, after its mark.
  file[21] = file[22] = file[23] = 0xFF;
  file[24] |= 0x0F;
  EXPECT_FALSE(read(file, {16'384, 16'384}, {10, 10}));
}

/// One colour packed without loss, in no bits at all: each of its five codes has a single symbol.
Bytes flatFile(std::uint32_t width, std::uint32_t height) {
  Bytes stream;
  std::size_t used = 0;
  const auto put = [&](std::uint32_t value, unsigned count) {
    for (unsigned i = 0; i < count; ++i, ++used) {
      if (used % 8 == 0) stream.push_back(0);
      stream.back() = static_cast<std::uint8_t>(stream.back() | (value >> i & 1) << used % 8);
    }
  };
  put(0x2F, 8);
  put(width - 1, 14);
  put(height - 1, 14);
  put(0, 4);  // no alpha, version 0
  put(0, 3);  // neither transform nor cache nor further codes
  for (const std::uint32_t symbol : {0x30U, 0x20U, 0x10U, 0xFFU, 0U}) {  // green, red, blue, alpha, distance
    put(0b101, 3);                                                       // simple, one symbol, of 8 bits
    put(symbol, 8);
  }
  return test::webpFile(test::webpChunk("VP8L", stream));
}

TEST(WebPReader, RefusesWhatTheDecoderKeepsBeyondItsMemory) {
  struct {
    PixelSize size, wanted;
    bool isRead;
    const char* why;
  } const rows[] = {
      {{6000, 6000}, {6000, 6000}, true, "twice 36 million pixels"},
      {{6000, 6200}, {6000, 6200}, false, "twice 37.2 million"},
      {{6000, 6200}, {4500, 4650}, true, "too much to be shrunk from the whole picture: by the decoder"},
      {{8000, 8000}, {100, 100}, true, "once, and little more"},
      {{8000, 8000}, {4500, 4500}, false, "a result too large beside it"},
  };
  for (const auto& [size, wanted, isRead, why] : rows) {
    const auto bitmap = read(flatFile(size.width, size.height), size, wanted);
    ASSERT_EQ(bitmap != nullptr, isRead) << why;
    if (!bitmap) continue;
    EXPECT_EQ(test::pixelOf(*bitmap, wanted.width - 1, wanted.height - 1), 0xFF203010U) << why;
  }
}

}  // namespace
}  // namespace quorvel
