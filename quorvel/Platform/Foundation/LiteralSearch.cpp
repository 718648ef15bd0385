#include <algorithm>
#include <bit>
#include <climits>
#include <tuple>

#include <quorvel/Platform/Foundation/CaseFolding.h>
#include <quorvel/Platform/Foundation/LiteralSearch.h>
#include <quorvel/Platform/Foundation/UnitScan.h>
#include <quorvel/Platform/Foundation/WideKernels.h>

namespace quorvel {
namespace {

using unicode::kInvalid;
using vector::kLanes;
using vector::Units;

String folded(StringView text) {
  const CaseFolding& folding = CaseFolding::shared();
  StringBuilder out;
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t start = i;
    const CaseFolding::Fold* fold = folding.find(unicode::nextScalar(text, i));
    out.append(fold ? fold->folded() : text.sub(start, i - start));
  }
  return out.finish();
}

bool beginsWith(StringView text, StringView prefix) {
  return text.size() >= prefix.size() && text.sub(0, prefix.size()) == prefix;
}

struct Source {
  char16_t units[2];
  std::size_t size;
};

Source sourceOf(const CaseFolding::Fold& fold) {
  if (fold.scalar <= 0xFFFF) return {{static_cast<char16_t>(fold.scalar), 0}, 1};
  return {{static_cast<char16_t>(0xD7C0 + (fold.scalar >> 10)), static_cast<char16_t>(0xDC00 | (fold.scalar & 0x3FF))},
          2};
}

/// How often a unit stands in texts, in thousandths, as far as it matters for the choice between two.
unsigned frequencyOf(char16_t unit) {
  static constexpr std::uint8_t kLetters[26] = {82, 15, 28, 43, 127, 22, 20, 61, 70, 2,  8, 40, 24,
                                                67, 75, 19, 1,  60,  63, 91, 28, 10, 24, 2, 20, 1};
  const char16_t letter = unitscan::foldASCII(unit);
  if (letter >= u'a' && letter <= u'z') return letter == unit ? kLetters[letter - u'a'] : 2;
  if (unit == u' ') return 180;
  if (unicode::isHighSurrogate(unit)) return 100;  // most supplementary characters share a few
  return 10;
}

/// Some tests of a place, spread over the lanes.
template <std::size_t Count>
class TestVectors {
 public:
  template <class Tests>
  explicit TestVectors(const Tests& tests) {
    for (std::size_t i = 0; i < Count; ++i) {
      units_[i] = Units::splat(tests[i].unit);
      bits_[i] = Units::splat(tests[i].bit);
    }
  }
  [[nodiscard]] Units hits(const char16_t* at) const {
    if constexpr (Count == 0) return Units::splat(0);
    const Units units = Units::load(at);
    Units hits = equal(units | bits_[0], units_[0]);
    for (std::size_t i = 1; i < Count; ++i) hits = hits | equal(units | bits_[i], units_[i]);
    return hits;
  }

 private:
  std::array<Units, Count + 1> units_{};
  std::array<Units, Count + 1> bits_{};
};

}  // namespace

bool LiteralSearch::Place::add(char16_t unit) {
  if (holds(unit)) return true;
  for (std::uint32_t i = 0; i < count; ++i) {
    const auto difference = static_cast<char16_t>(tests[i].unit ^ unit);
    if (tests[i].bit == 0 && std::has_single_bit(std::uint32_t{difference})) {
      tests[i] = {static_cast<char16_t>(unit | difference), difference};
      return true;
    }
  }
  if (count == kMost) return false;
  tests[count++] = {unit, 0};
  return true;
}

bool LiteralSearch::Place::holds(char16_t unit) const {
  return std::any_of(tests.begin(), tests.begin() + count, [unit](const Test& test) { return test.holds(unit); });
}

