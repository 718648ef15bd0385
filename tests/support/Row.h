// A row of a table of cases: what goes in, what comes out, and mostly why. The loop over the table names the columns.
#pragma once

#include <tuple>

namespace quorvel::test {

template <class... Columns>
using Row = std::tuple<Columns...>;

/// The last column: what the row tries, shown when it fails.
using Why = const char*;

}  // namespace quorvel::test
