#include <algorithm>
#include <array>

#include <apps/quorvel/Base64.h>

namespace quorvel::command {
namespace {

constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t kNoDigit = 0xFF;

constexpr std::array<std::uint8_t, 128> kValues = [] {
  std::array<std::uint8_t, 128> values{};
  values.fill(kNoDigit);
  for (std::size_t i = 0; i < kDigits.size(); ++i)
    values[static_cast<unsigned char>(kDigits[i])] = static_cast<std::uint8_t>(i);
  return values;
}();

std::uint8_t valueOf(char16_t unit) { return unit < kValues.size() ? kValues[unit] : kNoDigit; }

}  // namespace

std::string encodeBase64(std::span<const std::uint8_t> bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const std::size_t count = std::min<std::size_t>(3, bytes.size() - i);
    std::uint32_t bits = 0;
    for (std::size_t k = 0; k < 3; ++k) bits = bits << 8 | (k < count ? bytes[i + k] : 0U);
    for (std::size_t k = 0; k < 4; ++k) text += k <= count ? kDigits[bits >> (18 - 6 * k) & 0x3F] : '=';
  }
  return text;
}

std::optional<std::vector<std::uint8_t>> decodeBase64(StringView text) {
  if (text.size() % 4 != 0) return nil;
  std::size_t digits = text.size();
  while (digits > 0 && text.size() - digits < 2 && text[digits - 1] == u'=') --digits;
  std::vector<std::uint8_t> bytes;
  bytes.reserve(digits / 4 * 3 + 2);
  std::uint32_t bits = 0;
  for (std::size_t i = 0; i < digits; ++i) {
    const std::uint8_t value = valueOf(text[i]);
    if (value == kNoDigit) return nil;
    bits = bits << 6 | value;
    // The first digit of a group completes no byte; each of the other three does.
    if (i % 4 != 0) bytes.push_back(static_cast<std::uint8_t>(bits >> (6 - 2 * (i % 4))));
  }
  const std::uint32_t unused = digits % 4 == 2 ? 0xFU : digits % 4 == 3 ? 0x3U : 0U;
  if ((bits & unused) != 0) return nil;
  return bytes;
}

}  // namespace quorvel::command