unsigned LiteralSearch::Place::frequency() const {
  unsigned sum = 0;
  for (std::uint32_t i = 0; i < count; ++i) {
    sum += frequencyOf(tests[i].unit) + (tests[i].bit ? frequencyOf(tests[i].unit ^ tests[i].bit) : 0);
    if (i > 0) sum += 60;  // a further comparison for every unit of the text
  }
  return sum;
}

LiteralSearch::LiteralSearch(StringView needle, bool ignoringCase)
    : needle_(ignoringCase ? folded(needle) : String(needle)), folds_(ignoringCase) {
  Places places;
  const std::size_t count = collectPlaces(places);
  hasPlaces_ = count > 0;
  if (hasPlaces_) choosePlaces(places, count);
}

/// The places at whose offset every match has its unit, whichever characters it is made of; those that begin with a
/// starter are apart. Answers their number; none when even the first has too many units.
std::size_t LiteralSearch::collectPlaces(Places& places) {
  std::size_t offset = 0;
  while (offset < needle_.size() && offset < kLook) {
    places[offset].offset = static_cast<std::uint32_t>(offset);
    if (!folds_) {
      places[offset].add(needle_[offset]);
      ++offset;
      continue;
    }
    const std::size_t next = collectScalar(places, offset);
    if (next <= offset) break;
    offset = next;
  }
  return offset;
}

std::size_t LiteralSearch::collectScalar(Places& places, std::size_t offset) {
  const StringView rest = StringView(needle_).sub(offset);
  std::size_t size = 0;
  std::ignore = unicode::nextScalar(rest, size);
  if (size == 2 && offset + 1 >= kLook) return offset;
  Place& place = places[offset];
  Place& low = places[offset + size - 1];
  low.offset = static_cast<std::uint32_t>(offset + size - 1);
  place.add(rest[0]);
  low.add(rest[size - 1]);
  for (const CaseFolding::Fold& fold : CaseFolding::shared().beginningWith(rest[0])) {
    if (!beginsWith(rest, fold.folded())) continue;
    const Source source = sourceOf(fold);
    const bool sameSize = fold.size == size && source.size == size;
    if (sameSize ? !place.add(source.units[0]) || !low.add(source.units[size - 1])
                 : offset > 0 || !starters_.add(source.units[0])) {
      return offset;  // later offsets differ from match to match
    }
  }
  return offset + size;
}

void LiteralSearch::choosePlaces(const Places& places, std::size_t count) {
  std::array<unsigned, kLook> frequency{};
  for (std::size_t i = 0; i < count; ++i) frequency[i] = places[i].frequency();
  const auto end = frequency.begin() + static_cast<std::ptrdiff_t>(count);
  const auto first = std::min_element(frequency.begin(), end);
  first_ = places[static_cast<std::size_t>(first - frequency.begin())];
  *first = count > 1 ? UINT_MAX : *first;
  second_ = places[static_cast<std::size_t>(std::min_element(frequency.begin(), end) - frequency.begin())];
}

bool LiteralSearch::mayStart(StringView text, std::size_t start) const {
  const bool inside = start + std::max(first_.offset, second_.offset) < text.size();
  return (inside && first_.holds(text[start + first_.offset]) && second_.holds(text[start + second_.offset])) ||
         starters_.holds(text[start]);
}

/// The first test of each place, as the two units that it holds for.
wide::Pair LiteralSearch::widePair() const {
  const Test first = first_.tests[0];
  const Test second = second_.tests[0];
  return {{first.unit, static_cast<char16_t>(first.unit ^ first.bit)},
          {second.unit, static_cast<char16_t>(second.unit ^ second.bit)},
          first_.offset,
          second_.offset};
}

