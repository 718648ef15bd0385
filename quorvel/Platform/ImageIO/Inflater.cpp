#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstring>

#include <libdeflate.h>
#include <sys/mman.h>
#include <zlib.h>

#include <quorvel/Platform/ImageIO/Inflater.h>

namespace quorvel {
namespace {

/// Many small pages take longer to be handed out than to be written.
constexpr std::size_t kLarge = std::size_t{4} * 1024 * 1024;
constexpr std::size_t kLargePage = std::size_t{2} * 1024 * 1024;

struct FreeDecompressor {
  void operator()(libdeflate_decompressor* decompressor) const { libdeflate_free_decompressor(decompressor); }
};

/// The pieces one after the other, in `joined` where they are several.
ImageBytes joinedPieces(std::span<const ImageBytes> pieces, RawBytes& joined) {
  if (pieces.size() == 1) return pieces[0];
  std::size_t size = 0;
  for (const ImageBytes piece : pieces) size += piece.size();
  joined = RawBytes(size);
  if (!joined.get()) return {};
  std::uint8_t* to = joined.get();
  for (const ImageBytes piece : pieces) {
    if (!piece.empty()) std::memcpy(to, piece.data(), piece.size());
    to += piece.size();
  }
  return {joined.get(), size};
}

}  // namespace

RawBytes::RawBytes(std::size_t count) {
  const std::size_t alignment = count < kLarge ? alignof(std::max_align_t) : kLargePage;
  const std::size_t whole = (count + kInflateSlack + alignment - 1) / alignment * alignment;
  bytes.reset(static_cast<std::uint8_t*>(std::aligned_alloc(alignment, whole)));
  if (!bytes) return;
  if (count >= kLarge) ::madvise(bytes.get(), whole, MADV_HUGEPAGE);
  size = count;
  std::memset(bytes.get() + count, 0, kInflateSlack);
}

RawBytes inflateWhole(std::span<const ImageBytes> pieces, std::size_t size) {
  RawBytes joined;
  const ImageBytes stream = joinedPieces(pieces, joined);
  RawBytes result(size);
  const std::unique_ptr<libdeflate_decompressor, FreeDecompressor> decompressor(libdeflate_alloc_decompressor());
  if (stream.empty() || !result.get() || !decompressor) return {};
  if (libdeflate_zlib_decompress(decompressor.get(), stream.data(), stream.size(), result.get(), size, nullptr) !=
      LIBDEFLATE_SUCCESS) {
    return {};
  }
  return result;
}

std::vector<std::uint8_t> inflateAtMost(ImageBytes stream, std::size_t limit) {
  constexpr std::size_t kStep = 64 * 1024;
  Inflater inflater({&stream, 1});
  std::vector<std::uint8_t> result;
  for (;;) {
    const std::size_t start = result.size();
    result.resize(start + kStep);
    const std::size_t count = inflater.read(result.data() + start, kStep);
    result.resize(start + count);
    if (result.size() > limit) return {};
    if (count < kStep) return inflater.hasEnded() ? result : std::vector<std::uint8_t>();
  }
}

struct Inflater::Stream {
  z_stream state{};
  std::span<const ImageBytes> pieces;
  int status = Z_MEM_ERROR;

  /// The next part of the file, of a size that zlib can count.
  bool refill() {
    while (!pieces.empty() && pieces[0].size() == offset) {
      pieces = pieces.subspan(1);
      offset = 0;
    }
    if (pieces.empty()) return false;
    const std::size_t count = std::min<std::size_t>(pieces[0].size() - offset, UINT_MAX);
    state.next_in = const_cast<Bytef*>(pieces[0].data() + offset);
    state.avail_in = static_cast<uInt>(count);
    offset += count;
    return true;
  }

  std::size_t offset = 0;
};

Inflater::Inflater(std::span<const ImageBytes> pieces) : stream_(std::make_unique<Stream>()) {
  stream_->pieces = pieces;
  stream_->status = inflateInit(&stream_->state);
}

Inflater::~Inflater() { inflateEnd(&stream_->state); }

std::size_t Inflater::read(std::uint8_t* to, std::size_t size) {
  z_stream& state = stream_->state;
  std::size_t done = 0;
  while (done < size && stream_->status == Z_OK) {
    if (state.avail_in == 0 && !stream_->refill()) break;
    const std::size_t room = std::min<std::size_t>(size - done, UINT_MAX);
    state.next_out = to + done;
    state.avail_out = static_cast<uInt>(room);
    stream_->status = inflate(&state, Z_NO_FLUSH);
    done += room - state.avail_out;
  }
  return done;
}

bool Inflater::hasEnded() const { return stream_->status == Z_STREAM_END; }

}  // namespace quorvel
