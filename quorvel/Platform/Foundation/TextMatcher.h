// TextMatcher: the places of a search term in texts, as people search: with a choice of what does not matter.
// Not here: the rules in words (Utility/TextMatch.h), literal search (LiteralSearch.h), expressions
// (NSRegularExpression.h).
#pragma once

#include <optional>
#include <vector>

#include <quorvel/Platform/Foundation/Range.h>
#include <quorvel/Platform/Foundation/String.h>

namespace quorvel {

struct MatchOptions {
  bool ignoresCase = false;
  bool ignoresAccents = false;
  bool ignoresWidth = false;
  bool partialHangul = false;
  friend bool operator==(const MatchOptions&, const MatchOptions&) = default;
};

/// A term made ready once for any number of texts; any number of threads may use one at once.
class TextMatcher {
 public:
  TextMatcher(StringView term, MatchOptions options);

  /// All matches from left to right; none overlaps another.
  [[nodiscard]] std::vector<NSRange> ranges(StringView text) const;
  /// True when there is one; stops at the first.
  [[nodiscard]] bool hasMatch(StringView text) const;

 private:
  /// The units from `first` on, `span` of them beyond it, and two others.
  struct UnitClass {
    char16_t first = 0;
    char16_t span = 0;
    char16_t others[2] = {};
    [[nodiscard]] bool holds(char16_t unit) const {
      return static_cast<char16_t>(unit - first) <= span || unit == others[0] || unit == others[1];
    }
    [[nodiscard]] unsigned frequency() const;
  };
  class Lanes;

  [[nodiscard]] UnitClass exactly(char16_t unit) const;
  [[nodiscard]] static UnitClass beginningWith(char16_t letter);
  void readPartialHangul();
  void readLastSyllable(char16_t syllable);
  void choosePlaces();

  template <class Sink>
  void search(StringView text, Sink sink) const;
  template <class Fold, class Accept>
  void searchExactly(StringView form, Accept accept) const;
  template <class Accept>
  void searchClasses(StringView form, Accept accept) const;
  [[nodiscard]] std::size_t matchEnd(StringView form, std::size_t start) const;

  MatchOptions options_;
  String term_;  // folded
  // With partial Hangul, a match is a unit of each of `classes_`; or of all but the last, then of `open_` and `next_`.
  std::vector<UnitClass> classes_;
  std::optional<UnitClass> open_;
  UnitClass next_;
  // Two places of a match at which few units stand, as `offset` from its start.
  struct Place {
    UnitClass units;
    std::size_t offset = 0;
  };
  Place first_;
  Place second_;
};

}  // namespace quorvel
