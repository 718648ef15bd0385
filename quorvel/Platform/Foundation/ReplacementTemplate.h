// The template of a replacement by a regular expression, taken apart once for all matches.
// Included by sources only. Not here: matching and its limits (NSRegularExpression.h).
#pragma once

#include <string>
#include <vector>

#include <quorvel/Platform/Foundation/String.h>

namespace quorvel {

/// Literal pieces, each followed by a group or by none: `$n` is the group with the longest number up to `groupCount`,
/// a reverse solidus makes the next unit literal, and a `$` without digits stays.
class ReplacementTemplate {
 public:
  ReplacementTemplate(StringView source, std::size_t groupCount);

  /// `groupOf(number)` answers the text of a group, empty when it took no part.
  template <class GroupOf>
  void expand(StringBuilder& out, GroupOf groupOf) const {
    std::size_t from = 0;
    for (const Piece& piece : pieces_) {
      out.append(StringView(literal_.data() + from, piece.literalEnd - from));
      if (piece.group != kNoGroup) out.append(groupOf(piece.group));
      from = piece.literalEnd;
    }
  }

 private:
  static constexpr std::size_t kNoGroup = SIZE_MAX;
  struct Piece {
    std::size_t literalEnd;
    std::size_t group;
  };

  [[nodiscard]] std::size_t read(StringView source, std::size_t i, std::size_t groupCount);
  [[nodiscard]] std::size_t readGroup(StringView source, std::size_t i, std::size_t groupCount);

  std::u16string literal_;
  std::vector<Piece> pieces_;
};

}  // namespace quorvel
