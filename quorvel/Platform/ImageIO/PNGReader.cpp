#include <algorithm>
#include <cstring>

#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/ImageIO/Inflater.h>
#include <quorvel/Platform/ImageIO/PNGFilters.h>
#include <quorvel/Platform/ImageIO/PNGPixels.h>
#include <quorvel/Platform/ImageIO/PNGReader.h>
#include <quorvel/Platform/ImageIO/PixelRows.h>

namespace quorvel {
namespace {

constexpr std::size_t kPixel = 4;
constexpr std::uint32_t kBand = 64;

/// One of the pictures that an interlaced file consists of; the last is all there is to another file.
struct Pass {
  std::uint32_t x, y;         ///< its first pixel
  std::uint32_t right, down;  ///< from a pixel to the next
  std::uint32_t wide, high;   ///< what a pixel stands for until the later passes have come

  [[nodiscard]] std::uint32_t columns(std::uint32_t width) const { return width > x ? (width - x - 1) / right + 1 : 0; }
  [[nodiscard]] std::uint32_t rows(std::uint32_t height) const { return height > y ? (height - y - 1) / down + 1 : 0; }
};
constexpr Pass kPasses[] = {{0, 0, 8, 8, 8, 8}, {4, 0, 8, 8, 4, 8}, {0, 4, 4, 8, 4, 4}, {2, 0, 4, 4, 2, 4},
                            {0, 2, 2, 4, 2, 2}, {1, 0, 2, 2, 1, 2}, {0, 1, 1, 2, 1, 1}};
constexpr Pass kOnly = {0, 0, 1, 1, 1, 1};

std::span<const Pass> passesOf(const PNGFile& png) {
  return png.isInterlaced ? std::span(kPasses) : std::span(&kOnly, 1);
}

std::uint64_t inflatedSize(const PNGFile& png) {
  std::uint64_t size = 0;
  for (const Pass& pass : passesOf(png)) {
    const std::uint32_t columns = pass.columns(png.width);
    if (columns != 0) size += (1 + png.rowBytes(columns)) * std::uint64_t{pass.rows(png.height)};
  }
  return size;
}

/// All rows, where they and `kept` other bytes stay within the limit and nothing is damaged.
RawBytes inflatedBeside(const PNGFile& png, std::uint64_t kept) {
  const std::uint64_t size = inflatedSize(png);
  if (size + kept > limits::kImageDecodedBytes) return {};
  return inflateWhole(png.data, static_cast<std::size_t>(size));
}

/// The rows of the file without their filters.
class Rows {
 public:
  /// Inflates everything at once where that is possible beside `kept` other bytes.
  Rows(const PNGFile& png, std::uint64_t kept)
      : step_(std::max<std::size_t>(png.bits() / 8, 1)), size_(1 + png.rowBytes(png.width)) {
    whole_ = inflatedBeside(png, kept);
    if (!whole_.get()) inflater_.emplace(png.data);
    for (RawBytes& row : rows_) row = RawBytes(size_);
    filtered_ = RawBytes(inflater_ ? size_ : 0);
    above_ = RawBytes(size_);
  }

  [[nodiscard]] bool hasMemory() const { return rows_[0].get() && rows_[1].get() && filtered_.get() && above_.get(); }

  /// Before the first row of each pass.
  void start() {
    std::memset(above_.get(), 0, size_);
    last_ = above_.get();
  }

  /// The next row, of so many bytes without its filter; nullptr where the file is damaged or ends.
  const std::uint8_t* next(std::size_t size) {
    const std::uint8_t* const from = take(1 + size);
    if (!from || *from > 4) return nullptr;
    std::uint8_t* const to = rows_[turn_ ^= 1].get();
    undoPNGFilter(*from, from + 1, last_, to, size, step_);
    last_ = to;
    return to;
  }

 private:
  const std::uint8_t* take(std::size_t size) {
    if (inflater_) return inflater_->read(filtered_.get(), size) == size ? filtered_.get() : nullptr;
    const std::uint8_t* const from = whole_.get() + offset_;
    offset_ += size;
    return from;
  }

