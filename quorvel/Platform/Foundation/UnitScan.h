// Scanning for a few characters at once, and classes of units that need no character data. Included by sources only.
#pragma once

#include <array>

#include <quorvel/Platform/Foundation/Unicode.h>
#include <quorvel/Platform/Foundation/Vector.h>
#include <quorvel/Platform/Foundation/WideKernels.h>

namespace quorvel::unitscan {

/// Copies a text that is short most of the time, by two moves that may overlap; the place behind it.
inline char16_t* copyUnits(char16_t* out, StringView text) {
  const std::size_t size = text.size();
  const auto both = [&]<class Word>(Word word) {
    const std::size_t behind = size - sizeof(Word) / sizeof(char16_t);
    Word last;
    std::memcpy(&word, text.data(), sizeof word);
    std::memcpy(&last, text.data() + behind, sizeof last);
    std::memcpy(out, &word, sizeof word);
    std::memcpy(out + behind, &last, sizeof last);
  };
  if (size > 16) {
    std::memcpy(out, text.data(), size * sizeof(char16_t));
  } else if (size >= 8) {
    both(std::array<std::uint64_t, 2>{});
  } else if (size >= 4) {
    both(std::uint64_t{});
  } else {
    for (std::size_t i = 0; i < size; ++i) out[i] = text[i];
  }
  return out + size;
}

/// A set of characters given as a text, for one call: no allocation. Up to four units of the basic plane are sought
/// eight places at a time, larger sets by a bitmap for Latin-1 and a look through the text for the rest.
class AnyOf {
 public:
  explicit AnyOf(StringView characters) : characters_(characters) {
    for (const char16_t unit : characters.units()) {
      if (unit < 256) {
        latin_[unit / 64] |= std::uint64_t{1} << (unit % 64);
      } else {
        beyondLatin_ = true;
      }
      surrogates_ = surrogates_ || unicode::isSurrogate(unit);
    }
  }

  /// Copies the text without its members; the number of units that are left.
  [[nodiscard]] std::size_t copyWithout(StringView text, char16_t* const start) const {
    if (surrogates_ || characters_.size() > 4 || characters_.isEmpty()) return copyPieces(text, start);
    const wide::Progress done = copyWithoutFew(text, start);
    char16_t* out = start + done.written;
    std::size_t from = done.read;
    while (from + vector::kLanes <= text.size()) {
      const vector::Units units = vector::Units::load(text.data() + from);
      std::uint32_t found = fewMembers(units).lanesSet().bits;
      if (found == 0) {
        units.store(out);
        out += vector::kLanes;
        from += vector::kLanes;
        continue;
      }
      // Each unit is written, and written over when it is a member: nothing here depends on the data.
      for (std::size_t lane = 0; lane < vector::kLanes; ++lane, found >>= 1) {
        *out = text[from++];
        out += 1 - (found & 1);
      }
    }
    for (; from < text.size(); ++from) {
      if (!containsUnit(text[from])) *out++ = text[from];
    }
    return static_cast<std::size_t>(out - start);
  }

  /// The first place at or after `from` that starts a member, or the text's size; `length` is how many units it has.
  [[nodiscard]] std::size_t find(StringView text, std::size_t from, std::size_t& length) const {
    length = 1;
    if (characters_.isEmpty()) return text.size();
    if (surrogates_) return findScalar(text, from, length);
    return characters_.size() <= 4 ? findVector(text, from) : findUnit(text, from);
  }

