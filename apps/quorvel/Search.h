// `quorvel search`: finds the messages of a reply that hold a search term, and shows them with the term highlighted.
#pragma once

#include <span>
#include <string_view>

namespace quorvel::command {

/// Runs the command on the words after `search`. 0 when the reply was searched, 1 when it could not be read, 2 when the
/// call or the search text was wrong.
int runSearch(std::span<const std::string_view> arguments);

}  // namespace quorvel::command
