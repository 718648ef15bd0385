// Work that several threads or processes do at once.
#pragma once

#include <thread>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

namespace quorvel::test {

/// `work(i)` on a thread for each i below `count`, until all are done.
template <class Work>
void onThreads(int count, const Work& work) {
  std::vector<std::thread> threads;
  for (int i = 0; i < count; ++i) threads.emplace_back([&work, i] { work(i); });
  for (std::thread& thread : threads) thread.join();
}

/// A child process that ends with what `work` answers.
template <class Work>
[[nodiscard]] pid_t startChild(const Work& work) {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(work());
  return child;
}

/// What the child ended with: its exit status, or minus the signal.
[[nodiscard]] inline int endOf(pid_t child) {
  int status = 0;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

template <class Work>
[[nodiscard]] int inChild(const Work& work) {
  return endOf(startChild(work));
}

/// `work(i)` in a child process for each i below `count`, and `beside` in this one; the children that ended with 0.
template <class Work, class Beside>
[[nodiscard]] int inChildren(int count, const Work& work, const Beside& beside) {
  std::vector<pid_t> children;
  for (int i = 0; i < count; ++i) children.push_back(startChild([&] { return work(i); }));
  beside();
  int good = 0;
  for (const pid_t child : children) good += endOf(child) == 0;
  return good;
}

}  // namespace quorvel::test
