#include <cstdlib>
#include <fstream>
#include <sstream>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <tests/support/Command.h>
#include <unistd.h>

namespace quorvel::test {
namespace {

std::string contents(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream bytes;
  bytes << file.rdbuf();
  return bytes.str();
}

void redirect(const std::string& path, int flags, int descriptor) {
  const int file = ::open(path.c_str(), flags, 0600);
  ::dup2(file, descriptor);
  ::close(file);
}

}  // namespace

std::string temporaryFile(const std::string& name, std::string_view bytes) {
  const std::string path = testing::TempDir() + "quorvel-" + std::to_string(::getpid()) + "-" + name;
  std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  return path;
}

Outcome runCommand(const std::vector<std::string>& arguments, std::string_view input) {
  const std::string in = temporaryFile("in", input);
  const std::string out = temporaryFile("out", {});
  const std::string err = temporaryFile("err", {});
  std::vector<std::string> words = {QUORVEL_COMMAND};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);

  const pid_t child = ::fork();
  if (child == 0) {
    redirect(in, O_RDONLY, STDIN_FILENO);
    redirect(out, O_WRONLY | O_TRUNC, STDOUT_FILENO);
    redirect(err, O_WRONLY | O_TRUNC, STDERR_FILENO);
    ::setenv("TZ", "UTC", 1);
    ::execv(argv[0], argv.data());
    ::_exit(127);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  Outcome outcome{WIFEXITED(status) ? WEXITSTATUS(status) : -1, contents(out), contents(err)};
  for (const std::string& path : {in, out, err}) ::unlink(path.c_str());
  return outcome;
}

}  // namespace quorvel::test
