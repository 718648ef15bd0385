// Somebody has the folder of a store without its key: its bytes tell no name, and no operation answers.
#include <array>

#include <tests/keychain/Proofs.h>

namespace quorvel::proof {
namespace {

constexpr const char* kNames[] = {"stranger-account-", "stranger-value-", "TKLogin", "T1.example.shared"};
constexpr std::size_t kItems = 64;
constexpr char kHandedIn[] = "thirty-two bytes of key material";

std::string widened(std::string_view text, bool bigEndian) {
  std::string wide;
  for (const char letter : text) wide += bigEndian ? std::string{'\0', letter} : std::string{letter, '\0'};
  return wide;
}

std::size_t search(const fs::path& folder, Faults& faults) {
  std::size_t bytes = 0;
  for (const auto& entry : fs::directory_iterator(folder)) {
    const std::string content = entry.path().filename().string() + '\n' + bytesOf(entry.path());
    bytes += content.size();
    for (const char* name : kNames) {
      for (const std::string& form : {std::string(name), widened(name, false), widened(name, true)}) {
        if (content.find(form) != std::string::npos) faults.add(std::string(name) + " in " + entry.path().string());
      }
    }
  }
  return bytes;
}

void refuseAll(const std::string& why, Faults& faults) {
  const KeychainAccessor accessor;
  const String account = identifierOf(kNames[0], 0);
  const auto refuse = [&](const char* operation, auto work) {
    ErrorSlot error;
    if (work(&error) || !error || !isProper(error)) faults.add(why + ": " + operation + " is not -25291");
  };
  refuse("select",
         [&](ErrorSlot* error) { return accessor.selectKeychainCopyMatching(account, kGroup, error).has_value(); });
  refuse("insert", [&](ErrorSlot* error) { return accessor.insertKeychainValue(dataOf("x"), u"new", kGroup, error); });
  refuse("update", [&](ErrorSlot* error) { return accessor.updateKeychainValue(dataOf("x"), account, kGroup, error); });
  refuse("delete", [&](ErrorSlot* error) { return accessor.deleteKeychainValue(account, kGroup, error); });
  std::vector<KeychainItem> items;
  if (Keychain::list(items) != errSecNotAvailable || !items.empty()) faults.add(why + ": list");
  if (Keychain::rotate() != errSecNotAvailable) faults.add(why + ": rotate");
  if (Keychain::doctor().isSound()) faults.add(why + ": doctor is content");
}

/// The source's store, used and copied without the key while it is open and once it is closed.
std::size_t steal(KeySource source, const fs::path& keychain, const fs::path& copy, Faults& faults) {
  const KeychainAccessor accessor;
  use(keychain, source, dataOf(kHandedIn));
  for (std::size_t i = 0; i < kItems; ++i) {
    const String account = identifierOf(kNames[0], i);
    const std::string value = kNames[1] + std::to_string(i);
    bool done = accessor.insertKeychainValue(dataOf(value), account, kGroup);
    if (i % 2 == 0) done = done && accessor.updateKeychainValue(dataOf(value + " again"), account, kGroup);
    if (i % 8 == 7) done = done && accessor.deleteKeychainValue(account, kGroup);
    if (!done) faults.add("the store could not be filled");
  }
  std::size_t bytes = 0;
  for (const bool isOpen : {true, false}) {
    use(keychain, source, dataOf(kHandedIn));
    if (isOpen) (void)select(identifierOf(kNames[0], 0));
    copyFolder(keychain, copy);
    for (const auto& entry : fs::directory_iterator(copy)) {
      if (entry.path().extension() == ".key") fs::remove(entry.path());
    }
    use(copy, source);
    refuseAll(std::string(nameOf(source)) + (isOpen ? ", copied while open" : ", copied closed"), faults);
    bytes += search(copy, faults);
    for (const auto& entry : fs::directory_iterator(copy)) {
      if (entry.path().extension() == ".key") faults.add("a key was made");
    }
  }
  return bytes;
}

}  // namespace

Outcome proveStranger() {
  const Scratch scratch;
  Faults faults;
  std::size_t bytes = 0;
  for (const KeySource source : {KeySource::File, KeySource::HandedIn}) {
    bytes += steal(source, scratch.path() / nameOf(source), scratch.path() / "copy", faults);
  }
  return faults.conclude(std::to_string(bytes) +
                         " bytes of stores without their keys: no account, value, service or group");
}

}  // namespace quorvel::proof
