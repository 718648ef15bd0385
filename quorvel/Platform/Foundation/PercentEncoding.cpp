#include <algorithm>
#include <bit>

#include <unicode/uchar.h>

#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/Foundation/PercentEncoding.h>
#include <quorvel/Platform/Foundation/Unicode.h>
#include <quorvel/Platform/Foundation/Vector.h>

namespace quorvel {
namespace {

// Whole vectors and words are stored, of which a part counts: the next store overwrites the rest.
static_assert(std::endian::native == std::endian::little);
constexpr std::size_t kSlack = wide::kUnitSlack;
/// Results that cannot become longer than this are written on the stack first.
constexpr std::size_t kShort = 128;

constexpr std::array<std::uint64_t, 256> kEscapes = [] {
  std::array<std::uint64_t, 256> table{};
  for (unsigned byte = 0; byte < 256; ++byte) table[byte] = PercentAllowed::escaped(byte);
  return table;
}();

constexpr std::size_t kEscapeUnits = 3;

char16_t* put(char16_t* out, std::uint64_t written) {
  std::memcpy(out, &written, sizeof written);
  return out + (written >> 48);
}

char16_t* putEscaped(char16_t* out, char32_t scalar) {
  if (scalar < 0x800) {
    out = put(out, kEscapes[0xC0 | scalar >> 6]);
  } else {
    if (scalar < 0x10000) {
      out = put(out, kEscapes[0xE0 | scalar >> 12]);
    } else {
      out = put(out, kEscapes[0xF0 | scalar >> 18]);
      out = put(out, kEscapes[0x80 | (scalar >> 12 & 0x3F)]);
    }
    out = put(out, kEscapes[0x80 | (scalar >> 6 & 0x3F)]);
  }
  return put(out, kEscapes[0x80 | (scalar & 0x3F)]);
}

bool isASCIIBlock(const char16_t* units) {
  return atMost(vector::Units::load(units), vector::Units::splat(0x7F)).lanesSet().all();
}

/// Encoding by rules that say what is written for an ASCII unit, and whether another scalar stays.
template <class Rules>
class Encoder {
 public:
  Encoder(StringView text, Rules rules) : text_(text), rules_(rules) {}

  /// The place of the first scalar that does not stay, or the text's size; an unpaired surrogate counts as one.
  [[nodiscard]] std::size_t firstChange() const {
    for (std::size_t i = rules_.leadingPlain(text_); i < text_.size();) {
      const std::size_t start = i;
      const char16_t unit = text_[i];
      const char32_t scalar = unicode::nextScalar(text_, i);
      const bool stays = unit < 0x80 ? rules_.written(unit) >> 48 == 1 : rules_.stays(scalar);
      if (!stays || unicode::isSurrogate(scalar)) return start;
    }
    return text_.size();
  }

  /// No less than the units that `write` writes from `from` on.
  [[nodiscard]] std::size_t measure(std::size_t from) const {
    std::size_t length = 0;
    const char16_t* at = text_.data() + from;
    const char16_t* const end = text_.end();
    while (at < end) {
      const wide::Progress done = rules_.measure(at, end);
      at += done.read;
      length += done.written;
      if (static_cast<std::size_t>(end - at) >= vector::kLanes && isASCIIBlock(at)) {
        for (std::size_t i = 0; i < vector::kLanes; ++i) length += rules_.written(at[i]) >> 48;
        at += vector::kLanes;
        continue;
      }
      const StringView chunk = chunkAt(at, kMeasured);
      length += 3 * unicode::utf8Length(chunk);
      at = chunk.end();
    }
    return length;
  }

  /// Answers the end of what it wrote; nullptr at an unpaired surrogate.
  [[nodiscard]] char16_t* write(std::size_t from, char16_t* out) const {
    const Rules rules = rules_;  // in registers: what is stored through `out` could change a member
    const char16_t* at = text_.data() + from;
    const char16_t* const end = text_.end();
    while (at < end) {
      const wide::Progress done = rules.write(at, end, out);
      at += done.read;
      out += done.written;
      if (static_cast<std::size_t>(end - at) >= vector::kLanes && isASCIIBlock(at)) {
        for (std::size_t i = 0; i < vector::kLanes; ++i) out = put(out, rules.written(at[i]));
        at += vector::kLanes;
        continue;
      }
      const StringView chunk = chunkAt(at, vector::kLanes);
      out = Rules::kOthersStay ? writeScalars(chunk, out) : writeBytes(chunk, out);
      if (!out) return nullptr;
      at = chunk.end();
    }
    return out;
  }

 private:
  static constexpr std::size_t kMeasured = 64;

