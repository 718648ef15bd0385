// Strings of JSON text: scanned, checked and transcoded in one pass. Included by sources of the platform alone.
// Not here: strings written (JSONWriter.cpp).
#pragma once

#include <bit>
#include <memory>

#include <quorvel/Platform/Foundation/BlockPages.h>
#include <quorvel/Platform/Foundation/JSONCursor.h>
#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/Foundation/Unicode.h>
#include <quorvel/Platform/Foundation/Vector.h>

namespace quorvel::json {

/// Units of one string on their way into it. The caller keeps the end of what he wrote.
class Scratch {
 public:
  [[nodiscard]] char16_t* begin() { return begin_; }
  /// `out` with room for `count` units after it, moved when the buffer grew.
  [[nodiscard]] char16_t* ensure(char16_t* out, std::size_t count) {
    return static_cast<std::size_t>(end_ - out) >= count ? out : grow(out, count);
  }

 private:
  static constexpr std::size_t kInline = 512;

  [[gnu::noinline]] char16_t* grow(char16_t* out, std::size_t count) {
    const auto used = static_cast<std::size_t>(out - begin_);
    const std::size_t capacity = (used + count) * 2;
    auto larger = std::make_unique_for_overwrite<char16_t[]>(capacity);
    std::memcpy(larger.get(), begin_, used * sizeof(char16_t));
    heap_ = std::move(larger);
    begin_ = heap_.get();
    end_ = begin_ + capacity;
    return begin_ + used;
  }

  char16_t inline_[kInline];
  std::unique_ptr<char16_t[]> heap_;
  char16_t* begin_ = inline_;
  char16_t* end_ = inline_ + kInline;
};

template <class Unit>
class TextReader {
 public:
  TextReader(Source<Unit>& source, blockcache::Pages& pages) : source_(source), pages_(pages) {}

  /// Reads the string whose opening quotation mark stands before `at` into raw memory.
  const Unit* read(const Unit* at, Value* place) {
    if (source_.left(at) >= vector::kByteLanes) [[likely]] {
      if (const Unit* end = readShort(at, place)) return end;
    }
    if constexpr (sizeof(Unit) == 1) {
      return readUTF8(at, place);
    } else {
      return readUTF16(at, place);
    }
  }

 private:
  using Units = vector::Units;
  using Bytes = vector::Bytes;

  // Plain texts of at most seven units: they take no more than one load.

  const Unit* readShort(const Unit* at, Value* place) {
    Units units;
    std::uint32_t stops;
    if constexpr (sizeof(Unit) == 1) {
      const auto bytes = Bytes::load(at);
      stops = specialBits(bytes) | bytes.highBits();
      units = bytes.widenLow();
    } else {
      units = Units::load(at);
      stops = stopsOf(units).lanesSet().bits;
    }
    const auto size = static_cast<std::size_t>(std::countr_zero(stops));
    if (size > String::kInlineCapacity || at[size] != Unit{'"'}) return nullptr;
    placeShort(place, units, size);
    return at + size + 1;
  }

  /// The layout of String: units, and the length in the last byte.
  static void placeShort(Value* place, Units units, std::size_t size) {
    static constexpr char16_t kKeep[2 * vector::kLanes] = {0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF,
                                                           0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF};
    alignas(String) unsigned char bytes[sizeof(String)];
    (units & Units::load(kKeep + vector::kLanes - size)).store(reinterpret_cast<char16_t*>(bytes));
    bytes[sizeof bytes - 1] = static_cast<unsigned char>(size);
    std::memcpy(static_cast<void*>(place), bytes, sizeof bytes);
  }

  const Unit* store(const Unit* at, Value* place, const char16_t* units, std::size_t size) {
    if (size > limits::kStringLength) return source_.fail(at, reason::kTooLong);
    new (place) Value(String::among({units, size}, pages_));
    return at;
  }
  const Unit* storeScratch(const Unit* at, Value* place, const char16_t* out) {
    return store(at, place, scratch_.begin(), static_cast<std::size_t>(out - scratch_.begin()));
  }

  // Escapes

  static int hexDigit(Unit unit) {
    if (unit >= Unit{'0'} && unit <= Unit{'9'}) return unit - Unit{'0'};
    const auto lower = static_cast<Unit>(unit | Unit{0x20});
    return lower >= Unit{'a'} && lower <= Unit{'f'} ? lower - Unit{'a'} + 10 : -1;
  }

  /// The four digits behind "\u" of the escape that begins at `escape`.
  const Unit* readHex(const Unit* escape, char16_t& unit) {
    const Unit* at = escape + 2;
    std::uint32_t collected = 0;
    for (const Unit* const behind = escape + 6; at != behind; ++at) {
      const int digit = at == source_.end ? -1 : hexDigit(*at);
      if (digit < 0) return at == source_.end ? source_.unexpected(at) : source_.fail(escape, reason::kEscape);
      collected = collected << 4 | static_cast<std::uint32_t>(digit);
    }
    unit = static_cast<char16_t>(collected);
    return at;
  }

