#include <algorithm>
#include <bit>
#include <cstring>

#include <libdeflate.h>

#include <quorvel/Platform/ImageIO/Inflater.h>
#include <quorvel/Platform/ImageIO/PNGFilters.h>
#include <quorvel/Platform/ImageIO/PNGSurvey.h>
#include <quorvel/Platform/ImageIO/PNGWriter.h>

namespace quorvel {
namespace {

/// What is flat packs in half the time of the usual level, into files that are a twelfth longer; slopes need matches
/// that are looked for; in noise hardly any is found, in three times the time for a fiftieth of the file.
constexpr int kFlatLevel = 1;
constexpr int kNoisyLevel = 3;
constexpr int kLevel = 6;
/// Rows that share a filter.
constexpr std::size_t kBand = 32;
constexpr std::size_t kSampleStep = 8;

struct FreeCompressor {
  void operator()(libdeflate_compressor* compressor) const { libdeflate_free_compressor(compressor); }
};

std::uint32_t pixelAt(const std::uint8_t* row, std::size_t x) {
  row += 4 * x;
  return row[0] | std::uint32_t{row[1]} << 8 | std::uint32_t{row[2]} << 16 | std::uint32_t{row[3]} << 24;
}

void writeIndexes(const PNGSurvey& survey, const std::uint8_t* row, std::size_t count, std::uint8_t* to) {
  const std::size_t perByte = 8U / survey.depth;
  std::uint32_t last = pixelAt(row, 0);
  unsigned index = survey.colors.indexOf(last);
  for (std::size_t x = 0; x < count; ++x) {
    const std::uint32_t pixel = pixelAt(row, x);
    if (pixel != last) index = survey.colors.indexOf(last = pixel);
    std::uint8_t& byte = to[x / perByte];
    if (x % perByte == 0) byte = 0;
    byte = static_cast<std::uint8_t>(byte | index << (8 - survey.depth * (x % perByte + 1)));
  }
}

/// Pixels of three bytes stored as four, of which the last is written over by the next pixel, and after the last one by
/// the next row.
void writeColors(const std::uint8_t* row, std::size_t count, std::uint8_t* to) {
  for (std::size_t x = 0; x < count; ++x) {
    const std::uint32_t pixel = pixelAt(row, x);
    const std::uint32_t swapped = (pixel >> 16 & 0xFF) | (pixel & 0xFF00) | (pixel & 0xFF) << 16;
    if constexpr (std::endian::native == std::endian::little) {
      std::memcpy(to + 3 * x, &swapped, sizeof swapped);
    } else {
      for (std::size_t c = 0; c < 3; ++c) to[3 * x + c] = static_cast<std::uint8_t>(swapped >> (8 * c));
    }
  }
}

/// A row of the bitmap as the samples of the file.
void writeSamples(const PNGSurvey& survey, const std::uint8_t* row, std::size_t count, std::uint8_t* to) {
  switch (survey.color) {
    case PNGFile::Color::Palette:
      return writeIndexes(survey, row, count, to);
    case PNGFile::Color::Gray:
      for (std::size_t x = 0; x < count; ++x) to[x] = row[4 * x];
      return;
    case PNGFile::Color::GrayAlpha:
      for (std::size_t x = 0; x < count; ++x, to += 2) {
        to[0] = static_cast<std::uint8_t>(straightPixel(pixelAt(row, x)));
        to[1] = row[4 * x + 3];
      }
      return;
    case PNGFile::Color::RGB:
      return writeColors(row, count, to);
    case PNGFile::Color::RGBA:
      for (std::size_t x = 0; x < count; ++x, to += 4) {
        const std::uint32_t pixel = straightPixel(pixelAt(row, x));
        for (std::size_t c = 0; c < 3; ++c) to[c] = static_cast<std::uint8_t>(pixel >> (16 - 8 * c));
        to[3] = row[4 * x + 3];
      }
  }
}

/// Chooses filters and writes the rows, each after the number of its filter.
class RowWriter {
 public:
  RowWriter(const CGBitmap& bitmap, const PNGSurvey& survey)
      : bitmap_(bitmap),
        survey_(survey),
        step_(samplesOf(survey.color)),
        size_((bitmap.width() * step_ * survey.depth + 7) / 8),
        rows_((1 + size_) * bitmap.height()),
        spare_(3 * place()) {
    if (spare_.get()) std::memset(spare_.get(), 0, size_);
  }

