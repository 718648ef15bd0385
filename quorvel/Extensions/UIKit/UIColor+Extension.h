// The UIColor extension: colours from components 0 to 255, and similarity.
// Not here: packed integers and hexadecimal texts (UIColor+ColorWithHex.h), the palette (UIColor+Common.h).
#pragma once

#include <quorvel/Platform/UIKit/UIColor.h>

namespace quorvel {

/// The static members of the family.
struct UIColorExtension {
  UIColorExtension() = delete;

  /// `color(r:g:b:)`: (r/255, g/255, b/255, 1), divided as doubles; components beyond 255 stay beyond 1.
  [[nodiscard]] static constexpr UIColor color(float r, float g, float b) {
    return {static_cast<double>(r) / 255.0, static_cast<double>(g) / 255.0, static_cast<double>(b) / 255.0, 1};
  }
  /// `color(r:g:b:a:)`: the same with the alpha as it is given.
  [[nodiscard]] static constexpr UIColor color(float r, float g, float b, float a) {
    return {static_cast<double>(r) / 255.0, static_cast<double>(g) / 255.0, static_cast<double>(b) / 255.0,
            static_cast<double>(a)};
  }
};

/// `isSimilar(to:)`: true when each component, times 1,000,000 and cut toward zero to a signed 64-bit integer, is the
/// same in both: six decimals, not rounded. What is beyond those integers counts as their nearest limit, infinities
/// too; not-a-number counts as 0.
[[nodiscard]] bool isSimilar(const UIColor& color, const UIColor& to);

}  // namespace quorvel
