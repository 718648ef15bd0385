// Composed sequences of a text and its canonical (and caseless) form, with the way back to the original units.
// Included by sources only. Not here: the comparisons and searches that are made of them (Comparison.h).
#pragma once

#include <optional>
#include <vector>

#include <quorvel/Platform/Foundation/PlainUnits.h>

namespace quorvel {

/// True when no composed sequence of the text reaches across `index`: marks (general category M) and whatever combines
/// belong to what stands before them, vowel and final jamo to the syllable that they continue (UAX #29, GB7 and GB8),
/// and a surrogate pair is one. CR LF are two sequences.
[[nodiscard]] bool isSequenceBoundary(StringView text, std::size_t index);

/// Appends the canonical decomposition of the text (UAX #15, form D), or with case ignored that of its folded form.
void appendDecomposed(StringView text, bool ignoresCase, StringBuilder& out);
/// Appends the canonical composition of the text (form C).
void appendComposed(StringView text, StringBuilder& out);

/// A text in a form that is the same for all canonically equivalent texts (UAX #15, form C), or with case ignored the
/// same for all caseless equivalent ones (Unicode, chapter 3.13, D145).
class CanonicalText {
 public:
  CanonicalText(StringView text, bool ignoresCase);

  [[nodiscard]] StringView view() const { return units_.view(); }
  /// The place in the original of what begins at `unit` of the form, or nothing when no sequence begins there.
  [[nodiscard]] std::optional<std::size_t> originalOf(std::size_t unit) const;

 private:
  /// Plain units one for one, or one sequence as a whole.
  struct Piece {
    std::size_t unit;
    std::size_t original;
    bool isPlain;
  };

  [[nodiscard]] std::size_t plainLength(std::size_t from) const;
  [[nodiscard]] std::size_t sequenceLength(std::size_t from) const;
  void appendPlain(StringView units);
  void appendSequence(StringView sequence);

  StringView text_;
  bool ignoresCase_;
  StringBuilder units_;
  std::vector<Piece> pieces_;
};

}  // namespace quorvel
