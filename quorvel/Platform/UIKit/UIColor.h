// UIColor and ColorRGBA: the colour record that the whole library passes around. Needs no graphics library.
// Not here: colours from packed integers and the palette (UIColor+ColorWithHex.h, UIColor+Common.h).
#pragma once

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

/// Four components, nominally 0.0 to 1.0, stored as they come and never clamped.
struct ColorRGBA {
  double red = 0;
  double green = 0;
  double blue = 0;
  double alpha = 0;
  friend constexpr bool operator==(const ColorRGBA&, const ColorRGBA&) = default;
};

/// An immutable colour.
class UIColor {
 public:
  /// The application's named palette (UIColor+Common.h).
  struct Common;

  /// `colorWithRed:green:blue:alpha:`
  constexpr UIColor(double red, double green, double blue, double alpha) : components_{red, green, blue, alpha} {}
  constexpr explicit UIColor(const ColorRGBA& components) : components_(components) {}
  /// `colorWithWhite:alpha:`
  [[nodiscard]] static constexpr UIColor white(double white, double alpha) { return {white, white, white, alpha}; }
  [[nodiscard]] static constexpr UIColor blackColor() { return {0, 0, 0, 1}; }
  [[nodiscard]] static constexpr UIColor redColor() { return {1, 0, 0, 1}; }

  /// `getRed:green:blue:alpha:`
  [[nodiscard]] constexpr const ColorRGBA& components() const { return components_; }
  [[nodiscard]] constexpr double red() const { return components_.red; }
  [[nodiscard]] constexpr double green() const { return components_.green; }
  [[nodiscard]] constexpr double blue() const { return components_.blue; }
  [[nodiscard]] constexpr double alpha() const { return components_.alpha; }

  friend constexpr bool operator==(const UIColor&, const UIColor&) = default;

  [[nodiscard]] static String className() { return u"UIColor"; }
  /// The four components: 'rgba(1, 0, 0, 0.5)'.
  [[nodiscard]] String description() const;
  [[nodiscard]] std::uint64_t hash() const;

 private:
  ColorRGBA components_;
};

}  // namespace quorvel
