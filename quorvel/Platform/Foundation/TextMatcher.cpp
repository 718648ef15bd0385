#include <algorithm>
#include <tuple>

#include <quorvel/Platform/Foundation/FoldedText.h>
#include <quorvel/Platform/Foundation/HangulLetters.h>
#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/Foundation/LinearSearch.h>
#include <quorvel/Platform/Foundation/PlainUnits.h>
#include <quorvel/Platform/Foundation/TextMatcher.h>

namespace quorvel {
namespace {

using vector::Units;

/// The places that are looked at for rare units.
constexpr std::size_t kLook = 16;

TextFolding foldingOf(const MatchOptions& options) {
  return {options.ignoresCase, options.ignoresAccents, options.ignoresWidth, options.partialHangul};
}

String foldedTerm(StringView term, const MatchOptions& options) {
  const FoldedText folded(term, foldingOf(options));
  StringBuilder out;
  for (const char16_t unit : folded.view().units())
    out.append(options.ignoresCase ? plain::SimpleFold::fold(unit) : unit);
  return out.finish();
}

/// What a syllable's final consonant is when two are typed for it, and the initial that it becomes when a vowel
/// follows.
struct Final {
  std::uint8_t left = 0;  // the final that stays
  char16_t moved = 0;     // the consonant letter that begins the next syllable; 0 when there is no final
};

Final splitFinal(unsigned final) {
  if (final == 0) return {};
  const char16_t letter = hangul::kFinalLetters[final];
  const hangul::Pair* pair = hangul::pairOf(letter);
  if (!pair) return {0, letter};
  return {static_cast<std::uint8_t>(hangul::kFinalLetters.find(pair->typed[0])), pair->typed[1]};
}

}  // namespace

/// A class spread over the lanes.
class TextMatcher::Lanes {
 public:
  explicit Lanes(const UnitClass& units)
      : first_(Units::splat(units.first)),
        span_(Units::splat(units.span)),
        others_{Units::splat(units.others[0]), Units::splat(units.others[1])} {}
  [[nodiscard]] Units hits(const char16_t* at) const {
    const Units units = Units::load(at);
    return atMost(units - first_, span_) | equal(units, others_[0]) | equal(units, others_[1]);
  }