  const Unit* readUnicodeEscape(const Unit* escape, char16_t*& out) {
    const Unit* at = readHex(escape, *out);
    if (!at || !unicode::isSurrogate(*out++)) return at;
    if (unicode::isLowSurrogate(out[-1])) return source_.fail(escape, reason::kUnpaired);
    const Unit* const second = at;
    for (const char wanted : {'\\', 'u'}) {
      if (at == source_.end) return source_.unexpected(at);
      if (*at++ != static_cast<Unit>(wanted)) return source_.fail(escape, reason::kUnpaired);
    }
    at = readHex(second, *out);
    if (at && !unicode::isLowSurrogate(*out)) return source_.fail(escape, reason::kUnpaired);
    ++out;
    return at;
  }

  /// Reads the escape at `escape`; `out` has room for two units.
  const Unit* readEscape(const Unit* escape, char16_t*& out) {
    static constexpr std::string_view kLetters = "\"\\/bfnrt";
    static constexpr char16_t kUnits[] = u"\"\\/\b\f\n\r\t";
    if (escape + 1 == source_.end) return source_.unexpected(escape + 1);
    const Unit letter = escape[1];
    if (letter == Unit{'u'}) return readUnicodeEscape(escape, out);
    const std::size_t place = letter < Unit{0x7F} ? kLetters.find(static_cast<char>(letter)) : std::string_view::npos;
    if (place == std::string_view::npos) return source_.fail(escape, reason::kEscape);
    *out++ = kUnits[place];
    return escape + 2;
  }

  // UTF-8

  /// Bytes that end a plain run: quotation mark, reverse solidus and controls.
  static bool isSpecial(char byte) { return static_cast<unsigned char>(byte) < 0x20 || byte == '"' || byte == '\\'; }

  static std::uint32_t specialBits(Bytes bytes) {
    return (equal(bytes, Bytes::splat('"')) | equal(bytes, Bytes::splat('\\')) | atMost(bytes, Bytes::splat(0x1F)))
        .highBits();
  }

  /// The first special byte, or the end of the text.
  [[nodiscard]] const char* endOfRun(const char* at) const {
    for (; source_.left(at) >= vector::kByteLanes; at += vector::kByteLanes) {
      if (const std::uint32_t stops = specialBits(Bytes::load(at))) return at + std::countr_zero(stops);
    }
    while (at != source_.end && !isSpecial(*at)) ++at;
    return at;
  }

  /// Copies what stands for itself.
  const char* copyRun(const char* at, char16_t*& out) {
    const char* const stop = endOfRun(at);
    const std::string_view run(at, static_cast<std::size_t>(stop - at));
    out = scratch_.ensure(out, run.size() + 2);
    const std::size_t size = unicode::utf8ToUTF16(run, out);
    if (size == unicode::kInvalid) return source_.fail(at + unicode::wellFormedLength(run), reason::kUTF8);
    out += size;
    return stop;
  }

  const char* readUTF8(const char* at, Value* place) {
    char16_t* out = scratch_.begin();
    while (true) {
      at = copyRun(at, out);
      if (!at) return nullptr;
      if (source_.isAt(at, '"')) return storeScratch(at + 1, place, out);
      if (!source_.isAt(at, '\\')) return source_.unexpected(at, reason::kControl);
      at = readEscape(at, out);
      if (!at) return nullptr;
    }
  }

  // UTF-16

  static Units stopsOf(Units units) {
    return equal(units, Units::splat(u'"')) | equal(units, Units::splat(u'\\')) | atMost(units, Units::splat(0x1F)) |
           vector::inRange(units, 0xD800, 0x7FF);
  }
  static bool isStop(char16_t unit) {
    return unit < 0x20 || unit == u'"' || unit == u'\\' || unicode::isSurrogate(unit);
  }

  static const char16_t* endOfPlain(const char16_t* at, const char16_t* end) {
    for (; static_cast<std::size_t>(end - at) >= vector::kLanes; at += vector::kLanes) {
      const vector::Lanes stops = stopsOf(Units::load(at)).lanesSet();
      if (stops.any()) return at + stops.first();
    }
    while (at != end && !isStop(*at)) ++at;
    return at;
  }

  /// The end of a run of units that stand for themselves; paired surrogates belong to it.
  const char16_t* endOfRun(const char16_t* at) const {
    while (true) {
      at = endOfPlain(at, source_.end);
      if (source_.left(at) < 2 || !unicode::isHighSurrogate(at[0]) || !unicode::isLowSurrogate(at[1])) return at;
      at += 2;
    }
  }

  const char16_t* readUTF16(const char16_t* from, Value* place) {
    const char16_t* at = endOfRun(from);
    if (source_.isAt(at, '"')) return store(at + 1, place, from, static_cast<std::size_t>(at - from));
    return readPieces(from, at, place);
  }

  /// A string with escapes: the run of units from `from` to `at`, then escapes and runs in turn.
  const char16_t* readPieces(const char16_t* from, const char16_t* at, Value* place) {
    char16_t* out = scratch_.begin();
    while (true) {
      const auto size = static_cast<std::size_t>(at - from);
      out = scratch_.ensure(out, size + 2);
      std::memcpy(out, from, size * sizeof(char16_t));
      out += size;
      if (source_.isAt(at, '"')) return storeScratch(at + 1, place, out);
      if (!source_.isAt(at, '\\')) {
        return source_.unexpected(at, at != source_.end && *at < 0x20 ? reason::kControl : reason::kUnpaired);
      }
      from = readEscape(at, out);
      if (!from) return nullptr;
      at = endOfRun(from);
    }
  }

  Source<Unit>& source_;
  blockcache::Pages& pages_;
  Scratch scratch_;
};

}  // namespace quorvel::json
