// What `quorvel image info` tells of a file.
#pragma once

#include <quorvel/Platform/ImageIO/CGImageSource.h>

namespace quorvel::command {

/// Everything as a record: "file", "type", "format", "width", "height", "properties" ...
[[nodiscard]] Dictionary infoRecord(const std::string& path, CGImageSource& source);

/// The same in a few lines for people.
[[nodiscard]] std::string infoText(const std::string& path, CGImageSource& source);

}  // namespace quorvel::command
