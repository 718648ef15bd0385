// quorvel gallery: one picture that shows what the operations on colours and images make.
#pragma once

#include <span>
#include <string_view>

namespace quorvel::command {

extern const char kGalleryUsage[];

/// `quorvel gallery OUTPUT.png [--picture FILE] [--force]`; the exit status.
int runGallery(std::span<const std::string_view> words);

}  // namespace quorvel::command
