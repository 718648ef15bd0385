// Points, sizes and rectangles of the drawing platform, in points or pixels as the operation says.
#pragma once

namespace quorvel {

struct CGPoint {
  double x = 0;
  double y = 0;
  friend constexpr bool operator==(const CGPoint&, const CGPoint&) = default;
};

struct CGSize {
  double width = 0;
  double height = 0;
  friend constexpr bool operator==(const CGSize&, const CGSize&) = default;
};

struct CGRect {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;
  friend constexpr bool operator==(const CGRect&, const CGRect&) = default;
};

struct UIEdgeInsets {
  double top = 0;
  double left = 0;
  double bottom = 0;
  double right = 0;
  friend constexpr bool operator==(const UIEdgeInsets&, const UIEdgeInsets&) = default;
};

}  // namespace quorvel
