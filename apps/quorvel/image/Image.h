// quorvel image: what picture files are, and pictures made of them.
#pragma once

#include <span>
#include <string_view>

namespace quorvel::command {

extern const char kImageUsage[];

/// `quorvel image ACTION ...`; the exit status.
int runImage(std::span<const std::string_view> words);

}  // namespace quorvel::command
