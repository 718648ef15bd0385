// ImageFile: opening what a URL names as an image file, and reading on in it.
// Not here: what the bytes mean (CGImageSource.h), writing.
#pragma once

#include <cstdint>
#include <vector>

#include <quorvel/Platform/Foundation/GuardedFile.h>
#include <quorvel/Platform/Foundation/NSURL.h>

namespace quorvel {

/// `isFileURL`: the scheme is "file", in whatever case.
[[nodiscard]] bool isFileURL(const NSURL& url);

/// The regular file that a file URL names, symbolic links followed, for reading; a closed descriptor for anything else,
/// which is not even opened.
[[nodiscard]] FileDescriptor openImageFile(const NSURL& url);

/// Appends what follows in the file until there are `size` bytes; fewer when it ends or fails before.
void readOn(const FileDescriptor& file, std::size_t size, std::vector<std::uint8_t>& bytes);

}  // namespace quorvel
