// NSIndexSet: an ascending set of indexes, kept as runs of neighbours.
#pragma once

#include <span>
#include <vector>

#include <quorvel/Platform/Foundation/Range.h>

namespace quorvel {

/// Indexes are below `kNotFound`; others are a broken contract.
class NSIndexSet {
 public:
  NSIndexSet() = default;
  /// In whatever order, repeats counted once.
  explicit NSIndexSet(std::vector<std::uint64_t> indexes);
  /// `indexSetWithIndexesInRange:`
  [[nodiscard]] static NSIndexSet inRange(NSRange range);

  [[nodiscard]] std::uint64_t count() const;
  [[nodiscard]] bool contains(std::uint64_t index) const;
  /// The runs in ascending order; between two of them at least one index is missing.
  [[nodiscard]] std::span<const NSRange> ranges() const { return runs_; }

  friend bool operator==(const NSIndexSet& a, const NSIndexSet& b) = default;

 private:
  std::vector<NSRange> runs_;
};

}  // namespace quorvel
