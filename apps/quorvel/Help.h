// `quorvel list` and `quorvel help`: the table of operations for readers.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace quorvel::command {

extern const char kUsage[];

/// `quorvel list [--family F]`: family, operation and C++ signature between tabs, a line each. The exit status.
int runList(std::span<const std::string_view> words);
/// `quorvel help [NAME|COMMAND]`. The exit status.
int runHelp(std::span<const std::string_view> words);

/// The word as a shell reads it back, quoted where it must be.
[[nodiscard]] std::string shellWord(std::string_view word);

}  // namespace quorvel::command
