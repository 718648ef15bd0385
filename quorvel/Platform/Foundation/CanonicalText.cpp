#include <algorithm>

#include <unicode/uchar.h>
#include <unicode/unorm2.h>
#include <unicode/ustring.h>

#include <quorvel/Platform/Foundation/CanonicalText.h>
#include <quorvel/Platform/Foundation/Log.h>

namespace quorvel {
namespace {

const UNormalizer2* decomposition() {
  UErrorCode status = U_ZERO_ERROR;
  return unorm2_getNFDInstance(&status);
}
const UNormalizer2* composition() {
  UErrorCode status = U_ZERO_ERROR;
  return unorm2_getNFCInstance(&status);
}

UHangulSyllableType hangulType(char32_t scalar) {
  return static_cast<UHangulSyllableType>(
      u_getIntPropertyValue(static_cast<UChar32>(scalar), UCHAR_HANGUL_SYLLABLE_TYPE));
}

/// True when the scalar continues the syllable block that `before` begins or continues.
bool continuesSyllable(char32_t before, char32_t scalar) {
  const UHangulSyllableType type = hangulType(scalar);
  const UHangulSyllableType previous = hangulType(before);
  if (type == U_HST_VOWEL_JAMO) {
    return previous == U_HST_LEADING_JAMO || previous == U_HST_VOWEL_JAMO || previous == U_HST_LV_SYLLABLE;
  }
  return type == U_HST_TRAILING_JAMO && previous != U_HST_LEADING_JAMO && previous != U_HST_NOT_APPLICABLE;
}

constexpr bool mayContinueSyllable(char32_t scalar) {
  return (scalar >= 0x1160 && scalar <= 0x11FF) || (scalar >= 0xD7B0 && scalar <= 0xD7FF);
}

/// The marks that stand one after another, decomposed, to be put in canonical order.
class MarkRun {
 public:
  void append(char32_t scalar) {
    char16_t units[kDecompositionUnits];
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t size =
        unorm2_getDecomposition(decomposition(), static_cast<UChar32>(scalar), units, kDecompositionUnits, &status);
    if (size < 0) return add(scalar);
    const StringView parts(units, static_cast<std::size_t>(size));
    for (std::size_t at = 0; at < parts.size();) add(unicode::nextScalar(parts, at));
  }
  /// Appends the marks in order, those of one class as they came, and forgets them.
  void finish(StringBuilder& out) {
    std::ranges::sort(marks_, {}, [](const Mark& mark) { return std::pair(mark.combiningClass, mark.order); });
    for (const Mark& mark : marks_) out.appendScalar(mark.scalar);
    marks_.clear();
  }

 private:
  struct Mark {
    std::uint8_t combiningClass;
    std::size_t order;
    char32_t scalar;
  };
  static constexpr std::int32_t kDecompositionUnits = 32;

  void add(char32_t scalar) {
    marks_.push_back({u_getCombiningClass(static_cast<UChar32>(scalar)), marks_.size(), scalar});
  }

