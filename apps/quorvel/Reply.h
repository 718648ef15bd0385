// A reply of a server, read from a file and checked: a record that holds a list of records.
#pragma once

#include <functional>
#include <string>
#include <variant>

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel::command {

struct Reply {
  List records;  // each a dictionary
  std::size_t byteCount = 0;
};

/// Told how many bytes have been read so far.
using ReadProgress = std::function<void(std::size_t bytes)>;

/// Reads the file at `path` ("-" for standard input) and finds the list under `listKey`: a key of the reply, or a
/// dotted key path. Otherwise one line that names the file, the place and the reason.
[[nodiscard]] std::variant<Reply, std::string> readReply(const std::string& path, const std::string& listKey,
                                                         const ReadProgress& progress);

}  // namespace quorvel::command
