#include <new>

#include <quorvel/Platform/Security/SecItem.h>
#include <quorvel/Utility/KeychainAccessor.h>

namespace quorvel {
namespace {

constexpr char16_t kService[] = u"TKLogin";
constexpr std::int64_t kErrorCode = -9999;

using ErrorSlot = std::optional<KeychainAccessorError>*;

/// Runs `work` on the search dictionary. Whether its status is success; the slot, when given, says what a caller can
/// act upon.
template <class Work>
bool attempt(StringView identifier, StringView accessGroup, ErrorSlot error, Work work) {
  try {
    std::optional<Dictionary> search = KeychainAccessor::newSearchDictionary(identifier, accessGroup);
    if (!search) return false;
    const OSStatus status = work(*search);
    if (status == errSecNotAvailable && error) {
      error->emplace(KeychainAccessorError{KeychainAccessorErrorDomain, kErrorCode, {{u"OSStatus", status}}});
    }
    return status == errSecSuccess;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

void setUnlessNil(Dictionary& dictionary, StringView key, StringView value) {
  if (!value.isNil()) dictionary.set(key, value);
}

}  // namespace

KeychainAccessorConfigurations KeychainAccessorConfigurations::defaultConfig() {
  KeychainAccessorConfigurations config;
  config.createAttribute = kSecAttrAccessibleAfterFirstUnlock;
  config.updateAttribute = kSecAttrAccessibleAfterFirstUnlock;
  return config;
}

KeychainAccessor::KeychainAccessor() : config_(KeychainAccessorConfigurations::defaultConfig()) {}

KeychainAccessor KeychainAccessor::deviceAccessor() {
  constexpr StringView kThisDeviceOnly = kSecAttrAccessibleAfterFirstUnlockThisDeviceOnly;
  KeychainAccessor accessor;
  accessor.config_ = {kThisDeviceOnly, kThisDeviceOnly, kThisDeviceOnly, kThisDeviceOnly};
  return accessor;
}

std::optional<Dictionary> KeychainAccessor::newSearchDictionary(StringView identifier, StringView accessGroup) {
  if (identifier.isNil() || accessGroup.isNil()) return nil;
  const String account = identifier;
  const std::optional<std::string> generic = account.toUTF8();
  if (!generic) return nil;
  Dictionary search;
  search.reserve(8);
  search.set(kSecClass, kSecClassGenericPassword);
  search.set(kSecAttrGeneric, Data({reinterpret_cast<const std::uint8_t*>(generic->data()), generic->size()}));
  search.set(kSecAttrAccount, account);
  search.set(kSecAttrService, kService);
  search.set(kSecAttrAccessGroup, accessGroup);
  return search;
}

std::optional<Data> KeychainAccessor::selectKeychainCopyMatching(StringView identifier, StringView accessGroup,
                                                                 ErrorSlot error) const {
  Value found;
  const bool done = attempt(identifier, accessGroup, error, [&](Dictionary& search) {
    search.set(kSecMatchLimit, kSecMatchLimitOne);
    search.set(kSecReturnData, true);
    setUnlessNil(search, kSecAttrAccessible, config_.readAttribute);
    return SecItemCopyMatching(search, &found);
  });
  const Data* const data = found.asData();
  return done && data ? std::optional<Data>(*data) : nil;
}

bool KeychainAccessor::insertKeychainValue(const std::optional<Data>& value, StringView forIdentifier,
                                           StringView accessGroup, ErrorSlot error) const {
  if (!value) return false;
  return attempt(forIdentifier, accessGroup, error, [&](Dictionary& item) {
    item.set(kSecValueData, *value);
    setUnlessNil(item, kSecAttrAccessible, config_.createAttribute);
    return SecItemAdd(item);
  });
}

bool KeychainAccessor::updateKeychainValue(const std::optional<Data>& value, StringView forIdentifier,
                                           StringView accessGroup, ErrorSlot error) const {
  if (!value) return false;
  return attempt(forIdentifier, accessGroup, error, [&](const Dictionary& search) {
    Dictionary changes{{kSecValueData, *value}};
    setUnlessNil(changes, kSecAttrAccessible, config_.updateAttribute);
    return SecItemUpdate(search, changes);
  });
}

bool KeychainAccessor::deleteKeychainValue(StringView identifier, StringView accessGroup, ErrorSlot error) const {
  return attempt(identifier, accessGroup, error, [&](Dictionary& search) {
    setUnlessNil(search, kSecAttrAccessible, config_.deleteAttribute);
    return SecItemDelete(search);
  });
}

}  // namespace quorvel
