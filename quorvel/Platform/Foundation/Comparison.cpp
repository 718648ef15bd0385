#include <algorithm>
#include <optional>

#include <unicode/unorm.h>
#include <unicode/ustring.h>

#include <quorvel/Platform/Foundation/CanonicalText.h>
#include <quorvel/Platform/Foundation/Comparison.h>
#include <quorvel/Platform/Foundation/LinearSearch.h>
#include <quorvel/Platform/Foundation/Log.h>
#include <quorvel/Platform/Foundation/WideKernels.h>

namespace quorvel {
namespace {

using linear::NoFold;
using plain::SimpleFold;

std::int32_t sizeOf(StringView text) {
  contract(text.size() <= INT32_MAX, "Comparison", "a text of more than 2^31 units");
  return static_cast<std::int32_t>(text.size());
}

/// Units that decompose to starters only, so that nothing after them changes how they are ordered: ASCII, syllables,
/// ideographs, and the letters of basic Cyrillic but short i.
constexpr bool isDecisive(char16_t unit) {
  return unit < 0x80 || unitscan::isSyllableOrIdeograph(unit) ||
         (unit >= 0x410 && unit <= 0x44F && unit != 0x419 && unit != 0x439);
}

/// The canonical decomposition of a decisive unit.
struct Decomposed {
  explicit Decomposed(char16_t unit) : units{unit} {
    if (unit < 0xAC00 || unit > 0xD7A3) return;
    const int index = unit - 0xAC00;  // Unicode, chapter 3.12
    units[0] = static_cast<char16_t>(0x1100 + index / 588);
    units[1] = static_cast<char16_t>(0x1161 + index % 588 / 28);
    count = 2;
    if (index % 28 != 0) units[count++] = static_cast<char16_t>(0x11A7 + index % 28);
  }
  [[nodiscard]] StringView view() const { return StringView(units, count); }

  char16_t units[3];
  std::size_t count = 1;
};

template <class Fold>
std::size_t commonPrefix(StringView a, StringView b) {
  const std::size_t count = std::min(a.size(), b.size());
  const auto same = [&](std::size_t at) {
    return equal(Fold::fold(vector::Units::load(a.data() + at)), Fold::fold(vector::Units::load(b.data() + at)));
  };
  std::size_t i = 0;
  for (; i + 4 * vector::kLanes <= count; i += 4 * vector::kLanes) {
    const auto firstHalf = same(i) & same(i + vector::kLanes);
    if (!(firstHalf & same(i + 2 * vector::kLanes) & same(i + 3 * vector::kLanes)).lanesSet().all()) break;
  }
  for (; i + vector::kLanes <= count; i += vector::kLanes) {
    const vector::Lanes lanes = same(i).lanesSet();
    if (!lanes.all()) return i + static_cast<std::size_t>(std::countr_one(lanes.bits));
  }
  while (i < count && Fold::fold(a[i]) == Fold::fold(b[i])) ++i;
  return i;
}

/// The order of two texts that first differ at `at`, from the units there; nothing when more must be known.
template <class Fold>
std::optional<std::weak_ordering> orderAt(StringView a, StringView b, std::size_t at) {
  if (at == a.size() || at == b.size()) {
    const StringView longer = at < a.size() ? a : b;
    if (at < longer.size() && !isDecisive(longer[at])) return std::nullopt;
    return a.size() <=> b.size();
  }
  if (!isDecisive(a[at]) || !isDecisive(b[at])) return std::nullopt;
  const Decomposed left(Fold::fold(a[at]));
  const Decomposed right(Fold::fold(b[at]));
  const std::size_t common = std::min(left.count, right.count);
  const auto order = left.view().sub(0, common) <=> right.view().sub(0, common);
  if (order != 0) return order;
  // A syllable and the same with a final consonant: what follows the shorter is held against that consonant.
  const bool isLeftShorter = left.count < right.count;
  const StringView rest = (isLeftShorter ? a : b).sub(at + 1, 1);
  const auto whenLeftIsShorter = [=](std::weak_ordering shorter) { return isLeftShorter ? shorter : 0 <=> shorter; };
  if (rest.isEmpty()) return whenLeftIsShorter(std::weak_ordering::less);
  if (!isDecisive(rest[0])) return std::nullopt;
  const char16_t final = (isLeftShorter ? right : left).units[common];
  return whenLeftIsShorter(Decomposed(Fold::fold(rest[0])).units[0] <=> final);
}

std::weak_ordering compareForms(StringView a, StringView b, bool ignoresCase) {
  StringBuilder left;
  StringBuilder right;
  appendDecomposed(a, ignoresCase, left);
  appendDecomposed(b, ignoresCase, right);
  return left.view() <=> right.view();
}

std::weak_ordering compareByICU(StringView a, StringView b, bool ignoresCase) {
  // ICU's comparison goes astray, beyond its own buffers, where one text has a pair and the other the unpaired first
  // half of it before something that folds or decomposes.
  if (!unicode::isWellFormed(a) || !unicode::isWellFormed(b)) return compareForms(a, b, ignoresCase);
  StringBuilder left;
  StringBuilder right;
  a = withMarksInOrder(a, left);
  b = withMarksInOrder(b, right);
  UErrorCode status = U_ZERO_ERROR;
  const std::uint32_t options = ignoresCase ? U_COMPARE_IGNORE_CASE : 0;
  return unorm_compare(a.data(), sizeOf(a), b.data(), sizeOf(b), options, &status) <=> 0;
}

template <class Fold>
std::weak_ordering compare(StringView a, StringView b, bool ignoresCase) {
  if (a.isNil() || b.isNil()) return static_cast<int>(!a.isNil()) <=> static_cast<int>(!b.isNil());
  std::size_t at = commonPrefix<Fold>(a, b);
  if (const auto order = orderAt<Fold>(a, b, at)) return *order;
  // What stands before the sequences that differ has no part in it.
  while (!isSequenceBoundary(a, at) || !isSequenceBoundary(b, at)) --at;
  return compareByICU(a.sub(at), b.sub(at), ignoresCase);
}

/// The needle with simple case folded, for the search by units.
template <class Fold>
class FoldedNeedle {
 public:
  explicit FoldedNeedle(StringView needle) {
    char16_t* units = units_.extend(needle.size());
    for (const char16_t unit : needle.units()) *units++ = Fold::fold(unit);
  }
  [[nodiscard]] StringView view() const { return units_.view(); }

