// Where JSON text goes: a buffer of either encoding that grows at its end, and texts with their escapes.
// Included by sources of the platform alone. Not here: the walk over the value (JSONWriter.cpp).
#pragma once

#include <algorithm>
#include <array>
#include <memory>

#include <quorvel/Platform/Foundation/Unicode.h>
#include <quorvel/Platform/Foundation/Value.h>
#include <quorvel/Platform/Foundation/Vector.h>

namespace quorvel::json {

/// For the units below 128: the second character of a short escape, 'u' for a long one, 0 for a unit that stands for
/// itself.
inline constexpr std::array<char, 128> kEscapes = [] {
  std::array<char, 128> table{};
  for (std::size_t i = 0; i < 0x20; ++i) table[i] = 'u';
  table['\b'] = 'b';
  table['\f'] = 'f';
  table['\n'] = 'n';
  table['\r'] = 'r';
  table['\t'] = 't';
  for (const char itself : {'"', '\\', '/'}) table[static_cast<unsigned char>(itself)] = itself;
  return table;
}();

/// `Unit` is char for UTF-8 and char16_t for UTF-16. What is put goes behind the text so far, after `ensure`.
template <class Unit>
class Sink {
 public:
  [[nodiscard]] const Unit* begin() const { return begin_; }
  [[nodiscard]] std::size_t size() const { return static_cast<std::size_t>(at_ - begin_); }

  static constexpr std::size_t kSlack = 3 * vector::kLanes;  // UTF-8 of eight units

  /// Room for `count` units and `kSlack` more.
  void ensure(std::size_t count) {
    if (static_cast<std::size_t>(end_ - at_) < count + kSlack) grow(count);
  }
  void put(char ascii) { *at_++ = static_cast<Unit>(ascii); }
  void putASCII(std::string_view text) {
    ensure(text.size());
    for (const char byte : text) put(byte);
  }
  /// Units behind which `kSlack` more can be read: blocks of one size are cheaper to copy than the exact length.
  void putPadded(const Unit* units, std::size_t count) {
    ensure(count);
    for (std::size_t i = 0; i < count; i += kBlock) std::memcpy(at_ + i, units + i, kBlock * sizeof(Unit));
    at_ += count;
  }
  void fill(char ascii, std::size_t count) {
    ensure(count);
    at_ = std::fill_n(at_, count, static_cast<Unit>(ascii));
  }

  /// The text of `value` in quotation marks; false when a surrogate in it is not one of a pair.
  bool putQuoted(const Value& value) {
    const StringView text = value.text();
    ensure(text.size() + 2);
    put('"');
    const bool isInline = static_cast<const void*>(text.data()) == &value;
    const char16_t* at = isInline ? copyInline(text) : text.begin();
    while (at != text.end()) {
      at = copyRun(at, text.end());
      if (at != text.end()) at = copyOther(at, text.end());
      if (!at) return false;
    }
    ensure(1);
    put('"');
    return true;
  }

 private:
  using Units = vector::Units;

  static constexpr bool kIsUTF16 = sizeof(Unit) == sizeof(char16_t);
  static constexpr std::size_t kBlock = 16 / sizeof(Unit);
  static constexpr std::size_t kInline = 4096 / sizeof(Unit);

  [[gnu::noinline]] void grow(std::size_t count) {
    const std::size_t used = size();
    const std::size_t capacity = (used + count + kSlack) * 2;
    auto larger = std::make_unique_for_overwrite<Unit[]>(capacity);
    std::memcpy(larger.get(), begin_, used * sizeof(Unit));
    heap_ = std::move(larger);
    begin_ = heap_.get();
    at_ = begin_ + used;
    end_ = begin_ + capacity;
  }

  /// How many units at the front stand for themselves.
  static std::size_t plainUnits(Units units) {
    const Units stops = equal(units, Units::splat(u'"')) | equal(units, Units::splat(u'\\')) |
                        equal(units, Units::splat(u'/')) | atMost(units, Units::splat(0x1F)) |
                        vector::inRange(units, 0xD800, 0x7FF);
    return static_cast<std::size_t>(std::countr_zero(stops.lanesSet().bits | 1U << vector::kLanes));
  }

  /// Writes the first `count` of eight units, which stand for themselves.
  void putPlain(Units units, const char16_t* at, std::size_t count) {
    if constexpr (kIsUTF16) {
      units.store(at_);
      at_ += count;
    } else if (atMost(units, Units::splat(0x7F)).lanesSet().all()) {
      units.narrow(at_);
      at_ += count;
    } else {
      for (std::size_t i = 0; i < count; ++i) putPlain(at[i]);
    }
  }

  void putPlain(char16_t unit) {
    if (kIsUTF16 || unit < 0x80) {
      *at_++ = static_cast<Unit>(unit);
    } else if (unit < 0x800) {
      put(static_cast<char>(0xC0 | unit >> 6));
      put(static_cast<char>(0x80 | (unit & 0x3F)));
    } else {
      put(static_cast<char>(0xE0 | unit >> 12));
      put(static_cast<char>(0x80 | (unit >> 6 & 0x3F)));
      put(static_cast<char>(0x80 | (unit & 0x3F)));
    }
  }

  /// Copies what stands for itself at the front of a text of at most seven units whose 16 bytes can be read whole.
  const char16_t* copyInline(StringView text) {
    const Units units = Units::load(text.data());
    const std::size_t count = std::min(plainUnits(units), text.size());
    putPlain(units, text.data(), count);
    return text.data() + count;
  }

  /// Copies units that stand for themselves and answers where they end.
  const char16_t* copyRun(const char16_t* at, const char16_t* end) {
    for (; static_cast<std::size_t>(end - at) >= vector::kLanes; at += vector::kLanes) {
      ensure(vector::kLanes);
      const Units units = Units::load(at);
      const std::size_t count = plainUnits(units);
      putPlain(units, at, count);
      if (count != vector::kLanes) return at + count;
    }
    ensure(3 * vector::kLanes);
    while (at != end && (*at < 0x80 ? kEscapes[*at] == 0 : !unicode::isSurrogate(*at))) putPlain(*at++);
    return at;
  }

  /// Writes an escape or a pair of surrogates; nullptr for one that is unpaired.
  const char16_t* copyOther(const char16_t* at, const char16_t* end) {
    ensure(6);
    if (*at < 0x80) {
      putEscape(*at);
      return at + 1;
    }
    if (!unicode::isHighSurrogate(at[0]) || end - at < 2 || !unicode::isLowSurrogate(at[1])) return nullptr;
    if constexpr (kIsUTF16) {
      *at_++ = at[0];
      *at_++ = at[1];
    } else {
      const char32_t scalar = unicode::scalarOf(at[0], at[1]);
      put(static_cast<char>(0xF0 | scalar >> 18));
      put(static_cast<char>(0x80 | (scalar >> 12 & 0x3F)));
      put(static_cast<char>(0x80 | (scalar >> 6 & 0x3F)));
      put(static_cast<char>(0x80 | (scalar & 0x3F)));
    }
    return at + 2;
  }

  void putEscape(char16_t unit) {
    static constexpr char kDigits[] = "0123456789abcdef";
    const char letter = kEscapes[unit];
    put('\\');
    put(letter);
    if (letter != 'u') return;
    put('0');
    put('0');
    put(kDigits[unit >> 4]);
    put(kDigits[unit & 15]);
  }

  Unit inline_[kInline];
  std::unique_ptr<Unit[]> heap_;
  Unit* begin_ = inline_;
  Unit* at_ = inline_;
  Unit* end_ = inline_ + kInline;
};

}  // namespace quorvel::json
