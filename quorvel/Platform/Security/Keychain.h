// Keychain: the program's keychain. Where it is, under which key, for which access groups, and what looks after it.
// Not here: its items (SecItem.h, KeychainAccessor.h).
//
// Several programs, processes and threads may use one keychain at once. It opens on first use. A process that forks
// while it is open gives its child no keychain: every operation of the child answers errSecNotAvailable, until it runs
// another program. Close it before forking where the child is to open its own.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <quorvel/Platform/Security/KeySource.h>
#include <quorvel/Platform/Security/SecItem.h>

namespace quorvel {

struct KeychainConfiguration {
  /// An absolute path. Empty: the environment's QUORVEL_KEYCHAIN, else quorvel/keychain under XDG_DATA_HOME or
  /// ~/.local/share. It is made on first use with mode 0700; one that others may write to is refused.
  std::string folder;
  /// The groups that the program belongs to: items of others are neither found nor changed. nullopt: the
  /// "KeyChain-AccessGroup" of the main bundle's information, or none.
  std::optional<std::vector<String>> accessGroups;
  /// For a keychain that is not there yet; one that is there keeps its own.
  KeySource keySource = KeySource::File;
  /// For KeySource::HandedIn: at least kLeastMasterKeyBytes of random bytes, no password. Overwritten at the end.
  Data masterKey;
};

/// What `Keychain::doctor` found.
struct KeychainReport {
  std::string folder;
  std::optional<KeySource> source;  // nothing: there is no keychain, or nothing says which source it has
  KeyState key = KeyState::Missing;
  OSStatus status = errSecNotAvailable;  // of opening, and then of the checks
  std::size_t items = 0;
  std::size_t unreadable = 0;       // of these
  std::vector<std::string> faults;  // of the file, in words
  OSStatus roundTrip = errSecNotAvailable;

  [[nodiscard]] bool isSound() const {
    return status == errSecSuccess && unreadable == 0 && faults.empty() && roundTrip == errSecSuccess;
  }
};

struct KeychainItem {
  String group;
  String service;
  String account;
  String accessible;
  std::size_t valueBytes = 0;
};

class Keychain {
 public:
  Keychain() = delete;

  /// Closes the keychain that is open; the next operation opens the one described here.
  static void configure(const KeychainConfiguration& configuration);
  /// Gives up the keys and the file until the next operation.
  static void close();
  /// The folder that is used.
  [[nodiscard]] static std::string folder();

  /// Looks at everything and changes nothing that stays; makes no keychain where there is none.
  [[nodiscard]] static KeychainReport doctor();
  /// All items that open, of all groups, without their values.
  [[nodiscard]] static OSStatus list(std::vector<KeychainItem>& items);
  /// Moves the master key to another source, where a new one is made. The old source's key is deleted when the new one
  /// was read back and opens the keychain; on any failure it stays in force. Items are not rewritten. `masterKey` is
  /// for KeySource::HandedIn, and the program goes on with it.
  [[nodiscard]] static OSStatus migrate(KeySource to, const Data& masterKey = {});
  /// The same within the source: a new master key in place of the old.
  [[nodiscard]] static OSStatus rotate(const Data& masterKey = {});
};

}  // namespace quorvel
