// A well-formed file with bytes changed, taken out or put in where a fuzzer's input says, so that what is behind a
// header is reached too.
#pragma once

#include <fuzz/FuzzInput.h>

namespace quorvel::fuzz {

/// The first `kept` bytes stay.
[[nodiscard]] inline std::vector<std::uint8_t> damaged(std::vector<std::uint8_t> file, std::size_t kept, Input& input) {
  while (!input.bytes().empty() && file.size() > kept) {
    const unsigned high = input.byte();
    const std::size_t at = kept + (high << 8 | input.byte()) % (file.size() - kept);
    const std::uint8_t value = input.byte();
    if (high < 0xC0) {
      file[at] = value;
    } else if (high < 0xE0) {
      file.insert(file.begin() + static_cast<std::ptrdiff_t>(at), value);
    } else if (high < 0xF8) {
      file.erase(file.begin() + static_cast<std::ptrdiff_t>(at));
    } else {
      file.resize(at);
    }
  }
  return file;
}

}  // namespace quorvel::fuzz