  std::size_t step_;
  std::size_t size_;
  RawBytes whole_;
  std::size_t offset_ = 0;
  std::optional<Inflater> inflater_;
  RawBytes filtered_;
  RawBytes above_;
  RawBytes rows_[2];
  unsigned turn_ = 0;
  const std::uint8_t* last_ = nullptr;
};

/// Asks whether to go on, once for each band of rows.
class Bands {
 public:
  Bands(const ImageWork& work, std::uint64_t rows) : work_(work), rows_(static_cast<double>(rows)) {}
  [[nodiscard]] bool goOn() {
    ++done_;
    return done_ % kBand != 0 || work_.goesOn(std::min(1.0, static_cast<double>(done_) / rows_));
  }

 private:
  const ImageWork& work_;
  double rows_;
  std::uint32_t done_ = 0;
};

std::shared_ptr<CGBitmap> readStraight(const PNGFile& png, PixelSize wanted, const ImageWork& work) {
  auto result = PixelRows::make({png.width, png.height}, wanted);
  if (!result) return nullptr;
  Rows rows(png, std::uint64_t{wanted.width} * wanted.height * kPixel);
  if (!rows.hasMemory()) return nullptr;
  const PNGPixels pixels(png);
  Bands bands(work, png.height);
  rows.start();
  for (std::uint32_t y = 0; y < png.height; ++y) {
    const std::uint8_t* const samples = rows.next(png.rowBytes(png.width));
    if (!samples) break;
    pixels.convert(samples, png.width, result->room());
    result->add();
    if (!bands.goOn()) return nullptr;
  }
  return result->take();
}

/// Pixels of one row of a pass to their places, and over what the later passes would bring.
void scatter(const std::uint8_t* from, const Pass& pass, std::uint32_t row, CGBitmap& to) {
  const auto width = static_cast<std::uint32_t>(to.width());
  const std::uint32_t top = pass.y + row * pass.down;
  const std::uint32_t bottom = std::min(top + pass.high, static_cast<std::uint32_t>(to.height()));
  for (std::uint32_t y = top; y < bottom; ++y) {
    const std::uint8_t* pixel = from;
    for (std::uint32_t x = pass.x; x < width; x += pass.right, pixel += kPixel) {
      const std::uint32_t end = std::min(x + pass.wide, width);
      for (std::uint32_t each = x; each < end; ++each) std::memcpy(to.row(y) + each * kPixel, pixel, kPixel);
    }
  }
}

/// False when not a single row could be read, and when the work was stopped.
bool readPasses(const PNGFile& png, Rows& rows, CGBitmap& whole, const ImageWork& work) {
  const PNGPixels pixels(png);
  const RawBytes line(png.width * kPixel);
  if (!line.get()) return false;
  Bands bands(work, std::uint64_t{png.height} * 2);
  bool isAny = false;
  for (const Pass& pass : kPasses) {
    const std::uint32_t columns = pass.columns(png.width);
    rows.start();
    for (std::uint32_t row = 0; columns != 0 && row < pass.rows(png.height); ++row) {
      const std::uint8_t* const samples = rows.next(png.rowBytes(columns));
      if (!samples) return isAny;
      pixels.convert(samples, columns, line.get());
      scatter(line.get(), pass, row, whole);
      isAny = true;
      if (!bands.goOn()) return false;
    }
  }
  return true;
}

/// The passes of an interlaced file that is not damaged, without their filters, so that a row of the picture can be put
/// together out of all of them.
class WholePasses {
 public:
  WholePasses(const PNGFile& png, std::uint64_t kept)
      : png_(png), whole_(inflatedBeside(png, kept)), line_(png.width * kPixel) {}

  [[nodiscard]] bool hasRows() const { return whole_.get() && line_.get(); }

