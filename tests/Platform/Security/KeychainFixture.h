// A keychain in a folder of its own for each test.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <quorvel/Platform/Security/Keychain.h>

namespace quorvel::test {

inline Data dataOf(std::string_view bytes) {
  return Data({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
}

inline std::string bytesOf(const std::filesystem::path& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

inline void writeBytes(const std::filesystem::path& file, std::string_view bytes) {
  std::ofstream(file, std::ios::binary | std::ios::trunc)
      .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

inline mode_t modeOf(const std::filesystem::path& file) {
  struct stat status{};
  return ::lstat(file.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

inline constexpr char16_t kGroup[] = u"T1.example.shared";
inline constexpr char16_t kOtherGroup[] = u"T1.example.private";

class KeychainTest : public testing::Test {
 protected:
  KeychainTest() {
    std::string name = testing::TempDir() + "quorvel-keychain-XXXXXX";
    root_ = ::mkdtemp(name.data());
    open();
  }
  ~KeychainTest() override {
    Keychain::configure({});
    std::filesystem::remove_all(root_);
  }

  [[nodiscard]] std::filesystem::path folder() const { return root_ / "keychain"; }
  [[nodiscard]] std::filesystem::path store() const { return folder() / "keychain.db"; }
  [[nodiscard]] std::filesystem::path masterFile() const {
    for (const auto& entry : std::filesystem::directory_iterator(folder())) {
      if (entry.path().extension() == ".key") return entry.path();
    }
    return {};
  }

  /// The keychain of the test's folder, as a program of these groups opens it afresh.
  void open(KeySource source = KeySource::File, std::string_view masterKey = {},
            std::vector<String> groups = {kGroup, kOtherGroup}) const {
    Keychain::configure({folder().string(), std::move(groups), source, dataOf(masterKey)});
  }

  [[nodiscard]] static Dictionary item(StringView account, StringView group = kGroup) {
    return {{kSecClass, kSecClassGenericPassword},
            {kSecAttrService, u"mail"},
            {kSecAttrAccount, account},
            {kSecAttrAccessGroup, group}};
  }
  [[nodiscard]] static Dictionary with(Dictionary dictionary, const Value& key, const Value& value) {
    dictionary.set(key, value);
    return dictionary;
  }
  [[nodiscard]] static OSStatus add(StringView account, std::string_view value, StringView group = kGroup) {
    return SecItemAdd(with(item(account, group), kSecValueData, dataOf(value)));
  }
  /// The value of the item, or the status in words.
  [[nodiscard]] static std::string read(const Dictionary& query) {
    Value found;
    const OSStatus status = SecItemCopyMatching(with(query, kSecReturnData, true), &found);
    if (status != errSecSuccess) return "status " + std::to_string(status);
    const Data* data = found.asData();
    return data ? std::string(data->bytes().begin(), data->bytes().end()) : "no data";
  }
  [[nodiscard]] static std::string read(StringView account, StringView group = kGroup) {
    return read(item(account, group));
  }

  std::filesystem::path root_;
};

}  // namespace quorvel::test
