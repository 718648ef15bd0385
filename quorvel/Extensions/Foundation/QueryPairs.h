// The pairs of query text, shared by its two parsers.
#pragma once

#include <algorithm>

#include <quorvel/Platform/Foundation/Unicode.h>

namespace quorvel::detail {

/// Calls `take(key, value)` for each piece between "&" that holds exactly one "=".
template <class Take>
void forEachQueryPair(StringView text, Take take) {
  for (std::size_t start = 0; start <= text.size();) {
    const std::size_t end = std::min(unicode::findUnit(text, u'&', start), text.size());
    const StringView piece = text.sub(start, end - start);
    const std::size_t equals = unicode::findUnit(piece, u'=');
    if (equals != unicode::kInvalid && unicode::findUnit(piece, u'=', equals + 1) == unicode::kInvalid) {
      take(piece.sub(0, equals), piece.sub(equals + 1));
    }
    start = end + 1;
  }
}

}  // namespace quorvel::detail
