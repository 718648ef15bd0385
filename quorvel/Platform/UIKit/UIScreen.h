// UIScreen: the screen's size and scale as plain numbers. Needs no graphics library.
#pragma once

namespace quorvel {

/// The library asks no display: the application tells what it shows on. A copy is a snapshot.
class UIScreen {
 public:
  /// In points.
  struct Bounds {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
    friend constexpr bool operator==(const Bounds&, const Bounds&) = default;
  };

  constexpr UIScreen() = default;
  /// `scale` in pixels for a point.
  constexpr UIScreen(const Bounds& bounds, double scale) : bounds_(bounds), scale_(scale) {}

  /// `mainScreen`: what `setMain` told last; a size of 0 by 0 and a scale of 1 before.
  [[nodiscard]] static UIScreen mainScreen();
  /// From any thread.
  static void setMain(const UIScreen& screen);

  [[nodiscard]] constexpr const Bounds& bounds() const { return bounds_; }
  [[nodiscard]] constexpr double scale() const { return scale_; }

  friend constexpr bool operator==(const UIScreen&, const UIScreen&) = default;

 private:
  Bounds bounds_;
  double scale_ = 1;
};

}  // namespace quorvel
