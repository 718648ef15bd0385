#include <bit>

#include <quorvel/Platform/Foundation/Hash.h>
#include <quorvel/Platform/Foundation/NumberText.h>
#include <quorvel/Platform/UIKit/UIColor.h>

namespace quorvel {

String UIColor::description() const {
  StringBuilder out;
  out.append(u"rgba(");
  out.append(stringValue(red()));
  for (const double component : {green(), blue(), alpha()}) {
    out.append(u", ");
    out.append(stringValue(component));
  }
  out.append(u')');
  return out.finish();
}

std::uint64_t UIColor::hash() const {
  std::uint64_t hash = hashing::seed();
  // Both zeros are equal, so they hash alike.
  for (const double component : {red(), green(), blue(), alpha()}) {
    hash = hashing::mix(hash, std::bit_cast<std::uint64_t>(component + 0.0));
  }
  return hash;
}

}  // namespace quorvel
