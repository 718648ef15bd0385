// ICCProfileName: what a colour profile calls itself (ICC.1:2004-10, section 9.2.22, and ICC.1:2022, 9.2.41).
#pragma once

#include <optional>

#include <quorvel/Platform/Foundation/String.h>
#include <quorvel/Platform/ImageIO/ByteView.h>

namespace quorvel {

/// The text of the tag "desc" in either version's form; of several languages English, else the first. nil when there is
/// none within the bytes, which may be the beginning of a profile.
[[nodiscard]] std::optional<String> iccProfileName(ImageBytes profile);

}  // namespace quorvel
