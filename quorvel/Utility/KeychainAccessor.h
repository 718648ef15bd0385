// KeychainAccessor: one secret for an identifier, as a generic-password item of the service "TKLogin" in an access
// group. Not here: where the keychain is and under which key (Keychain.h), items with other attributes (SecItem.h).
#pragma once

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

/// `KeychainAccessorErrorDomain`: "KeychainAccessorErrorDomain", the domain of every error of the accessor.
inline constexpr char16_t KeychainAccessorErrorDomain[] = u"KeychainAccessorErrorDomain";

/// Why a keychain operation could not be tried: the keychain is not available.
struct KeychainAccessorError {
  String domain;
  std::int64_t code = 0;
  Dictionary userInfo;  // "OSStatus": the keychain's status, -25291
};

/// Which accessibility class each kind of operation writes into its query: one of the constants kSecAttrAccessible...
/// of SecItem.h, which must outlive the object, or nil.
class KeychainAccessorConfigurations {
 public:
  /// `defaultConfig`: `createAttribute` and `updateAttribute` are kSecAttrAccessibleAfterFirstUnlock, the others nil.
  [[nodiscard]] static KeychainAccessorConfigurations defaultConfig();

  /// `createAttribute`: the class of new items.
  StringView createAttribute{nil};
  /// `readAttribute`: only items of this class are found.
  StringView readAttribute{nil};
  /// `updateAttribute`: the class that changed items get.
  StringView updateAttribute{nil};
  /// `deleteAttribute`: only items of this class are deleted.
  StringView deleteAttribute{nil};
};

/// Each operation is one call of the keychain: no cache, no second try. An identifier or access group that is nil, and
/// an identifier with an unpaired surrogate, answer as a failure that is no error. `error`, when given, is filled when
/// the keychain is not available (status -25291), and otherwise left as it was. May be called from any thread.
class KeychainAccessor {
 public:
  /// `init`: with the default configuration.
  KeychainAccessor();
  /// `deviceAccessor`: an accessor whose four attributes are kSecAttrAccessibleAfterFirstUnlockThisDeviceOnly.
  [[nodiscard]] static KeychainAccessor deviceAccessor();

  /// `config`: which accessibility classes are written and searched for.
  [[nodiscard]] const KeychainAccessorConfigurations& config() const { return config_; }
  /// `setConfig:`: replaces them.
  void setConfig(const KeychainAccessorConfigurations& config) { config_ = config; }

  /// `selectKeychainCopyMatching:accessGroup:error:`, `selectKeychainCopyMatching:accessGroup:`: the secret of the
  /// identifier, byte for byte; overwritten when its last owner lets go of it. nil when there is none.
  [[nodiscard]] std::optional<Data> selectKeychainCopyMatching(
      StringView identifier, StringView accessGroup, std::optional<KeychainAccessorError>* error = nullptr) const;

  /// `insertKeychainValue:forIdentifier:accessGroup:error:`, `insertKeychainValue:forIdentifier:accessGroup:`: stores a
  /// new secret; NO when the identifier has one already, and for a nil value.
  [[nodiscard]] bool insertKeychainValue(const std::optional<Data>& value, StringView forIdentifier,
                                         StringView accessGroup,
                                         std::optional<KeychainAccessorError>* error = nullptr) const;

  /// `updateKeychainValue:forIdentifier:accessGroup:error:`, `updateKeychainValue:forIdentifier:accessGroup:`: replaces
  /// the secret, whatever its class; NO when there is none, and for a nil value.
  [[nodiscard]] bool updateKeychainValue(const std::optional<Data>& value, StringView forIdentifier,
                                         StringView accessGroup,
                                         std::optional<KeychainAccessorError>* error = nullptr) const;

  /// `deleteKeychainValue:accessGroup:error:`, `deleteKeychainValue:accessGroup:`: deletes the secret of the identifier
  /// (despite the name); NO when there is none.
  [[nodiscard]] bool deleteKeychainValue(StringView identifier, StringView accessGroup,
                                         std::optional<KeychainAccessorError>* error = nullptr) const;

  /// `newSearchDictionary:accessGroup:`: class, generic bytes (the identifier in UTF-8), account, service and group.
  /// nil for an identifier or group that is nil, and for an identifier with an unpaired surrogate.
  [[nodiscard]] static std::optional<Dictionary> newSearchDictionary(StringView identifier, StringView accessGroup);

 private:
  KeychainAccessorConfigurations config_;
};

}  // namespace quorvel
