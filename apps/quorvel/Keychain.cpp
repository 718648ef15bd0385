#include <algorithm>
#include <array>
#include <cstdio>
#include <string>

#include <apps/quorvel/Keychain.h>
#include <apps/quorvel/OptionWords.h>

#include <quorvel/Platform/Security/Keychain.h>
#include <quorvel/Utility/KeychainAccessor.h>

namespace quorvel::command {

const char kKeychainUsage[] =
    "usage: quorvel keychain doctor|list [option ...]\n"
    "       quorvel keychain migrate --to SOURCE [--new-key FILE] [option ...]\n"
    "       quorvel keychain rotate [--new-key FILE] [option ...]\n"
    "       quorvel keychain put|update|get|delete --group GROUP ACCOUNT [option ...]\n"
    "\n"
    "  doctor    source and state of the master key, number of items, whether each opens, a round trip; status 1 when\n"
    "            something is wrong\n"
    "  list      group, service, account, accessibility and size in bytes of every item, with tabs between\n"
    "  migrate   moves the master key to another source; the old one is deleted when the new one opens the keychain\n"
    "  rotate    puts a new master key in place of the old\n"
    "  put       stores standard input as a new secret of the service TKLogin; update replaces one\n"
    "  get       writes a secret to standard output\n"
    "\n"
    "  --folder DIR     the keychain's folder (QUORVEL_KEYCHAIN, else quorvel/keychain in the user's data folder)\n"
    "  --source SOURCE  file, secret-service or handed-in: of a keychain that put makes (file)\n"
    "  --key FILE       the bytes of a master key that is handed in\n"
    "  --new-key FILE   those of the new one\n";

namespace {

using Words = std::span<const std::string_view>;
constexpr int kRefused = 1;
constexpr int kUsageError = 2;

struct Options {
  std::string folder;
  std::string source = "file";
  std::string key;
  std::string newKey;
  std::string to;
  std::string group;
  std::string account;
};

int complain(const std::string& what) {
  std::fprintf(stderr, "quorvel keychain: %s\n", what.c_str());
  return kUsageError;
}

const char* reasonOf(OSStatus status) {
  switch (status) {
    case errSecSuccess:
      return "done";
    case errSecNotAvailable:
      return "the keychain is not available";
    case errSecParam:
      return "that is no master key to hand in";
    case errSecIO:
      return "writing failed";
    case errSecAllocate:
      return "out of memory";
    default:
      return "refused";
  }
}

int finish(OSStatus status) {
  if (status == errSecSuccess) return 0;
  std::fprintf(stderr, "quorvel keychain: %s (%d)\n", reasonOf(status), status);
  return kRefused;
}

/// A field of a line: control characters and the reverse solidus are escaped.
std::string field(const String& text) {
  std::string out;
  for (const char byte : text.toUTF8Replacing()) {
    const auto code = static_cast<unsigned char>(byte);
    if (code >= 0x20 && code != 0x7F && byte != '\\') {
      out += byte;
      continue;
    }
    constexpr char kDigits[] = "0123456789abcdef";
    out += "\\x";
    out += kDigits[code >> 4];
    out += kDigits[code & 15];
  }
  return out;
}

bool readAll(std::FILE* file, Data& data) {
  std::string bytes;
  std::array<char, 4096> part{};
  std::size_t got = 0;
  while ((got = std::fread(part.data(), 1, part.size(), file)) > 0) bytes.append(part.data(), got);
  data = Data::secret({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
  std::fill(bytes.begin(), bytes.end(), '\0');
  return std::ferror(file) == 0;
}

bool readKey(const std::string& path, Data& key) {
  if (path.empty()) return true;
  std::FILE* const file = std::fopen(path.c_str(), "rbe");
  if (!file) return false;
  const bool done = readAll(file, key);
  std::fclose(file);
  return done;
}

int doctor(const Options& /*options*/) {
  const KeychainReport report = Keychain::doctor();
  std::printf("folder      %s\n", report.folder.c_str());
  std::printf("source      %s\n", report.source ? nameOf(*report.source) : "none");
  std::printf("master key  %s\n", nameOf(report.key));
  if (report.key == KeyState::Ready) {
    std::printf("items       %zu, %zu of them do not open\n", report.items, report.unreadable);
    for (const std::string& fault : report.faults) std::printf("file        %s\n", fault.c_str());
    std::printf("round trip  %s\n", report.roundTrip == errSecSuccess ? "done" : reasonOf(report.roundTrip));
  }
  std::printf("%s\n",
              report.isSound() ? "sound" : reasonOf(report.status == errSecSuccess ? errSecDecode : report.status));
  return report.isSound() ? 0 : kRefused;
}

int list(const Options& /*options*/) {
  std::vector<KeychainItem> items;
  const OSStatus status = Keychain::list(items);
  for (const auto& [group, service, account, accessible, bytes] : items) {
    std::printf("%s\t%s\t%s\t%s\t%zu\n", field(group).c_str(), field(service).c_str(), field(account).c_str(),
                field(accessible).c_str(), bytes);
  }
  return finish(status);
}

int migrate(const Options& options) {
  const auto to = keySourceNamed(options.to);
  Data key;
  if (!to) return complain("--to takes file, secret-service or handed-in");
  if (!readKey(options.newKey, key)) return complain("cannot read '" + options.newKey + "'");
  return finish(Keychain::migrate(*to, key));
}

int rotate(const Options& options) {
  Data key;
  if (!readKey(options.newKey, key)) return complain("cannot read '" + options.newKey + "'");
  return finish(Keychain::rotate(key));
}

/// A secret's operation: whether it was done, and the error when it could not be tried.
template <class Operation>
int withSecret(const Options& options, Operation operation) {
  std::optional<KeychainAccessorError> error;
  const auto account = String::fromUTF8(options.account);
  const auto group = String::fromUTF8(options.group);
  if (!account || !group) return complain("ACCOUNT and GROUP are UTF-8");
  if (operation(*account, *group, &error)) return 0;
  std::fprintf(stderr, "quorvel keychain: %s\n", error ? reasonOf(errSecNotAvailable) : "no");
  return kRefused;
}

int put(const Options& options) {
  Data secret;
  if (!readAll(stdin, secret)) return complain("cannot read standard input");
  return withSecret(options, [&](StringView account, StringView group, auto* error) {
    return KeychainAccessor().insertKeychainValue(secret, account, group, error);
  });
}

int update(const Options& options) {
  Data secret;
  if (!readAll(stdin, secret)) return complain("cannot read standard input");
  return withSecret(options, [&](StringView account, StringView group, auto* error) {
    return KeychainAccessor().updateKeychainValue(secret, account, group, error);
  });
}

int get(const Options& options) {
  return withSecret(options, [&](StringView account, StringView group, auto* error) {
    const auto secret = KeychainAccessor().selectKeychainCopyMatching(account, group, error);
    if (!secret) return false;
    std::setvbuf(stdout, nullptr, _IONBF, 0);  // no copy in the stream
    std::fwrite(secret->bytes().data(), 1, secret->size(), stdout);
    return true;
  });
}

int remove(const Options& options) {
  return withSecret(options, [&](StringView account, StringView group, auto* error) {
    return KeychainAccessor().deleteKeychainValue(account, group, error);
  });
}

struct Verb {
  std::string_view name;
  int (*run)(const Options& options);
  bool takesAccount;
};
constexpr Verb kVerbs[] = {
    {"doctor", doctor, false}, {"list", list, false},    {"migrate", migrate, false}, {"rotate", rotate, false},
    {"put", put, true},        {"update", update, true}, {"get", get, true},          {"delete", remove, true},
};

using Option = std::pair<std::string_view, std::string Options::*>;
constexpr Option kOptions[] = {
    {"--folder", &Options::folder},  {"--source", &Options::source}, {"--key", &Options::key},
    {"--new-key", &Options::newKey}, {"--to", &Options::to},         {"--group", &Options::group},
};

/// An error text, or an empty one.
std::string parse(std::span<const std::string_view> given, const Verb& verb, Options& options) {
  constexpr std::string_view kNames[] = {"--folder=", "--source=", "--key=", "--new-key=", "--to=", "--group="};
  bool hasAccount = false;
  OptionWords words(given, kNames);
  while (words.next()) {
    if (!words.name.empty()) {
      options.*std::ranges::find(kOptions, words.name, &Option::first)->second = words.value;
    } else if (hasAccount || !verb.takesAccount) {
      words.refuse();
    } else {
      options.account = words.value;
      hasAccount = true;
    }
  }
  if (!words.error.empty()) return words.error;
  if (verb.takesAccount && (!hasAccount || options.group.empty())) return "ACCOUNT and --group are needed";
  return keySourceNamed(options.source) ? "" : "--source takes file, secret-service or handed-in";
}

/// The command belongs to the one group that it is told, and as who looks after all to none.
int configureAndRun(const Verb& verb, const Options& options) {
  KeychainConfiguration configuration;
  configuration.folder = options.folder;
  configuration.keySource = *keySourceNamed(options.source);
  configuration.accessGroups.emplace();
  if (verb.takesAccount) configuration.accessGroups->push_back(String::fromUTF8Replacing(options.group));
  if (!readKey(options.key, configuration.masterKey)) return complain("cannot read '" + options.key + "'");
  Keychain::configure(configuration);
  const int status = verb.run(options);
  Keychain::close();
  return status;
}

}  // namespace

int runKeychain(Words words) {
  const auto* verb = words.empty() ? std::end(kVerbs) : std::ranges::find(kVerbs, words[0], &Verb::name);
  if (verb == std::end(kVerbs)) {
    std::fputs(kKeychainUsage, stderr);
    return kUsageError;
  }
  Options options;
  const std::string fault = parse(words.subspan(1), *verb, options);
  return fault.empty() ? configureAndRun(*verb, options) : complain(fault);
}

}  // namespace quorvel::command