  std::vector<Mark> marks_;
};

/// Whether the scalar, decomposed, begins with a mark that canonical order may move.
bool isMovable(char32_t scalar) {
  return scalar >= 0x300 &&
         u_getIntPropertyValue(static_cast<UChar32>(scalar), UCHAR_LEAD_CANONICAL_COMBINING_CLASS) != 0;
}

/// True where the text may hold more than twice `kLongRun` units of movable marks one after another.
bool mayHaveLongRun(StringView text) {
  constexpr std::size_t kLongRun = 32;
  int marks = 0;
  for (std::size_t i = kLongRun; i < text.size() && marks < 2; i += kLongRun) {
    std::size_t at = unicode::isLowSurrogate(text[i]) ? i - 1 : i;
    marks = text[i] >= 0x300 && isMovable(unicode::nextScalar(text, at)) ? marks + 1 : 0;
  }
  return marks >= 2;
}

using Transform = std::int32_t (*)(StringView, char16_t* out, std::int32_t capacity, UErrorCode&);

/// Puts what `transform` makes of `text` in place of what `out` held.
void apply(Transform transform, StringView text, StringBuilder& out) {
  contract(text.size() <= INT32_MAX, "CanonicalText", "a sequence of more than 2^31 units");
  StringBuilder ordered;
  text = withMarksInOrder(text, ordered);
  std::size_t capacity = text.size() + 16;
  for (int attempt = 0; attempt < 2; ++attempt) {
    UErrorCode status = U_ZERO_ERROR;
    out.truncate(0);
    char16_t* units = out.extend(capacity);
    const std::int32_t size = transform(text, units, static_cast<std::int32_t>(capacity), status);
    out.truncate(static_cast<std::size_t>(std::max(size, 0)));
    if (status != U_BUFFER_OVERFLOW_ERROR) return;
    capacity = static_cast<std::size_t>(size);
  }
}

std::int32_t decompose(StringView text, char16_t* out, std::int32_t capacity, UErrorCode& status) {
  return unorm2_normalize(decomposition(), text.data(), static_cast<std::int32_t>(text.size()), out, capacity, &status);
}
std::int32_t compose(StringView text, char16_t* out, std::int32_t capacity, UErrorCode& status) {
  return unorm2_normalize(composition(), text.data(), static_cast<std::int32_t>(text.size()), out, capacity, &status);
}
std::int32_t foldCase(StringView text, char16_t* out, std::int32_t capacity, UErrorCode& status) {
  return u_strFoldCase(out, capacity, text.data(), static_cast<std::int32_t>(text.size()), U_FOLD_CASE_DEFAULT,
                       &status);
}

/// One unit that all normalisation forms leave alone.
bool isInertUnit(StringView text) {
  return text.size() == 1 && unorm2_isInert(composition(), text[0]) && unorm2_isInert(decomposition(), text[0]);
}

}  // namespace

bool isSequenceBoundary(StringView text, std::size_t index) {
  if (index == 0 || index >= text.size()) return true;
  const char16_t unit = text[index];
  if (unicode::isLowSurrogate(unit)) return !unicode::isHighSurrogate(text[index - 1]);
  if (plain::Composed::has(unit) && !unicode::isSurrogate(unit)) return true;
  std::size_t at = index;
  const char32_t scalar = unicode::nextScalar(text, at);
  if (mayContinueSyllable(scalar)) {
    at = index;
    return !continuesSyllable(unicode::previousScalar(text, at), scalar);
  }
  const auto code = static_cast<UChar32>(scalar);
  return (U_GET_GC_MASK(code) & U_GC_M_MASK) == 0 && unorm2_hasBoundaryBefore(composition(), code);
}

StringView withMarksInOrder(StringView text, StringBuilder& ordered) {
  if (!mayHaveLongRun(text)) return text;
  MarkRun run;
  for (std::size_t at = 0; at < text.size();) {
    const char32_t scalar = unicode::nextScalar(text, at);
    if (isMovable(scalar)) {
      run.append(scalar);
    } else {
      run.finish(ordered);
      ordered.appendScalar(scalar);
    }
  }
  run.finish(ordered);
  return ordered.view();
}

void appendDecomposed(StringView text, bool ignoresCase, StringBuilder& out) {
  StringBuilder form;
  StringBuilder folded;
  apply(decompose, text, form);
  if (ignoresCase) {
    apply(foldCase, form.view(), folded);
    apply(decompose, folded.view(), form);
  }
  out.append(form.view());
}

void appendComposed(StringView text, StringBuilder& out) {
  StringBuilder form;
  apply(compose, text, form);
  out.append(form.view());
}

CanonicalText::CanonicalText(StringView text, bool ignoresCase) : text_(text), ignoresCase_(ignoresCase) {
  units_.reserve(text.size() + text.size() / 16);
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t run = plainLength(start);
    pieces_.push_back({units_.size(), start, run > 0});
    const std::size_t length = run > 0 ? run : sequenceLength(start);
    run > 0 ? appendPlain(text.sub(start, run)) : appendSequence(text.sub(start, length));
    start += length;
  }
  pieces_.push_back({units_.size(), text.size(), false});
}

std::optional<std::size_t> CanonicalText::originalOf(std::size_t unit) const {
  const auto after = std::ranges::upper_bound(pieces_, unit, {}, &Piece::unit);
  const Piece& piece = *(after - 1);
  if (piece.unit == unit) return piece.original;
  if (!piece.isPlain) return std::nullopt;
  const std::size_t original = piece.original + (unit - piece.unit);
  if (!isSequenceBoundary(text_, original)) return std::nullopt;
  return original;
}

/// Plain units from `from` on, without the last when it is the base of what follows.
std::size_t CanonicalText::plainLength(std::size_t from) const {
  const StringView rest = text_.sub(from);
  std::size_t length = ignoresCase_ ? plain::leading<plain::Caseless>(rest) : plain::leading<plain::Composed>(rest);
  while (length > 0 && !isSequenceBoundary(text_, from + length)) --length;
  return length;
}

std::size_t CanonicalText::sequenceLength(std::size_t from) const {
  std::size_t end = from + 1;
  while (!isSequenceBoundary(text_, end)) ++end;
  return end - from;
}

void CanonicalText::appendPlain(StringView units) {
  char16_t* out = units_.extend(units.size());
  if (!ignoresCase_) {
    std::ranges::copy(units.units(), out);
    return;
  }
  std::size_t i = 0;
  for (; i + vector::kLanes <= units.size(); i += vector::kLanes) {
    plain::SimpleFold::fold(vector::Units::load(units.data() + i)).store(out + i);
  }
  for (; i < units.size(); ++i) out[i] = plain::SimpleFold::fold(units[i]);
}

void CanonicalText::appendSequence(StringView sequence) {
  StringBuilder form;
  StringBuilder folded;
  if (!ignoresCase_) {
    if (isInertUnit(sequence)) return units_.append(sequence);
    apply(compose, sequence, form);
    return units_.append(form.view());
  }
  const bool isInert = isInertUnit(sequence);
  if (!isInert) apply(decompose, sequence, form);
  apply(foldCase, isInert ? sequence : form.view(), folded);
  if (isInertUnit(folded.view())) return units_.append(folded.view());
  apply(compose, folded.view(), form);
  units_.append(form.view());
}

}  // namespace quorvel
