// ImageSniff: what an image file is, by its bytes and never by its name.
// Not here: the walks through single formats (JPEGMarkers.h and its neighbours), pixels (ImageReader.h).
#pragma once

#include <quorvel/Platform/Foundation/String.h>
#include <quorvel/Platform/ImageIO/ImageFacts.h>

namespace quorvel {

/// The facts of a file, or of as much of its beginning as there is: what lies beyond the bytes counts as missing, and
/// `isComplete` tells whether anything may. Time grows with the number of bytes, never with a declared size; no memory
/// is taken.
[[nodiscard]] ImageFacts sniff(ImageBytes file);

/// True when a path extension, in whatever case, is known as one of images, but of another format than the file's.
/// False for other extensions, none, and a file of unknown format.
///
///     extensionContradicts(u"JPG", ImageFormat::PNG)   // true
[[nodiscard]] bool extensionContradicts(StringView pathExtension, ImageFormat format);

/// The uniform type identifier: "public.jpeg"; nil for an unknown format.
[[nodiscard]] StringView typeIdentifier(ImageFormat format);

}  // namespace quorvel
