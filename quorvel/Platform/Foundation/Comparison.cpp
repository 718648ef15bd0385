#include <algorithm>
#include <optional>
#include <vector>

#include <unicode/uchar.h>
#include <unicode/unorm2.h>
#include <unicode/ustring.h>

#include <quorvel/Platform/Foundation/Comparison.h>
#include <quorvel/Platform/Foundation/Log.h>
#include <quorvel/Platform/Foundation/UnitScan.h>

namespace quorvel {
namespace {

using unitscan::isSyllableOrIdeograph;
using vector::Units;

const UNormalizer2* decomposition() {
  UErrorCode status = U_ZERO_ERROR;
  return unorm2_getNFDInstance(&status);
}

std::int32_t sizeOf(StringView text) {
  contract(text.size() <= INT32_MAX, "Comparison", "a text of more than 2^31 units");
  return static_cast<std::int32_t>(text.size());
}

std::weak_ordering orderOf(int comparison) { return comparison <=> 0; }

/// A unit that no normalisation changes, that combines with nothing before it, and that folds to itself but for A to Z.
/// Texts that first differ before such units are ordered by them.
constexpr bool isPlain(char16_t unit) { return unit < 0x80; }

/// The order of two texts from `from` on, where both hold plain units or one has ended; nothing when more must be
/// known.
std::optional<std::weak_ordering> plainOrder(StringView a, StringView b, std::size_t from, bool ignoresCase) {
  const auto fold = [ignoresCase](char16_t unit) { return ignoresCase ? unitscan::foldASCII(unit) : unit; };
  if (from < a.size() && from < b.size()) {
    if (!isPlain(a[from]) || !isPlain(b[from])) return std::nullopt;
    return fold(a[from]) <=> fold(b[from]);
  }
  const StringView longer = from < a.size() ? a : b;
  if (from < longer.size() && !isPlain(longer[from]) && !isSyllableOrIdeograph(longer[from])) return std::nullopt;
  return a.size() <=> b.size();
}

/// Units at the start that are the same, or the same but for the case of ASCII letters.
std::size_t commonPrefixIgnoringASCIICase(StringView a, StringView b) {
  const std::size_t count = std::min(a.size(), b.size());
  using unitscan::foldASCII;
  std::size_t i = 0;
  for (; i + vector::kLanes <= count; i += vector::kLanes) {
    const vector::Lanes same =
        equal(foldASCII(Units::load(a.data() + i)), foldASCII(Units::load(b.data() + i))).lanesSet();
    if (!same.all()) return i + static_cast<std::size_t>(std::countr_one(same.bits));
  }
  while (i < count && foldASCII(a[i]) == foldASCII(b[i])) ++i;
  return i;
}

std::optional<std::weak_ordering> orderWithNil(StringView a, StringView b) {
  if (!a.isNil() && !b.isNil()) return std::nullopt;
  return static_cast<int>(!a.isNil()) <=> static_cast<int>(!b.isNil());
}

std::weak_ordering compareByICU(StringView a, StringView b, std::uint32_t options) {
  UErrorCode status = U_ZERO_ERROR;
  const int order = unorm_compare(a.data(), sizeOf(a), b.data(), sizeOf(b), options, &status);
  return orderOf(order);
}

// Search

/// Units of text in composed form already, between which there is always a boundary of composed sequences: canonical
/// equivalence among texts of them is equality.
constexpr bool isComposedAlone(char16_t unit) { return unit < 0x300 || isSyllableOrIdeograph(unit); }
Units areComposedAlone(Units units) {
  return atMost(units, Units::splat(0x2FF)) | unitscan::syllablesOrIdeographs(units);
}
bool isAllComposedAlone(StringView text) {
  return unitscan::leading(text, areComposedAlone, isComposedAlone) == text.size();
}

/// True when a composed sequence may begin with the scalar, so that it belongs to nothing before it.
bool beginsSequence(char32_t scalar) {
  if (scalar < 0x300 || isSyllableOrIdeograph(scalar)) return true;
  const auto code = static_cast<UChar32>(scalar);
  return (U_GET_GC_MASK(code) & U_GC_M_MASK) == 0 && unorm2_hasBoundaryBefore(decomposition(), code) &&
         u_getIntPropertyValue(code, UCHAR_HANGUL_SYLLABLE_TYPE) != U_HST_VOWEL_JAMO &&
         u_getIntPropertyValue(code, UCHAR_HANGUL_SYLLABLE_TYPE) != U_HST_TRAILING_JAMO;
}

/// True when no composed sequence of the text reaches across `index`.
bool isBoundary(StringView text, std::size_t index) {
  if (index == 0 || index >= text.size()) return true;
  if (unicode::isLowSurrogate(text[index]) && unicode::isHighSurrogate(text[index - 1])) return false;
  return beginsSequence(unicode::nextScalar(text, index));
}

/// The first place where the needle stands unit for unit and splits no sequence.
NSRange findWhole(StringView text, StringView needle) {
  for (std::size_t at = 0; (at = unicode::findLiteral(text, needle, at)) != unicode::kInvalid; ++at) {
    if (isBoundary(text, at) && isBoundary(text, at + needle.size())) return {at, needle.size()};
  }
  return NSRange::notFound();
}

/// A text in a form in which equivalent texts are equal, and where in the original each of its sequences came from.
class Equivalent {
 public:
  Equivalent(StringView text, bool ignoresCase) : text_(text), ignoresCase_(ignoresCase) {
    units_.reserve(text.size() + 8);
    for (std::size_t start = 0; start < text.size();) {
      std::size_t end = start + 1;
      while (!isBoundary(text, end)) ++end;
      starts_.push_back({units_.size(), start});
      appendSequence(text.sub(start, end - start));
      start = end;
    }
    starts_.push_back({units_.size(), text.size()});
  }

