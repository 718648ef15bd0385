#include <quorvel/Platform/Foundation/NumberText.h>
#include <quorvel/Platform/UIKit/UIColor.h>

namespace quorvel {

String UIColor::description() const {
  StringBuilder out;
  out.appendASCII("rgba(");
  out.appendASCII(doubleText(red()).ascii());
  for (const double component : {green(), blue(), alpha()}) {
    out.appendASCII(", ");
    out.appendASCII(doubleText(component).ascii());
  }
  out.append(u')');
  return out.finish();
}

std::uint64_t UIColor::hash() const { return Value(List{red(), green(), blue(), alpha()}).hash(); }

}  // namespace quorvel