  /// Some units at a time, and no pair cut in two.
  [[nodiscard]] StringView chunkAt(const char16_t* at, std::size_t most) const {
    const auto left = static_cast<std::size_t>(text_.end() - at);
    const std::size_t size = std::min(most, left);
    const bool cutsPair = size < left && unicode::isHighSurrogate(at[size - 1]) && unicode::isLowSurrogate(at[size]);
    return {at, cutsPair ? size + 1 : size};
  }

  /// Where no other scalar stays. ASCII and what takes three bytes, often mixed, are written without a branch between
  /// them: all three escapes always, of which ASCII lets the next ones overwrite all but its own.
  char16_t* writeBytes(StringView chunk, char16_t* out) const {
    const Rules rules = rules_;
    for (const char16_t* at = chunk.begin(); at < chunk.end(); ++at) {
      const char16_t unit = *at;
      if (unit - 0x80U < 0x780) {
        out = putEscaped(out, unit);
      } else if (unicode::isSurrogate(unit)) [[unlikely]] {
        if (chunk.end() - at < 2 || !unicode::isHighSurrogate(at[0]) || !unicode::isLowSurrogate(at[1])) return nullptr;
        out = putEscaped(out, unicode::scalarOf(at[0], at[1]));
        ++at;
      } else {
        const std::uint32_t isLong = 0U - (unit >= 0x80);  // a mask, which no compiler turns into a branch
        const std::uint64_t first =
            rules.written(static_cast<char16_t>((unit & ~isLong) | ((0xE0U | unit >> 12) & isLong)));
        put(out, first);
        put(out + kEscapeUnits, kEscapes[0x80 | (unit >> 6 & 0x3F)]);
        put(out + 2 * kEscapeUnits, kEscapes[0x80 | (unit & 0x3F)]);
        out += (first >> 48) + (2 * kEscapeUnits & isLong);
      }
    }
    return out;
  }

  char16_t* writeScalars(StringView chunk, char16_t* out) const {
    for (const char16_t* at = chunk.begin(); at && at < chunk.end();) {
      at = writeScalar(at, chunk.end(), out);
      if (!at) return nullptr;
    }
    return out;
  }

  /// Moves `out` behind what is written for the scalar at `at`, and answers the next scalar's place.
  const char16_t* writeScalar(const char16_t* at, const char16_t* end, char16_t*& out) const {
    const char16_t unit = *at;
    if (unit < 0x80) {
      out = put(out, rules_.written(unit));
      return at + 1;
    }
    if (unicode::isSurrogate(unit)) return writePair(at, end, out);
    if (rules_.stays(unit)) {
      *out++ = unit;
    } else {
      out = putEscaped(out, unit);
    }
    return at + 1;
  }

  const char16_t* writePair(const char16_t* at, const char16_t* end, char16_t*& out) const {
    if (end - at < 2 || !unicode::isHighSurrogate(at[0]) || !unicode::isLowSurrogate(at[1])) return nullptr;
    const char32_t scalar = unicode::scalarOf(at[0], at[1]);
    if (rules_.stays(scalar)) {
      *out++ = at[0];
      *out++ = at[1];
    } else {
      out = putEscaped(out, scalar);
    }
    return at + 2;
  }

  StringView text_;
  Rules rules_;
};

template <class Rules>
std::optional<String> encode(const String& text, const Rules& rules) {
  const Encoder<Rules> encoder(text, rules);
  const std::size_t kept = encoder.firstChange();
  if (kept == text.size()) return text;
  const std::size_t room = kept + encoder.measure(kept) + kSlack;
  if (room > limits::kStringLength) return nil;
  char16_t* end = nullptr;
  const auto fill = [&](char16_t* out) {
    std::memcpy(out, text.data(), kept * sizeof(char16_t));
    end = encoder.write(kept, out + kept);
    return end ? static_cast<std::size_t>(end - out) : 0;
  };
  if (room <= kShort) {
    char16_t buffer[kShort];
    const std::size_t size = fill(buffer);
    if (!end) return nil;
    return String(buffer, size);
  }
  String result = String::build(room, fill);
  if (!end) return nil;
  return result;
}

template <PercentAllowed::NonASCII kOthers>
struct TableRules {
  static constexpr bool kOthersStay = kOthers != PercentAllowed::NonASCII::None;

