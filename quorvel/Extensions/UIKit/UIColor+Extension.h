// The UIColor extension: colours from components of 0 to 255, and a similarity test.
#pragma once

#include <quorvel/Platform/UIKit/UIColor.h>

namespace quorvel {

namespace UIColorExtension {

/// `color(r:g:b:)`: each component / 255, divided in 64-bit floating point; opaque. Nothing is clamped.
[[nodiscard]] constexpr UIColor color(float r, float g, float b) {
  return {static_cast<double>(r) / 255.0, static_cast<double>(g) / 255.0, static_cast<double>(b) / 255.0, 1.0};
}
/// `color(r:g:b:a:)`: the same with the alpha `a` from 0 to 1, widened, not divided.
[[nodiscard]] constexpr UIColor color(float r, float g, float b, float a) {
  const UIColor opaque = color(r, g, b);
  return {opaque.red(), opaque.green(), opaque.blue(), static_cast<double>(a)};
}

}  // namespace UIColorExtension

/// `isSimilar(to:)`: true when all four components agree after being multiplied by 1,000,000 and cut toward zero to
/// 64-bit integers: six decimals, cut and not rounded. Products beyond 64 bits count as the nearest end, NaN as 0.
[[nodiscard]] bool isSimilar(const UIColor& color, const UIColor& other);

}  // namespace quorvel
