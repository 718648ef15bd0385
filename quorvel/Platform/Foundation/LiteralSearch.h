// LiteralSearch: every place of a literal text, in time linear in the text, by the rules of ICU's literal expressions.
// Not here: canonical search (Comparison.h), expressions (NSRegularExpression.h).
#pragma once

#include <array>
#include <optional>
#include <vector>

#include <quorvel/Platform/Foundation/Range.h>
#include <quorvel/Platform/Foundation/String.h>
#include <quorvel/Platform/Foundation/WideKernels.h>

namespace quorvel {

/// Ignoring case compares by full case folding: 'strasse' is found in 'Straße', but 's' is not found in 'ß', because a
/// match never begins or ends inside what one character folds to. A match never begins inside a surrogate pair.
class LiteralSearch {
 public:
  /// `needle` is not empty.
  LiteralSearch(StringView needle, bool ignoringCase);

  /// The first match that begins at or after `from`, the end of the match before it.
  [[nodiscard]] std::optional<NSRange> next(StringView text, std::size_t from = 0) const;
  /// All matches from left to right; none overlaps another.
  [[nodiscard]] std::vector<NSRange> ranges(StringView text) const;

 private:
  /// Holds for a unit u when (u | bit) is `unit`: most letters in both cases by one comparison. As made, for none.
  struct Test {
    char16_t unit = 0;
    char16_t bit = 1;
    [[nodiscard]] bool holds(char16_t other) const { return static_cast<char16_t>(other | bit) == unit; }
  };
  /// The units that may stand `offset` units behind the start of a match.
  struct Place {
    static constexpr std::size_t kMost = 8;
    std::array<Test, kMost> tests;
    std::uint32_t count = 0;
    std::uint32_t offset = 0;

    /// False when there is no room.
    bool add(char16_t unit);
    [[nodiscard]] bool holds(char16_t unit) const;
    [[nodiscard]] unsigned frequency() const;
  };
  /// The places that are looked at for rare units.
  static constexpr std::size_t kLook = 12;
  using Places = std::array<Place, kLook>;

  [[nodiscard]] std::size_t collectPlaces(Places& places);
  [[nodiscard]] std::size_t collectScalar(Places& places, std::size_t offset);
  void choosePlaces(const Places& places, std::size_t count);

  [[nodiscard]] wide::Pair widePair() const;
  template <class Confirm>
  void scan(StringView text, std::size_t from, Confirm confirm) const;
  template <std::size_t PlaceTests, std::size_t StarterTests, class Confirm>
  void scanBlocks(StringView text, std::size_t from, Confirm confirm) const;
  template <class Sink>
  void search(StringView text, std::size_t from, Sink sink) const;
  [[nodiscard]] bool mayStart(StringView text, std::size_t start) const;
  [[nodiscard]] bool isStart(StringView text, std::size_t from, std::size_t place) const;
  [[nodiscard]] bool isEnd(StringView text, std::size_t place) const;
  [[nodiscard]] std::size_t matchEnd(StringView text, std::size_t start, std::size_t& compared) const;
  [[nodiscard]] std::size_t foldedMatchEnd(StringView text, std::size_t start, std::size_t& compared) const;
  [[nodiscard]] std::optional<NSRange> nextInLinearTime(StringView text, std::size_t from) const;

  String needle_;  // folded when case is ignored
  bool folds_;
  bool hasPlaces_ = true;
  // A match has units of both places, or begins with one of `starters_`: a character that folds to several.
  Place first_;
  Place second_;
  Place starters_;
};

}  // namespace quorvel