 private:
  StringBuilder units_;
};
template <>
class FoldedNeedle<NoFold> {
 public:
  explicit FoldedNeedle(StringView needle) : needle_(needle) {}
  [[nodiscard]] StringView view() const { return needle_; }

 private:
  StringView needle_;
};

NSRange findCanonical(StringView text, StringView needle, bool ignoresCase) {
  const CanonicalText haystack(text, ignoresCase);
  const CanonicalText wanted(needle, ignoresCase);
  const std::size_t size = wanted.view().size();
  const std::size_t hit = linear::find<NoFold>(haystack.view(), wanted.view(), 0, [&](std::size_t place) {
    return haystack.originalOf(place) && haystack.originalOf(place + size);
  });
  if (hit == linear::kNowhere) return NSRange::notFound();
  const std::size_t start = *haystack.originalOf(hit);
  return {start, *haystack.originalOf(hit + size) - start};
}

template <class Plain>
bool isPlain(StringView text) {
  return plain::leading<Plain>(text) == text.size();
}

/// True when the text has no conjoining jamo.
bool isWithoutJamo(StringView text) { return !unitscan::hasInRange(text, 0x1100, 0xFF); }

/// True when no other text within `text` can be canonically equivalent to the needle. To ASCII nothing is, but for
/// three of its characters (Kelvin sign, Greek question mark and varia are equivalent to them), and to syllables only
/// what holds jamo.
bool hasOneForm(StringView needle, StringView text) {
  bool syllables = false;
  for (const char16_t unit : needle.units()) {
    const bool isSyllable = unit >= 0xAC00 && unit <= 0xD7A3;
    if (!isSyllable && (unit > 0x7F || unit == u'K' || unit == u';' || unit == u'`')) {
      return isPlain<plain::Composed>(needle) && isPlain<plain::Composed>(text);
    }
    syllables = syllables || isSyllable;
  }
  return !syllables || isWithoutJamo(text);
}
bool hasOneCaselessForm(StringView needle, StringView text) {
  return isPlain<plain::Caseless>(needle) && isPlain<plain::Caseless>(text);
}

template <class Fold>
NSRange findEquivalent(StringView text, StringView needle, bool ignoresCase) {
  if (text.isNil() || needle.isEmpty()) return NSRange::notFound();
  const FoldedNeedle<Fold> folded(needle);
  const std::size_t hit = linear::find<Fold>(text, folded.view(), 0, [&](std::size_t place) {
    return isSequenceBoundary(text, place) && isSequenceBoundary(text, place + needle.size());
  });
  const NSRange range = hit == linear::kNowhere ? NSRange::notFound() : NSRange{hit, needle.size()};
  // Another form of the needle may stand before this hit.
  const StringView before = hit == linear::kNowhere ? text : text.sub(0, hit + needle.size());
  if (hit == 0 || (ignoresCase ? hasOneCaselessForm(needle, before) : hasOneForm(needle, before))) return range;
  return findCanonical(before, needle, ignoresCase);
}

}  // namespace

bool isCanonicallyEqual(StringView a, StringView b) { return compare<NoFold>(a, b, false) == 0; }

std::weak_ordering compareCanonical(StringView a, StringView b) { return compare<NoFold>(a, b, false); }

std::weak_ordering caseInsensitiveCompare(StringView a, StringView b) { return compare<SimpleFold>(a, b, true); }

NSRange rangeOfString(StringView text, StringView needle) { return findEquivalent<NoFold>(text, needle, false); }

NSRange rangeOfStringCaseInsensitive(StringView text, StringView needle) {
  return findEquivalent<SimpleFold>(text, needle, true);
}

}  // namespace quorvel