  /// Empty without memory.
  [[nodiscard]] std::span<const std::uint8_t> write() {
    if (!rows_.get() || !spare_.get()) return {};
    for (std::size_t top = 0; top < bitmap_.height(); top += kBand) writeBand(top);
    return {rows_.get(), rows_.size};
  }
  /// After that: the level to pack the rows with.
  [[nodiscard]] int level() const {
    if (filteredRows_ <= bitmap_.height() / 2) return kFlatLevel;
    return leftAmount_ * 3 > leftBytes_ * 2 ? kNoisyLevel : kLevel;
  }

 private:
  static std::size_t samplesOf(PNGFile::Color color) {
    if (color == PNGFile::Color::RGBA) return 4;
    if (color == PNGFile::Color::RGB) return 3;
    return color == PNGFile::Color::GrayAlpha ? 2 : 1;
  }

  /// A row with what is written past its end.
  [[nodiscard]] std::size_t place() const { return size_ + sizeof(std::uint32_t); }

  void writeBand(std::size_t top) {
    const std::size_t bottom = std::min(top + kBand, bitmap_.height());
    const std::uint8_t filter = isFlat(top, bottom) ? 0 : bestFilter(top, bottom);
    if (filter != 0) filteredRows_ += bottom - top;
    for (std::size_t y = top; y < bottom; ++y) {
      std::uint8_t* const to = rows_.get() + y * (1 + size_);
      *to = filter;
      if (filter == 0) {
        writeSamples(survey_, bitmap_.row(y), bitmap_.width(), to + 1);
      } else {
        applyPNGFilter(filter, samples(y), y == top ? aboveOf(y) : last_, to + 1, size_, step_);
        last_ = spare_.get() + place() * (1 + y % 2);
      }
    }
  }

  /// The samples of a row, in one of two places by turns.
  const std::uint8_t* samples(std::size_t y) {
    std::uint8_t* const to = spare_.get() + place() * (1 + y % 2);
    writeSamples(survey_, bitmap_.row(y), bitmap_.width(), to);
    return to;
  }
  const std::uint8_t* aboveOf(std::size_t y) { return y == 0 ? spare_.get() : samples(y - 1); }

  /// True when most pixels are the one to the left or above: what packs best as it is. Indexes are no amounts.
  [[nodiscard]] bool isFlat(std::size_t top, std::size_t bottom) const {
    if (survey_.color == PNGFile::Color::Palette) return true;
    std::size_t same = 0;
    std::size_t all = 0;
    for (std::size_t y = std::max<std::size_t>(top, 1); y < bottom; y += kSampleStep) {
      const std::uint8_t* const row = bitmap_.row(y);
      const std::uint8_t* const above = bitmap_.row(y - 1);
      all += bitmap_.width() - 1;
      for (std::size_t x = 1; x < bitmap_.width(); ++x) {
        const std::uint32_t pixel = pixelAt(row, x);
        same += pixel == pixelAt(row, x - 1) || pixel == pixelAt(above, x) ? 1U : 0U;
      }
    }
    return same * 2 >= all;
  }

  /// The filter that leaves the least amounts in the sampled rows.
  [[nodiscard]] std::uint8_t bestFilter(std::size_t top, std::size_t bottom) {
    std::array<std::uint64_t, 5> amounts{};
    for (std::size_t y = top; y < bottom; y += kSampleStep) {
      std::uint8_t* const to = rows_.get() + top * (1 + size_);
      const std::uint8_t* const above = aboveOf(y);
      const std::uint8_t* const row = samples(y);
      for (std::size_t filter = 0; filter < amounts.size(); ++filter) {
        applyPNGFilter(static_cast<std::uint8_t>(filter), row, above, to, size_, step_);
        for (std::size_t i = 0; i < size_; ++i) amounts[filter] += to[i] < 128 ? to[i] : 256U - to[i];
      }
    }
    const auto least = std::min_element(amounts.begin(), amounts.end());
    leftAmount_ += *least;
    leftBytes_ += (bottom - top + kSampleStep - 1) / kSampleStep * size_;
    return static_cast<std::uint8_t>(least - amounts.begin());
  }

