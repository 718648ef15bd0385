// A text in the form in which texts match that differ in case, accents or width only, with the way back to its units.
// Included by sources only. Not here: matching (TextMatcher.h), canonical comparison (CanonicalText.h).
#pragma once

#include <optional>
#include <vector>

#include <quorvel/Platform/Foundation/String.h>

namespace quorvel {

/// What a form does not tell apart, beyond canonical equivalence.
struct TextFolding {
  bool ignoresCase = false;     // full case folding
  bool ignoresAccents = false;  // `isAccent`
  bool ignoresWidth = false;    // full-width and half-width characters (UAX #11) count as ordinary ones
  bool splitsLetters = false;   // Hangul letters by themselves are those of U+3131 to U+3163, typed one by one
};

/// Marks that may be left out of a word: canonical combining class 1, 10 to 36 and 202 to 240. Sound marks of kana,
/// nuktas and the vowel signs of Indic scripts are not among them: they make other letters.
[[nodiscard]] bool isAccent(char32_t scalar);

/// The composed form (UAX #15, form C) of each composed sequence, folded. It borrows the text.
///
/// Case is folded but for plain capitals, which `plain::SimpleFold` folds as units are compared: a text of plain units
/// is its own form and is not copied.
class FoldedText {
 public:
  FoldedText(StringView text, TextFolding folding);

  [[nodiscard]] StringView view() const { return isPlain_ ? text_ : units_.view(); }
  /// The place in the original of what begins at `unit` of the form, or nothing when no sequence begins there. Marks at
  /// the start of a text whose form is empty belong to nothing.
  [[nodiscard]] std::optional<std::size_t> originalOf(std::size_t unit) const;

 private:
  /// Units one for one, or one sequence as a whole.
  struct Piece {
    std::size_t unit;
    std::size_t original;
    bool isUnitForUnit;
  };
  struct KnownForm {
    char16_t unit = 0;
    std::uint16_t size = 0;
    char16_t form[6] = {};
  };
  static constexpr std::size_t kKnownForms = 128;
  static constexpr std::size_t kKnownFrom = 16;  // units of a text

  [[nodiscard]] bool isBoundary(std::size_t index) const;
  [[nodiscard]] std::size_t plainLength(std::size_t from) const;
  [[nodiscard]] std::size_t sequenceLength(std::size_t from) const;
  void appendSequence(StringView sequence);
  void appendForm(StringView sequence);
  void appendLetters(StringView form);

  StringView text_;
  TextFolding folding_;
  bool isPlain_ = false;
  StringBuilder units_;
  std::vector<Piece> pieces_;
  std::vector<KnownForm> known_;  // in longer texts, of sequences of one unit, by the unit's low bits
};

}  // namespace quorvel