/// Calls `confirm` with every place where a match may start, in order, until it answers true. So many tests are made
/// at each of the two places and for starters; what a place does not use holds for no unit.
template <std::size_t PlaceTests, std::size_t StarterTests, class Confirm>
void LiteralSearch::scanBlocks(StringView text, std::size_t from, Confirm confirm) const {
  const TestVectors<PlaceTests> first(first_.tests);
  const TestVectors<PlaceTests> second(second_.tests);
  const TestVectors<StarterTests> starters(starters_.tests);
  const std::size_t firstOffset = first_.offset;
  const std::size_t secondOffset = second_.offset;
  const auto hits = [=](const char16_t* at) {
    const Units units = first.hits(at + firstOffset) & second.hits(at + secondOffset);
    if constexpr (StarterTests == 0) return units;
    return units | starters.hits(at);
  };
  const auto confirmsAny = [&](vector::Lanes lanes, std::size_t start) {
    for (; lanes.any(); lanes.bits &= lanes.bits - 1) {
      if (confirm(start + lanes.first())) return true;
    }
    return false;
  };
  const std::size_t further = std::max(firstOffset, secondOffset);
  const std::size_t reach = further + 2 * kLanes;
  // What is a single test at each place, the wide kernel looks for.
  const bool isWide = PlaceTests == 1 && StarterTests == 0 && text.size() >= wide::kWorthwhile && wide::isAvailable();
  const wide::Pair pair = widePair();
  std::size_t i = from;
  for (; i + reach <= text.size(); i += 2 * kLanes) {
    if (isWide) {
      i = wide::findPair(text.data(), text.size(), i, pair);
      if (i + reach > text.size()) break;
    }
    const Units low = hits(text.data() + i);
    const Units high = hits(text.data() + i + kLanes);
    if ((low | high).noneSet()) continue;
    if (confirmsAny({low.lanesSet().bits | high.lanesSet().bits << kLanes}, i)) return;
  }
  // Fewer than two vectors are left: one, and another that ends with the text.
  for (; text.size() >= further + kLanes && i + further < text.size(); i += kLanes) {
    const std::size_t start = std::min(i, text.size() - further - kLanes);
    vector::Lanes lanes = hits(text.data() + start).lanesSet();
    lanes.bits = lanes.bits >> (i - start) << (i - start);
    i = start;
    if (confirmsAny(lanes, start)) return;
  }
  const std::size_t end = StarterTests == 0 ? text.size() - std::min(text.size(), further) : text.size();
  for (; i < end; ++i) {
    if (mayStart(text, i) && confirm(i)) return;
  }
}

template <class Confirm>
void LiteralSearch::scan(StringView text, std::size_t from, Confirm confirm) const {
  const std::size_t placeTests = std::max(first_.count, second_.count);
  if (placeTests == 1 && starters_.count == 0) return scanBlocks<1, 0>(text, from, confirm);
  if (placeTests == 1 && starters_.count <= 2) return scanBlocks<1, 2>(text, from, confirm);
  if (placeTests <= 2 && starters_.count == 0) return scanBlocks<2, 0>(text, from, confirm);
  return scanBlocks<Place::kMost, Place::kMost>(text, from, confirm);
}

/// A match begins where a character does; characters are counted from the end of the match before.
bool LiteralSearch::isStart(StringView text, std::size_t from, std::size_t place) const {
  return !unicode::isLowSurrogate(text[place]) || place == from || !unicode::isHighSurrogate(text[place - 1]);
}

/// With case, a needle of several characters is compared unit by unit and may end inside a pair; one of a single
/// unpaired surrogate may not.
bool LiteralSearch::isEnd(StringView text, std::size_t place) const {
  return needle_.size() > 1 || !unicode::isHighSurrogate(needle_[0]) || place == text.size() ||
         !unicode::isLowSurrogate(text[place]);
}

/// The end of the match that begins at `start`, or `kInvalid`.
std::size_t LiteralSearch::matchEnd(StringView text, std::size_t start, std::size_t& compared) const {
  if (folds_) return foldedMatchEnd(text, start, compared);
  const std::size_t end = start + needle_.size();
  if (end > text.size()) return kInvalid;
  const std::size_t common = unicode::commonPrefix(text.data() + start, needle_.data(), needle_.size());
  compared += common;
  return common == needle_.size() && isEnd(text, end) ? end : kInvalid;
}

