// Stands between the library and the system: the k-th call of a kind fails, once or from then on. In the program that
// links it, for the thread that arms it.
#pragma once

#include <cstddef>

namespace quorvel::proof {

enum class Failing {
  Files,   // open, write, fsync, truncate, rename, mkdir
  Memory,  // malloc and its kin, private mmap
};

/// Call number `first`, counted from 1, fails, and the next `count - 1` too. 0: none, they are only counted.
void armCalls(Failing kind, std::size_t first, std::size_t count);
/// Ends it and answers how many calls there were.
std::size_t disarmCalls();

}  // namespace quorvel::proof