  [[nodiscard]] StringView view() const { return StringView(units_.data(), units_.size()); }

  /// The original place of a sequence that begins at `unit`, or nothing when none does.
  [[nodiscard]] std::optional<std::size_t> originalOf(std::size_t unit) const {
    const auto found = std::ranges::lower_bound(starts_, unit, {}, &Start::unit);
    if (found == starts_.end() || found->unit != unit) return std::nullopt;
    return found->original;
  }

 private:
  struct Start {
    std::size_t unit;
    std::size_t original;
  };

  void appendSequence(StringView sequence) {
    if (sequence.size() == 1 && sequence[0] < 0x80) {
      units_.push_back(ignoresCase_ ? unitscan::foldASCII(sequence[0]) : sequence[0]);
      return;
    }
    std::u16string form = decomposed({sequence.data(), sequence.size()});
    // Folding may compose and decompose again; the fold of a decomposed text, decomposed, is the caseless form
    // (Unicode, definition D145).
    if (ignoresCase_) form = decomposed(folded(form));
    units_ += form;
  }
  static std::u16string decomposed(std::u16string_view text) {
    UErrorCode status = U_ZERO_ERROR;
    std::u16string form(text.size() * 18, u'\0');  // no scalar decomposes to more than 18 units
    const int32_t size = unorm2_normalize(decomposition(), text.data(), static_cast<int32_t>(text.size()), form.data(),
                                          static_cast<int32_t>(form.size()), &status);
    form.resize(static_cast<std::size_t>(size));
    return form;
  }
  static std::u16string folded(std::u16string_view text) {
    UErrorCode status = U_ZERO_ERROR;
    std::u16string form(text.size() * 3, u'\0');  // no scalar folds to more than three units
    const int32_t size = u_strFoldCase(form.data(), static_cast<int32_t>(form.size()), text.data(),
                                       static_cast<int32_t>(text.size()), U_FOLD_CASE_DEFAULT, &status);
    form.resize(static_cast<std::size_t>(size));
    return form;
  }

  StringView text_;
  bool ignoresCase_;
  std::u16string units_;
  std::vector<Start> starts_;
};

NSRange findEquivalent(StringView text, StringView needle, bool ignoresCase) {
  const Equivalent haystack(text, ignoresCase);
  const Equivalent wanted(needle, ignoresCase);
  if (wanted.view().isEmpty()) return NSRange::notFound();
  for (std::size_t at = 0; (at = unicode::findLiteral(haystack.view(), wanted.view(), at)) != unicode::kInvalid; ++at) {
    const std::optional<std::size_t> start = haystack.originalOf(at);
    const std::optional<std::size_t> end = haystack.originalOf(at + wanted.view().size());
    if (start && end) return {*start, *end - *start};
  }
  return NSRange::notFound();
}

}  // namespace

bool isCanonicallyEqual(StringView a, StringView b) {
  if (a.isNil() || b.isNil()) return a.isNil() && b.isNil();
  const std::size_t common = unicode::commonPrefix(a.data(), b.data(), std::min(a.size(), b.size()));
  if (const auto order = plainOrder(a, b, common, false)) return *order == 0;
  return compareByICU(a, b, 0) == 0;
}

std::weak_ordering compareCanonical(StringView a, StringView b) {
  if (const auto order = orderWithNil(a, b)) return *order;
  const std::size_t common = unicode::commonPrefix(a.data(), b.data(), std::min(a.size(), b.size()));
  if (const auto order = plainOrder(a, b, common, false)) return *order;
  return compareByICU(a, b, 0);
}

std::weak_ordering caseInsensitiveCompare(StringView a, StringView b) {
  if (const auto order = orderWithNil(a, b)) return *order;
  const std::size_t common = commonPrefixIgnoringASCIICase(a, b);
  if (const auto order = plainOrder(a, b, common, true)) return *order;
  return compareByICU(a, b, U_COMPARE_IGNORE_CASE);
}

NSRange rangeOfString(StringView text, StringView needle) {
  if (text.isNil() || needle.isEmpty()) return NSRange::notFound();
  const NSRange literal = findWhole(text, needle);
  // Equivalent forms may stand before a literal hit; texts that are composed already have none.
  if (literal.location == 0 || (isAllComposedAlone(needle) && isAllComposedAlone(text))) return literal;
  return findEquivalent(text, needle, false);
}

NSRange rangeOfStringCaseInsensitive(StringView text, StringView needle) {
  if (text.isNil() || needle.isEmpty()) return NSRange::notFound();
  return findEquivalent(text, needle, true);
}

}  // namespace quorvel
