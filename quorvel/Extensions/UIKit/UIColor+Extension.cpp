#include <quorvel/Extensions/UIKit/UIColor+Extension.h>

namespace quorvel {
namespace {

std::int64_t millionths(double component) { return Number(component * 1000000.0).longLongValue(); }

}  // namespace

bool isSimilar(const UIColor& color, const UIColor& other) {
  return millionths(color.red()) == millionths(other.red()) && millionths(color.green()) == millionths(other.green()) &&
         millionths(color.blue()) == millionths(other.blue()) && millionths(color.alpha()) == millionths(other.alpha());
}

}  // namespace quorvel
