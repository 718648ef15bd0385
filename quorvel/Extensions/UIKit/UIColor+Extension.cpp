#include <cmath>

#include <quorvel/Extensions/UIKit/UIColor+Extension.h>

namespace quorvel {
namespace {

std::int64_t millionths(double component) {
  constexpr double kTwo63 = 9223372036854775808.0;
  const double scaled = component * 1000000.0;
  if (std::isnan(scaled)) return 0;
  if (scaled >= kTwo63) return INT64_MAX;
  if (scaled <= -kTwo63) return INT64_MIN;
  return static_cast<std::int64_t>(scaled);
}

}  // namespace

bool isSimilar(const UIColor& color, const UIColor& to) {
  return millionths(color.red()) == millionths(to.red()) && millionths(color.green()) == millionths(to.green()) &&
         millionths(color.blue()) == millionths(to.blue()) && millionths(color.alpha()) == millionths(to.alpha());
}

}  // namespace quorvel
