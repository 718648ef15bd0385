// Kernels for processors with AVX2, which is asked for once; every one answers what the portable code beside its caller
// answers, and leaves to it what does not fill a vector. Included by sources only.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace quorvel::wide {

/// True when this processor has AVX2 and nobody turned the kernels off.
[[nodiscard]] bool isAvailable();
/// Turns the kernels off, or on again where the processor has them: for comparing both ways in one program.
void setEnabled(bool enabled);

/// Below so many units a search does better without.
inline constexpr std::size_t kWorthwhile = 64;

/// How far a kernel came: everything before is converted, what follows is the caller's.
struct Progress {
  std::size_t read;
  std::size_t written;
};

/// Bytes to units, up to the end or to a few sequences before one that is ill-formed. Never writes past the units of
/// the text.
[[nodiscard]] Progress utf8ToUTF16(const char* bytes, std::size_t size, char16_t* out);
/// Units to bytes: stops before an unpaired surrogate and before the last units. Up to `kSlack` bytes past those that
/// count are written over.
inline constexpr std::size_t kSlack = 16;
[[nodiscard]] Progress utf16ToUTF8(const char16_t* units, std::size_t size, char* out);
/// Units of the well-formed UTF-8 in the whole vectors at the start; `read` is how many bytes those are.
[[nodiscard]] Progress utf16Length(const char* bytes, std::size_t size);
/// Bytes of UTF-8 for the whole vectors at the start, two for each surrogate.
[[nodiscard]] Progress utf8Length(const char16_t* units, std::size_t size);

/// Units 0 to 127 at the start, as far as whole vectors show it.
[[nodiscard]] std::size_t leadingASCII(const char16_t* units, std::size_t size);
/// ASCII, Hangul syllables and unified ideographs at the start, without capitals if so asked, as far as whole vectors
/// show it.
[[nodiscard]] std::size_t leadingCommon(const char16_t* units, std::size_t size, bool withoutCapitals);
/// Units at the start without one of `low` to `low + span`, as far as whole vectors show it.
[[nodiscard]] std::size_t leadingOutside(const char16_t* units, std::size_t size, char16_t low, char16_t span);
/// Units at the start that are the same in both, as far as whole vectors show it.
[[nodiscard]] std::size_t leadingEqual(const char16_t* a, const char16_t* b, std::size_t size);

/// Some of the characters 0 to 127, as bits: those of a row share the low four bits of their codes.
struct ASCIISet {
  alignas(16) unsigned char rows[16] = {};

  constexpr void insert(unsigned character) {
    rows[character & 15] = static_cast<unsigned char>(rows[character & 15] | 1U << (character >> 4));
  }
};
/// Members at the start, as far as whole vectors show it.
[[nodiscard]] std::size_t leadingMembers(const char16_t* units, std::size_t size, const ASCIISet& set);
/// How many units of ASCII text become with members as they are and three units for each other; up to the first block
/// with other units.
[[nodiscard]] Progress percentLength(const char16_t* units, std::size_t size, const ASCIISet& set);
/// Writes them: `escapes` has three units for each of the 128 characters, in the low bits of a word. Up to `kUnitSlack`
/// units past those that count are written over.
inline constexpr std::size_t kUnitSlack = 16;
[[nodiscard]] Progress percentEncode(const char16_t* units, std::size_t size, const ASCIISet& set,
                                     const std::uint64_t* escapes, char16_t* out);
/// The same of ASCII and U+0800 to U+FFFF mixed, up to the first eight units with a surrogate or others: what is
/// written for the bytes of UTF-8 is in the low 48 bits of their word in `written`, three units or fewer, their number
/// above.
[[nodiscard]] Progress percentEncodeBytes(const char16_t* units, std::size_t size,
                                          const std::array<std::uint64_t, 256>& written, char16_t* out);
/// Copies what is none of the four units; never writes more units than it reads.
[[nodiscard]] Progress copyWithout(const char16_t* units, std::size_t size, const char16_t (&members)[4],
                                   char16_t* out);

/// Two units, in two forms each, at fixed distances from a place.
struct Pair {
  char16_t first[2];
  char16_t second[2];
  std::size_t firstOffset;
  std::size_t secondOffset;
};
/// The first place at or after `from` where both stand, or the first that whole vectors no longer reach.
[[nodiscard]] std::size_t findPair(const char16_t* units, std::size_t size, std::size_t from, const Pair& pair);

}  // namespace quorvel::wide
