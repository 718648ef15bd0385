// The platform's path operations on strings: components between "/", and the extension of the last one.
// In the results of those that answer a path, runs of slashes are one slash and none is at the end, but "/" stays.
// Not here: URLs (NSURL.h), files.
#pragma once

#include <optional>

#include <quorvel/Platform/Foundation/String.h>

namespace quorvel::paths {

/// `lastPathComponent`: a view into the path; "/" for a path of slashes, empty for the empty path.
[[nodiscard]] StringView lastPathComponent(StringView path);

/// `pathExtension`: what follows the last "." of the last component, as a view into the path. Empty when only dots
/// stand before that dot, when nothing follows it, or when what follows holds a space.
///
///     pathExtension(u"/tmp/a.tar.gz")   // "gz"
///     pathExtension(u".profile")        // ""
[[nodiscard]] StringView pathExtension(StringView path);

/// `stringByDeletingPathExtension`: the path without the last component's extension and its dot.
[[nodiscard]] String stringByDeletingPathExtension(const String& path);

/// `stringByDeletingLastPathComponent`: '/tmp/a/' gives '/tmp', '/tmp' gives '/', 'a' gives ''.
[[nodiscard]] String stringByDeletingLastPathComponent(const String& path);

/// `stringByAppendingPathComponent:`: both with one slash between; an empty one adds nothing.
[[nodiscard]] String stringByAppendingPathComponent(const String& path, StringView component);

/// `stringByAppendingPathExtension:`: the path, "." and the extension; the path alone for an empty extension. nil for
/// the empty path, for "/", for an extension that holds a slash, and for a nil one.
[[nodiscard]] std::optional<String> stringByAppendingPathExtension(const String& path, StringView extension);

}  // namespace quorvel::paths
