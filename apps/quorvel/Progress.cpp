#include <algorithm>
#include <cstdio>
#include <utility>

#include <apps/quorvel/Progress.h>
#include <unistd.h>

namespace quorvel::command {

bool Progress::isTerminal() { return ::isatty(STDERR_FILENO) != 0; }

bool Progress::isDue() {
  const auto now = Clock::now();
  if (!terminal_ || now - last_ < std::chrono::milliseconds(50)) return false;
  last_ = now;
  shown_ = true;
  return true;
}

void Progress::show(const char* what, double amount, const char* unit) {
  if (isDue()) std::fprintf(stderr, "\r\x1b[K%s %.0f %s", what, amount, unit);
}

void Progress::showPart(const std::string& what, double part) {
  constexpr int kColumns = 30;
  if (!isDue()) return;
  const double whole = std::clamp(part, 0.0, 1.0);
  const std::string bar(static_cast<std::size_t>(whole * kColumns), '#');
  std::fprintf(stderr, "\r\x1b[K%s [%-*s] %.0f %%", what.c_str(), kColumns, bar.c_str(), 100 * whole);
}

void Progress::clear() {
  if (std::exchange(shown_, false)) std::fputs("\r\x1b[K", stderr);
}

}  // namespace quorvel::command