  const CGBitmap& bitmap_;
  const PNGSurvey& survey_;
  std::size_t step_;
  std::size_t size_;
  RawBytes rows_;
  /// A row of zeros and two of samples.
  RawBytes spare_;
  const std::uint8_t* last_ = nullptr;
  std::size_t filteredRows_ = 0;
  /// What the chosen filters leave in the sampled rows.
  std::uint64_t leftAmount_ = 0;
  std::uint64_t leftBytes_ = 0;
};

class FileWriter {
 public:
  FileWriter() {
    constexpr std::uint8_t kSignature[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    add(kSignature);
  }
  void addChunk(const char (&type)[5], std::span<const std::uint8_t> bytes) {
    addNumber(static_cast<std::uint32_t>(bytes.size()));
    const std::size_t start = file_.size();
    for (std::size_t i = 0; i < 4; ++i) file_.push_back(static_cast<std::uint8_t>(type[i]));
    add(bytes);
    addNumber(libdeflate_crc32(0, file_.data() + start, file_.size() - start));
  }
  [[nodiscard]] Data data() const { return Data(file_); }

 private:
  void add(std::span<const std::uint8_t> bytes) { file_.insert(file_.end(), bytes.begin(), bytes.end()); }
  void addNumber(std::uint32_t number) {
    for (unsigned shift = 32; shift > 0; shift -= 8) file_.push_back(static_cast<std::uint8_t>(number >> (shift - 8)));
  }

  std::vector<std::uint8_t> file_;
};

void addHeader(const CGBitmap& bitmap, const PNGSurvey& survey, FileWriter& file) {
  std::array<std::uint8_t, 13> header{};
  for (unsigned i = 0; i < 4; ++i) {
    header[i] = static_cast<std::uint8_t>(bitmap.width() >> (24 - 8 * i));
    header[4 + i] = static_cast<std::uint8_t>(bitmap.height() >> (24 - 8 * i));
  }
  header[8] = survey.depth;
  header[9] = static_cast<std::uint8_t>(survey.color);
  file.addChunk("IHDR", header);
}

/// The colours, and their alpha up to the last that has some.
void addPalette(const PNGSurvey& survey, FileWriter& file) {
  std::vector<std::uint8_t> colors;
  std::vector<std::uint8_t> alphas;
  std::size_t translucent = 0;
  for (const std::uint32_t pixel : survey.colors.pixels()) {
    const std::uint32_t straight = straightPixel(pixel);
    for (unsigned i = 0; i < 3; ++i) colors.push_back(static_cast<std::uint8_t>(straight >> (16 - 8 * i)));
    alphas.push_back(static_cast<std::uint8_t>(straight >> 24));
    if (alphas.back() != 255) translucent = alphas.size();
  }
  file.addChunk("PLTE", colors);
  if (translucent != 0) file.addChunk("tRNS", std::span(alphas).first(translucent));
}

}  // namespace

std::optional<Data> encodePNG(const CGBitmap& bitmap) {
  const PNGSurvey survey(bitmap);
  RowWriter writer(bitmap, survey);
  const std::span<const std::uint8_t> rows = writer.write();
  const std::unique_ptr<libdeflate_compressor, FreeCompressor> compressor(libdeflate_alloc_compressor(writer.level()));
  if (rows.empty() || !compressor) return std::nullopt;
  const RawBytes packed(libdeflate_zlib_compress_bound(compressor.get(), rows.size()));
  if (!packed.get()) return std::nullopt;
  const std::size_t size =
      libdeflate_zlib_compress(compressor.get(), rows.data(), rows.size(), packed.get(), packed.size);
  FileWriter file;
  addHeader(bitmap, survey, file);
  if (survey.color == PNGFile::Color::Palette) addPalette(survey, file);
  file.addChunk("IDAT", {packed.get(), size});
  file.addChunk("IEND", {});
  return file.data();
}

}  // namespace quorvel
