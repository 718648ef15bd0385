// The two percent-coding primitives of the platform (RFC 3986, section 2.1) over UTF-8.
// Not here: the library's own allowed sets (NSString+URLEncoding.h).
#pragma once

#include <array>
#include <optional>

#include <quorvel/Platform/Foundation/CharacterSet.h>

namespace quorvel {

/// What an encoder leaves as it is: which ASCII characters, and whether other scalars stay. The fast form of a set.
struct PercentAllowed {
  std::array<bool, 128> ascii{};
  enum class NonASCII : std::uint8_t { None, All, NonBase } others = NonASCII::None;

  [[nodiscard]] static constexpr PercentAllowed only(std::string_view characters) {
    PercentAllowed allowed;
    for (const char character : characters) allowed.ascii[static_cast<unsigned char>(character)] = true;
    return allowed;
  }
  [[nodiscard]] static constexpr PercentAllowed allBut(std::string_view characters) {
    PercentAllowed allowed;
    allowed.ascii.fill(true);
    allowed.others = NonASCII::All;
    for (const char character : characters) allowed.ascii[static_cast<unsigned char>(character)] = false;
    return allowed;
  }
};

/// `stringByAddingPercentEncodingWithAllowedCharacters:`: scalars of the set stay, all others are written as the bytes
/// of their UTF-8, each "%" and two upper-case hexadecimal digits. nil when the text is nil or holds an unpaired
/// surrogate. A text that needs no change comes back shared, not copied.
[[nodiscard]] std::optional<String> addingPercentEncoding(const String& text, const PercentAllowed& allowed);
[[nodiscard]] std::optional<String> addingPercentEncoding(const String& text, const NSCharacterSet& allowed);

/// `stringByRemovingPercentEncoding`: nil when the text is nil, when a "%" lacks two hexadecimal digits or when the
/// bytes are not valid UTF-8 (RFC 3629). A "+" stays; a decoded U+FEFF stays. A text without "%" comes back shared.
[[nodiscard]] std::optional<String> removingPercentEncoding(const String& text);

}  // namespace quorvel
