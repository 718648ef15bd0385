// What the proofs of the keychain share: folders, counts, values that tell whether they are whole, child processes.
// Not here: the rules of single operations (tests/Platform/Security, tests/Utility).
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include <sys/types.h>

#include <quorvel/Platform/Security/Keychain.h>
#include <quorvel/Utility/KeychainAccessor.h>

namespace quorvel::proof {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using ErrorSlot = std::optional<KeychainAccessorError>;

inline constexpr char16_t kGroup[] = u"T1.example.shared";

/// What a proof answers; `kSkipped` is what CTest calls so.
enum Outcome : int { kHolds = 0, kFails = 1, kSkipped = 77 };

struct Proof {
  const char* name;
  std::function<Outcome()> run;
};
/// The proofs of the program that is linked.
[[nodiscard]] std::vector<Proof> proofs();

/// AddressSanitizer and ThreadSanitizer bring their own allocator and keep what was freed.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kHasSystemAllocator = false;
#else
inline constexpr bool kHasSystemAllocator = true;
#endif
/// Says that a proof needs the system's allocator.
[[nodiscard]] Outcome skipUnderSanitizer();

/// QUORVEL_ROUNDS, or `usual`.
[[nodiscard]] std::size_t roundsOr(std::size_t usual);
/// QUORVEL_SEED, or one that nobody chose; printed where a proof fails.
[[nodiscard]] std::uint64_t seed();

/// Notes a fault and prints the first ten.
class Faults {
 public:
  void add(const std::string& text);
  [[nodiscard]] std::size_t count() const { return count_; }
  /// Prints the figure and answers what it means.
  [[nodiscard]] Outcome conclude(const std::string& figure) const;

 private:
  std::size_t count_ = 0;
};

/// A folder of its own that goes away with it: in memory where the system has such a place, since nothing here depends
/// on a disk. QUORVEL_PROOF_FOLDER names another place.
class Scratch {
 public:
  Scratch();
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;
  ~Scratch();
  [[nodiscard]] const fs::path& path() const { return path_; }
  [[nodiscard]] fs::path keychain() const { return path_ / "keychain"; }

 private:
  fs::path path_;
};

void use(const fs::path& folder, KeySource source = KeySource::File, const Data& masterKey = {});
[[nodiscard]] Data dataOf(std::string_view bytes);
[[nodiscard]] String identifierOf(std::string_view prefix, std::size_t number);
[[nodiscard]] std::string bytesOf(const fs::path& file);
void writeBytes(const fs::path& file, std::string_view bytes);
/// Copies the files of a keychain's folder, private as they were; `to` is replaced.
void copyFolder(const fs::path& from, const fs::path& to);

/// Bytes that follow from `number` alone, which they begin with: at least eight.
[[nodiscard]] std::string valueOf(std::uint64_t number, std::size_t size);
/// The number of a value that is whole; nothing for any other bytes.
[[nodiscard]] std::optional<std::uint64_t> numberOf(std::string_view value);

/// Runs `work` in a child process and goes on; the child ends with its answer.
[[nodiscard]] pid_t start(const std::function<int()>& work);
/// Waits for the child: its exit code, or minus the signal that ended it.
[[nodiscard]] int finish(pid_t child);

[[nodiscard]] std::string select(StringView identifier, ErrorSlot* error = nullptr);
/// Whether the slot is empty or holds exactly the one error there is.
[[nodiscard]] bool isProper(const ErrorSlot& error);

}  // namespace quorvel::proof
