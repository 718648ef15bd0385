// Units that need no character data: each is in composed form, combines with nothing before it, and has at most a
// simple case pair. They carry most text. Included by sources only. Not here: all other units (CanonicalText.h).
#pragma once

#include <algorithm>

#include <quorvel/Platform/Foundation/UnitScan.h>
#include <quorvel/Platform/Foundation/WideKernels.h>

namespace quorvel::plain {

/// ASCII, Latin-1 and basic Cyrillic capitals as their small letters; every other unit as it is.
struct SimpleFold {
  [[nodiscard]] static constexpr char16_t fold(char16_t unit) {
    if (unit < 0x80) return unitscan::foldASCII(unit);
    if ((unit >= 0xC0 && unit <= 0xDE && unit != 0xD7) || (unit >= 0x410 && unit <= 0x42F)) return add(unit, 0x20);
    return unit >= 0x400 && unit <= 0x40F ? add(unit, 0x50) : unit;
  }
  [[nodiscard]] static vector::Units fold(vector::Units units) {
    using vector::Units;
    if (vector::inRange(units, 0xC0, 0x36F).noneSet()) return unitscan::foldASCII(units);
    const Units latin = vector::inRange(units, 0xC0, 0x1E) - equal(units, Units::splat(0xD7));
    const Units by20 = vector::inRange(units, u'A', 25) | latin | vector::inRange(units, 0x410, 0x1F);
    return units + (by20 & Units::splat(0x20)) + (vector::inRange(units, 0x400, 0x0F) & Units::splat(0x50));
  }
  /// The capital of a folded unit, or the unit where it has none.
  [[nodiscard]] static constexpr char16_t other(char16_t unit) {
    for (const int distance : {0x20, 0x50}) {
      const auto capital = static_cast<char16_t>(unit - distance);
      if (unit >= distance && fold(capital) == unit) return capital;
    }
    return unit;
  }

 private:
  [[nodiscard]] static constexpr char16_t add(char16_t unit, int distance) {
    return static_cast<char16_t>(unit + distance);
  }
};

struct UnitRange {
  char16_t first;
  char16_t last;
};

/// Beyond Latin: basic Cyrillic; spaces, punctuation and currency signs; kana, ideographs and the symbols among them
/// (without their six marks); Hangul syllables; the surrogates of U+1F000 to U+1FBFF, with which low halves belong to
/// them or stand alone; full-width digits and punctuation.
inline constexpr UnitRange kPlainRanges[] = {{0x400, 0x45F},   {0x2002, 0x20CF}, {0x3000, 0x3029},
                                             {0x3030, 0x3098}, {0x309B, 0xA4CF}, {0xAC00, 0xD7A3},
                                             {0xD83C, 0xD83E}, {0xDC00, 0xDFFF}, {0xFF01, 0xFF20}};

[[nodiscard]] constexpr bool isInPlainRanges(char16_t unit) {
  for (const auto [first, last] : kPlainRanges) {
    if (unit >= first && unit <= last) return true;
  }
  return false;
}

/// `latin`: the lanes that hold already. The ranges that most text lies in are tried first.
[[nodiscard]] inline vector::Units orInPlainRanges(vector::Units latin, vector::Units units) {
  const auto in = [units](UnitRange range) {
    return vector::inRange(units, range.first, static_cast<char16_t>(range.last - range.first));
  };
  vector::Units result = latin | unitscan::syllablesOrIdeographs(units) | in(kPlainRanges[0]);
  if (result.lanesSet().all()) return result;
  for (const UnitRange range : kPlainRanges) result = result | in(range);
  return result;
}

/// Among texts of such units canonical equivalence is equality, and each unit that is no surrogate is a sequence.
struct Composed {
  [[nodiscard]] static constexpr bool has(char16_t unit) { return unit < 0x300 || isInPlainRanges(unit); }
  [[nodiscard]] static vector::Units has(vector::Units units) {
    const vector::Units latin = atMost(units, vector::Units::splat(0x2FF));
    return latin.lanesSet().all() ? latin : orInPlainRanges(latin, units);
  }
};

/// The same for the comparison that ignores case, which for such units is `SimpleFold`.
struct Caseless {
  [[nodiscard]] static constexpr bool has(char16_t unit) {
    return (unit < 0x100 && unit != 0xB5 && unit != 0xDF) || isInPlainRanges(unit);  // micro sign and sharp s fold out
  }
  [[nodiscard]] static vector::Units has(vector::Units units) {
    using vector::Units;
    if (const Units ascii = atMost(units, Units::splat(0x7F)); ascii.lanesSet().all()) return ascii;
    const Units out = equal(units, Units::splat(0xB5)) | equal(units, Units::splat(0xDF));
    return orInPlainRanges(atMost(units, Units::splat(0xFF)) - out, units);
  }
};

/// The number of units at the start that the class has.
template <class Class>
[[nodiscard]] std::size_t leading(StringView text) {
  using vector::kLanes;
  using vector::Units;
  const auto holding = [](const char16_t* units) {
    return static_cast<std::size_t>(std::countr_one(Class::has(Units::load(units)).lanesSet().bits));
  };
  const bool isWide = text.size() >= wide::kWorthwhile && wide::isAvailable();
  std::size_t i = 0;
  for (; i + kLanes <= text.size(); i += kLanes) {
    if (isWide) {
      i += wide::leadingCommon(text.data() + i, text.size() - i, false);
      if (i + kLanes > text.size()) break;
    }
    if (const std::size_t count = holding(text.data() + i); count < kLanes) return i + count;
  }
  if (i == text.size()) return i;
  // The rest together with units that hold already, or with NULs, which every class has.
  if (i > 0) return text.size() - kLanes + holding(text.data() + text.size() - kLanes);
  char16_t padded[kLanes] = {};
  std::memcpy(padded, text.data(), text.size() * sizeof(char16_t));
  return std::min(holding(padded), text.size());
}

}  // namespace quorvel::plain
