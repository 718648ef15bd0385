#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <new>

#include <jerror.h>
#include <jpeglib.h>

#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/ImageIO/AreaShrink.h>
#include <quorvel/Platform/ImageIO/ColorProfile.h>
#include <quorvel/Platform/ImageIO/JPEGReader.h>
#include <quorvel/Platform/ImageIO/JPEGScans.h>

namespace quorvel {
namespace {

constexpr std::size_t kPixel = 4;
constexpr std::uint32_t kRowsBetweenQuestions = 32;
/// Of the work on a picture of several scans, what its scans take before the first row comes.
constexpr double kScansPart = 0.75;
/// Pixels times scans: what empty scans of a large picture cost is bounded too. Cameras' pictures have about ten.
constexpr std::int64_t kScannedPixels = 2'000'000'000;
/// A whole one, one without what stands behind a scan, one without that scan.
constexpr int kTries = 3;
constexpr std::uint8_t kGray = 128;

/// libjpeg-turbo writes rows that begin with a vector past the cache, where a row that is read at once is slow to
/// reach.
constexpr std::size_t kVector = 32;
constexpr std::size_t kCachedStart = 8;

std::uint8_t* rowInCache(std::uint8_t* memory) {
  const std::size_t beyond = reinterpret_cast<std::uintptr_t>(memory) % kVector;
  return memory + (kVector - beyond) % kVector + kCachedStart;
}

class JPEGDecoder {
 public:
  JPEGDecoder(ImageBytes file, const ImageWork& work) : file_(file), work_(work) {}
  JPEGDecoder(const JPEGDecoder&) = delete;
  JPEGDecoder& operator=(const JPEGDecoder&) = delete;
  ~JPEGDecoder() { jpeg_destroy_decompress(&info_); }

  [[nodiscard]] std::shared_ptr<CGBitmap> decode(const ImageFacts& facts, PixelSize wanted, std::uint32_t eighths,
                                                 int lastScan);
  /// The scan in which, or behind which, reading failed; 0 when it did not.
  [[nodiscard]] int failedScan() const { return failedScan_; }

 private:
  struct Handlers : jpeg_error_mgr {
    std::jmp_buf back;
  };
  enum class Color { Plain, Profile, CMYK };

  /// The one place to which libjpeg's errors come back; nothing that they skip may own anything.
  bool attempt(void (JPEGDecoder::*step)());
  void readHeader();
  void prepareScale() { jpeg_calc_output_dimensions(&info_); }
  void start() { static_cast<void>(jpeg_start_decompress(&info_)); }
  void readRows();

  void setHandlers();
  void setSource();
  [[nodiscard]] bool isHeaderAccepted(const ImageFacts& facts) const;
  void chooseColors();
  [[nodiscard]] jpeg::Detail detailOf(const jpeg_component_info& component) const;
  [[nodiscard]] bool chooseScans(int lastScan);
  [[nodiscard]] bool makeRoom(PixelSize wanted);
  [[nodiscard]] std::uint8_t* roomForRow();
  void takeRow(std::uint8_t* row);
  void fillMissingRows();
  void convertResult();

  static JPEGDecoder& of(void* info) {
    return *static_cast<JPEGDecoder*>(static_cast<j_common_ptr>(info)->client_data);
  }
  // NOLINTNEXTLINE(cert-err52-cpp): libjpeg is C, and its errors must not return
  static void fail(j_common_ptr info) { std::longjmp(static_cast<Handlers*>(info->err)->back, 1); }
  static void noteWarning(j_common_ptr info, int level);
  static void watch(j_common_ptr info);
  static boolean fill(j_decompress_ptr info);
  static void skip(j_decompress_ptr info, long count);

  ImageBytes file_;
  const ImageWork& work_;
  jpeg_decompress_struct info_{};
  Handlers handlers_{};
  jpeg_source_mgr source_{};
  jpeg_progress_mgr progress_{};
  jpeg::ScanPlan plan_{};
  std::size_t nextRange_ = 0;

  std::optional<ColorProfile> profile_{};
  bool isCMYK_ = false;
  /// Rows are decoded to their place.
  bool isWhole_ = false;
  bool isInverted_ = false;
  bool lacksFirstRow_ = false;
  bool isStopped_ = false;
  int failedScan_ = 0;

