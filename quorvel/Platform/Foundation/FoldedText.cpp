#include <algorithm>
#include <array>

#include <unicode/uchar.h>
#include <unicode/unorm2.h>

#include <quorvel/Platform/Foundation/CanonicalText.h>
#include <quorvel/Platform/Foundation/FoldedText.h>
#include <quorvel/Platform/Foundation/HangulLetters.h>
#include <quorvel/Platform/Foundation/PlainUnits.h>

namespace quorvel {
namespace {

using vector::Units;

constexpr char16_t kIdeographicSpace = 0x3000;
// All other full-width and half-width characters stand here.
constexpr char16_t kFirstWide = 0xFF00;
constexpr char16_t kLastWide = 0xFFEF;

/// The half-width sound marks become marks on what stands before them.
constexpr bool isSoundMark(char16_t unit) { return unit == 0xFF9E || unit == 0xFF9F; }

/// Lanes of `units` that are not lanes of `others`.
Units without(Units units, Units others) { return units - (units & others); }

/// Plain units that hold no accent.
struct Unaccented {
  static bool has(char16_t unit) {
    return unit < 0x80 || (plain::isInPlainRanges(unit) && (unit < 0x400 || unit > 0x45F));
  }
  static Units has(Units units) {
    const Units ascii = atMost(units, Units::splat(0x7F));
    if (ascii.lanesSet().all()) return ascii;
    return without(plain::orInPlainRanges(ascii, units), vector::inRange(units, 0x400, 0x5F));
  }
};

/// What else no width and no letters change.
template <class Base, bool kIgnoresWidth, bool kSplitsLetters>
struct Unchanged {
  static bool has(char16_t unit) {
    const bool isWide = unit == kIdeographicSpace || (unit >= kFirstWide && unit <= kLastWide);
    const bool isPair = unit >= hangul::kFirstPair && unit <= hangul::kLastPair;
    return Base::has(unit) && !(kIgnoresWidth && isWide) && !(kSplitsLetters && isPair);
  }
  static Units has(Units units) {
    Units result = Base::has(units);
    if constexpr (kIgnoresWidth) {
      result = without(result, equal(units, Units::splat(kIdeographicSpace)) |
                                   vector::inRange(units, kFirstWide, kLastWide - kFirstWide));
    }
    if constexpr (kSplitsLetters) {
      result = without(result, vector::inRange(units, hangul::kFirstPair, hangul::kLastPair - hangul::kFirstPair));
    }
    return result;
  }
};

template <class Base>
std::size_t leadingUnchanged(StringView text, TextFolding folding) {
  if (folding.ignoresWidth) {
    return folding.splitsLetters ? plain::leading<Unchanged<Base, true, true>>(text)
                                 : plain::leading<Unchanged<Base, true, false>>(text);
  }
  return folding.splitsLetters ? plain::leading<Unchanged<Base, false, true>>(text) : plain::leading<Base>(text);
}

/// The ordinary character of each full-width or half-width one; others as they are.
std::array<char16_t, kLastWide - kFirstWide + 1> ordinaryForms() {
  UErrorCode status = U_ZERO_ERROR;
  const UNormalizer2* compatibility = unorm2_getNFKCInstance(&status);
  std::array<char16_t, kLastWide - kFirstWide + 1> forms{};
  for (std::size_t i = 0; i < forms.size(); ++i) {
    const auto wide = static_cast<UChar32>(kFirstWide + i);
    forms[i] = static_cast<char16_t>(wide);
    const auto type = u_getIntPropertyValue(wide, UCHAR_DECOMPOSITION_TYPE);
    if (type != U_DT_WIDE && type != U_DT_NARROW) continue;
    char16_t form[4];
    if (unorm2_getRawDecomposition(compatibility, wide, form, 4, &status) == 1) forms[i] = form[0];
  }
  return forms;
}

char16_t ordinaryForm(char16_t unit) {
  static const auto kForms = ordinaryForms();
  if (unit == kIdeographicSpace) return u' ';
  return unit >= kFirstWide && unit <= kLastWide ? kForms[unit - kFirstWide] : unit;
}

void removeAccents(StringBuilder& text) {
  char16_t* units = text.data();
  std::size_t size = 0;
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t start = i;
    const bool isRemoved = isAccent(unicode::nextScalar(text.view(), i));
    for (std::size_t k = start; k < i && !isRemoved; ++k) units[size++] = units[k];
  }
  text.truncate(size);
}

}  // namespace

