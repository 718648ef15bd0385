#include <algorithm>

#include <quorvel/Platform/Foundation/LinearSearch.h>
#include <quorvel/Platform/Foundation/Unicode.h>
#include <quorvel/Platform/Foundation/Vector.h>
#include <quorvel/Platform/Foundation/WideKernels.h>

namespace quorvel::unicode {
namespace {

using vector::Units;

std::uint32_t load32(const char* from) {
  std::uint32_t word;
  std::memcpy(&word, from, sizeof word);
  if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap32(word);
  return word;
}

bool isASCII8(const char* bytes) {
  std::uint64_t word;
  std::memcpy(&word, bytes, sizeof word);
  return (word & 0x8080808080808080) == 0;
}

bool isContinuation(char byte) { return (byte & 0xC0) == 0x80; }

/// The scalar at `at`, which moves past it; kBadScalar with `at` past the maximal ill-formed piece.
constexpr char32_t kBadScalar = 0xFFFFFFFF;

char32_t decodeUTF8(const char*& at, const char* end) {
  const auto lead = static_cast<unsigned char>(*at++);
  if (lead < 0x80) return lead;
  if (lead < 0xC2 || lead > 0xF4) return kBadScalar;
  const int more = lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
  char32_t scalar = lead & (0x3F >> more);
  for (int i = 0; i < more; ++i) {
    if (at == end || !isContinuation(*at)) return kBadScalar;
    const auto next = static_cast<unsigned char>(*at);
    // The second byte alone tells overlong forms, surrogates and scalars past U+10FFFF (Unicode, table 3-7).
    if (i == 0 && ((lead == 0xE0 && next < 0xA0) || (lead == 0xED && next > 0x9F) || (lead == 0xF0 && next < 0x90) ||
                   (lead == 0xF4 && next > 0x8F))) {
      return kBadScalar;
    }
    scalar = (scalar << 6) | (next & 0x3F);
    ++at;
  }
  return scalar;
}

char16_t* writeScalar(char16_t* out, char32_t scalar) {
  if (scalar > 0xFFFF) {
    *out++ = static_cast<char16_t>(0xD7C0 + (scalar >> 10));
    scalar = 0xDC00 | (scalar & 0x3FF);
  }
  *out++ = static_cast<char16_t>(scalar);
  return out;
}

/// Copies ASCII in blocks of sixteen and eight; stops at the first block with another byte.
const char* copyASCII(const char* at, const char* end, char16_t*& out) {
  for (; end - at >= 16; at += 16, out += 16) {
    const auto bytes = vector::Bytes::load(at);
    if (bytes.highBits() != 0) break;
    bytes.widenLow().store(out);
    bytes.widenHigh().store(out + 8);
  }
  for (; end - at >= 8 && isASCII8(at); at += 8, out += 8) Units::widen(at).store(out);
  return at;
}

/// Copies three-byte sequences, the form of Hangul, kana and Han; stops before any other.
const char* copyThreeByte(const char* at, const char* end, char16_t*& out) {
  while (end - at >= 4) {
    const std::uint32_t word = load32(at);
    if ((word & 0x00C0C0F0) != 0x008080E0) break;
    const std::uint32_t unit = ((word & 0x0F) << 12) | ((word >> 2) & 0x0FC0) | ((word >> 16) & 0x3F);
    if (unit < 0x800 || isSurrogate(unit)) break;
    *out++ = static_cast<char16_t>(unit);
    at += 3;
  }
  return at;
}

/// Below this a call of the wide kernels costs more than it saves.
constexpr std::size_t kWorthwhileBytes = 12;
/// Texts up to this are converted on the stack, so that nothing is measured first.
constexpr std::size_t kShortUnits = 128;

bool isASCII(StringView text) {
  std::size_t i = wide::isAvailable() ? wide::leadingASCII(text.data(), text.size()) : 0;
  const Units bound = Units::splat(0x7F);
  for (; i + vector::kLanes <= text.size(); i += vector::kLanes) {
    if (!atMost(Units::load(text.data() + i), bound).lanesSet().all()) return false;
  }
  return std::all_of(text.begin() + i, text.end(), [](char16_t unit) { return unit <= 0x7F; });
}

/// Copies what the wide kernels take, where there are any, or plain text at least.
const char* copyBlocks(const char* at, const char* end, char16_t*& out) {
  if (end - at < 64) at = copyASCII(at, end, out);
  if (static_cast<std::size_t>(end - at) >= kWorthwhileBytes && wide::isAvailable()) {
    const wide::Progress done = wide::utf8ToUTF16(at, static_cast<std::size_t>(end - at), out);
    at += done.read;
    out += done.written;
  }
  return copyASCII(at, end, out);
}

char* writeUTF8(char* out, char32_t scalar) {
  if (scalar < 0x80) {
    *out++ = static_cast<char>(scalar);
  } else if (scalar < 0x800) {
    *out++ = static_cast<char>(0xC0 | (scalar >> 6));
    *out++ = static_cast<char>(0x80 | (scalar & 0x3F));
  } else if (scalar < 0x10000) {
    *out++ = static_cast<char>(0xE0 | (scalar >> 12));
    *out++ = static_cast<char>(0x80 | ((scalar >> 6) & 0x3F));
    *out++ = static_cast<char>(0x80 | (scalar & 0x3F));
  } else {
    *out++ = static_cast<char>(0xF0 | (scalar >> 18));
    *out++ = static_cast<char>(0x80 | ((scalar >> 12) & 0x3F));
    *out++ = static_cast<char>(0x80 | ((scalar >> 6) & 0x3F));
    *out++ = static_cast<char>(0x80 | (scalar & 0x3F));
  }
  return out;
}

/// Writes the UTF-8 of the text; `onUnpaired` answers the scalar to write for an unpaired surrogate, or kBadScalar to
/// stop.
template <class OnUnpaired>
std::size_t encodeUTF8(StringView text, char* const start, OnUnpaired onUnpaired) {
  const char16_t* at = text.begin();
  const char16_t* const end = text.end();
  char* out = start;
  const Units ascii = Units::splat(0x7F);
  while (at != end) {
    if (end - at >= 8 && wide::isAvailable()) {
      const wide::Progress done = wide::utf16ToUTF8(at, static_cast<std::size_t>(end - at), out);
      at += done.read;
      out += done.written;
    }
    for (; end - at >= 16; at += 16, out += 16) {
      const Units low = Units::load(at);
      const Units high = Units::load(at + 8);
      if (!atMost(low | high, ascii).lanesSet().all()) break;
      low.narrow(out);
      high.narrow(out + 8);
    }
    // Up to eight units one by one before ASCII is tried again.
    for (int i = 0; i < 8 && at != end; ++i) {
      char32_t unit = *at++;
      if (isSurrogate(unit)) [[unlikely]] {
        if (isHighSurrogate(unit) && at != end && isLowSurrogate(*at)) {
          unit = scalarOf(static_cast<char16_t>(unit), *at++);
        } else {
          unit = onUnpaired();
          if (unit == kBadScalar) return kInvalid;
        }
      }
      out = writeUTF8(out, unit);
    }
  }
  return static_cast<std::size_t>(out - start);
}

}  // namespace

std::size_t utf16Length(std::string_view bytes) {
  constexpr std::uint64_t kOnes = 0x0101010101010101;
  const char* at = bytes.data();
  const char* const end = at + bytes.size();
  std::size_t count = 0;
  if (bytes.size() >= kWorthwhileBytes && wide::isAvailable()) {
    const wide::Progress done = wide::utf16Length(at, bytes.size());
    at += done.read;
    count = done.written;
  }
  // Eight bytes at a time, a counter in each byte: up to 31 words, each of which adds at most two.
  while (end - at >= 8) {
    std::uint64_t counters = 0;
    for (int words = 0; words < 31 && end - at >= 8; ++words, at += 8) {
      std::uint64_t word;
      std::memcpy(&word, at, sizeof word);
      const std::uint64_t continuations = (word >> 7) & ~(word >> 6) & kOnes;
      const std::uint64_t fourByteLeads = (word >> 7) & (word >> 6) & (word >> 5) & (word >> 4) & kOnes;
      counters += (continuations ^ kOnes) + fourByteLeads;
    }
    // Sums of pairs first: the whole may exceed a byte.
    const std::uint64_t pairs = (counters & 0x00FF00FF00FF00FF) + ((counters >> 8) & 0x00FF00FF00FF00FF);
    count += (pairs * 0x0001000100010001) >> 48;
  }
  for (; at != end; ++at) {
    count += static_cast<std::size_t>(!isContinuation(*at)) +
             static_cast<std::size_t>(static_cast<unsigned char>(*at) >= 0xF0);
  }
  return count;
}

std::size_t utf8ToUTF16(std::string_view bytes, char16_t* out) {
  const char16_t* const start = out;
  const char* at = bytes.data();
  const char* const end = at + bytes.size();
  while (true) {
    at = copyBlocks(at, end, out);
    at = copyThreeByte(at, end, out);
    if (at == end) return static_cast<std::size_t>(out - start);
    if (end - at >= 8 && isASCII8(at)) continue;
    const char32_t scalar = decodeUTF8(at, end);
    if (scalar == kBadScalar) return kInvalid;
    out = writeScalar(out, scalar);
  }
}

std::size_t wellFormedLength(std::string_view bytes) {
  const char* const end = bytes.data() + bytes.size();
  for (const char* at = bytes.data(); at != end;) {
    const char* const sequence = at;
    if (decodeUTF8(at, end) == kBadScalar) return static_cast<std::size_t>(sequence - bytes.data());
  }
  return bytes.size();
}

std::size_t utf8ToUTF16Replacing(std::string_view bytes, char16_t* out) {
  const char16_t* const start = out;
  const char* at = bytes.data();
  const char* const end = at + bytes.size();
  while (at != end) {
    at = copyBlocks(at, end, out);
    // The kernels stop a few sequences before an ill-formed one.
    for (bool well = true; well && at != end;) {
      const char32_t scalar = decodeUTF8(at, end);
      well = scalar != kBadScalar;
      out = writeScalar(out, well ? scalar : 0xFFFD);
    }
  }
  return static_cast<std::size_t>(out - start);
}

std::size_t utf8Length(StringView text) {
  std::size_t count = text.size();
  std::size_t i = 0;
  if (wide::isAvailable()) {
    const wide::Progress done = wide::utf8Length(text.data(), text.size());
    i = done.read;
    count += done.written - done.read;
  }
  while (i + vector::kLanes <= text.size()) {
    // A counter in each lane: up to 2^14 blocks, each of which adds at most two.
    Units counters = Units::splat(0);
    for (int blocks = 0; blocks < 1 << 14 && i + vector::kLanes <= text.size(); ++blocks, i += vector::kLanes) {
      const Units units = Units::load(text.data() + i);
      // Lanes of all ones are -1.
      const Units one = atMost(units, Units::splat(0x7F));
      const Units two = atMost(units, Units::splat(0x7FF));
      counters = counters + Units::splat(2) + one + two + vector::inRange(units, 0xD800, 0x7FF);
    }
    char16_t lanes[vector::kLanes];
    counters.store(lanes);
    for (const char16_t lane : lanes) count += lane;
  }
  for (; i < text.size(); ++i) {
    const char16_t unit = text[i];
    count += static_cast<std::size_t>(unit > 0x7F) + static_cast<std::size_t>(unit > 0x7FF) -
             static_cast<std::size_t>(isSurrogate(unit));
  }
  return count;
}

std::size_t utf16ToUTF8(StringView text, char* out) {
  return encodeUTF8(text, out, [] { return kBadScalar; });
}

std::optional<std::string> toUTF8(StringView text) {
  if (text.size() <= kShortUnits) {
    char bytes[3 * kShortUnits + kUTF8Slack];
    const std::size_t size = utf16ToUTF8(text, bytes);
    return size == kInvalid ? std::nullopt : std::optional<std::string>(std::in_place, bytes, size);
  }
  // Units of ASCII narrow as they are copied; nothing is cleared first.
  if (isASCII(text)) return std::optional<std::string>(std::in_place, text.begin(), text.end());
  std::optional<std::string> bytes(std::in_place);
  bytes->resize(utf8Length(text) + kUTF8Slack);
  const std::size_t size = utf16ToUTF8(text, bytes->data());
  if (size == kInvalid) return std::nullopt;
  bytes->resize(size);
  return bytes;
}

std::string toUTF8Replacing(StringView text) {
  std::string bytes;
  bytes.resize(text.size() * 3 + kUTF8Slack);
  bytes.resize(encodeUTF8(text, bytes.data(), [] { return static_cast<char32_t>(0xFFFD); }));
  return bytes;
}

void appendUTF8(std::string& out, char32_t scalar) {
  char bytes[4];
  out.append(bytes, static_cast<std::size_t>(writeUTF8(bytes, scalar) - bytes));
}

bool isWellFormed(StringView text) {
  for (std::size_t i = firstInRange(text, 0xD800, 0x7FF, 0); i < text.size();) {
    if (isSurrogate(nextScalar(text, i))) return false;
    if (i + vector::kLanes <= text.size() && vector::inRange(Units::load(text.data() + i), 0xD800, 0x7FF).noneSet()) {
      i += vector::kLanes;
    }
  }
  return true;
}

std::size_t commonPrefix(const char16_t* a, const char16_t* b, std::size_t count) {
  std::size_t i = wide::isAvailable() ? wide::leadingEqual(a, b, count) : 0;
  for (; i + vector::kLanes <= count; i += vector::kLanes) {
    const vector::Lanes same = equal(Units::load(a + i), Units::load(b + i)).lanesSet();
    if (!same.all()) return i + static_cast<std::size_t>(std::countr_one(same.bits));
  }
  while (i < count && a[i] == b[i]) ++i;
  return i;
}

std::size_t firstInRange(StringView text, char16_t low, char16_t span, std::size_t from) {
  std::size_t i = from;
  if (text.size() >= i + wide::kWorthwhile && wide::isAvailable()) {
    i += wide::leadingOutside(text.data() + i, text.size() - i, low, span);
  }
  for (; i + vector::kLanes <= text.size(); i += vector::kLanes) {
    const vector::Lanes found = vector::inRange(Units::load(text.data() + i), low, span).lanesSet();
    if (found.any()) return i + found.first();
  }
  if (i < text.size() && text.size() >= vector::kLanes) {
    // The rest lies in the last vector of the text.
    const std::size_t start = text.size() - vector::kLanes;
    vector::Lanes found = vector::inRange(Units::load(text.data() + start), low, span).lanesSet();
    found.bits = found.bits >> (i - start) << (i - start);
    return found.any() ? start + found.first() : kInvalid;
  }
  for (; i < text.size(); ++i) {
    if (static_cast<char16_t>(text[i] - low) <= span) return i;
  }
  return kInvalid;
}

std::size_t findUnit(StringView text, char16_t unit, std::size_t from) { return firstInRange(text, unit, 0, from); }

std::size_t findLiteral(StringView text, StringView needle, std::size_t from) {
  if (needle.isEmpty()) return from <= text.size() ? from : kInvalid;
  if (needle.size() == 1) return findUnit(text, needle[0], from);
  return linear::find<linear::NoFold>(text, needle, from, [](std::size_t) { return true; });
}

}  // namespace quorvel::unicode