 private:
  Units first_;
  Units span_;
  Units others_[2];
};

/// How often units of the class stand in texts, as far as it matters for the choice between two.
unsigned TextMatcher::UnitClass::frequency() const {
  static constexpr std::u16string_view kRareToFrequent = u"jqxzkvbpygfwmucldrhsnioate ";
  if (span > 0) return 60;
  const std::size_t rank = kRareToFrequent.find(first);
  return rank == std::u16string_view::npos ? 5 : static_cast<unsigned>(rank) * 4;
}

TextMatcher::TextMatcher(StringView term, MatchOptions options) : options_(options) {
  if (term.size() > limits::kTypedTerm) options_.partialHangul = false;
  term_ = foldedTerm(term, options_);
  if (!options_.partialHangul || term_.isEmpty()) return;
  readPartialHangul();
  choosePlaces();
}

TextMatcher::UnitClass TextMatcher::exactly(char16_t unit) const {
  const char16_t other = options_.ignoresCase ? plain::SimpleFold::other(unit) : unit;
  return {unit, 0, {other, other}};
}

/// The consonant letter and the syllables that begin with it.
TextMatcher::UnitClass TextMatcher::beginningWith(char16_t letter) {
  const char16_t syllable = hangul::firstSyllableOf(letter);
  if (syllable == 0) return {letter, 0, {letter, letter}};
  return {syllable, hangul::kPerInitial - 1, {letter, letter}};
}

void TextMatcher::readPartialHangul() {
  for (const char16_t unit : term_) {
    const bool isConsonant = hangul::firstSyllableOf(unit) != 0;
    classes_.push_back(isConsonant ? beginningWith(unit) : exactly(unit));
  }
  const char16_t last = term_[term_.size() - 1];
  if (hangul::isSyllable(last)) return readLastSyllable(last);
  if (!hangul::isVowelLetter(last)) return;
  classes_.back().span = static_cast<char16_t>(hangul::typedVowels(last - hangul::kFirstVowelLetter) - 1);
}

void TextMatcher::readLastSyllable(char16_t syllable) {
  const unsigned index = syllable - hangul::kFirstSyllable;
  const unsigned final = index % hangul::kFinals;
  const auto open = static_cast<char16_t>(syllable - final);
  if (final == 0) {
    const unsigned vowels = hangul::typedVowels(index % hangul::kPerInitial / hangul::kFinals);
    classes_.back() = {syllable, static_cast<char16_t>(vowels * hangul::kFinals - 1), {syllable, syllable}};
    return;
  }
  const Final parts = splitFinal(final);
  const auto left = static_cast<char16_t>(open + parts.left);
  open_ = UnitClass{left, 0, {left, left}};
  next_ = beginningWith(parts.moved);
  // The finals that are typed beginning with this one follow it, but for the doubled one that stands between.
  classes_.back() = {syllable, 0, {syllable, syllable}};
  for (unsigned longer = final + 1; longer < hangul::kFinals; ++longer) {
    const auto candidate = static_cast<char16_t>(open + longer);
    if (splitFinal(longer).left != final) continue;
    if (candidate == syllable + 2) classes_.back().others[0] = candidate;
    if (candidate == syllable + classes_.back().span + 1) ++classes_.back().span;
  }
}

void TextMatcher::choosePlaces() {
  std::vector<Place> places;
  for (std::size_t i = 0; i < classes_.size() && i < kLook; ++i) places.push_back({classes_[i], i});
  if (open_ && places.size() == classes_.size()) places.back().units.others[1] = open_->first;
  std::ranges::sort(places, {}, [](const Place& place) { return std::pair(place.units.frequency(), place.offset); });
  first_ = places.front();
  second_ = places[places.size() > 1 ? 1 : 0];
}

/// The end in `form` of the match that begins at `start`, or nowhere.
std::size_t TextMatcher::matchEnd(StringView form, std::size_t start) const {
  const std::size_t last = start + classes_.size() - 1;
  if (last >= form.size()) return linear::kNowhere;
  for (std::size_t i = start; i < last; ++i) {
    if (!classes_[i - start].holds(form[i])) return linear::kNowhere;
  }
  if (classes_.back().holds(form[last])) return last + 1;
  const bool isSplit = open_ && open_->holds(form[last]) && last + 1 < form.size() && next_.holds(form[last + 1]);
  return isSplit ? last + 2 : linear::kNowhere;
}

/// Calls `accept(start, end)` with each place of the form where the classes match, until it answers true.
template <class Accept>
void TextMatcher::searchClasses(StringView form, Accept accept) const {
  const Lanes first(first_.units);
  const Lanes second(second_.units);
  const auto isDone = [&](std::size_t start) {
    const std::size_t end = matchEnd(form, start);
    return end != linear::kNowhere && accept(start, end);
  };
  std::size_t i = 0;
  const std::size_t reach = std::max(first_.offset, second_.offset) + vector::kLanes;
  for (; i + reach <= form.size(); i += vector::kLanes) {
    const char16_t* at = form.data() + i;
    const Units hits = first.hits(at + first_.offset) & second.hits(at + second_.offset);
    if (hits.noneSet()) continue;
    for (vector::Lanes lanes = hits.lanesSet(); lanes.any(); lanes.bits &= lanes.bits - 1) {
      if (isDone(i + lanes.first())) return;
    }
  }
  for (; i < form.size(); ++i) {
    if (isDone(i)) return;
  }
}

/// The same with each place where the term stands.
template <class Fold, class Accept>
void TextMatcher::searchExactly(StringView form, Accept accept) const {
  const StringView term = term_;
  bool isDone = false;
  const auto take = [&](std::size_t start) {
    isDone = accept(start, start + term.size());
    return isDone;
  };
  std::ignore = linear::find<Fold>(form, term, 0, take);
}

/// Hands matches to `sink` until it answers true.
template <class Sink>
void TextMatcher::search(StringView text, Sink sink) const {
  if (term_.isEmpty() || text.isEmpty()) return;
  const FoldedText folded(text, foldingOf(options_));
  std::size_t from = 0;
  const auto accept = [&](std::size_t start, std::size_t end) {
    if (start < from) return false;
    const std::optional<std::size_t> first = folded.originalOf(start);
    const std::optional<std::size_t> last = first ? folded.originalOf(end) : std::nullopt;
    if (!last) return false;
    from = end;
    return sink(NSRange{*first, *last - *first});
  };
  if (options_.partialHangul) return searchClasses(folded.view(), accept);
  options_.ignoresCase ? searchExactly<plain::SimpleFold>(folded.view(), accept)
                       : searchExactly<linear::NoFold>(folded.view(), accept);
}

std::vector<NSRange> TextMatcher::ranges(StringView text) const {
  std::vector<NSRange> result;
  search(text, [&result](NSRange match) {
    result.push_back(match);
    return false;
  });
  return result;
}

bool TextMatcher::hasMatch(StringView text) const {
  bool found = false;
  search(text, [&found](NSRange) { return found = true; });
  return found;
}

}  // namespace quorvel