 private:
  [[nodiscard]] bool containsUnit(char16_t unit) const {
    if (unit < 256) return (latin_[unit / 64] >> (unit % 64) & 1) != 0;
    return beyondLatin_ && characters_.units().find(unit) != std::u16string_view::npos;
  }
  [[nodiscard]] std::size_t findUnit(StringView text, std::size_t from) const {
    while (from < text.size() && !containsUnit(text[from])) ++from;
    return from;
  }
  [[nodiscard]] std::size_t copyPieces(StringView text, char16_t* const start) const {
    char16_t* out = start;
    for (std::size_t from = 0;;) {
      std::size_t length = 0;
      const std::size_t found = find(text, from, length);
      out = copyUnits(out, text.sub(from, found - from));
      if (found == text.size()) return static_cast<std::size_t>(out - start);
      from = found + length;
    }
  }
  /// At most four members, as far as the wide kernels go.
  [[nodiscard]] wide::Progress copyWithoutFew(StringView text, char16_t* out) const {
    if (!wide::isAvailable()) return {0, 0};
    char16_t members[4];
    for (std::size_t i = 0; i < 4; ++i) members[i] = characters_[characters_.size() > i ? i : 0];
    return wide::copyWithout(text.data(), text.size(), members, out);
  }
  /// Lanes with one of at most four members.
  [[nodiscard]] vector::Units fewMembers(vector::Units units) const {
    const auto member = [this](std::size_t index) {
      return vector::Units::splat(characters_[characters_.size() > index ? index : 0]);
    };
    return equal(units, member(0)) | equal(units, member(1)) | equal(units, member(2)) | equal(units, member(3));
  }
  [[nodiscard]] std::size_t findVector(StringView text, std::size_t from) const {
    for (; from + vector::kLanes <= text.size(); from += vector::kLanes) {
      const vector::Units found = fewMembers(vector::Units::load(text.data() + from));
      if (!found.noneSet()) return from + found.lanesSet().first();
    }
    return findUnit(text, from);
  }
  /// With surrogates in the set, a pair is one character and an unpaired half is its own.
  [[nodiscard]] std::size_t findScalar(StringView text, std::size_t from, std::size_t& length) const {
    while (from < text.size()) {
      std::size_t next = from;
      const char32_t scalar = unicode::nextScalar(text, next);
      length = next - from;
      if (containsScalar(scalar)) return from;
      from = next;
    }
    return from;
  }
  [[nodiscard]] bool containsScalar(char32_t scalar) const {
    for (std::size_t i = 0; i < characters_.size();) {
      if (unicode::nextScalar(characters_, i) == scalar) return true;
    }
    return false;
  }

  StringView characters_;
  std::array<std::uint64_t, 4> latin_{};
  bool beyondLatin_ = false;
  bool surrogates_ = false;
};

/// An ASCII capital as its small letter; every other unit as it is.
[[nodiscard]] constexpr char16_t foldASCII(char16_t unit) {
  return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit | 0x20) : unit;
}
[[nodiscard]] inline vector::Units foldASCII(vector::Units units) {
  return units + (vector::inRange(units, u'A', 25) & vector::Units::splat(0x20));
}

/// Letters that have no case, no decomposition that matters beside their own kind, and combine with nothing before
/// them: Hangul syllables and unified ideographs.
[[nodiscard]] constexpr bool isSyllableOrIdeograph(char32_t unit) {
  return (unit >= 0xAC00 && unit <= 0xD7A3) || (unit >= 0x4E00 && unit <= 0x9FFF);
}
[[nodiscard]] inline vector::Units syllablesOrIdeographs(vector::Units units) {
  return vector::inRange(units, 0xAC00, 0xD7A3 - 0xAC00) | vector::inRange(units, 0x4E00, 0x9FFF - 0x4E00);
}

/// True when a unit lies in [low, low + span]. Texts of one or two vectors are answered where they are asked about.
[[nodiscard]] inline bool hasInRange(StringView text, char16_t low, char16_t span) {
  const std::size_t size = text.size();
  if (size < vector::kLanes || size > 2 * vector::kLanes) {
    return unicode::firstInRange(text, low, span, 0) != unicode::kInvalid;
  }
  const auto in = [&](std::size_t from) { return vector::inRange(vector::Units::load(text.data() + from), low, span); };
  return !(in(0) | in(size - vector::kLanes)).noneSet();
}

/// The number of units at the start for which `vectorTest` (eight at a time) and `unitTest` hold.
template <class VectorTest, class UnitTest>
[[nodiscard]] std::size_t leading(StringView text, VectorTest vectorTest, UnitTest unitTest) {
  std::size_t i = 0;
  for (; i + vector::kLanes <= text.size(); i += vector::kLanes) {
    const vector::Lanes hold = vectorTest(vector::Units::load(text.data() + i)).lanesSet();
    if (!hold.all()) return i + static_cast<std::size_t>(std::countr_one(hold.bits));
  }
  while (i < text.size() && unitTest(text[i])) ++i;
  return i;
}

}  // namespace quorvel::unitscan
