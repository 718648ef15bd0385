// Thumbnails of a camera's picture of 12 megapixels, baseline and progressive, beside libjpeg-turbo's cheapest scaled
// decode, Qt and OpenCV. The size of a case is the thumbnail's longer side.
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include <bench/Cases.h>
#include <tests/support/JPEGFiles.h>

#include <quorvel/Platform/ImageIO/CGImageDestination.h>
#include <quorvel/Platform/ImageIO/JPEGReader.h>

#if QUORVEL_HAVE_CODECS
#include <cstdio>

#include <jpeglib.h>
#endif
#if QUORVEL_HAVE_QT_GUI
#include <QBuffer>
#include <QImageReader>
#endif
#if QUORVEL_HAVE_OPENCV_CODECS
#include <opencv2/imgcodecs.hpp>
#if QUORVEL_HAVE_OPENCV
#include <opencv2/imgproc.hpp>
#endif
#endif

namespace quorvel::bench {
namespace {

constexpr std::uint32_t kWidth = 4032;
constexpr std::uint32_t kHeight = 3024;

using File = std::shared_ptr<const std::vector<std::uint8_t>>;

#if QUORVEL_HAVE_CODECS
struct Free {
  void operator()(std::uint8_t* memory) const { std::free(memory); }
};

/// The smallest scale of 1/8, 2/8, ... whose decode covers the size, as fast as the library offers it.
std::uint8_t scaledDecode(const File& file, std::uint32_t side) {
  jpeg_decompress_struct info{};
  jpeg_error_mgr errors{};
  info.err = jpeg_std_error(&errors);
  jpeg_create_decompress(&info);
  jpeg_mem_src(&info, file->data(), file->size());
  jpeg_read_header(&info, TRUE);
  info.out_color_space = JCS_EXT_BGRA;
  info.scale_denom = 8;
  // 3/8 covers what 4/8 does in some cases, but takes longer.
  for (info.scale_num = 1; info.image_width * info.scale_num < 8 * side;) info.scale_num *= 2;
  jpeg_start_decompress(&info);
  const std::size_t rowBytes = std::size_t{info.output_width} * 4;
  const std::unique_ptr<std::uint8_t, Free> pixels(
      static_cast<std::uint8_t*>(std::malloc(rowBytes * info.output_height)));
  while (info.output_scanline < info.output_height) {
    JSAMPROW row = pixels.get() + info.output_scanline * rowBytes;
    jpeg_read_scanlines(&info, &row, 1);
  }
  jpeg_finish_decompress(&info);
  jpeg_destroy_decompress(&info);
  return pixels.get()[0];
}
#endif

void addThumbnails(const std::string& name, const File& file, std::uint32_t side) {
  ImageFacts facts;
  facts.format = ImageFormat::JPEG;
  facts.width = kWidth;
  facts.height = kHeight;
  const PixelSize wanted = thumbnailSize({kWidth, kHeight}, side);
  add(name, side, "ours", [file, facts, wanted] { return readPixels(*file, facts, wanted); });
#if QUORVEL_HAVE_CODECS
  add(name, side, "floor:libjpeg-turbo scaled", [file, side] { return scaledDecode(file, side); });
#endif
#if QUORVEL_HAVE_QT_GUI
  add(name, side, "Qt", [file, wanted] {
    QByteArray bytes =
        QByteArray::fromRawData(reinterpret_cast<const char*>(file->data()), static_cast<qsizetype>(file->size()));
    QBuffer buffer(&bytes);
    QImageReader reader(&buffer, "jpeg");
    reader.setScaledSize(QSize(static_cast<int>(wanted.width), static_cast<int>(wanted.height)));
    return reader.read();
  });
#endif
#if QUORVEL_HAVE_OPENCV_CODECS && QUORVEL_HAVE_OPENCV
  add(name, side, "OpenCV", [file, wanted, side] {
    const int mode = side <= kWidth / 8   ? cv::IMREAD_REDUCED_COLOR_8
                     : side <= kWidth / 4 ? cv::IMREAD_REDUCED_COLOR_4
                                          : cv::IMREAD_REDUCED_COLOR_2;
    const cv::Mat decoded =
        cv::imdecode(cv::Mat(1, static_cast<int>(file->size()), CV_8U, const_cast<std::uint8_t*>(file->data())), mode);
    cv::Mat result;
    cv::resize(decoded, result, cv::Size(static_cast<int>(wanted.width), static_cast<int>(wanted.height)), 0, 0,
               cv::INTER_AREA);
    return result.data[0];
  });
#endif
}

void addWriting() {
  const test::Samples samples = test::photograph(1024, 768);
  const auto bitmap = CGBitmap::make(samples.width, samples.height);
  for (std::size_t y = 0; y < samples.height; ++y) {
    for (std::size_t x = 0; x < samples.width; ++x) {
      for (std::size_t c = 0; c < 3; ++c) bitmap->row(y)[4 * x + c] = samples.row(y)[3 * x + 2 - c];
      bitmap->row(y)[4 * x + 3] = 255;
    }
  }
  add("jpeg/write", samples.width, "ours", [bitmap] { return encodeJPEG(*bitmap); });
}

}  // namespace
}  // namespace quorvel::bench

int main(int argc, char** argv) {
  using namespace quorvel;
  const test::Samples picture = test::photograph(bench::kWidth, bench::kHeight);
  for (const bool isProgressive : {false, true}) {
    test::JPEGKind kind;
    kind.isProgressive = isProgressive;
    const auto file = std::make_shared<const std::vector<std::uint8_t>>(makeJPEG(picture, kind));
    for (const std::uint32_t side : {100U, 320U, 1024U}) {
      bench::addThumbnails(isProgressive ? "jpeg/progressive thumbnail" : "jpeg/thumbnail", file, side);
    }
  }
  bench::addWriting();
  return quorvel::bench::run(argc, argv);
}
