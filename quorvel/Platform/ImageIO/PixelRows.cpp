#include <cstring>
#include <new>

#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/ImageIO/PixelRows.h>

namespace quorvel {
namespace {

constexpr std::size_t kPixel = 4;

}  // namespace

std::optional<PixelRows> PixelRows::make(PixelSize source, PixelSize wanted) {
  if (std::uint64_t{wanted.width} * wanted.height * kPixel > limits::kImageDecodedBytes) return std::nullopt;
  auto result = CGBitmap::make(wanted.width, wanted.height);
  if (!result) return std::nullopt;
  PixelRows rows(source, std::move(result));
  if (source == wanted) return rows;
  if (auto shrink = AreaShrink::make(source, *rows.result_)) rows.shrink_.emplace(std::move(*shrink));
  rows.row_.reset(new (std::nothrow) std::uint8_t[source.width * kPixel]());
  if (!rows.shrink_ || !rows.row_) return std::nullopt;
  return rows;
}

std::uint8_t* PixelRows::room() {
  if (shrink_) return row_.get();
  return result_->row(count_ < source_.height ? count_ : count_ - 1);
}

void PixelRows::add() {
  if (count_ == source_.height) return;
  ++count_;
  if (shrink_) shrink_->addRow(row_.get());
}

void PixelRows::add(const std::uint8_t* row) {
  if (count_ == source_.height) return;
  if (shrink_) {
    ++count_;
    shrink_->addRow(row);
  } else {
    std::memcpy(result_->row(count_++), row, source_.width * kPixel);
  }
}

std::shared_ptr<CGBitmap> PixelRows::take() {
  if (count_ == 0) return nullptr;
  if (shrink_ && count_ < source_.height) {
    // What was begun of a row of the result counts, above transparent pixels.
    std::memset(row_.get(), 0, source_.width * kPixel);
    const std::uint32_t done = shrink_->rowsDone();
    while (count_ < source_.height && shrink_->rowsDone() == done) add();
  }
  return std::move(result_);
}

}  // namespace quorvel
