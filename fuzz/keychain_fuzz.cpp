// A keychain whose file was changed, and attribute dictionaries from arbitrary bytes. Whatever the file says: a value
// that is answered is the one that was stored, and what is stored in a sound keychain comes back.
#include <filesystem>
#include <fstream>
#include <iterator>

#include <fuzz/FuzzInput.h>
#include <unistd.h>

#include <quorvel/Platform/Security/Keychain.h>

using namespace quorvel;
using fuzz::require;

namespace {

constexpr char16_t kGroup[] = u"G";

std::string bytesOf(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

Dictionary numbered(int i) {
  return {{kSecClass, kSecClassGenericPassword},
          {kSecAttrService, u"s"},
          {kSecAttrAccount, String::fromASCII("account " + std::to_string(i))},
          {kSecAttrAccessGroup, kGroup}};
}
Data valueOf(int i) { return Data(std::vector<std::uint8_t>(40, static_cast<std::uint8_t>(i))); }

/// A keychain of eight items in memory-backed storage, made once for the process.
class Keychains {
 public:
  static constexpr int kItems = 8;
  Keychains() {
    std::string name = "/dev/shm/quorvel-fuzz-XXXXXX";
    folder_ = ::mkdtemp(name.data());
    Keychain::configure({(folder_ / "k").string(), std::vector<String>{kGroup}, KeySource::File, {}});
    for (int i = 0; i < kItems; ++i) {
      Dictionary item = numbered(i);
      item.set(kSecValueData, valueOf(i));
      require(SecItemAdd(item) == errSecSuccess, "a sound keychain takes items");
    }
    Keychain::close();
    whole_ = bytesOf(file());
  }
  Keychains(const Keychains&) = delete;
  Keychains& operator=(const Keychains&) = delete;
  ~Keychains() {
    Keychain::close();
    std::filesystem::remove_all(folder_);
  }

  void put(std::string_view bytes) const {
    Keychain::close();
    for (const char* suffix : {"-wal", "-shm", "-journal"}) std::filesystem::remove(file().string() + suffix);
    std::ofstream(file(), std::ios::binary | std::ios::trunc)
        .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  }
  [[nodiscard]] std::filesystem::path file() const { return folder_ / "k" / "keychain.db"; }
  [[nodiscard]] const std::string& whole() const { return whole_; }

 private:
  std::filesystem::path folder_;
  std::string whole_;
};

/// The file with pieces overwritten: place, length and bytes in turn.
std::string changed(const std::string& whole, fuzz::Input& input) {
  std::string bytes = whole;
  for (int piece = 1 + input.byte() % 8; piece > 0; --piece) {
    std::size_t at = input.byte();
    at = (at << 8 | input.byte()) % bytes.size();
    for (int count = 1 + input.byte() % 8; count > 0 && at < bytes.size(); --count, ++at) {
      bytes[at] = static_cast<char>(bytes[at] ^ input.byte());
    }
  }
  return bytes;
}

void readAll() {
  for (int i = 0; i < Keychains::kItems; ++i) {
    Dictionary query = numbered(i);
    query.set(kSecReturnData, true);
    Value found;
    if (SecItemCopyMatching(query, &found) != errSecSuccess) continue;
    require(found == Value(valueOf(i)), "a value that is answered is the one that was stored");
  }
}

Value anyValue(fuzz::Input& input) {
  switch (input.byte() % 7) {
    case 0:
      return input.text();
    case 1:
      return Data(std::vector<std::uint8_t>(input.byte(), 7));
    case 2:
      return input.byte() % 2 == 0;
    case 3:
      return kGroup;
    case 4:
      return null;
    case 5:
      return kSecMatchLimitAll;
    default:
      return kSecClassGenericPassword;
  }
}

Dictionary anyDictionary(fuzz::Input& input) {
  constexpr StringView kKeys[] = {kSecClass,     kSecAttrAccount, kSecAttrService, kSecAttrAccessGroup, kSecAttrGeneric,
                                  kSecValueData, kSecMatchLimit,  kSecReturnData,  kSecAttrAccessible,  u"other"};
  Dictionary dictionary{{kSecClass, kSecClassGenericPassword}, {kSecAttrAccessGroup, kGroup}};
  for (int count = input.byte() % 8; count > 0; --count) {
    dictionary.set(kKeys[input.byte() % std::size(kKeys)], anyValue(input));
  }
  return dictionary;
}

/// What is added is found under its own attributes, changed and deleted.
void tryDictionary(Dictionary item) {
  const Data value(std::vector<std::uint8_t>(3, 9));
  item.set(kSecAttrAccount, item[kSecAttrAccount].text().isNil() ? Value(u"a") : item[kSecAttrAccount]);
  item.set(kSecAttrService, item[kSecAttrService].text().isNil() ? Value(u"f") : item[kSecAttrService]);
  item.set(kSecValueData, value);
  const OSStatus added = SecItemAdd(item);
  if (added != errSecSuccess) return;
  item.remove(kSecValueData);
  item.remove(kSecMatchLimit);
  item.set(kSecReturnData, true);
  Value found;
  require(SecItemCopyMatching(item, &found) == errSecSuccess && found == Value(value), "what was added is found");
  require(SecItemDelete(item) == errSecSuccess, "and deleted");
  require(SecItemCopyMatching(item, &found) == errSecItemNotFound, "and gone");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Keychains keychains;
  fuzz::Input input(data, size);
  if (input.byte() % 2 == 0) {
    keychains.put(changed(keychains.whole(), input));
    readAll();
    (void)SecItemUpdate(numbered(1), {{kSecValueData, valueOf(1)}});
    readAll();
    (void)Keychain::doctor();
    keychains.put(keychains.whole());
    return 0;
  }
  const Dictionary item = anyDictionary(input);
  const Dictionary changes = anyDictionary(input);
  Value found;
  (void)SecItemCopyMatching(item, &found);
  (void)SecItemUpdate(item, changes);
  (void)SecItemDelete(changes);
  tryDictionary(item);
  (void)SecItemDelete({{kSecClass, kSecClassGenericPassword}});
  return 0;
}
