// NSURL(File): the size of the file that a URL names.
#pragma once

#include <quorvel/Platform/Foundation/NSURL.h>

namespace quorvel {

/// `fileSize`: bytes, as a number, of what is at the path of a URL whose scheme is exactly "file"; of a symbolic link
/// the link's own. nil when it cannot be read; 0 for other schemes and for none.
[[nodiscard]] Value fileSize(const NSURL& url);

}  // namespace quorvel
