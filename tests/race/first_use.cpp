// usage: quorvel-first-use START
// The first use of everything that is built on first use, raced: eight threads meet before each step and take it at
// once. A step is a kept value or the example of an operation; START names the step to begin with, so that the values
// under it are built there. A child process takes the same steps with one thread; the race must give every thread what
// it got, one object, and as many allocations as building it once takes.
#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include <apps/quorvel/Operation.h>
#include <sys/wait.h>
#include <unistd.h>

#include <quorvel/Extensions/Foundation/NSString+Additions+Links.h>
#include <quorvel/Extensions/Foundation/NSString+URLEncoding.h>
#include <quorvel/Extensions/Foundation/String+Extension.h>
#include <quorvel/Platform/Foundation/CaseFolding.h>
#include <quorvel/Platform/Foundation/CharacterSet.h>
#include <quorvel/Platform/Foundation/NSBundle.h>
#include <quorvel/Platform/Foundation/NSJSONSerialization.h>
#include <quorvel/Utility/LocaleUtils.h>

namespace {

std::atomic<std::size_t> allocations{0};

}  // namespace

void* operator new(std::size_t size) {
  allocations.fetch_add(1, std::memory_order_relaxed);
  if (void* place = std::malloc(size ? size : 1)) return place;
  std::abort();
}
void operator delete(void* place) noexcept { std::free(place); }
void operator delete(void* place, std::size_t) noexcept { std::free(place); }

namespace quorvel {
namespace {

using command::Operation;

constexpr std::size_t kThreads = 8;

struct KeptValue {
  const char* name;
  const void* (*take)();  // where the value lies that every caller shares
};

constexpr KeptValue kKept[] = {
    {"white space and newlines", [] { return static_cast<const void*>(&NSCharacterSet::whitespaceAndNewline()); }},
    {"white space", [] { return static_cast<const void*>(&NSCharacterSet::whitespace()); }},
    {"newlines", [] { return static_cast<const void*>(&NSCharacterSet::newline()); }},
    {"controls", [] { return static_cast<const void*>(&NSCharacterSet::control()); }},
    {"marks", [] { return static_cast<const void*>(&NSCharacterSet::nonBase()); }},
    {"digits", [] { return static_cast<const void*>(&NSCharacterSet::decimalDigit()); }},
    {"user of a URL", [] { return static_cast<const void*>(&NSCharacterSet::urlUserAllowed()); }},
    {"password of a URL", [] { return static_cast<const void*>(&NSCharacterSet::urlPasswordAllowed()); }},
    {"host of a URL", [] { return static_cast<const void*>(&NSCharacterSet::urlHostAllowed()); }},
    {"path of a URL", [] { return static_cast<const void*>(&NSCharacterSet::urlPathAllowed()); }},
    {"query of a URL", [] { return static_cast<const void*>(&NSCharacterSet::urlQueryAllowed()); }},
    {"fragment of a URL", [] { return static_cast<const void*>(&NSCharacterSet::urlFragmentAllowed()); }},
    {"force-encoding set", [] { return static_cast<const void*>(&forceEncodingCharacterSet(nil)); }},
    {"link detector", [] { return static_cast<const void*>(&qv_linkDetector()); }},
    {"case folding", [] { return static_cast<const void*>(&CaseFolding::shared()); }},
    {"numbered localisations",
     [] { return static_cast<const void*>(LocaleUtils::preferredLanguageIndexMap().begin()); }},
};

/// What every thread does at once at a step, and what is told of it.
class Step {
 public:
  explicit Step(std::size_t index)
      : kept_(index < std::size(kKept) ? &kKept[index] : nullptr),
        operation_(kept_ ? nullptr : &command::allOperations()[index - std::size(kKept)]) {}

  void take(std::size_t thread) {
    if (kept_) {
      objects_[thread] = kept_->take();
    } else {
      texts_[thread] = answer(*operation_);
    }
  }
  /// The same text from all threads, or one that begins with "torn".
  [[nodiscard]] std::string told(std::size_t threads, std::size_t allocated) const {
    // They use files, and probes that run at once are not coordinated: raced, but free to answer differently.
    if (operation_ && operation_->isOnDevice) return "whatever the device says";
    for (std::size_t i = 1; i < threads; ++i) {
      if (objects_[i] != objects_[0]) return "torn: several objects";
      if (texts_[i] != texts_[0]) return "torn: " + texts_[0] + " and " + texts_[i];
    }
    return kept_ ? std::to_string(allocated) + " allocations" : texts_[0];
  }
  [[nodiscard]] std::string name() const {
    return kept_ ? kept_->name : std::string(operation_->family) + " " + std::string(operation_->name);
  }
  [[nodiscard]] static std::size_t count() { return std::size(kKept) + command::allOperations().size(); }

