// Search for a text unit for unit, linear in both lengths whatever they hold, with a fold of case and with hits that a
// caller may refuse. Included by sources only. Not here: what equals what beyond units (CanonicalText.h).
#pragma once

#include <algorithm>
#include <concepts>
#include <vector>

#include <quorvel/Platform/Foundation/String.h>
#include <quorvel/Platform/Foundation/Vector.h>
#include <quorvel/Platform/Foundation/WideKernels.h>

namespace quorvel::linear {

inline constexpr std::size_t kNowhere = SIZE_MAX;

/// Units as they are. A fold maps a unit and eight units; `other` is the unit beside `unit` itself that folds to it.
struct NoFold {
  [[nodiscard]] static constexpr char16_t fold(char16_t unit) { return unit; }
  [[nodiscard]] static vector::Units fold(vector::Units units) { return units; }
  [[nodiscard]] static constexpr char16_t other(char16_t unit) { return unit; }
};

/// Units at the start of `text` that fold to those of `folded`, which is no longer than it.
template <class Fold>
[[nodiscard]] std::size_t commonFolded(const char16_t* text, StringView folded) {
  std::size_t i = 0;
  for (; i + vector::kLanes <= folded.size(); i += vector::kLanes) {
    const auto same = equal(Fold::fold(vector::Units::load(text + i)), vector::Units::load(folded.data() + i));
    if (const vector::Lanes lanes = same.lanesSet(); !lanes.all()) {
      return i + static_cast<std::size_t>(std::countr_one(lanes.bits));
    }
  }
  while (i < folded.size() && Fold::fold(text[i]) == folded[i]) ++i;
  return i;
}

/// The search of Knuth, Morris and Pratt (SIAM J. Comput. 6(2), 1977): each unit of the text is looked at once, and
/// overlapping hits cost nothing more.
template <class Fold, class Accept>
[[nodiscard]] std::size_t findByBorders(StringView text, StringView folded, std::size_t from, Accept accept) {
  // borders[n]: the longest proper prefix of the first n units that is also their suffix.
  std::vector<std::uint32_t> borders(folded.size() + 1, 0);
  const auto advance = [&](std::size_t matched, char16_t unit) {
    while (matched > 0 && (matched == folded.size() || folded[matched] != unit)) matched = borders[matched];
    return matched + static_cast<std::size_t>(folded[matched] == unit);
  };
  for (std::size_t i = 1; i < folded.size(); ++i) {
    borders[i + 1] = static_cast<std::uint32_t>(advance(borders[i], folded[i]));
  }
  for (std::size_t i = from, matched = 0; i < text.size(); ++i) {
    matched = advance(matched, Fold::fold(text[i]));
    if (matched == folded.size() && accept(i + 1 - matched)) return i + 1 - matched;
  }
  return kNowhere;
}

/// The lanes that fold to a folded unit.
template <class Fold>
struct EitherCase {
  explicit EitherCase(char16_t folded)
      : unit(vector::Units::splat(folded)), other(vector::Units::splat(Fold::other(folded))) {}
  [[nodiscard]] vector::Units in(vector::Units units) const {
    if constexpr (std::same_as<Fold, NoFold>) return equal(units, unit);
    return equal(units, unit) | equal(units, other);
  }

  vector::Units unit;
  vector::Units other;
};

/// The first place at or after `from` where units of `text` fold to the needle, which is folded already, and which
/// `accept(place)` takes. An empty needle is found nowhere.
template <class Fold, class Accept>
[[nodiscard]] std::size_t find(StringView text, StringView folded, std::size_t from, Accept accept) {
  using vector::Units;
  if (folded.isEmpty() || folded.size() > text.size()) return kNowhere;
  const std::size_t tail = folded.size() - 1;
  const EitherCase<Fold> first(folded[0]);
  const EitherCase<Fold> last(folded[tail]);
  // Places where both the first and the last unit stand are few, and only they are compared whole; where a text makes
  // them many, the time spent on them is held against the way made, and the search goes on by borders.
  std::size_t spent = 0;
  const auto isHit = [&](std::size_t place) {
    const std::size_t common = commonFolded<Fold>(text.data() + place, folded);
    spent += common / vector::kLanes + 1;
    return common == folded.size() && accept(place);
  };
  std::size_t i = from;
  const auto hasBlock = [&] { return i + tail + vector::kLanes <= text.size(); };
  const bool isWide = text.size() >= wide::kWorthwhile && wide::isAvailable();
  for (; hasBlock(); i += vector::kLanes) {
    if (isWide) {
      i = wide::findPair(text.data(), text.size(), i,
                         {{folded[0], Fold::other(folded[0])}, {folded[tail], Fold::other(folded[tail])}, 0, tail});
      if (!hasBlock()) break;
    }
    const Units hits = first.in(Units::load(text.data() + i)) & last.in(Units::load(text.data() + i + tail));
    if (hits.noneSet()) continue;
    for (vector::Lanes lanes = hits.lanesSet(); lanes.any(); lanes.bits &= lanes.bits - 1) {
      if (isHit(i + lanes.first())) return i + lanes.first();
    }
    if (spent > (i - from) + tail + 64) return findByBorders<Fold>(text, folded, i + vector::kLanes, accept);
  }
  // Fewer places than lanes are left, and their units lie in the last vector of the text.
  if (i + tail < text.size() && text.size() >= vector::kLanes) {
    const std::size_t start = std::min(i, text.size() - vector::kLanes);
    const std::size_t left = text.size() - tail - i;
    vector::Lanes lanes = first.in(Units::load(text.data() + start)).lanesSet();
    lanes.bits = lanes.bits >> (i - start) & ((1U << left) - 1);
    for (; lanes.any(); lanes.bits &= lanes.bits - 1) {
      if (isHit(i + lanes.first())) return i + lanes.first();
    }
    return kNowhere;
  }
  for (; i + tail < text.size(); ++i) {
    if (Fold::fold(text[i]) == folded[0] && isHit(i)) return i;
  }
  return kNowhere;
}

}  // namespace quorvel::linear
