// Unicode kernels over raw units: surrogates, UTF-8 to and from UTF-16 (RFC 3629), literal search.
// Not here: anything that needs character data (CharacterSet.h, Comparison.h).
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <quorvel/Platform/Foundation/String.h>

namespace quorvel::unicode {

[[nodiscard]] constexpr bool isSurrogate(char32_t unit) { return (unit & 0xFFFFF800) == 0xD800; }
[[nodiscard]] constexpr bool isHighSurrogate(char32_t unit) { return (unit & 0xFFFFFC00) == 0xD800; }
[[nodiscard]] constexpr bool isLowSurrogate(char32_t unit) { return (unit & 0xFFFFFC00) == 0xDC00; }
[[nodiscard]] constexpr char32_t scalarOf(char16_t high, char16_t low) {
  return (static_cast<char32_t>(high) << 10) + low - ((0xD800U << 10) + 0xDC00U - 0x10000U);
}

/// The scalar at `index`, which moves past it. An unpaired surrogate is answered as it is.
[[nodiscard]] constexpr char32_t nextScalar(StringView text, std::size_t& index) {
  const char16_t unit = text[index++];
  if (!isHighSurrogate(unit) || index == text.size() || !isLowSurrogate(text[index])) return unit;
  return scalarOf(unit, text[index++]);
}
/// The scalar that ends before `index`, which moves to its start.
[[nodiscard]] constexpr char32_t previousScalar(StringView text, std::size_t& index) {
  const char16_t unit = text[--index];
  if (!isLowSurrogate(unit) || index == 0 || !isHighSurrogate(text[index - 1])) return unit;
  return scalarOf(text[--index], unit);
}

inline constexpr std::size_t kInvalid = SIZE_MAX;

/// UTF-16 units of well-formed UTF-8; for other bytes no less than `utf8ToUTF16` writes before it stops.
[[nodiscard]] std::size_t utf16Length(std::string_view bytes);
/// Writes the units of `bytes` and answers their number, or `kInvalid` at the first ill-formed sequence.
[[nodiscard]] std::size_t utf8ToUTF16(std::string_view bytes, char16_t* out);
/// Bytes before the first ill-formed sequence; all where there is none.
[[nodiscard]] std::size_t wellFormedLength(std::string_view bytes);
/// The same as `utf8ToUTF16` with U+FFFD for each maximal ill-formed piece; at most one unit a byte.
[[nodiscard]] std::size_t utf8ToUTF16Replacing(std::string_view bytes, char16_t* out);

/// Bytes of the text in UTF-8; an unpaired surrogate counts two bytes too few for U+FFFD, so ask `isWellFormed` first.
[[nodiscard]] std::size_t utf8Length(StringView text);
/// Room that `utf16ToUTF8` needs behind what it writes.
inline constexpr std::size_t kUTF8Slack = 16;
/// Writes at most three bytes a unit and answers their number, or `kInvalid` at an unpaired surrogate. Up to
/// `kUTF8Slack` bytes behind them are written over.
[[nodiscard]] std::size_t utf16ToUTF8(StringView text, char* out);
[[nodiscard]] std::optional<std::string> toUTF8(StringView text);
[[nodiscard]] std::string toUTF8Replacing(StringView text);
/// Appends the UTF-8 of a scalar.
void appendUTF8(std::string& out, char32_t scalar);

/// True when every surrogate of the text is one of a pair.
[[nodiscard]] bool isWellFormed(StringView text);

/// Units at the start that are the same in both.
[[nodiscard]] std::size_t commonPrefix(const char16_t* a, const char16_t* b, std::size_t count);
/// The first place at or after `from` of a unit from `low` to `low + span`, or `kInvalid`.
[[nodiscard]] std::size_t firstInRange(StringView text, char16_t low, char16_t span, std::size_t from);
/// The first place at or after `from` of `unit`, or `kInvalid`.
[[nodiscard]] std::size_t findUnit(StringView text, char16_t unit, std::size_t from = 0);
/// The first place at or after `from` where `needle` stands unit for unit, or `kInvalid`. An empty needle is found
/// at `from`. Linear in both lengths.
[[nodiscard]] std::size_t findLiteral(StringView text, StringView needle, std::size_t from = 0);

}  // namespace quorvel::unicode
