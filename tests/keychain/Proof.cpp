#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include <sys/wait.h>
#include <tests/keychain/Proof.h>
#include <unistd.h>

namespace quorvel::proof {

std::size_t roundsOr(std::size_t usual) {
  const char* const rounds = std::getenv("QUORVEL_ROUNDS");
  return rounds ? std::strtoull(rounds, nullptr, 10) : usual;
}

std::uint64_t seed() {
  static const std::uint64_t kSeed = [] {
    const char* const given = std::getenv("QUORVEL_SEED");
    return given ? std::strtoull(given, nullptr, 10) : std::random_device{}();
  }();
  return kSeed;
}

void Faults::add(const std::string& text) {
  if (++count_ <= 10) std::printf("fault: %s\n", text.c_str());
  std::fflush(stdout);
}

Outcome Faults::conclude(const std::string& figure) const {
  std::printf("%s; %zu faults%s\n", figure.c_str(), count_,
              count_ == 0 ? "" : (" (QUORVEL_SEED=" + std::to_string(seed()) + ")").c_str());
  return count_ == 0 ? kHolds : kFails;
}

Outcome skipUnderSanitizer() {
  std::printf("skipped: a sanitizer has taken the allocator's place\n");
  return kSkipped;
}

Scratch::Scratch() {
  const char* const given = std::getenv("QUORVEL_PROOF_FOLDER");
  std::string name = given ? given : fs::is_directory("/dev/shm") ? "/dev/shm" : fs::temp_directory_path().string();
  name += "/quorvel-proof-XXXXXX";
  if (!::mkdtemp(name.data())) {
    std::perror(name.c_str());
    std::exit(kFails);
  }
  path_ = name;
}
Scratch::~Scratch() {
  Keychain::configure({});
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

void use(const fs::path& folder, KeySource source, const Data& masterKey) {
  Keychain::configure({folder.string(), std::vector<String>{kGroup}, source, masterKey});
}

Data dataOf(std::string_view bytes) {
  return Data({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
}

String identifierOf(std::string_view prefix, std::size_t number) {
  return String::fromASCII(std::string(prefix) + std::to_string(number));
}

std::string bytesOf(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

void writeBytes(const fs::path& file, std::string_view bytes) {
  std::ofstream(file, std::ios::binary | std::ios::trunc)
      .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

void copyFolder(const fs::path& from, const fs::path& to) {
  fs::remove_all(to);
  fs::create_directory(to);
  fs::permissions(to, fs::perms::owner_all);
  for (const auto& entry : fs::directory_iterator(from)) {
    fs::copy_file(entry.path(), to / entry.path().filename());
    fs::permissions(to / entry.path().filename(), fs::perms::owner_read | fs::perms::owner_write);
  }
}

std::string valueOf(std::uint64_t number, std::size_t size) {
  std::string value(std::max(size, sizeof number), '\0');
  std::memcpy(value.data(), &number, sizeof number);
  std::mt19937_64 bytes(number ^ value.size());
  for (std::size_t at = sizeof number; at < value.size(); ++at) value[at] = static_cast<char>(bytes());
  return value;
}

std::optional<std::uint64_t> numberOf(std::string_view value) {
  std::uint64_t number = 0;
  if (value.size() < sizeof number) return std::nullopt;
  std::memcpy(&number, value.data(), sizeof number);
  return value == valueOf(number, value.size()) ? std::optional(number) : std::nullopt;
}

pid_t start(const std::function<int()>& work) {
  std::fflush(stdout);
  const pid_t child = ::fork();
  if (child == 0) {
    const int code = work();
    std::fflush(stdout);
    ::_exit(code);
  }
  if (child < 0) {
    std::perror("fork");
    std::exit(kFails);
  }
  return child;
}

int finish(pid_t child) {
  int status = 0;
  while (::waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) return -1;
  }
  return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

std::string select(StringView identifier, ErrorSlot* error) {
  const auto data = KeychainAccessor().selectKeychainCopyMatching(identifier, kGroup, error);
  return data ? std::string(data->bytes().begin(), data->bytes().end()) : "nil";
}

bool isProper(const ErrorSlot& error) {
  return !error || (error->domain == String(KeychainAccessorErrorDomain) && error->code == -9999 &&
                    error->userInfo[u"OSStatus"] == Value(errSecNotAvailable));
}

}  // namespace quorvel::proof
