#include <utility>

#include <quorvel/Extensions/UIKit/UIColor+Common.h>
#include <quorvel/Platform/Foundation/Log.h>

namespace quorvel {
namespace {

constexpr auto kCount = UIColor::Common::kPalette.size();

template <std::size_t... Rows>
constexpr std::array<UIColor, kCount> makeColors(std::index_sequence<Rows...>) {
  return {UIColorWithHex::colorWithAlphaHex(UIColor::Common::kPalette[Rows].argb)...};
}

// Made when the library is compiled, so that there is no first access to guard.
constexpr std::array<UIColor, kCount> kColors = makeColors(std::make_index_sequence<kCount>());

}  // namespace

const UIColor& UIColor::Common::at(std::size_t row) {
  contract(row < kCount, "UIColor.Common", "a row beyond the palette");
  return kColors[row];
}

}  // namespace quorvel
