#include <cmath>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>

#include <jpeglib.h>

#include <quorvel/Platform/Foundation/FileReplacer.h>
#include <quorvel/Platform/ImageIO/CGImageDestination.h>
#include <quorvel/Platform/ImageIO/ImageFile.h>

namespace quorvel {
namespace {

constexpr std::size_t kFirstCapacity = 64 * 1024;

class JPEGEncoder {
 public:
  explicit JPEGEncoder(const CGBitmap& bitmap) : bitmap_(bitmap) {}
  JPEGEncoder(const JPEGEncoder&) = delete;
  JPEGEncoder& operator=(const JPEGEncoder&) = delete;
  ~JPEGEncoder() {
    jpeg_destroy_compress(&info_);
    std::free(memory_);
  }

  [[nodiscard]] std::optional<Data> encode(int percent) {
    if (!run(percent)) return std::nullopt;
    return Data(std::span<const std::uint8_t>(memory_, capacity_ - target_.free_in_buffer));
  }

 private:
  struct Handlers : jpeg_error_mgr {
    std::jmp_buf back;
  };

  /// The one place to which libjpeg's errors come back; nothing that they skip may own anything.
  bool run(int percent) {
    info_.err = jpeg_std_error(&handlers_);
    // NOLINTNEXTLINE(cert-err52-cpp): libjpeg is C, and its errors must not return
    handlers_.error_exit = [](j_common_ptr info) { std::longjmp(static_cast<Handlers*>(info->err)->back, 1); };
    handlers_.emit_message = [](j_common_ptr, int) {};
    handlers_.output_message = [](j_common_ptr) {};
    // NOLINTNEXTLINE(cert-err52-cpp): where they come back
    if (setjmp(handlers_.back) != 0) return false;
    start(percent);
    while (info_.next_scanline < info_.image_height) {
      JSAMPROW row = const_cast<JSAMPROW>(bitmap_.row(info_.next_scanline));
      static_cast<void>(jpeg_write_scanlines(&info_, &row, 1));
    }
    jpeg_finish_compress(&info_);
    return true;
  }

  void start(int percent) {
    jpeg_create_compress(&info_);
    setTarget();
    info_.image_width = static_cast<JDIMENSION>(bitmap_.width());
    info_.image_height = static_cast<JDIMENSION>(bitmap_.height());
    info_.input_components = 4;
    info_.in_color_space = JCS_EXT_BGRX;
    jpeg_set_defaults(&info_);  // 4:2:0
    jpeg_set_quality(&info_, percent, TRUE);
    info_.optimize_coding = bitmap_.width() * bitmap_.height() <= kOptimisedPixels ? TRUE : FALSE;
    jpeg_start_compress(&info_, TRUE);
  }

  void setTarget() {
    target_.init_destination = [](j_compress_ptr info) { of(info).grow(kFirstCapacity); };
    target_.empty_output_buffer = [](j_compress_ptr info) -> boolean {
      of(info).grow(2 * of(info).capacity_);
      return TRUE;
    };
    target_.term_destination = [](j_compress_ptr) {};
    info_.client_data = this;
    info_.dest = &target_;
  }

  /// libjpeg asks when all is written; the memory is ours at every moment, also when it fails meanwhile.
  void grow(std::size_t capacity) {
    void* const memory = std::realloc(memory_, capacity);
    // NOLINTNEXTLINE(cert-err52-cpp): called by libjpeg
    if (!memory) std::longjmp(handlers_.back, 1);
    memory_ = static_cast<std::uint8_t*>(memory);
    target_.next_output_byte = memory_ + capacity_;
    target_.free_in_buffer = capacity - capacity_;
    capacity_ = capacity;
  }

  static JPEGEncoder& of(j_compress_ptr info) { return *static_cast<JPEGEncoder*>(info->client_data); }

  const CGBitmap& bitmap_;
  jpeg_compress_struct info_{};
  Handlers handlers_{};
  jpeg_destination_mgr target_{};
  std::uint8_t* memory_ = nullptr;
  std::size_t capacity_ = 0;
};

}  // namespace

std::optional<Data> encodeJPEG(const CGBitmap& bitmap, double quality) {
  const double share = quality > 0 ? std::fmin(quality, 1) : 0;
  return JPEGEncoder(bitmap).encode(static_cast<int>(std::lround(share * 100)));
}

bool CGImageDestination::finalize() const {
  if (!image_.hasPixels()) return false;
  const auto file = encodeJPEG(image_.bitmap());
  constexpr unsigned kMode = 0600;
  return file &&
         !replaceFile(path_, file->bytes(), {files::Links::Followed, FileReplacement::Metadata::Kept, kMode, {}});
}

std::optional<CGImageDestination> CGImageDestination::withURL(const NSURL& url, StringView type, std::size_t count) {
  if (!isFileURL(url) || type != StringView(kUTTypeJPEG) || count != 1) return std::nullopt;
  auto path = files::systemPath(url.path());
  if (!path) return std::nullopt;
  return CGImageDestination(std::move(*path));
}

}  // namespace quorvel
