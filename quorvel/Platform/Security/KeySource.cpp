#include <algorithm>
#include <string>

#include <unistd.h>

#include <quorvel/Platform/Foundation/FileReplacer.h>
#include <quorvel/Platform/Security/ItemCipher.h>
#include <quorvel/Platform/Security/KeySource.h>
#include <quorvel/Platform/Security/SecretService.h>

namespace quorvel {
namespace {

constexpr const char* kSourceFile = "key-source";
constexpr std::pair<KeySource, const char*> kSources[] = {
    {KeySource::File, "file"}, {KeySource::SecretService, "secret-service"}, {KeySource::HandedIn, "handed-in"}};

std::string hexOf(const KeyName& name) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const std::uint8_t byte : name) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

class KeyFiles final : public MasterKeys {
 public:
  explicit KeyFiles(const FileDescriptor& folder) : folder_(folder) {}
  KeyState read(const KeyName& name, SecretBytes& key) override {
    const std::string file = fileOf(name);
    const FileState state = stateOf(folder_, file.c_str());
    if (state != FileState::Private) return state == FileState::Missing ? KeyState::Missing : KeyState::Refused;
    SecretBytes bytes(kKeyBytes);
    if (readPrivate(folder_, file.c_str(), bytes.bytes()) != kKeyBytes) {
      // It may have gone between the two looks: another process turned the store to a new master key.
      return stateOf(folder_, file.c_str()) == FileState::Missing ? KeyState::Missing : KeyState::Refused;
    }
    key = std::move(bytes);
    return KeyState::Ready;
  }
  KeyState write(const KeyName& name, const SecretBytes& key) override {
    return createPrivate(folder_, fileOf(name).c_str(), key.bytes()) ? KeyState::Ready : KeyState::Refused;
  }
  void remove(const KeyName& name) override {
    if (::unlinkat(folder_.number(), fileOf(name).c_str(), 0) == 0) (void)::fsync(folder_.number());
  }

 private:
  static std::string fileOf(const KeyName& name) { return "master-" + hexOf(name) + ".key"; }
  const FileDescriptor& folder_;
};

class ServiceKeys final : public MasterKeys {
 public:
  KeyState read(const KeyName& name, SecretBytes& key) override { return readFromSecretService(hexOf(name), key); }
  KeyState write(const KeyName& name, const SecretBytes& key) override {
    return writeToSecretService(hexOf(name), key);
  }
  void remove(const KeyName& name) override { removeFromSecretService(hexOf(name)); }
};

/// The application keeps the key and its name means nothing.
class HandedInKey final : public MasterKeys {
 public:
  explicit HandedInKey(const SecretBytes& key) : key_(key) {}
  KeyState read(const KeyName& /*name*/, SecretBytes& key) override {
    if (key_.isEmpty()) return KeyState::Missing;
    key = SecretBytes(key_.bytes());
    return KeyState::Ready;
  }
  KeyState write(const KeyName& /*name*/, const SecretBytes& /*key*/) override { return KeyState::Ready; }
  void remove(const KeyName& /*name*/) override {}

 private:
  const SecretBytes& key_;
};

}  // namespace

const char* nameOf(KeySource source) {
  return std::ranges::find(kSources, source, &std::pair<KeySource, const char*>::first)->second;
}

std::optional<KeySource> keySourceNamed(std::string_view name) {
  for (const auto& [source, text] : kSources) {
    if (name == text) return source;
  }
  return std::nullopt;
}

const char* nameOf(KeyState state) {
  constexpr const char* kNames[] = {"ready", "missing", "refused", "locked", "silent", "unreachable", "wrong"};
  return kNames[static_cast<std::size_t>(state)];
}

std::unique_ptr<MasterKeys> MasterKeys::of(KeySource source, const FileDescriptor& folder,
                                           const SecretBytes& handedIn) {
  if (source == KeySource::File) return std::make_unique<KeyFiles>(folder);
  if (source == KeySource::SecretService) return std::make_unique<ServiceKeys>();
  return std::make_unique<HandedInKey>(handedIn);
}

std::optional<KeySource> readKeySource(const FileDescriptor& folder) {
  std::array<std::uint8_t, 64> bytes{};
  const std::ptrdiff_t size = readPrivate(folder, kSourceFile, bytes);
  if (size < 1 || bytes[static_cast<std::size_t>(size) - 1] != '\n') return std::nullopt;
  return keySourceNamed({reinterpret_cast<const char*>(bytes.data()), static_cast<std::size_t>(size) - 1});
}

bool writeKeySource(const FileDescriptor& folder, KeySource source) {
  return !replaceFile(folder, kSourceFile, nameOf(source) + std::string("\n"));
}

}  // namespace quorvel
