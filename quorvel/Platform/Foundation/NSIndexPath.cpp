#include <string>

#include <quorvel/Platform/Foundation/NSIndexPath.h>

namespace quorvel {

String NSIndexPath::description() const {
  return String::fromASCII("{length = 2, path = " + std::to_string(section) + " - " + std::to_string(item) + "}");
}

}  // namespace quorvel
