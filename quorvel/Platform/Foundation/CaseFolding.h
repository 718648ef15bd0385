// Full case folding of single characters (Unicode, CaseFolding.txt, statuses C and F), as a table in memory.
// Not here: comparison of texts (Comparison.h). Included by sources only.
#pragma once

#include <array>
#include <span>
#include <vector>

#include <quorvel/Platform/Foundation/String.h>

namespace quorvel {

/// Only characters that change when folded are in the table. Built once for the process, on first use.
class CaseFolding {
 public:
  struct Fold {
    char32_t scalar;
    char16_t units[3];  // what it folds to
    std::uint8_t size;
    [[nodiscard]] StringView folded() const { return StringView(units, size); }
  };

  [[nodiscard]] static const CaseFolding& shared();

  /// nullptr when the scalar folds to itself.
  [[nodiscard]] const Fold* find(char32_t scalar) const {
    if (scalar > kLast) return nullptr;
    const std::uint16_t entry = entries_[pages_[scalar / kPage] * kPage + scalar % kPage];
    return entry ? &folds_[entry - 1] : nullptr;
  }
  /// The folds whose text begins with `unit`.
  [[nodiscard]] std::span<const Fold> beginningWith(char16_t unit) const {
    return unit < ascii_.size() ? ascii_[unit] : search(unit);
  }

 private:
  static constexpr char32_t kLast = 0x1FFFF;  // no character beyond has case
  static constexpr std::size_t kPage = 256;

  CaseFolding();
  void addFold(char32_t scalar);
  [[nodiscard]] std::span<const Fold> search(char16_t unit) const;

  std::vector<Fold> folds_;  // by what they fold to
  std::array<std::uint16_t, kLast / kPage + 1> pages_{};
  std::vector<std::uint16_t> entries_;
  std::array<std::span<const Fold>, 128> ascii_;
};

}  // namespace quorvel
