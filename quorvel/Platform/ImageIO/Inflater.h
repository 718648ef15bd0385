// Inflater: zlib streams that lie in pieces of a file, all at once or as far as they go. Included by sources only.
// Not here: what the bytes mean (PNGReader.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>
#include <vector>

#include <quorvel/Platform/ImageIO/ImageFacts.h>

namespace quorvel {

/// Memory that nobody has written yet.
struct RawBytes {
  struct Free {
    void operator()(std::uint8_t* memory) const { std::free(memory); }
  };
  std::unique_ptr<std::uint8_t, Free> bytes;
  std::size_t size = 0;

  RawBytes() = default;
  /// Empty when there is no memory.
  explicit RawBytes(std::size_t count);
  [[nodiscard]] std::uint8_t* get() const { return bytes.get(); }
};

/// Bytes past the end of what was inflated that may be read, so that pixels of three bytes are loaded as four.
inline constexpr std::size_t kInflateSlack = 16;

/// `size` bytes out of one stream in `pieces`; empty when it is damaged, or shorter or longer than that.
[[nodiscard]] RawBytes inflateWhole(std::span<const ImageBytes> pieces, std::size_t size);
/// All of a stream of at most `limit` bytes; empty when it is damaged or longer, of which no more is inflated.
[[nodiscard]] std::vector<std::uint8_t> inflateAtMost(ImageBytes stream, std::size_t limit);

/// A stream read a piece at a time, up to where it is damaged or ends.
class Inflater {
 public:
  explicit Inflater(std::span<const ImageBytes> pieces);
  Inflater(const Inflater&) = delete;
  Inflater& operator=(const Inflater&) = delete;
  ~Inflater();

  /// How many of `size` bytes there were.
  [[nodiscard]] std::size_t read(std::uint8_t* to, std::size_t size);
  /// The stream came to its end, and its checksum is right.
  [[nodiscard]] bool hasEnded() const;

 private:
  struct Stream;
  std::unique_ptr<Stream> stream_;
};

}  // namespace quorvel
