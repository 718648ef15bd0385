// The size of the image in a file: the file opened, read as far as that takes, and closed.
#include <csetjmp>
#include <cstdio>
#include <filesystem>
#include <fstream>

#include <bench/Cases.h>
#include <jpeglib.h>
#include <tests/support/ImageFiles.h>

#if QUORVEL_HAVE_LIBPNG
#include <png.h>
#endif
#if QUORVEL_HAVE_QT_GUI
#include <QImageReader>
#endif

#include <quorvel/Extensions/UIKit/NSURL+Image.h>
#include <quorvel/Platform/ImageIO/TurnedBitmap.h>

using namespace quorvel;

namespace {

using test::FileBytes;

struct Failure : jpeg_error_mgr {
  std::jmp_buf back;
};

/// The raw library's own way to the size: open, read in pieces of 4 KiB, parse the headers.
unsigned jpegLibraryWidth(const char* path) {
  std::FILE* const file = std::fopen(path, "rb");
  if (!file) return 0;
  jpeg_decompress_struct info{};
  Failure failure{};
  info.err = jpeg_std_error(&failure);
  failure.error_exit = [](j_common_ptr common) { std::longjmp(static_cast<Failure*>(common->err)->back, 1); };
  unsigned width = 0;
  if (setjmp(failure.back) == 0) {
    jpeg_create_decompress(&info);
    jpeg_stdio_src(&info, file);
    jpeg_read_header(&info, TRUE);
    width = info.image_width;
  }
  jpeg_destroy_decompress(&info);
  std::fclose(file);
  return width;
}

#if QUORVEL_HAVE_LIBPNG
unsigned pngLibraryWidth(const char* path) {
  std::FILE* const file = std::fopen(path, "rb");
  if (!file) return 0;
  png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  unsigned width = 0;
  if (setjmp(png_jmpbuf(png)) == 0) {
    png_init_io(png, file);
    png_read_info(png, info);
    width = png_get_image_width(png, info);
  }
  png_destroy_read_struct(&png, &info, nullptr);
  std::fclose(file);
  return width;
}
#endif

/// A camera's headers in front of 4 MB of pixels.
FileBytes cameraFile() {
  const FileBytes segments =
      test::joined({test::jpegExif(test::joined({test::exifWithOrientation(6), FileBytes(9'000)})),
                    test::jpegSegment(0xDB, test::joined({{0}, FileBytes(64, 1)}))});
  return test::joined({test::jpegFile(4032, 3024, {.segments = segments}), FileBytes(4 << 20, 0x55)});
}

std::string written(const char* name, const FileBytes& bytes) {
  const std::string path = (std::filesystem::temp_directory_path() / name).string();
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  return path;
}

void addSizes(const std::string& name, const FileBytes& bytes) {
  const std::string path = written(("quorvel-bench-" + name).c_str(), bytes);
  const NSURL url = *NSURL::fileURLWithPath(String::fromUTF8(path));
  bench::add("facts/size of " + name, bytes.size(), "ours", [url] { return imageFileDimensionSize(url); });
  if (name == "jpeg") {
    bench::add("facts/size of jpeg", bytes.size(), "floor:libjpeg", [path] { return jpegLibraryWidth(path.c_str()); });
  }
#if QUORVEL_HAVE_LIBPNG
  if (name == "png") {
    bench::add("facts/size of png", bytes.size(), "floor:libpng", [path] { return pngLibraryWidth(path.c_str()); });
  }
#endif
#if QUORVEL_HAVE_QT_GUI
  bench::add("facts/size of " + name, bytes.size(), "Qt",
             [path] { return QImageReader(QString::fromStdString(path)).size(); });
#endif
}

void addTurns() {
  auto stored = CGBitmap::make(1170, 2532);
  for (std::size_t i = 0; i < stored->bytesPerRow() * stored->height(); ++i) {
    stored->data()[i] = static_cast<std::uint8_t>(i * 7);
  }
  const std::size_t pixels = stored->width() * stored->height();
  for (const auto& [name, turn] :
       {std::pair{"half", UIImageOrientation::Down}, {"quarter", UIImageOrientation::Right}}) {
    bench::add(std::string("turn/") + name, pixels, "ours", [stored, turn] { return turnedBitmap(stored, turn); });
  }
  bench::add("turn/half", pixels, "floor:copy", [stored] { return stored->copy(); });
  bench::add("turn/quarter", pixels, "floor:copy", [stored] { return stored->copy(); });
}

}  // namespace

int main(int argc, char** argv) {
  addSizes("jpeg", cameraFile());
  addSizes("png", test::joined({test::pngFile(4032, 3024), FileBytes(4 << 20, 0x55)}));
  FileBytes frames;
  for (int i = 0; i < 50; ++i) frames = test::joined({frames, test::gifFrame(320, 240)});
  addSizes("gif", test::gifFile(320, 240, frames));
  addTurns();
  return quorvel::bench::run(argc, argv);
}