  const PercentAllowed& allowed;
  [[nodiscard]] std::uint64_t written(char16_t unit) const { return allowed.written(unit); }
  [[nodiscard]] bool stays([[maybe_unused]] char32_t scalar) const {
    if constexpr (kOthers == PercentAllowed::NonASCII::NonBase) {
      return (U_GET_GC_MASK(static_cast<UChar32>(scalar)) & U_GC_M_MASK) != 0;
    }
    return kOthers == PercentAllowed::NonASCII::All;
  }
  [[nodiscard]] std::size_t leadingPlain(StringView text) const {
    return wide::isAvailable() ? wide::leadingMembers(text.data(), text.size(), allowed.stays()) : 0;
  }
  [[nodiscard]] wide::Progress measure(const char16_t* at, const char16_t* end) const {
    if (!isWideASCII(at, end)) return {0, 0};
    return wide::percentLength(at, static_cast<std::size_t>(end - at), allowed.stays());
  }
  [[nodiscard]] wide::Progress write(const char16_t* at, const char16_t* end, char16_t* out) const {
    const auto size = static_cast<std::size_t>(end - at);
    if (isWideASCII(at, end)) return wide::percentEncode(at, size, allowed.stays(), kEscapes.data(), out);
    if (kOthersStay || !wide::isAvailable()) return {0, 0};
    return wide::percentEncodeBytes(at, size, allowed.written(), out);
  }

 private:
  /// True where the wide kernels get on.
  static bool isWideASCII(const char16_t* at, const char16_t* end) {
    return end - at >= 32 && wide::isAvailable() && isASCIIBlock(at);
  }
};

struct SetRules {
  static constexpr bool kOthersStay = true;