  /// In place. False where a row has no filter that there is, and when the work was stopped.
  bool undoFilters(Bands& bands) {
    const RawBytes zeros(1 + png_.rowBytes(png_.width) + kInflateSlack);
    if (!zeros.get()) return false;
    std::memset(zeros.get(), 0, zeros.size);
    std::uint8_t* at = whole_.get();
    for (std::size_t i = 0; i < std::size(kPasses); ++i) {
      const std::uint32_t columns = kPasses[i].columns(png_.width);
      const std::size_t size = png_.rowBytes(columns);
      starts_[i] = at;
      const std::uint8_t* above = zeros.get();
      for (std::uint32_t row = 0; columns != 0 && row < kPasses[i].rows(png_.height); ++row, at += 1 + size) {
        if (*at > 4 || !bands.goOn()) return false;
        undoPNGFilter(*at, at + 1, above, at, size, std::max<std::size_t>(png_.bits() / 8, 1));
        above = at;
      }
    }
    return true;
  }

  void writeRow(std::uint32_t y, const PNGPixels& pixels, std::uint8_t* to) const {
    for (std::size_t i = 0; i < std::size(kPasses); ++i) {
      const Pass& pass = kPasses[i];
      const std::uint32_t columns = pass.columns(png_.width);
      if (y % pass.down != pass.y || columns == 0) continue;
      const std::uint8_t* const samples = starts_[i] + (1 + png_.rowBytes(columns)) * std::size_t{y / pass.down};
      pixels.convert(samples, columns, pass.right == 1 ? to : line_.get());
      if (pass.right != 1) spread(pass, columns, to);
    }
  }

 private:
  void spread(const Pass& pass, std::uint32_t columns, std::uint8_t* to) const {
    to += pass.x * kPixel;
    for (std::uint32_t i = 0; i < columns; ++i) {
      std::memcpy(to + std::size_t{i} * pass.right * kPixel, line_.get() + i * kPixel, kPixel);
    }
  }

  const PNGFile& png_;
  RawBytes whole_;
  RawBytes line_;
  const std::uint8_t* starts_[std::size(kPasses)] = {};
};

/// nullopt for a damaged file and for one that is too large for this way.
std::optional<std::shared_ptr<CGBitmap>> readWholePasses(const PNGFile& png, PixelSize wanted, const ImageWork& work) {
  WholePasses passes(png, std::uint64_t{wanted.width} * wanted.height * kPixel);
  if (!passes.hasRows()) return std::nullopt;
  Bands bands(work, std::uint64_t{png.height} * 3);
  if (!passes.undoFilters(bands)) {
    if (work.stop.stop_requested()) return nullptr;
    return std::nullopt;
  }
  auto result = PixelRows::make({png.width, png.height}, wanted);
  if (!result) return nullptr;
  const PNGPixels pixels(png);
  for (std::uint32_t y = 0; y < png.height; ++y) {
    passes.writeRow(y, pixels, result->room());
    result->add();
    if (!bands.goOn()) return nullptr;
  }
  return result->take();
}

std::shared_ptr<CGBitmap> readInterlaced(const PNGFile& png, PixelSize wanted, const ImageWork& work) {
  const PixelSize size = {png.width, png.height};
  const std::uint64_t bytes = std::uint64_t{png.width} * png.height * kPixel;
  if (bytes > limits::kImageDecodedBytes) return nullptr;
  if (auto result = readWholePasses(png, wanted, work)) return *result;
  auto whole = CGBitmap::make(png.width, png.height);
  if (!whole) return nullptr;
  {
    Rows rows(png, limits::kImageDecodedBytes);
    if (!rows.hasMemory() || !readPasses(png, rows, *whole, work)) return nullptr;
  }
  if (wanted == size) return whole;
  auto result = PixelRows::make(size, wanted);
  if (!result) return nullptr;
  for (std::uint32_t y = 0; y < png.height; ++y) result->add(whole->row(y));
  return result->take();
}

}  // namespace

std::shared_ptr<CGBitmap> readPNG(ImageBytes file, const ImageFacts& facts, PixelSize wanted, const ImageWork& work) {
  const auto png = parsePNG(file);
  if (!png || png->width != facts.width || png->height != facts.height) return nullptr;
  return png->isInterlaced ? readInterlaced(*png, wanted, work) : readStraight(*png, wanted, work);
}

}  // namespace quorvel
