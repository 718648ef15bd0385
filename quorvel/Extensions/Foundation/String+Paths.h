// The value-type String extension: path properties.
// Not here: file names and URL strings (NSString+Additions+FileNames.h).
#pragma once

#include <quorvel/Platform/Foundation/PathOperations.h>

namespace quorvel {

/// `pathExtension`: what follows the last "." of the last path component, as a view into the receiver; empty when only
/// dots stand before that dot, when nothing follows it, or when what follows holds a space.
[[nodiscard]] inline StringView pathExtension(StringView path) { return paths::pathExtension(path); }

/// `lastPathComponent`: a view into the receiver, without slashes at its end; "/" for a path of slashes.
[[nodiscard]] inline StringView lastPathComponent(StringView path) { return paths::lastPathComponent(path); }

/// `deletingPathExtension`: the receiver without its `pathExtension` and the dot before it, and without slashes at its
/// end. Shared, not copied, when nothing changes; so are the results below.
[[nodiscard]] inline String deletingPathExtension(const String& path) {
  return paths::stringByDeletingPathExtension(path);
}

/// `stringByAppendingPathExtension(_:)`: the receiver, "." and the extension; the receiver alone for an empty
/// extension. nil for the empty receiver, for "/" and for an extension that is nil or holds a slash.
[[nodiscard]] inline std::optional<String> stringByAppendingPathExtension(const String& path, StringView extension) {
  return paths::stringByAppendingPathExtension(path, extension);
}

/// `stringByAppendingPathComponent(_:)`: the receiver and the component with one slash between and none at the end.
[[nodiscard]] inline String stringByAppendingPathComponent(const String& path, StringView component) {
  return paths::stringByAppendingPathComponent(path, component);
}

}  // namespace quorvel