  const NSCharacterSet& allowed;
  [[nodiscard]] std::uint64_t written(char16_t unit) const {
    return allowed.contains(unit) ? PercentAllowed::plain(static_cast<char>(unit)) : kEscapes[unit];
  }
  [[nodiscard]] bool stays(char32_t scalar) const { return allowed.contains(scalar); }
  // A set of any kind goes unit by unit.
  [[nodiscard]] static std::size_t leadingPlain(StringView) { return 0; }
  [[nodiscard]] static wide::Progress measure(const char16_t*, const char16_t*) { return {0, 0}; }
  [[nodiscard]] static wide::Progress write(const char16_t*, const char16_t*, char16_t*) { return {0, 0}; }
};

/// The value of a hexadecimal digit; a large negative number for other bytes, which stays negative when values of
/// other digits are combined with it.
constexpr std::array<std::int16_t, 256> kHexValues = [] {
  std::array<std::int16_t, 256> table{};
  table.fill(INT16_MIN);
  constexpr std::string_view kUpper = "0123456789ABCDEF";
  constexpr std::string_view kLower = "0123456789abcdef";
  for (std::size_t value = 0; value < 16; ++value) {
    table[static_cast<unsigned char>(kUpper[value])] = static_cast<std::int16_t>(value);
    table[static_cast<unsigned char>(kLower[value])] = static_cast<std::int16_t>(value);
  }
  return table;
}();

/// The byte of the escape at `at`, where three units are; negative when they are none.
int escapeAt(const char16_t* at) {
  if (at[0] != u'%' || (at[1] | at[2]) > 0xFF) return -1;
  return kHexValues[at[1]] * 16 | kHexValues[at[2]];
}

/// How far decoding came. Passed by value, so that both stay in registers.
struct Decoded {
  const char16_t* at;  // what comes next; nullptr at what is no escape or not UTF-8
  char16_t* out;
};

/// The character of three escapes that are a sequence of UTF-8; 0 for any others.
char16_t threeEscapes(const char16_t* at, int lead) {
  if ((lead & 0xF0) != 0xE0) return 0;
  const int second = escapeAt(at + kEscapeUnits) - 0x80;
  const int third = escapeAt(at + 2 * kEscapeUnits) - 0x80;
  if (static_cast<unsigned>(second | third) > 0x3F) return 0;
  const auto unit = static_cast<char16_t>(lead << 12 | second << 6 | third);
  return unit < 0x800 || unicode::isSurrogate(unit) ? u'\0' : unit;
}

/// The sequence of UTF-8 whose lead byte comes from the escape at `at`. RFC 3629, section 4: only the second byte has
/// narrower bounds after some leads.
Decoded decodeSequence(const char16_t* at, const char16_t* end, int lead, char16_t* out) {
  if (end - at >= static_cast<std::ptrdiff_t>(3 * kEscapeUnits)) {
    if (const char16_t unit = threeEscapes(at, lead)) {
      *out = unit;
      return {at + 3 * kEscapeUnits, out + 1};
    }
  }
  if (lead < 0xC2 || lead > 0xF4) return {nullptr, out};
  const int more = lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
  if (end - at < static_cast<std::ptrdiff_t>(kEscapeUnits) * (more + 1)) return {nullptr, out};
  int low = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
  int high = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
  char32_t scalar = static_cast<unsigned>(lead) & (0x3FU >> more);
  for (int i = 0; i < more; ++i) {
    at += kEscapeUnits;
    const int byte = escapeAt(at);
    if (byte < low || byte > high) return {nullptr, out};
    scalar = scalar << 6 | (static_cast<unsigned>(byte) & 0x3F);
    low = 0x80;
    high = 0xBF;
  }
  if (scalar > 0xFFFF) {
    *out++ = static_cast<char16_t>(0xD7C0 + (scalar >> 10));
    scalar = 0xDC00 | (scalar & 0x3FF);
  }
  *out++ = static_cast<char16_t>(scalar);
  return {at + kEscapeUnits, out};
}

/// Decodes the escapes at `at` while one follows another.
Decoded decodeRun(const char16_t* at, const char16_t* end, char16_t* out) {
  while (at < end && *at == u'%') {
    const int byte = end - at < 3 ? -1 : escapeAt(at);
    if (byte < 0) return {nullptr, out};
    if (byte < 0x80) {
      *out++ = static_cast<char16_t>(byte);
      at += kEscapeUnits;
      continue;
    }
    const Decoded next = decodeSequence(at, end, byte, out);
    if (!next.at) return next;
    at = next.at;
    out = next.out;
  }
  return {at, out};
}

constexpr auto kBlock = static_cast<std::ptrdiff_t>(vector::kBlock);

/// Copies up to a block of units as whole vectors, so `out` needs `vector::kLanes` units more, and so does the text.
char16_t* copyRun(const char16_t* from, const char16_t* to, char16_t* out) {
  constexpr auto kStep = static_cast<std::ptrdiff_t>(vector::kLanes);
  const std::ptrdiff_t count = to - from;
  vector::Units::load(from).store(out);
  for (std::ptrdiff_t i = kStep; i < count; i += kStep) vector::Units::load(from + i).store(out + i);
  return out + count;
}

/// Decodes a block and the escapes that reach out of it.
Decoded decodeBlock(const char16_t* at, const char16_t* end, char16_t* out) {
  const char16_t* const block = at;
  std::uint32_t percents = vector::placesInBlock(block, u'%');
  while (percents != 0) {
    const char16_t* const place = block + std::countr_zero(percents);
    percents &= percents - 1;
    out = copyRun(at, place, out);
    const int byte = escapeAt(place);
    if (byte >= 0 && byte < 0x80) [[likely]] {
      *out++ = static_cast<char16_t>(byte);
      at = place + kEscapeUnits;
      continue;
    }
    if (byte < 0) return {nullptr, out};
    const Decoded next = decodeRun(place, end, out);
    if (!next.at || next.at - block >= kBlock) return next;
    at = next.at;
    out = next.out;
    percents &= ~std::uint32_t{0} << (at - block);
  }
  if (at - block >= kBlock) return {at, out};
  return {block + kBlock, copyRun(at, block + kBlock, out)};
}

/// Units written, or `unicode::kInvalid`. `out` has room for the text and `vector::kLanes` units more.
std::size_t decode(StringView text, char16_t* const start) {
  Decoded done{text.begin(), start};
  while (done.at && text.end() - done.at >= kBlock + static_cast<std::ptrdiff_t>(vector::kLanes)) {
    done = decodeBlock(done.at, text.end(), done.out);
  }
  while (done.at && done.at < text.end()) {
    if (*done.at == u'%') {
      done = decodeRun(done.at, text.end(), done.out);
    } else {
      *done.out++ = *done.at++;
    }
  }
  return done.at ? static_cast<std::size_t>(done.out - start) : unicode::kInvalid;
}

}  // namespace

std::optional<String> addingPercentEncoding(const String& text, const PercentAllowed& allowed) {
  using NonASCII = PercentAllowed::NonASCII;
  switch (allowed.others()) {
    case NonASCII::None:
      return encode(text, TableRules<NonASCII::None>{allowed});
    case NonASCII::All:
      return encode(text, TableRules<NonASCII::All>{allowed});
    case NonASCII::NonBase:
      return encode(text, TableRules<NonASCII::NonBase>{allowed});
  }
  return nil;
}

std::optional<String> addingPercentEncoding(const String& text, const NSCharacterSet& allowed) {
  return encode(text, SetRules{allowed});
}

std::optional<String> removingPercentEncoding(const String& text) {
  if (!unicode::isWellFormed(text)) return nil;
  if (unicode::findUnit(text, u'%') == unicode::kInvalid) return text;
  // Room for the text itself: a "%" that is no escape may stand behind any amount of plain text.
  const std::size_t room = text.size() + vector::kLanes;
  std::size_t size = 0;
  if (room <= kShort) {
    char16_t buffer[kShort];
    size = decode(text, buffer);
    if (size == unicode::kInvalid) return nil;
    return String(buffer, size);
  }
  String result = String::build(room, [&](char16_t* out) {
    size = decode(text, out);
    return size == unicode::kInvalid ? 0 : size;
  });
  if (size == unicode::kInvalid) return nil;
  return result;
}

}  // namespace quorvel
