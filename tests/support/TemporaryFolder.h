// A folder of one test, gone with it, and what tests plant in it and read from it.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorvel::test {

class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "quorvel-test-XXXXXX").string();
    EXPECT_NE(::mkdtemp(pattern.data()), nullptr);
    path_ = pattern;
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  [[nodiscard]] std::string path() const { return path_.string(); }
  [[nodiscard]] std::string path(const std::string& name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

inline void writeFile(const std::string& path, std::string_view bytes) {
  std::filesystem::create_directories(std::filesystem::path(path).parent_path());
  std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

inline std::string readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream bytes;
  bytes << file.rdbuf();
  return bytes.str();
}

/// The type and permission bits of what stands at the path, a link not followed; 0 for nothing.
inline unsigned modeOf(const std::string& path) {
  struct stat status{};
  return ::lstat(path.c_str(), &status) == 0 ? status.st_mode : 0;
}

/// Names in the folder, hidden ones too, sorted and with a space between.
inline std::string namesIn(const std::string& path) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(path)) names.push_back(entry.path().filename().string());
  std::sort(names.begin(), names.end());
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : " ") + name;
  return text;
}

/// A variable of the environment for the time of a test.
class Environment {
 public:
  Environment(const char* name, const std::optional<std::string>& value) : name_(name) {
    if (const char* old = std::getenv(name)) old_ = old;
    set(value);
  }
  Environment(const Environment&) = delete;
  Environment& operator=(const Environment&) = delete;
  ~Environment() { set(old_); }

 private:
  void set(const std::optional<std::string>& value) { value ? ::setenv(name_, value->c_str(), 1) : ::unsetenv(name_); }

  const char* name_;
  std::optional<std::string> old_;
};

/// The process's umask for the time of a test.
class Umask {
 public:
  explicit Umask(mode_t mask) : old_(::umask(mask)) {}
  Umask(const Umask&) = delete;
  Umask& operator=(const Umask&) = delete;
  ~Umask() { ::umask(old_); }

 private:
  mode_t old_;
};

/// What somebody may have put at a path before us. `victim` is a file that must stay as it is.
struct Planted {
  const char* what;
  void (*plant)(const std::string& path, const std::string& victim);
};
inline constexpr Planted kPlanted[] = {
    {"symbolic link",
     [](const std::string& path, const std::string& victim) { std::filesystem::create_symlink(victim, path); }},
    {"dangling link", [](const std::string& path,
                         const std::string& victim) { std::filesystem::create_symlink(victim + ".absent", path); }},
    {"link to a device",
     [](const std::string& path, const std::string&) { std::filesystem::create_symlink("/dev/zero", path); }},
    {"hard link",
     [](const std::string& path, const std::string& victim) { std::filesystem::create_hard_link(victim, path); }},
    {"FIFO", [](const std::string& path, const std::string&) { EXPECT_EQ(::mkfifo(path.c_str(), 0600), 0); }},
    {"folder", [](const std::string& path, const std::string&) { std::filesystem::create_directory(path); }},
    // Only root makes devices; for others this row is a FIFO again.
    {"device",
     [](const std::string& path, const std::string&) {
       const bool isMade = ::mknod(path.c_str(), S_IFCHR | 0600, 0x0105) == 0;
       if (!isMade) {
         EXPECT_EQ(::mkfifo(path.c_str(), 0600), 0);
       }
     }},
};

/// What a refusal may take, and what an answer may take that brings bytes to a busy disk. Each wait in the library is
/// longer than either.
inline constexpr std::chrono::milliseconds kRefusing{50};
inline constexpr std::chrono::milliseconds kWriting{900};

/// Time since it was made, without what this thread stood ready while others had the processor.
class Stopwatch {
 public:
  [[nodiscard]] std::chrono::nanoseconds elapsed() const {
    return std::chrono::steady_clock::now() - start_ - (delay() - delayBefore_);
  }

 private:
  static std::chrono::nanoseconds delay() {
    std::ifstream file("/proc/thread-self/schedstat");
    std::int64_t running = 0;
    std::int64_t ready = 0;
    return std::chrono::nanoseconds(file >> running >> ready ? ready : 0);
  }

  std::chrono::nanoseconds delayBefore_ = delay();
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

}  // namespace quorvel::test
