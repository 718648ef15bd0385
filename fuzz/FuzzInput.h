// Takes a fuzzer's bytes apart into the arguments of operations.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include <quorvel/Platform/Foundation/String.h>

namespace quorvel::fuzz {

/// Ends the run as a finding when a relation does not hold.
inline void require(bool holds, const char* relation) {
  if (holds) return;
  std::fprintf(stderr, "broken relation: %s\n", relation);
  std::abort();
}

class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : at_(data), end_(data + size) {}

  [[nodiscard]] std::uint8_t byte() { return at_ == end_ ? 0 : *at_++; }
  /// A text of up to 255 units. Half of them come from one byte each, in an alphabet where rules meet.
  [[nodiscard]] String text() { return units(byte()); }
  /// All that is left, as one text.
  [[nodiscard]] String rest() { return units(SIZE_MAX); }
  [[nodiscard]] std::string_view bytes() const {
    return {reinterpret_cast<const char*>(at_), static_cast<std::size_t>(end_ - at_)};
  }

 private:
  [[nodiscard]] String units(std::size_t count) {
    static constexpr char16_t kNasty[] = {
        u' ',   u'\t',  u'\n',  u'\r',  u'%',   u'+',   u'&',   u'=',   u',',   u'a',   u'A',   u'e',   u'i',
        u's',   u'S',   u'f',   u'k',   u'0',   u'9',   0x0085, 0x00A0, 0x00DF, 0x00E9, 0x0130, 0x0131, 0x017F,
        0x0301, 0x0307, 0x0345, 0x03B1, 0x03C2, 0x03C3, 0x1100, 0x1161, 0x11A8, 0x1E9E, 0x200D, 0x2028, 0x212A,
        0x3000, 0x3131, 0xAC00, 0xAC01, 0xD7A3, 0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0xFB00, 0xFB03, 0xFEFF, 0xFFFF};
    std::vector<char16_t> out;
    while (out.size() < count && at_ != end_) {
      const std::uint8_t lead = *at_++;
      if (lead < 0x80) {
        out.push_back(lead);
      } else if (lead < 0xC0 || at_ == end_) {
        out.push_back(kNasty[lead % std::size(kNasty)]);
      } else {
        out.push_back(static_cast<char16_t>(((lead & 0x3F) << 10) | (*at_++ << 2)));
      }
    }
    return String(out.data(), out.size());
  }

  const std::uint8_t* at_;
  const std::uint8_t* end_;
};

}  // namespace quorvel::fuzz
