// ByteView: numbers and marks at places of a file whose bytes nobody vouches for.
#pragma once

#include <algorithm>
#include <string_view>

#include <quorvel/Platform/ImageIO/ImageFacts.h>

namespace quorvel {

/// A place beyond the end reads as 0, so that a walk over a file that was cut ends by what it reads.
class ByteView {
 public:
  explicit constexpr ByteView(ImageBytes bytes) : bytes_(bytes) {}

  [[nodiscard]] constexpr std::uint64_t size() const { return bytes_.size(); }
  [[nodiscard]] constexpr bool has(std::uint64_t at, std::uint64_t count) const {
    return at <= size() && count <= size() - at;
  }
  /// What of the part lies within the bytes.
  [[nodiscard]] constexpr ImageBytes part(std::uint64_t at, std::uint64_t count = UINT64_MAX) const {
    at = std::min(at, size());
    return bytes_.subspan(at, std::min(count, size() - at));
  }

  [[nodiscard]] constexpr std::uint8_t u8(std::uint64_t at) const { return at < size() ? bytes_[at] : 0; }
  /// The last significant byte last.
  [[nodiscard]] constexpr std::uint64_t big(std::uint64_t at, unsigned count) const {
    std::uint64_t number = 0;
    if (!has(at, count)) return 0;
    for (unsigned i = 0; i < count; ++i) number = number << 8 | bytes_[at + i];
    return number;
  }
  /// The last significant byte first.
  [[nodiscard]] constexpr std::uint64_t little(std::uint64_t at, unsigned count) const {
    std::uint64_t number = 0;
    if (!has(at, count)) return 0;
    for (unsigned i = count; i-- > 0;) number = number << 8 | bytes_[at + i];
    return number;
  }
  [[nodiscard]] constexpr std::uint16_t big16(std::uint64_t at) const { return static_cast<std::uint16_t>(big(at, 2)); }
  [[nodiscard]] constexpr std::uint32_t big32(std::uint64_t at) const { return static_cast<std::uint32_t>(big(at, 4)); }
  [[nodiscard]] constexpr std::uint16_t little16(std::uint64_t at) const {
    return static_cast<std::uint16_t>(little(at, 2));
  }
  [[nodiscard]] constexpr std::uint32_t little32(std::uint64_t at) const {
    return static_cast<std::uint32_t>(little(at, 4));
  }

  /// True when these characters stand there.
  [[nodiscard]] constexpr bool is(std::uint64_t at, std::string_view mark) const {
    if (!has(at, mark.size())) return false;
    for (std::size_t i = 0; i < mark.size(); ++i) {
      if (bytes_[at + i] != static_cast<std::uint8_t>(mark[i])) return false;
    }
    return true;
  }
  /// The place of the first such byte from `at` on, or the size.
  [[nodiscard]] std::uint64_t find(std::uint64_t at, std::uint8_t byte) const {
    if (at >= size()) return size();
    return static_cast<std::uint64_t>(std::find(bytes_.begin() + static_cast<std::ptrdiff_t>(at), bytes_.end(), byte) -
                                      bytes_.begin());
  }

 private:
  ImageBytes bytes_;
};

/// A mark of four characters as the number that its bytes are, the first most significant.
[[nodiscard]] constexpr std::uint32_t fourCharacters(const char (&mark)[5]) {
  std::uint32_t number = 0;
  for (int i = 0; i < 4; ++i) number = number << 8 | static_cast<std::uint8_t>(mark[i]);
  return number;
}

}  // namespace quorvel
