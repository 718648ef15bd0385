#include <algorithm>

#include <unicode/uchar.h>
#include <unicode/uset.h>
#include <unicode/ustring.h>

#include <quorvel/Platform/Foundation/CaseFolding.h>
#include <quorvel/Platform/Foundation/UnitScan.h>

namespace quorvel {
namespace {

/// The size of the fold when it differs from the scalar, else 0.
std::uint8_t foldChanged(char32_t scalar, char16_t (&out)[3]) {
  const auto character = static_cast<UChar32>(scalar);
  char16_t source[2];
  std::int32_t size = 0;
  U16_APPEND_UNSAFE(source, size, character);
  UErrorCode status = U_ZERO_ERROR;
  const std::int32_t folded = u_strFoldCase(out, 3, source, size, U_FOLD_CASE_DEFAULT, &status);
  if (status == U_BUFFER_OVERFLOW_ERROR || std::u16string_view(out, static_cast<std::size_t>(folded)) ==
                                               std::u16string_view(source, static_cast<std::size_t>(size))) {
    return 0;
  }
  return static_cast<std::uint8_t>(folded);
}

}  // namespace

void CaseFolding::addFold(char32_t scalar) {
  Fold fold{scalar, {}, 0};
  fold.size = scalar <= kLast ? foldChanged(scalar, fold.units) : std::uint8_t{0};
  if (fold.size) folds_.push_back(fold);
}

const CaseFolding& CaseFolding::shared() {
  static const CaseFolding folding;
  return folding;
}

CaseFolding::CaseFolding() : entries_(kPage) {
  UErrorCode status = U_ZERO_ERROR;
  const USet* cased = u_getBinaryPropertySet(UCHAR_CASED, &status);
  const std::int32_t rangeCount = U_SUCCESS(status) ? uset_getItemCount(cased) : 0;
  for (std::int32_t i = 0; i < rangeCount; ++i) {
    UChar32 first = 0;
    UChar32 last = 0;
    uset_getItem(cased, i, &first, &last, nullptr, 0, &status);
    for (auto scalar = static_cast<char32_t>(first); scalar <= static_cast<char32_t>(last); ++scalar) addFold(scalar);
  }
  std::sort(folds_.begin(), folds_.end(), [](const Fold& a, const Fold& b) {
    const auto order = a.folded() <=> b.folded();
    return order != 0 ? order < 0 : a.scalar < b.scalar;
  });
  for (std::size_t i = 0; i < folds_.size(); ++i) {
    std::uint16_t& page = pages_[folds_[i].scalar / kPage];
    if (!page) {
      page = static_cast<std::uint16_t>(entries_.size() / kPage);
      entries_.resize(entries_.size() + kPage);
    }
    entries_[page * kPage + folds_[i].scalar % kPage] = static_cast<std::uint16_t>(i + 1);
  }
  for (std::size_t unit = 0; unit < ascii_.size(); ++unit) ascii_[unit] = search(static_cast<char16_t>(unit));
}

std::span<const CaseFolding::Fold> CaseFolding::search(char16_t unit) const {
  if (unitscan::isSyllableOrIdeograph(unit)) return {};
  const auto [first, last] = std::ranges::equal_range(folds_, unit, {}, [](const Fold& fold) { return fold.units[0]; });
  return {first, last};
}

}  // namespace quorvel
