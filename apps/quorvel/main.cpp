#include <cerrno>
#include <csignal>
#include <cstdio>
#include <string>
#include <vector>

#include <apps/quorvel/Backup.h>
#include <apps/quorvel/Call.h>
#include <apps/quorvel/Color.h>
#include <apps/quorvel/Help.h>
#include <apps/quorvel/Keychain.h>
#include <apps/quorvel/Search.h>
#include <apps/quorvel/image/Gallery.h>
#include <apps/quorvel/image/Image.h>

#include <quorvel/Version.h>

namespace {

using quorvel::command::kUsage;
using quorvel::command::runBackup;
using quorvel::command::runCall;
using quorvel::command::runColor;
using quorvel::command::runGallery;
using quorvel::command::runHelp;
using quorvel::command::runImage;
using quorvel::command::runKeychain;
using quorvel::command::runList;
using quorvel::command::runSearch;
using Words = std::span<const std::string_view>;

int runVersion(Words) {
  std::printf("quorvel %s\n", QuorvelVersionString);
  return 0;
}

struct Command {
  std::string_view name;
  int (*run)(Words words);
};

constexpr Command kCommands[] = {
    {"search", runSearch},
    {"call", runCall},
    {"list", runList},
    {"backup", runBackup},
    {"help", runHelp},
    {"keychain", runKeychain},
    {"color", runColor},
    {"image", runImage},
    {"gallery", runGallery},
    {"--version", runVersion},
    {"--help", [](Words) { return runHelp({}); }},
};

/// `quorvel call --help` is `quorvel help call`.
bool asksForHelp(const Command& command, Words words) {
  return command.run != runSearch && words.size() == 1 && words[0] == "--help";
}

int run(Words words) {
  if (!words.empty()) {
    for (const Command& command : kCommands) {
      if (command.name != words[0]) continue;
      return asksForHelp(command, words.subspan(1)) ? runHelp(words.first(1)) : command.run(words.subspan(1));
    }
    std::fprintf(stderr, "quorvel: unknown command '%s'\n\n", std::string(words[0]).c_str());
  }
  std::fputs(kUsage, stderr);
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  // A reader that goes away shows as a failed write, which ends the command without a word.
  std::signal(SIGPIPE, SIG_IGN);
  const std::vector<std::string_view> words(argv + 1, argv + argc);
  const int status = run(words);
  if ((std::fflush(stdout) != 0 || std::ferror(stdout) != 0) && errno != EPIPE) {
    std::perror("quorvel");
    return 1;
  }
  return status;
}
