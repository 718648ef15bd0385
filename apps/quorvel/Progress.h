// A line on the terminal that is written over as the work goes on, where standard error is one.
#pragma once

#include <chrono>
#include <string>

namespace quorvel::command {

class Progress {
 public:
  void show(const char* what, double amount, const char* unit);
  /// "what [#######     ] 58 %" for a part of 0 to 1.
  void showPart(const std::string& what, double part);
  void clear();

 private:
  using Clock = std::chrono::steady_clock;
  [[nodiscard]] bool isDue();

  bool terminal_ = isTerminal();
  bool shown_ = false;
  Clock::time_point last_ = Clock::now();

  static bool isTerminal();
};

}  // namespace quorvel::command