  std::shared_ptr<CGBitmap> result_{};
  std::optional<AreaShrink> shrink_{};
  std::unique_ptr<std::uint8_t[]> rowMemory_{};
  std::uint8_t* row_ = nullptr;
  std::unique_ptr<std::uint8_t[]> inks_{};
};

bool JPEGDecoder::attempt(void (JPEGDecoder::*step)()) {
  // NOLINTNEXTLINE(cert-err52-cpp): where they come back
  if (setjmp(handlers_.back) != 0) return false;
  (this->*step)();
  return true;
}

void JPEGDecoder::setHandlers() {
  info_.err = jpeg_std_error(&handlers_);
  handlers_.error_exit = fail;
  handlers_.emit_message = noteWarning;
  handlers_.output_message = [](j_common_ptr) {};
  info_.client_data = this;
}

/// Data that end before the second row of blocks began gave no row.
void JPEGDecoder::noteWarning(j_common_ptr info, int level) {
  if (level >= 0) return;
  ++info->err->num_warnings;
  JPEGDecoder& self = of(info);
  // Behind a restart marker more data may come.
  const bool isRestart = self.info_.unread_marker >= JPEG_RST0 && self.info_.unread_marker <= JPEG_RST0 + 7;
  if (info->err->msg_code != JWRN_HIT_MARKER || isRestart) return;
  if (self.info_.input_scan_number <= 1 && self.info_.input_iMCU_row == 0) self.lacksFirstRow_ = true;
}

void JPEGDecoder::watch(j_common_ptr info) {
  JPEGDecoder& self = of(info);
  if (self.info_.output_scanline > 0 || !info->is_decompressor) return;
  const double scan = self.info_.input_scan_number - 1 + 1.0 * self.info_.input_iMCU_row / self.info_.total_iMCU_rows;
  if (self.work_.goesOn(std::clamp(scan / self.plan_.scanCount, 1e-6, 1.0) * kScansPart)) return;
  self.isStopped_ = true;
  fail(info);
}

void JPEGDecoder::setSource() {
  source_.next_input_byte = file_.data();
  source_.bytes_in_buffer = file_.size();
  source_.init_source = [](j_decompress_ptr) {};
  source_.fill_input_buffer = fill;
  source_.skip_input_data = skip;
  source_.resync_to_restart = jpeg_resync_to_restart;
  source_.term_source = [](j_decompress_ptr) {};
  info_.src = &source_;
}

/// The next range that is kept, and then an end.
boolean JPEGDecoder::fill(j_decompress_ptr info) {
  static constexpr JOCTET kEnd[2] = {0xFF, JPEG_EOI};
  JPEGDecoder& self = of(info);
  if (self.nextRange_ < self.plan_.keptCount) {
    const jpeg::Range range = self.plan_.kept[self.nextRange_++];
    info->src->next_input_byte = self.file_.data() + range.start;
    info->src->bytes_in_buffer = range.end - range.start;
  } else {
    info->src->next_input_byte = kEnd;
    info->src->bytes_in_buffer = sizeof kEnd;
  }
  return TRUE;
}

/// Markers lie within one range; one that is longer than the file leaves nothing.
void JPEGDecoder::skip(j_decompress_ptr info, long count) {
  const std::size_t skipped = std::min(static_cast<std::size_t>(std::max(count, 0L)), info->src->bytes_in_buffer);
  info->src->next_input_byte += skipped;
  info->src->bytes_in_buffer -= skipped;
}

void JPEGDecoder::readHeader() {
  jpeg_create_decompress(&info_);
  info_.mem->max_memory_to_use = static_cast<long>(limits::kImageDecodedBytes);
  setSource();
  static_cast<void>(jpeg_read_header(&info_, TRUE));
}

bool JPEGDecoder::isHeaderAccepted(const ImageFacts& facts) const {
  if (info_.image_width != facts.width || info_.image_height != facts.height) return false;
  if (info_.image_width > limits::kImageSide || info_.image_height > limits::kImageSide) return false;
  if (std::int64_t{info_.image_width} * info_.image_height > limits::kImagePixels) return false;
  return info_.num_components == 1 || info_.num_components == 3 || info_.num_components == 4;
}

void JPEGDecoder::chooseColors() {
  isCMYK_ = info_.num_components == 4;
  isInverted_ = isCMYK_ && info_.saw_Adobe_marker;
  info_.out_color_space = isCMYK_ ? JCS_CMYK : JCS_EXT_BGRA;
  const auto model = !isCMYK_      ? (info_.num_components == 1 ? ColorProfile::Model::Gray : ColorProfile::Model::RGB)
                     : isInverted_ ? ColorProfile::Model::InvertedCMYK
                                   : ColorProfile::Model::CMYK;
  profile_ = ColorProfile::make(jpeg::profileOf(file_, ColorProfile::kLongest), model);
}

/// Of blocks that become one pixel only the mean shows. Beside them chroma is decoded to two by two where it is stored
/// at half the sides; the last bits of its differences are below what a pixel of the thumbnail resolves.
jpeg::Detail JPEGDecoder::detailOf(const jpeg_component_info& component) const {
  if (component.DCT_scaled_size == 1) return jpeg::Detail::Means;
  const bool isBesideMeans = component.DCT_scaled_size == 2 && info_.min_DCT_scaled_size == 1;
  return isBesideMeans ? jpeg::Detail::Coarse : jpeg::Detail::Full;
}

bool JPEGDecoder::chooseScans(int lastScan) {
  if (!jpeg_has_multiple_scans(&info_)) return true;
  jpeg::ScanWishes wishes;
  wishes.lastScan = lastScan;
  for (int i = 0; i < info_.num_components; ++i) {
    const jpeg_component_info& component = info_.comp_info[i];
    wishes.components[static_cast<std::size_t>(i)] = {static_cast<std::uint8_t>(component.component_id),
                                                      detailOf(component)};
  }
  const std::size_t start = file_.size() - source_.bytes_in_buffer;
  const auto plan = jpeg::planScans(file_, start, wishes);
  if (!plan || std::int64_t{info_.image_width} * info_.image_height * plan->scanCount > kScannedPixels) return false;
  plan_ = *plan;
  source_.bytes_in_buffer = 0;
  if (plan_.isShortened) info_.do_block_smoothing = FALSE;
  progress_.progress_monitor = watch;
  info_.progress = &progress_;
  return true;
}

bool JPEGDecoder::makeRoom(PixelSize wanted) {
  const std::uint64_t resultBytes = std::uint64_t{wanted.width} * wanted.height * kPixel;
  if (resultBytes >= limits::kImageDecodedBytes) return false;
  info_.mem->max_memory_to_use = static_cast<long>(limits::kImageDecodedBytes - resultBytes);
  // All rows come, or are filled.
  result_ = CGBitmap::makeUnset(wanted.width, wanted.height);
  if (!result_) return false;
  shrink_ = AreaShrink::make({info_.image_width, info_.image_height}, info_.scale_num, *result_);
  isWhole_ = !isCMYK_ && wanted == PixelSize{info_.output_width, info_.output_height};
  const std::size_t rowBytes = std::size_t{info_.output_width} * kPixel;
  rowMemory_.reset(new (std::nothrow) std::uint8_t[rowBytes + kCachedStart + kVector]);
  row_ = rowInCache(rowMemory_.get());
  if (isCMYK_) inks_.reset(new (std::nothrow) std::uint8_t[rowBytes]);
  return shrink_ && rowMemory_ && (!isCMYK_ || inks_);
}

std::uint8_t* JPEGDecoder::roomForRow() {
  if (isCMYK_) return inks_.get();
  return isWhole_ ? result_->row(info_.output_scanline) : row_;
}

void JPEGDecoder::takeRow(std::uint8_t* row) {
  if (isCMYK_ && profile_) {
    profile_->convertCMYKRow(row, row_, info_.output_width);
  } else if (isCMYK_) {
    convertPlainCMYKRow(row, isInverted_, row_, info_.output_width);
  }
  if (!isWhole_) shrink_->addRow(row_);
}

void JPEGDecoder::readRows() {
  const double start = info_.progress ? kScansPart : 0;
  while (info_.output_scanline < info_.output_height) {
    JSAMPROW row = roomForRow();
    static_cast<void>(jpeg_read_scanlines(&info_, &row, 1));
    if (lacksFirstRow_) return;
    takeRow(row);
    const bool asks =
        info_.output_scanline % kRowsBetweenQuestions == 0 || info_.output_scanline == info_.output_height;
    const double done = static_cast<double>(info_.output_scanline) / info_.output_height;
    if (asks && !work_.goesOn(start + (1 - start) * done)) {
      isStopped_ = true;
      return;
    }
  }
}

void JPEGDecoder::fillMissingRows() {
  for (std::size_t i = 0; i < std::size_t{info_.output_width} * kPixel; ++i) row_[i] = i % kPixel == 3 ? 255 : kGray;
  if (isWhole_) {
    for (std::size_t y = info_.output_scanline; y < result_->height(); ++y) {
      std::memcpy(result_->row(y), row_, result_->width() * kPixel);
    }
  }
  while (!isWhole_ && shrink_->rowsDone() < result_->height()) shrink_->addRow(row_);
}

/// Grey and RGB are converted when they are few; means of levels are taken before, as of all other pictures.
void JPEGDecoder::convertResult() {
  if (!profile_ || isCMYK_) return;
  for (std::size_t y = 0; y < result_->height(); ++y) profile_->convertRow(result_->row(y), result_->width());
}

std::shared_ptr<CGBitmap> JPEGDecoder::decode(const ImageFacts& facts, PixelSize wanted, std::uint32_t eighths,
                                              int lastScan) {
  setHandlers();
  if (!attempt(&JPEGDecoder::readHeader) || !isHeaderAccepted(facts)) return nullptr;
  info_.scale_num = eighths;
  info_.scale_denom = 8;
  chooseColors();
  if (!attempt(&JPEGDecoder::prepareScale) || !chooseScans(lastScan) || !makeRoom(wanted)) return nullptr;
  if (!attempt(&JPEGDecoder::start)) {
    if (!isStopped_ && info_.progress) failedScan_ = info_.input_scan_number;
    return nullptr;
  }
  const bool hasEnded = attempt(&JPEGDecoder::readRows);
  if (isStopped_ || lacksFirstRow_ || info_.output_scanline == 0) return nullptr;
  if (!hasEnded) fillMissingRows();
  convertResult();
  return std::move(result_);
}

}  // namespace

namespace jpeg {

/// Means of whole blocks stand for what a pixel covers only in part: with half as many blocks again as pixels,
/// photographs keep 38 dB (32 without). Half the sides are fine enough alone. Small pictures are sharp to the pixel,
/// and quick.
std::uint32_t decodedEighths(PixelSize picture, PixelSize wanted) {
  if (std::uint64_t{picture.width} * picture.height <= kSmallPicture) return 8;
  for (const std::uint32_t eighths : {1U, 2U, 4U}) {  // what lies between is slower than the next of these
    const std::uint64_t width = std::uint64_t{picture.width} * eighths;
    const std::uint64_t height = std::uint64_t{picture.height} * eighths;
    const auto covers = [=](std::uint64_t part) {
      return width >= wanted.width * part && height >= wanted.height * part;
    };
    const bool isExact = width == std::uint64_t{wanted.width} * 8 && height == std::uint64_t{wanted.height} * 8;
    if (isExact || covers(eighths < 4 ? 12 : 8)) return eighths;
  }
  return 8;
}

}  // namespace jpeg

/// Where a scan, or what stands behind it, cannot be read, those before it make a picture.
std::shared_ptr<CGBitmap> readJPEG(ImageBytes file, const ImageFacts& facts, PixelSize wanted, std::uint32_t eighths,
                                   const ImageWork& work) {
  if (eighths == 0 || eighths > 8) return nullptr;
  int lastScan = limits::kImageScans;
  for (int tries = 0; tries < kTries && lastScan > 0; ++tries) {
    JPEGDecoder decoder(file, work);
    if (auto result = decoder.decode(facts, wanted, eighths, lastScan)) return result;
    lastScan = std::min(decoder.failedScan(), lastScan - 1);
  }
  return nullptr;
}

}  // namespace quorvel
