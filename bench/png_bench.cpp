// PNG read and written beside libpng, OpenCV and Qt: a photograph of 12 megapixels and a screen. The size of a case is
// its number of pixels; what a writer makes of the screen is printed as bytes beside its time.
#include <cmath>
#include <cstdio>
#include <cstring>
#include <vector>

#include <bench/Cases.h>

#include <quorvel/Platform/ImageIO/ImageReader.h>
#include <quorvel/Platform/ImageIO/PNGWriter.h>

#if QUORVEL_HAVE_LIBPNG
#include <png.h>
#endif
#if QUORVEL_HAVE_OPENCV_CODECS
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#endif
#if QUORVEL_HAVE_QT_GUI
#include <QBuffer>
#include <QImage>
#endif

namespace quorvel::bench {
namespace {

using Bytes = std::vector<std::uint8_t>;

class Random {
 public:
  std::uint32_t below(std::uint32_t limit) {
    state_ = state_ * 6364136223846793005 + 1442695040888963407;
    return static_cast<std::uint32_t>((state_ >> 33) % limit);
  }

 private:
  std::uint64_t state_ = 7;
};

/// Light and shade with edges and the noise of a camera.
void drawPhoto(CGBitmap& bitmap, std::size_t left, std::size_t top, std::size_t width, std::size_t height) {
  Random random;
  for (std::size_t y = top; y < top + height; ++y) {
    std::uint8_t* const row = bitmap.row(y);
    for (std::size_t x = left; x < left + width; ++x) {
      const double u = static_cast<double>(x - left);
      const double v = static_cast<double>(y - top);
      const double edge = std::fmod(u + v * 0.3, 700) < 350 ? 40 : 0;
      for (std::size_t c = 0; c < 3; ++c) {
        const double phase = static_cast<double>(c);
        const double light = 110 + 50 * std::sin(u / 190 + phase) + 40 * std::cos(v / 130 - phase) + edge;
        row[4 * x + c] = static_cast<std::uint8_t>(std::clamp(light + random.below(5), 0.0, 255.0));
      }
      row[4 * x + 3] = 255;
    }
  }
}

void fill(CGBitmap& bitmap, std::size_t left, std::size_t top, std::size_t width, std::size_t height,
          std::uint32_t color) {
  for (std::size_t y = top; y < std::min(top + height, bitmap.height()); ++y) {
    for (std::size_t x = left; x < std::min(left + width, bitmap.width()); ++x) {
      std::memcpy(bitmap.row(y) + 4 * x, &color, 4);
    }
  }
}

/// A letter of three strokes with soft edges, at one of four fractions of a pixel.
void drawLetter(CGBitmap& bitmap, std::size_t left, std::size_t top, std::uint32_t letter, std::uint32_t fraction,
                std::uint32_t ink) {
  constexpr double kSide = 26;
  for (std::size_t y = 0; y < 34; ++y) {
    for (std::size_t x = 0; x < 22; ++x) {
      double cover = 0;
      for (std::uint32_t stroke = 0; stroke < 3; ++stroke) {
        const double angle = (letter * 7 + stroke * 13) % 17 * 0.37;
        const double away = std::abs((static_cast<double>(x) - 10 - fraction * 0.25) * std::sin(angle) +
                                     (static_cast<double>(y) - kSide / 2 - stroke * 3.0) * std::cos(angle));
        cover = std::max(cover, std::clamp(2.0 - away, 0.0, 1.0));
      }
      std::uint8_t* const pixel = bitmap.row(top + y) + 4 * (left + x);
      for (std::size_t c = 0; c < 3; ++c) {
        pixel[c] = static_cast<std::uint8_t>(
            std::lround(pixel[c] + (static_cast<int>(ink >> (8 * c) & 255) - pixel[c]) * cover));
      }
    }
  }
}

/// A conversation: coloured boxes with lines of letters, round pictures, and one photograph.
void drawScreen(CGBitmap& bitmap) {
  Random random;
  fill(bitmap, 0, 0, bitmap.width(), bitmap.height(), 0xFFB2C7D9);
  fill(bitmap, 0, 0, bitmap.width(), 240, 0xFFF7F7F7);
  std::size_t top = 280;
  for (std::uint32_t message = 0; top + 420 < bitmap.height(); ++message) {
    const bool mine = message % 3 == 1;
    const std::size_t left = mine ? 300 : 150;
    const std::size_t lines = 1 + random.below(4);
    fill(bitmap, left, top, 820, lines * 52 + 40, mine ? 0xFFFEE500 : 0xFFFFFFFF);
    for (std::size_t line = 0; line < lines; ++line) {
      for (std::size_t at = 0; at < 30U + random.below(4); ++at) {
        if (random.below(6) != 0) {
          drawLetter(bitmap, left + 30 + at * 23, top + 20 + line * 52, random.below(50), random.below(4), 0xFF191919);
        }
      }
    }
    for (std::size_t y = 0; !mine && y < 110; ++y) {
      for (std::size_t x = 0; x < 110; ++x) {
        if (std::hypot(static_cast<double>(x) - 55, static_cast<double>(y) - 55) < 54) {
          fill(bitmap, 20 + x, top + y, 1, 1,
               0xFF000000 | (message * 0x123456 + static_cast<std::uint32_t>(x) * 0x10001));
        }
      }
    }
    top += lines * 52 + 70;
  }
  drawPhoto(bitmap, 150, bitmap.height() - 400, 200, 150);
}

Bytes straightRGB(const CGBitmap& bitmap) {
  Bytes result;
  for (std::size_t y = 0; y < bitmap.height(); ++y) {
    for (std::size_t x = 0; x < bitmap.width(); ++x) {
      for (std::size_t c = 3; c-- > 0;) result.push_back(bitmap.row(y)[4 * x + c]);
    }
  }
  return result;
}

#if QUORVEL_HAVE_LIBPNG
Bytes writtenByLibpng(const CGBitmap& bitmap) {
  const Bytes pixels = straightRGB(bitmap);
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(bitmap.width());
  image.height = static_cast<png_uint_32>(bitmap.height());
  image.format = PNG_FORMAT_RGB;
  png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
  Bytes result(size);
  png_image_write_to_memory(&image, result.data(), &size, 0, pixels.data(), 0, nullptr);
  result.resize(size);
  return result;
}

void addLibpngReading(const std::string& name, std::size_t pixels, const Bytes& file) {
  add(name, pixels, "libpng", [&file] {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    png_image_begin_read_from_memory(&image, file.data(), file.size());
    image.format = PNG_FORMAT_BGRA;
    const auto room = std::make_unique_for_overwrite<std::uint8_t[]>(PNG_IMAGE_SIZE(image));
    return png_image_finish_read(&image, nullptr, room.get(), 0, nullptr);
  });
}
#endif

void addReading(const Bytes& file, PixelSize size) {
  const std::size_t pixels = std::size_t{size.width} * size.height;
  ImageFacts facts;
  facts.format = ImageFormat::PNG;
  facts.width = size.width;
  facts.height = size.height;
  add("png/read", pixels, "ours", [&file, facts, size] { return readPixels(file, facts, size); });
  add("png/read to 1024", pixels, "ours",
      [&file, facts, size] { return readPixels(file, facts, thumbnailSize(size, 1024)); });
#if QUORVEL_HAVE_LIBPNG
  addLibpngReading("png/read", pixels, file);
#endif
#if QUORVEL_HAVE_OPENCV_CODECS
  add("png/read", pixels, "OpenCV", [&file] { return cv::imdecode(file, cv::IMREAD_UNCHANGED).data[0]; });
#endif
#if QUORVEL_HAVE_QT_GUI
  add("png/read", pixels, "Qt", [&file] {
    return QImage::fromData(file.data(), static_cast<int>(file.size()))
        .convertToFormat(QImage::Format_ARGB32_Premultiplied)
        .width();
  });
#endif
}

/// Measures a writer that answers with the size of its file.
template <class Write>
void addWriting(const std::string& name, std::size_t pixels, const char* who, Write write) {
  std::printf("%s: %s: %zu bytes\n", name.c_str(), who, static_cast<std::size_t>(write()));
  add(name, pixels, who, write);
}

void addWriters(const std::string& name, const CGBitmap& bitmap) {
  const std::size_t pixels = bitmap.width() * bitmap.height();
  addWriting(name, pixels, "ours", [&bitmap] { return encodePNG(bitmap)->size(); });
#if QUORVEL_HAVE_LIBPNG
  addWriting(name, pixels, "libpng", [&bitmap] { return writtenByLibpng(bitmap).size(); });
#endif
#if QUORVEL_HAVE_OPENCV_CODECS
  addWriting(name, pixels, "OpenCV", [&bitmap] {
    const cv::Mat matrix(static_cast<int>(bitmap.height()), static_cast<int>(bitmap.width()), CV_8UC4,
                         const_cast<std::uint8_t*>(bitmap.data()), bitmap.bytesPerRow());
    Bytes file;
    cv::imencode(".png", matrix, file);
    return file.size();
  });
#endif
#if QUORVEL_HAVE_QT_GUI
  addWriting(name, pixels, "Qt", [&bitmap] {
    const QImage image(bitmap.data(), static_cast<int>(bitmap.width()), static_cast<int>(bitmap.height()),
                       static_cast<qsizetype>(bitmap.bytesPerRow()), QImage::Format_ARGB32_Premultiplied);
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return static_cast<std::size_t>(buffer.size());
  });
#endif
}

}  // namespace
}  // namespace quorvel::bench

int main(int argc, char** argv) {
  using namespace quorvel;
#if QUORVEL_HAVE_OPENCV_CODECS
  cv::setNumThreads(1);
#endif
  const auto screen = CGBitmap::make(1170, 2532);
  bench::drawScreen(*screen);
  bench::addWriters("png/write screen", *screen);
  const auto photo = CGBitmap::make(4032, 3024);
  bench::drawPhoto(*photo, 0, 0, photo->width(), photo->height());
#if QUORVEL_HAVE_LIBPNG
  const bench::Bytes file = bench::writtenByLibpng(*photo);
#else
  const auto written = encodePNG(*photo);
  const bench::Bytes file(written->bytes().begin(), written->bytes().end());
#endif
  bench::addReading(file, {4032, 3024});
  const auto part = CGBitmap::make(1024, 768);
  bench::drawPhoto(*part, 0, 0, part->width(), part->height());
  bench::addWriters("png/write photograph", *part);
  return quorvel::bench::run(argc, argv);
}