std::size_t LiteralSearch::foldedMatchEnd(StringView text, std::size_t start, std::size_t& compared) const {
  const StringView needle = needle_;
  std::size_t i = start;
  std::size_t j = 0;
  while (j < needle.size() && i < text.size()) {
    if (text[i] == needle[j] && !unicode::isSurrogate(text[i])) {  // a folded character folds to itself
      ++i;
      ++j;
      continue;
    }
    const std::size_t from = i;
    const CaseFolding::Fold* fold = CaseFolding::shared().find(unicode::nextScalar(text, i));
    const StringView units = fold ? fold->folded() : text.sub(from, i - from);
    if (!beginsWith(needle.sub(j), units)) break;
    j += units.size();
  }
  compared += j;
  return j == needle.size() ? i : kInvalid;
}

/// Hands matches to `sink` until it answers true.
template <class Sink>
void LiteralSearch::search(StringView text, std::size_t from, Sink sink) const {
  bool done = false;
  bool tooMuch = !hasPlaces_;
  std::size_t compared = 0;
  const auto confirm = [&](std::size_t start) {
    if (start < from || !isStart(text, from, start)) return false;
    const std::size_t end = matchEnd(text, start, compared);
    tooMuch = compared > 4 * (start - from) + 4 * needle_.size() + 256;
    if (end == kInvalid) return tooMuch;
    done = sink(NSRange{start, end - start});
    from = end;
    compared = 0;
    tooMuch = false;
    return done;
  };
  if (!tooMuch) scan(text, from, confirm);
  while (tooMuch && !done) {
    const std::optional<NSRange> match = nextInLinearTime(text, from);
    if (!match) return;
    done = sink(*match);
    from = match->end();
  }
}

std::optional<NSRange> LiteralSearch::next(StringView text, std::size_t from) const {
  std::optional<NSRange> found;
  search(text, from, [&found](NSRange match) {
    found = match;
    return true;
  });
  return found;
}

/// The algorithm of Knuth, Morris and Pratt on the folded text, for texts that repeat beginnings of the needle.
std::optional<NSRange> LiteralSearch::nextInLinearTime(StringView text, std::size_t from) const {
  const StringView needle = needle_;
  const std::size_t size = needle.size();
  std::vector<std::size_t> border(size);  // of needle[0...i]: the longest beginning that is also its end
  const auto advance = [&](std::size_t state, char16_t unit) {
    while (state > 0 && needle[state] != unit) state = border[state - 1];
    return needle[state] == unit ? state + 1 : state;
  };
  for (std::size_t i = 1; i < size; ++i) border[i] = advance(border[i - 1], needle[i]);

  std::vector<std::size_t> starts(size);  // where the last `size` folded units come from, if they begin a character
  std::size_t count = 0;
  std::size_t state = 0;
  for (std::size_t i = from; i < text.size();) {
    const std::size_t start = i;
    const CaseFolding::Fold* fold = nullptr;
    if (folds_) fold = CaseFolding::shared().find(unicode::nextScalar(text, i));
    if (!folds_) ++i;
    const StringView units = fold ? fold->folded() : text.sub(start, i - start);
    for (std::size_t k = 0; k < units.size(); ++k) {
      starts[count++ % size] = k == 0 && isStart(text, from, start) ? start : kInvalid;
      state = advance(state, units[k]);
      if (state < size) continue;
      const std::size_t begin = starts[count % size];
      if (begin != kInvalid && k + 1 == units.size() && (folds_ || isEnd(text, i))) return NSRange{begin, i - begin};
      state = border[size - 1];
    }
  }
  return nil;
}

std::vector<NSRange> LiteralSearch::ranges(StringView text) const {
  std::vector<NSRange> result;
  search(text, 0, [&result](NSRange match) {
    result.push_back(match);
    return false;
  });
  return result;
}

}  // namespace quorvel
