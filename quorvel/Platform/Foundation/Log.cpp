#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <quorvel/Platform/Foundation/Log.h>

namespace quorvel {
namespace {

std::atomic<LogSink> currentSink{nullptr};

}  // namespace

LogSink setLogSink(LogSink sink) { return currentSink.exchange(sink); }

void logToStandardError(LogLevel level, std::string_view line) {
  static constexpr const char* kNames[] = {"info", "warning", "error", "fault"};
  std::fprintf(stderr, "quorvel: %s: %.*s\n", kNames[static_cast<int>(level)], static_cast<int>(line.size()),
               line.data());
}

void log(LogLevel level, std::string_view line) {
  const LogSink sink = currentSink.load();
  if (!sink) return;
  if (line.find_first_of("\r\n") == line.npos) return sink(level, line);
  // A name from outside must not look like a line of its own.
  std::string single(line);
  for (char& byte : single) byte = byte == '\r' || byte == '\n' ? ' ' : byte;
  sink(level, single);
}

void contractBroken(const char* operation, const char* broken) {
  // A broken contract ends the program, so the reason must be seen even where no sink is set.
  const std::string line = std::string(operation) + ": " + broken;
  if (LogSink sink = currentSink.load()) {
    sink(LogLevel::Fault, line);
  } else {
    logToStandardError(LogLevel::Fault, line);
  }
  std::abort();
}

}  // namespace quorvel
