// quorvel color: a colour's forms as text, its contrast to a background, and a readable form of it.
#pragma once

#include <span>
#include <string_view>

namespace quorvel::command {

extern const char kColorUsage[];

/// `quorvel color COLOR... [--on BACKGROUND] [--json]`; the exit status.
int runColor(std::span<const std::string_view> words);

}  // namespace quorvel::command
