// The one log hook of the library, and the check for broken contracts. The library itself prints nothing.
#pragma once

#include <string_view>

namespace quorvel {

enum class LogLevel { Info, Warning, Error, Fault };

/// Receives one line of UTF-8 without a line break. Called from any thread, possibly from several at once.
using LogSink = void (*)(LogLevel level, std::string_view line);

/// Sends the library's diagnostics to `sink`; nullptr (the default) drops them. Returns the previous sink.
LogSink setLogSink(LogSink sink);

/// A sink that writes to standard error, for programs that want it.
void logToStandardError(LogLevel level, std::string_view line);

/// Line breaks in `line` become spaces.
void log(LogLevel level, std::string_view line);

/// Ends the program with a message when a caller broke the contract of `operation`. Stays in release builds;
/// input from outside never reaches it.
inline void contract(bool holds, const char* operation, const char* broken);

[[noreturn]] void contractBroken(const char* operation, const char* broken);

inline void contract(bool holds, const char* operation, const char* broken) {
  if (!holds) [[unlikely]]
    contractBroken(operation, broken);
}

}  // namespace quorvel
