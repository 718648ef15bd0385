// Runs the quorvel command as a user would.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quorvel::test {

struct Outcome {
  int status = -1;  // the exit status; -1 when a signal ended the command
  std::string out;
  std::string err;
};

/// The command with these arguments, `input` on its standard input and UTC as its time zone.
[[nodiscard]] Outcome runCommand(const std::vector<std::string>& arguments, std::string_view input = {});

/// A file in a folder of this test run, with these bytes; its path.
[[nodiscard]] std::string temporaryFile(const std::string& name, std::string_view bytes);

}  // namespace quorvel::test
