// A secret that nobody else would hold goes through every operation and is let go of. Then no writable memory of the
// process, no core file and no file holds it. It is looked for under a mask, so that the search does not hold it
// either.
#include <array>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <tests/keychain/Proofs.h>
#include <unistd.h>

#include <quorvel/Platform/Security/SecretBytes.h>

namespace quorvel::proof {
namespace {

constexpr std::size_t kCanaryBytes = 32;
constexpr std::uint8_t kMask = 0xA5;
using Masked = std::array<std::uint8_t, kCanaryBytes>;

/// As often as `masked` stands there, unmasked.
std::size_t countIn(std::span<const std::uint8_t> bytes, const Masked& masked) {
  const std::uint8_t first = masked[0] ^ kMask;
  std::size_t count = 0;
  const std::uint8_t* at = bytes.data();
  const std::uint8_t* const end = at + bytes.size();
  while ((at = static_cast<const std::uint8_t*>(std::memchr(at, first, static_cast<std::size_t>(end - at))))) {
    if (static_cast<std::size_t>(end - at) < masked.size()) break;
    std::size_t same = 0;
    while (same < masked.size() && (at[same] ^ kMask) == masked[same]) ++same;
    count += same == masked.size();
    ++at;
  }
  return count;
}

/// Reads of a file, in a buffer that is overwritten, from `from` to `to`.
std::size_t countInFile(int file, std::uint64_t from, std::uint64_t to, const Masked& masked) {
  static std::array<std::uint8_t, 1 << 16> buffer;
  std::size_t count = 0;
  while (from + kCanaryBytes <= to) {
    const ssize_t got =
        ::pread(file, buffer.data(), std::min<std::uint64_t>(buffer.size(), to - from), static_cast<off_t>(from));
    if (got < static_cast<ssize_t>(kCanaryBytes)) break;
    count += countIn({buffer.data(), static_cast<std::size_t>(got)}, masked);
    from += static_cast<std::uint64_t>(got) - (kCanaryBytes - 1);  // what lies across the border is seen next
    wipe(buffer);
  }
  return count;
}

std::size_t countInMemory(const Masked& masked) {
  const int memory = ::open("/proc/self/mem", O_RDONLY | O_CLOEXEC);
  std::FILE* const maps = std::fopen("/proc/self/maps", "re");
  if (memory < 0 || !maps) return SIZE_MAX;
  std::size_t count = 0;
  char line[512];
  while (std::fgets(line, sizeof line, maps)) {
    unsigned long long from = 0;
    unsigned long long to = 0;
    char access[8] = "";
    if (std::sscanf(line, "%llx-%llx %7s", &from, &to, access) == 3 && access[1] == 'w') {
      count += countInFile(memory, from, to, masked);
    }
  }
  std::fclose(maps);
  ::close(memory);
  return count;
}

std::size_t countInFiles(const fs::path& folder, const Masked& masked) {
  std::size_t count = 0;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    if (!entry.is_regular_file()) continue;
    const int file = ::open(entry.path().c_str(), O_RDONLY | O_CLOEXEC);
    count += countInFile(file, 0, entry.file_size(), masked);
    ::close(file);
  }
  return count;
}

Masked makeCanary(std::uint64_t number) {
  Masked masked;
  std::mt19937_64 random(seed() + number);
  for (std::uint8_t& byte : masked) byte = static_cast<std::uint8_t>(random());
  return masked;
}

/// The secret of the caller's own, which he lets be overwritten. `copies` in a row, to be one of some size.
Data unmasked(const Masked& masked, std::size_t copies = 1) {
  std::span<std::uint8_t> room;
  Data data = Data::secret(masked.size() * copies, room);
  for (std::size_t i = 0; i < room.size(); ++i) room[i] = masked[i % masked.size()] ^ kMask;
  return data;
}

struct Canaries {
  Masked inserted = makeCanary(1);
  Masked updated = makeCanary(2);
  Masked handedIn = makeCanary(3);
  Masked master{};  // the key file's bytes
};

/// Copies that the search finds while the secret is held: without them it proves nothing.
bool useSecrets(const Canaries& canaries, std::size_t copies, std::size_t& heldCopies) {
  const KeychainAccessor accessor;
  bool done = accessor.insertKeychainValue(unmasked(canaries.inserted, copies), u"canary", kGroup);
  {
    const auto held = accessor.selectKeychainCopyMatching(u"canary", kGroup);
    done = done && held.has_value();
    heldCopies += countInMemory(canaries.inserted);
  }
  done = done && accessor.updateKeychainValue(unmasked(canaries.updated, copies), u"canary", kGroup);
  done = done && accessor.selectKeychainCopyMatching(u"canary", kGroup).has_value();
  Value all;
  done = done && SecItemCopyMatching({{kSecClass, kSecClassGenericPassword},
                                      {kSecMatchLimit, kSecMatchLimitAll},
                                      {kSecReturnData, true},
                                      {kSecReturnAttributes, true}},
                                     &all) == errSecSuccess;
  all = Value();
  std::vector<KeychainItem> items;
  done = done && Keychain::list(items) == errSecSuccess && Keychain::doctor().isSound();
  done = done && accessor.deleteKeychainValue(u"canary", kGroup);
  return done && accessor.insertKeychainValue(unmasked(canaries.inserted, copies), u"canary", kGroup);
}

Masked maskedFile(const fs::path& folder) {
  Masked masked{};
  for (const auto& entry : fs::directory_iterator(folder)) {
    if (entry.path().extension() != ".key") continue;
    const int file = ::open(entry.path().c_str(), O_RDONLY | O_CLOEXEC);
    for (std::uint8_t& byte : masked) {
      std::uint8_t plain = 0;
      if (::read(file, &plain, 1) == 1) byte = plain ^ kMask;
    }
    ::close(file);
  }
  return masked;
}

/// Copies in a core file of the process as it is now; nothing where none can be had.
std::optional<std::size_t> countInCore(const fs::path& folder, const Canaries& canaries) {
  fs::create_directory(folder);
  const pid_t child = start([&]() -> int {
    const rlimit all{RLIM_INFINITY, RLIM_INFINITY};
    if (::setrlimit(RLIMIT_CORE, &all) != 0 || ::chdir(folder.c_str()) != 0) return kFails;
    ::signal(SIGABRT, SIG_DFL);
    std::abort();
  });
  if (finish(child) != -SIGABRT || fs::is_empty(folder)) return std::nullopt;
  return countInFiles(folder, canaries.inserted) + countInFiles(folder, canaries.updated);
}

/// In a process of its own, whose memory is nobody else's.
int hold(KeySource source, const Scratch& scratch, std::size_t copies) {
  Faults faults;
  Canaries canaries;
  const fs::path keychain = scratch.path() / (std::string(nameOf(source)) + std::to_string(copies));
  use(keychain, source, source == KeySource::HandedIn ? unmasked(canaries.handedIn) : Data());
  std::size_t held = 0;
  if (!useSecrets(canaries, copies, held)) faults.add("an operation failed");
  if (held < copies) faults.add("the search does not find the secret where it is");
  const auto expectNone = [&](const char* what, std::size_t found) {
    if (found > 0) faults.add(std::string(nameOf(source)) + ", " + what + ": " + std::to_string(found) + " copies");
  };
  expectNone("memory while the keychain is open, inserted", countInMemory(canaries.inserted));
  expectNone("memory while the keychain is open, updated", countInMemory(canaries.updated));
  const auto core = countInCore(scratch.path() / (keychain.filename().string() + "-core"), canaries);
  if (core) expectNone("core file", *core);
  if (!core && copies == 1) std::printf("no core file can be had here; the memory that would be in it was searched\n");
  expectNone("files, inserted", countInFiles(scratch.path(), canaries.inserted));
  expectNone("files, updated", countInFiles(scratch.path(), canaries.updated));
  if (source == KeySource::File) canaries.master = maskedFile(keychain);
  Keychain::close();
  if (source == KeySource::File) expectNone("memory after closing, master key", countInMemory(canaries.master));
  Keychain::configure({});
  if (source == KeySource::HandedIn) expectNone("memory in the end, key handed in", countInMemory(canaries.handedIn));
  return faults.count() == 0 ? kHolds : kFails;
}

}  // namespace

Outcome proveCanary() {
  if (!kHasSystemAllocator) return skipUnderSanitizer();
  const Scratch scratch;
  Faults faults;
  const fs::path temporary = scratch.path() / "tmp";
  fs::create_directory(temporary);
  for (const char* name : {"TMPDIR", "SQLITE_TMPDIR"}) ::setenv(name, temporary.c_str(), 1);
  std::size_t held = 0;
  for (const KeySource source : {KeySource::File, KeySource::HandedIn}) {
    for (const std::size_t copies : {1U, 100U, 30'000U}) {
      const int code = finish(start([&] { return hold(source, scratch, copies); }));
      if (code != kHolds) faults.add("a child process answers " + std::to_string(code));
      ++held;
    }
  }
  if (!fs::is_empty(temporary)) faults.add("temporary files");
  return faults.conclude(std::to_string(held) +
                         " processes: 0 copies of a secret let go of in memory, core, store, log and "
                         "temporary files");
}

}  // namespace quorvel::proof
