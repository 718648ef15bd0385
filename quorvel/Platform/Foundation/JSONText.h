// Strings of JSON text: scanned, checked and transcoded in one pass. Included by sources of the platform alone.
// Not here: strings written (JSONWriter.cpp).
#pragma once

#include <memory>

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
  explicit TextReader(Cursor<Unit>& cursor) : cursor_(cursor) {}

  /// Reads the string whose opening quotation mark stands before the cursor into raw memory.
  bool read(Value* place) {
    if constexpr (sizeof(Unit) == 1) {
      return readUTF8(place);
    } else {
      return readUTF16(place);
    }
  }

 private:
  bool store(Value* place, const char16_t* units, std::size_t size) {
    if (size > limits::kStringLength) return cursor_.fail(cursor_.at, reason::kTooLong);
    new (place) Value(String(units, size));
    return true;
  }

  bool storeScratch(Value* place, const char16_t* out) {
    return store(place, scratch_.begin(), static_cast<std::size_t>(out - scratch_.begin()));
  }

  // Escapes

  static int hexDigit(Unit unit) {
    if (unit >= Unit{'0'} && unit <= Unit{'9'}) return unit - Unit{'0'};
    const auto lower = static_cast<Unit>(unit | Unit{0x20});
    return lower >= Unit{'a'} && lower <= Unit{'f'} ? lower - Unit{'a'} + 10 : -1;
  }

  /// The unit of an escape whose "u" has been passed; negative with the failure noted.
  int hexUnit(const Unit* escape) {
    int unit = 0;
    for (int i = 0; i < 4; ++i, ++cursor_.at) {
      const int digit = cursor_.at == cursor_.end ? -1 : hexDigit(*cursor_.at);
      if (digit < 0) {
        cursor_.at == cursor_.end ? cursor_.unexpected() : cursor_.fail(escape, reason::kEscape);
        return -1;
      }
      unit = unit << 4 | digit;
    }
    return unit;
  }

  bool readUnicodeEscape(const Unit* escape, char16_t*& out) {
    const int unit = hexUnit(escape);
    if (unit < 0) return false;
    *out++ = static_cast<char16_t>(unit);
    if (!unicode::isSurrogate(static_cast<char32_t>(unit))) return true;
    if (!unicode::isHighSurrogate(static_cast<char32_t>(unit))) return cursor_.fail(escape, reason::kUnpaired);
    const Unit* const second = cursor_.at;
    if (cursor_.at == cursor_.end) return cursor_.unexpected();
    if (!cursor_.take('\\')) return cursor_.fail(escape, reason::kUnpaired);
    if (cursor_.at == cursor_.end) return cursor_.unexpected();
    if (!cursor_.take('u')) return cursor_.fail(escape, reason::kUnpaired);
    const int low = hexUnit(second);
    if (low < 0) return false;
    if (!unicode::isLowSurrogate(static_cast<char32_t>(low))) return cursor_.fail(escape, reason::kUnpaired);
    *out++ = static_cast<char16_t>(low);
    return true;
  }

  /// Reads the escape at the cursor; `out` has room for two units.
  bool readEscape(char16_t*& out) {
    static constexpr std::string_view kLetters = "\"\\/bfnrt";
    static constexpr char16_t kUnits[] = u"\"\\/\b\f\n\r\t";
    const Unit* const escape = cursor_.at++;
    if (cursor_.at == cursor_.end) return cursor_.unexpected();
    const Unit letter = *cursor_.at;
    const std::size_t place = letter < Unit{0x7F} ? kLetters.find(static_cast<char>(letter)) : std::string_view::npos;
    if (place != std::string_view::npos) {
      *out++ = kUnits[place];
      ++cursor_.at;
      return true;
    }
    if (!cursor_.take('u')) return cursor_.fail(escape, reason::kEscape);
    return readUnicodeEscape(escape, out);
  }

  // UTF-8

  /// Bytes that end a plain run: quotation mark, reverse solidus and controls.
  static bool isSpecial(char byte) { return static_cast<unsigned char>(byte) < 0x20 || byte == '"' || byte == '\\'; }

  static std::uint32_t specialBits(vector::Bytes bytes) {
    using vector::Bytes;
    return (equal(bytes, Bytes::splat('"')) | equal(bytes, Bytes::splat('\\')) | atMost(bytes, Bytes::splat(0x1F)))
        .highBits();
  }

  /// Copies ASCII up to the first special or other byte; stops early when sixteen bytes are not left.
  char16_t* copyASCII(char16_t* out) {
    const char* at = cursor_.at;
    while (static_cast<std::size_t>(cursor_.end - at) >= vector::kByteLanes) {
      out = scratch_.ensure(out, vector::kByteLanes);
      const auto bytes = vector::Bytes::load(at);
      bytes.widenLow().store(out);
      bytes.widenHigh().store(out + vector::kLanes);
      const std::uint32_t stops = specialBits(bytes) | bytes.highBits();
      const auto count = stops ? static_cast<unsigned>(std::countr_zero(stops)) : vector::kByteLanes;
      at += count;
      out += count;
      if (stops) break;
    }
    cursor_.at = at;
    return out;
  }

  /// The bytes of the well-formed sequence at the cursor with its scalar, or 0 (Unicode, table 3-7).
  int decode(char32_t& scalar) const {
    const char* const at = cursor_.at;
    const auto lead = static_cast<unsigned char>(*at);
    const int more = lead < 0xC2 || lead > 0xF4 ? 0 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
    if (more == 0 || cursor_.end - at <= more) return 0;
    scalar = static_cast<char32_t>(lead & (0x3F >> more));
    for (int i = 1; i <= more; ++i) {
      if ((at[i] & 0xC0) != 0x80) return 0;
      scalar = scalar << 6 | static_cast<char32_t>(at[i] & 0x3F);
    }
    const bool overlong = more == 2 ? scalar < 0x800 : more == 3 && scalar < 0x10000;
    return overlong || unicode::isSurrogate(scalar) || scalar > 0x10FFFF ? 0 : more + 1;
  }

  static char16_t* put(char16_t* out, char32_t scalar) {
    if (scalar > 0xFFFF) {
      *out++ = static_cast<char16_t>(0xD7C0 + (scalar >> 10));
      scalar = 0xDC00 | (scalar & 0x3FF);
    }
    *out++ = static_cast<char16_t>(scalar);
    return out;
  }

  /// Copies what is not ASCII and single ASCII bytes between; nullptr when the bytes are ill-formed.
  char16_t* copyOther(char16_t* out) {
    while (cursor_.at != cursor_.end) {
      const auto byte = static_cast<unsigned char>(*cursor_.at);
      out = scratch_.ensure(out, 2);
      if (byte < 0x80) {
        if (isSpecial(*cursor_.at) || startsASCII()) return out;
        *out++ = byte;
        ++cursor_.at;
        continue;
      }
      char32_t scalar = 0;
      const int length = decode(scalar);
      if (length == 0) return nullptr;
      cursor_.at += length;
      out = put(out, scalar);
    }
    return out;
  }

  /// Enough ASCII follows for it to be copied in blocks.
  [[nodiscard]] bool startsASCII() const {
    if (cursor_.left() < vector::kByteLanes) return false;
    std::uint64_t word;
    std::memcpy(&word, cursor_.at, sizeof word);
    return (word & 0x8080808080808080) == 0;
  }

  bool readUTF8(Value* place) {
    char16_t* out = scratch_.begin();
    while (true) {
      out = copyASCII(out);
      if (!cursor_.isAt('"')) {
        out = copyOther(out);
        if (!out) return cursor_.fail(cursor_.at, reason::kUTF8);
      }
      if (cursor_.take('"')) return storeScratch(place, out);
      if (cursor_.isAt('\\')) {
        out = scratch_.ensure(out, 2);
        if (!readEscape(out)) return false;
      } else if (cursor_.at == cursor_.end || static_cast<unsigned char>(*cursor_.at) < 0x20) {
        return cursor_.unexpected(reason::kControl);
      }
    }
  }

  // UTF-16

  static bool endsRun(char16_t unit) {
    return unit < 0x20 || unit == u'"' || unit == u'\\' || unicode::isSurrogate(unit);
  }

  static const char16_t* endOfPlain(const char16_t* at, const char16_t* end) {
    using vector::Units;
    for (; static_cast<std::size_t>(end - at) >= vector::kLanes; at += vector::kLanes) {
      const Units units = Units::load(at);
      const Units stops = equal(units, Units::splat(u'"')) | equal(units, Units::splat(u'\\')) |
                          atMost(units, Units::splat(0x1F)) | vector::inRange(units, 0xD800, 0x7FF);
      if (!stops.noneSet()) return at + stops.lanesSet().first();
    }
    while (at != end && !endsRun(*at)) ++at;
    return at;
  }

  /// Moves to what ends a run of units that stand for themselves; paired surrogates belong to the run.
  void skipRun() {
    const char16_t* at = cursor_.at;
    while (true) {
      at = endOfPlain(at, cursor_.end);
      if (cursor_.end - at < 2 || !unicode::isHighSurrogate(at[0]) || !unicode::isLowSurrogate(at[1])) break;
      at += 2;
    }
    cursor_.at = at;
  }

  bool readUTF16(Value* place) {
    const char16_t* const from = cursor_.at;
    skipRun();
    const auto size = static_cast<std::size_t>(cursor_.at - from);
    if (cursor_.take('"')) return store(place, from, size);
    char16_t* out = scratch_.ensure(scratch_.begin(), size);
    std::memcpy(out, from, size * sizeof(char16_t));
    return readPieces(place, out + size);
  }

  bool readPieces(Value* place, char16_t* out) {
    while (!cursor_.take('"')) {
      if (!cursor_.isAt('\\')) {
        return cursor_.unexpected(cursor_.at != cursor_.end && *cursor_.at < 0x20 ? reason::kControl
                                                                                  : reason::kUnpaired);
      }
      out = scratch_.ensure(out, 2);
      if (!readEscape(out)) return false;
      const char16_t* const from = cursor_.at;
      skipRun();
      const auto size = static_cast<std::size_t>(cursor_.at - from);
      out = scratch_.ensure(out, size);
      std::memcpy(out, from, size * sizeof(char16_t));
      out += size;
    }
    return storeScratch(place, out);
  }

  Cursor<Unit>& cursor_;
  Scratch scratch_;
};

}  // namespace quorvel::json