bool isAccent(char32_t scalar) {
  if (scalar < 0x300) return false;
  const std::uint8_t combiningClass = u_getCombiningClass(static_cast<UChar32>(scalar));
  return combiningClass == 1 || (combiningClass >= 10 && combiningClass <= 36) ||
         (combiningClass >= 202 && combiningClass <= 240);
}

FoldedText::FoldedText(StringView text, TextFolding folding) : text_(text), folding_(folding) {
  std::size_t run = plainLength(0);
  isPlain_ = run == text.size();
  if (!isPlain_) units_.reserve(text.size() + text.size() / 16);
  for (std::size_t start = 0; start < text.size() && !isPlain_; run = plainLength(start)) {
    const std::size_t unit = units_.size();
    const std::size_t length = run > 0 ? run : sequenceLength(start);
    run > 0 ? units_.append(text.sub(start, run)) : appendSequence(text.sub(start, length));
    // Sequences of one unit whose form is one go on with the plain units around them.
    const bool isUnitForUnit = run > 0 || (length == 1 && units_.size() - unit == 1);
    if (!isUnitForUnit || pieces_.empty() || !pieces_.back().isUnitForUnit) {
      pieces_.push_back({unit, start, isUnitForUnit});
    }
    start += length;
  }
  pieces_.push_back({units_.size(), isPlain_ ? 0 : text.size(), isPlain_});
}

std::optional<std::size_t> FoldedText::originalOf(std::size_t unit) const {
  const auto after = std::ranges::upper_bound(pieces_, unit, {}, &Piece::unit);
  const Piece& piece = *(after - 1);
  if (piece.unit == unit) return piece.original;
  if (!piece.isUnitForUnit) return std::nullopt;
  const std::size_t original = piece.original + (unit - piece.unit);
  if (!isBoundary(original)) return std::nullopt;
  return original;
}

bool FoldedText::isBoundary(std::size_t index) const {
  if (folding_.ignoresWidth && index > 0 && index < text_.size() && isSoundMark(text_[index])) return false;
  return isSequenceBoundary(text_, index);
}

/// Plain units from `from` on, without the last when it is the base of what follows.
std::size_t FoldedText::plainLength(std::size_t from) const {
  const StringView rest = text_.sub(from);
  std::size_t length = folding_.ignoresAccents ? leadingUnchanged<Unaccented>(rest, folding_)
                       : folding_.ignoresCase  ? leadingUnchanged<plain::Caseless>(rest, folding_)
                                               : leadingUnchanged<plain::Composed>(rest, folding_);
  while (length > 0 && !isBoundary(from + length)) --length;
  return length;
}

std::size_t FoldedText::sequenceLength(std::size_t from) const {
  std::size_t end = from + 1;
  while (!isBoundary(end)) ++end;
  return end - from;
}

void FoldedText::appendSequence(StringView sequence) {
  if (sequence.size() > 1 || text_.size() < kKnownFrom) return appendForm(sequence);
  if (known_.empty()) known_.resize(kKnownForms);
  KnownForm& known = known_[sequence[0] % kKnownForms];
  if (known.size > 0 && known.unit == sequence[0]) return units_.append(StringView(known.form, known.size));
  const std::size_t start = units_.size();
  appendForm(sequence);
  const StringView form = units_.view().sub(start);
  if (form.size() > std::size(known.form)) return;
  known.unit = sequence[0];
  known.size = static_cast<std::uint16_t>(form.size());
  std::ranges::copy(form.units(), known.form);
}

void FoldedText::appendForm(StringView sequence) {
  StringBuilder form;
  StringBuilder folded;
  for (const char16_t unit : sequence.units()) folded.append(folding_.ignoresWidth ? ordinaryForm(unit) : unit);
  appendDecomposed(folded.view(), false, form);
  if (folding_.ignoresAccents) removeAccents(form);
  if (folding_.ignoresCase) {
    folded.truncate(0);
    appendDecomposed(form.view(), true, folded);
    if (folding_.ignoresAccents) removeAccents(folded);
  }
  const StringView decomposed = folding_.ignoresCase ? folded.view() : form.view();
  StringBuilder composed;
  appendComposed(decomposed, composed);
  folding_.splitsLetters ? appendLetters(composed.view()) : units_.append(composed.view());
}

/// A form that is one letter by itself becomes the one or two letters that are typed for it.
void FoldedText::appendLetters(StringView form) {
  const char16_t letter = form.size() == 1 ? hangul::letterOfConjoining(form[0]) : u'\0';
  const StringView single = letter ? StringView(&letter, 1) : form;
  const hangul::Pair* pair = single.size() == 1 ? hangul::pairOf(single[0]) : nullptr;
  units_.append(pair ? StringView(pair->typed, 2) : single);
}

}  // namespace quorvel
