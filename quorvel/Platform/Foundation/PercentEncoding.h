// The two percent-coding primitives of the platform (RFC 3986, section 2.1) over UTF-8.
// Not here: the library's own allowed sets (NSString+URLEncoding.h).
#pragma once

#include <array>
#include <optional>

#include <quorvel/Platform/Foundation/CharacterSet.h>
#include <quorvel/Platform/Foundation/WideKernels.h>

namespace quorvel {

/// What an encoder leaves as it is: which ASCII characters, and whether other scalars stay. The fast form of a set, to
/// be built once, at best by the compiler.
class PercentAllowed {
 public:
  /// Which scalars beyond ASCII stay: none, all, or those of `NSCharacterSet::nonBase`.
  enum class NonASCII : std::uint8_t { None, All, NonBase };

  /// The characters of `characters`, all ASCII, and of the rest what `others` says.
  [[nodiscard]] static constexpr PercentAllowed only(std::string_view characters, NonASCII others = NonASCII::None) {
    PercentAllowed allowed(others);
    for (const char character : characters) allowed.allow(static_cast<unsigned char>(character));
    return allowed;
  }
  /// All but the characters of `characters`, all ASCII.
  [[nodiscard]] static constexpr PercentAllowed allBut(std::string_view characters) {
    PercentAllowed allowed(NonASCII::All);
    for (unsigned unit = 0; unit < 128; ++unit) {
      const auto character = static_cast<char>(unit);
      if (characters.find(character) == characters.npos) allowed.allow(unit);
    }
    return allowed;
  }

  /// What is written for an ASCII character, or for a byte of another that does not stay: up to three units from the
  /// lowest 16 bits on, their number in the highest.
  [[nodiscard]] constexpr std::uint64_t written(char16_t unit) const { return written_[unit]; }
  [[nodiscard]] constexpr const std::array<std::uint64_t, 256>& written() const { return written_; }
  [[nodiscard]] constexpr NonASCII others() const { return others_; }
  /// The ASCII characters that stay.
  [[nodiscard]] constexpr const wide::ASCIISet& stays() const { return stays_; }

  [[nodiscard]] static constexpr std::uint64_t escaped(unsigned byte) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    const std::uint64_t high = static_cast<unsigned char>(kDigits[byte >> 4]);
    const std::uint64_t low = static_cast<unsigned char>(kDigits[byte & 15]);
    return std::uint64_t{3} << 48 | low << 32 | high << 16 | std::uint64_t{'%'};
  }
  [[nodiscard]] static constexpr std::uint64_t plain(char character) {
    return std::uint64_t{1} << 48 | static_cast<unsigned char>(character);
  }

 private:
  explicit constexpr PercentAllowed(NonASCII others) : others_(others) {
    for (unsigned byte = 0; byte < 256; ++byte) written_[byte] = escaped(byte);
  }

  constexpr void allow(unsigned character) {
    written_[character] = plain(static_cast<char>(character));
    stays_.insert(character);
  }

  std::array<std::uint64_t, 256> written_{};
  wide::ASCIISet stays_;
  NonASCII others_;
};

/// `stringByAddingPercentEncodingWithAllowedCharacters:`: scalars of the set stay, all others are written as the bytes
/// of their UTF-8, each "%" and two upper-case hexadecimal digits. nil when the text holds an unpaired surrogate
/// or is too long to be encoded.
/// A text that needs no change comes back shared, not copied.
[[nodiscard]] std::optional<String> addingPercentEncoding(const String& text, const PercentAllowed& allowed);
[[nodiscard]] std::optional<String> addingPercentEncoding(const String& text, const NSCharacterSet& allowed);

/// `stringByRemovingPercentEncoding`: nil when a "%" lacks two hexadecimal digits, when the bytes are not valid UTF-8
/// (RFC 3629) or when the text holds an unpaired surrogate, which has no bytes. Escapes do not combine with what stands
/// around them. A "+" stays; a decoded U+FEFF stays. A text without "%" comes back shared.
[[nodiscard]] std::optional<String> removingPercentEncoding(const String& text);

}  // namespace quorvel
