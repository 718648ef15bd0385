// `quorvel call --batch`: a stream of calls, a line each, answered in order.
// Not here: the answer to one line (Call.h).
#pragma once

#include <cstddef>

namespace quorvel::command {

/// Bytes of the longest line; a longer one is answered with an error.
inline constexpr std::size_t kLongestLine = 64 << 20;

/// Answers the lines of `input` on `output`, which are file descriptors, until the input ends or the output is closed.
/// Answers are held back only while there is more to read. 0, or 1 when a line was answered with an error or a
/// descriptor failed.
[[nodiscard]] int runBatch(int input, int output, std::size_t longestLine = kLongestLine);

}  // namespace quorvel::command