 private:
  static std::string answer(const Operation& operation) {
    std::string error;
    const Value arguments = NSJSONSerialization::parseFragment(operation.example, nullptr);
    const List* list = arguments.asList();
    const std::optional<Value> result = operation.invoke(operation, {list->begin(), list->size()}, error);
    return result ? NSJSONSerialization::writeFragmentUTF8(*result, 0).value_or("not JSON") : error;
  }

  const KeptValue* kept_;
  const Operation* operation_;
  std::array<const void*, kThreads> objects_{};
  std::array<std::string, kThreads> texts_;
};

/// Lets go of all threads at once. They do not sleep: who has to be woken first comes when the race is over.
class Meeting {
 public:
  explicit Meeting(std::size_t threads) : threads_(threads) {}

  /// The last to arrive calls `atMeeting` while the others wait.
  template <class AtMeeting>
  void arrive(AtMeeting atMeeting) {
    const std::size_t round = round_.load();
    if (arrived_.fetch_add(1) + 1 == threads_) {
      atMeeting();
      arrived_ = 0;
      round_ = round + 1;
      return;
    }
    while (round_.load() == round) std::this_thread::yield();
  }

 private:
  std::size_t threads_;
  std::atomic<std::size_t> arrived_{0};
  std::atomic<std::size_t> round_{0};
};

/// All steps from `start` on and round to it, each by all threads at once.
std::vector<std::string> taken(std::size_t start, std::size_t threadCount) {
  std::vector<Step> steps;
  for (std::size_t i = 0; i < Step::count(); ++i) steps.emplace_back((start + i) % Step::count());
  std::vector<std::string> told(steps.size());
  Meeting meeting(threadCount);
  std::size_t before = 0;
  std::vector<std::thread> threads;
  for (std::size_t thread = 0; thread < threadCount; ++thread) {
    threads.emplace_back([&, thread] {
      for (std::size_t i = 0; i < steps.size(); ++i) {
        meeting.arrive([&] { before = allocations; });
        steps[i].take(thread);
        meeting.arrive([&] { told[i] = steps[i].told(threadCount, allocations - before); });
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  return told;
}

/// What one thread gets, in a process of its own in which nothing has been built either.
std::string takenAlone(std::size_t start) {
  int ends[2];
  if (pipe(ends) != 0) return {};
  const pid_t child = fork();
  if (child == 0) {
    FILE* out = fdopen(ends[1], "w");
    for (const std::string& text : taken(start, 1)) std::fprintf(out, "%s%c", text.c_str(), '\0');
    std::fclose(out);
    _exit(0);
  }
  close(ends[1]);
  std::string texts;
  char buffer[4096];
  for (ssize_t size; (size = read(ends[0], buffer, sizeof buffer)) > 0;) texts.append(buffer, buffer + size);
  int status = 0;
  return waitpid(child, &status, 0) == child && status == 0 ? texts : std::string();
}

int run(std::size_t start) {
  const std::string alone = takenAlone(start);
  const std::vector<std::string> raced = taken(start, kThreads);
  std::size_t at = 0;
  int faults = 0;
  for (std::size_t i = 0; i < raced.size(); ++i) {
    const std::size_t end = alone.find('\0', at);
    const std::string expected = end == std::string::npos ? "nothing" : alone.substr(at, end - at);
    at = end + 1;
    if (raced[i] == expected) continue;
    const std::string name = Step((start + i) % Step::count()).name();
    std::fprintf(stderr, "first use of %s: %s, expected %s\n", name.c_str(), raced[i].c_str(), expected.c_str());
    ++faults;
  }
  return faults ? 1 : 0;
}

}  // namespace
}  // namespace quorvel

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: quorvel-first-use START\n", stderr);
    return 2;
  }
  return quorvel::run(std::strtoul(argv[1], nullptr, 10) % quorvel::Step::count());
}
