#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

#include <apps/quorvel/Batch.h>
#include <apps/quorvel/Call.h>
#include <poll.h>
#include <unistd.h>

namespace quorvel::command {
namespace {

constexpr std::size_t kChunk = 256 << 10;
constexpr std::size_t kHeldBack = 64 << 10;

bool isReady(int descriptor, short events, int milliseconds) {
  pollfd poll{descriptor, events, 0};
  return ::poll(&poll, 1, milliseconds) > 0;
}

/// True when the failed call is worth another try, after a wait where the descriptor does not block.
bool isTemporary(int descriptor, short events) {
  if (errno == EINTR) return true;
  if (errno != EAGAIN && errno != EWOULDBLOCK) return false;
  isReady(descriptor, events, -1);
  return true;
}

struct Line {
  std::string_view text;  // without its line break
  bool isTooLong = false;
};

class Lines {
 public:
  Lines(int descriptor, std::size_t longestLine) : descriptor_(descriptor), longestLine_(longestLine) {}

  /// The next line of what has been read; the text stands until the next `read`.
  bool take(Line& line) {
    const char* start = buffer_.data() + from_;
    const void* found = scanned_ < size_ ? std::memchr(buffer_.data() + scanned_, '\n', size_ - scanned_) : nullptr;
    if (!found && !(isAtEnd_ && (from_ < size_ || isTooLong_))) {
      scanned_ = size_;
      if (isTooLong_ || size_ - from_ > longestLine_ + 1) {
        isTooLong_ = true;
        scanned_ = from_ = size_ = 0;
      }
      return false;
    }
    const std::size_t end = found ? static_cast<std::size_t>(static_cast<const char*>(found) - buffer_.data()) : size_;
    line.text = {start, end - from_};
    line.isTooLong = isTooLong_ || line.text.size() > longestLine_;
    isTooLong_ = false;
    scanned_ = from_ = found ? end + 1 : size_;
    return true;
  }

  void read() {
    makeRoom();
    const ssize_t count = ::read(descriptor_, buffer_.data() + size_, buffer_.size() - size_);
    if (count > 0) {
      size_ += static_cast<std::size_t>(count);
    } else if (count == 0 || !isTemporary(descriptor_, POLLIN)) {
      isAtEnd_ = true;
      hasFailed_ = count < 0;
    }
  }
  [[nodiscard]] bool wouldWait() const { return !isReady(descriptor_, POLLIN, 0); }
  [[nodiscard]] bool isAtEnd() const { return isAtEnd_; }
  [[nodiscard]] bool hasFailed() const { return hasFailed_; }

 private:
  /// Moves the unfinished line to the front, and doubles the buffer for a long one.
  void makeRoom() {
    if (from_ > 0) {
      std::memmove(buffer_.data(), buffer_.data() + from_, size_ - from_);
      size_ -= from_;
      scanned_ -= from_;
      from_ = 0;
    }
    if (buffer_.size() - size_ < kChunk) buffer_.resize(size_ * 2 + kChunk);
  }

  int descriptor_;
  std::size_t longestLine_;
  std::string buffer_;
  std::size_t from_ = 0;     // the first byte not taken
  std::size_t scanned_ = 0;  // no line break before it
  std::size_t size_ = 0;
  bool isTooLong_ = false;  // the line's start has been dropped
  bool isAtEnd_ = false;
  bool hasFailed_ = false;
};

class Output {
 public:
  explicit Output(int descriptor) : descriptor_(descriptor) {}

  std::string text;

  /// Writes all of the text and empties it; false when the output takes no more.
  bool flush() {
    for (std::size_t written = 0; written < text.size();) {
      const ssize_t count = ::write(descriptor_, text.data() + written, text.size() - written);
      if (count >= 0) {
        written += static_cast<std::size_t>(count);
      } else if (!isTemporary(descriptor_, POLLOUT)) {
        // A reader that has gone has seen all that it wanted.
        hasFailed_ = errno != EPIPE;
        if (hasFailed_) std::fprintf(stderr, "quorvel call: %s\n", std::strerror(errno));
        return false;
      }
    }
    text.clear();
    return true;
  }
  [[nodiscard]] bool hasFailed() const { return hasFailed_; }

 private:
  int descriptor_;
  bool hasFailed_ = false;
};

bool answer(const Line& line, std::string& out) {
  if (!line.isTooLong) return answerCall(line.text, out);
  appendError("the line is too long", out);
  return false;
}

/// Answers line after line until the input ends or the output is closed; says whether every answer was a result.
bool answerAll(Lines& lines, Output& output) {
  bool hasErrors = false;
  for (;;) {
    for (Line line; lines.take(line);) {
      if (!answer(line, output.text)) hasErrors = true;
      if (output.text.size() >= kHeldBack && !output.flush()) return !hasErrors;
    }
    if (lines.isAtEnd()) break;
    if (!output.text.empty() && lines.wouldWait() && !output.flush()) return !hasErrors;
    lines.read();
  }
  output.flush();
  return !hasErrors;
}

}  // namespace

int runBatch(int input, int output, std::size_t longestLine) {
  Lines lines(input, longestLine);
  Output answers(output);
  const bool allAnswered = answerAll(lines, answers);
  if (lines.hasFailed()) std::fputs("quorvel call: standard input cannot be read\n", stderr);
  return allAnswered && !lines.hasFailed() && !answers.hasFailed() ? 0 : 1;
}

}  // namespace quorvel::command
