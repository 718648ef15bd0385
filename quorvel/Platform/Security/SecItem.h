// SecItem: generic-password items by attribute dictionaries: add, find, change and delete. Items are kept by the
// program's keychain (Keychain.h), which says where, under which key and for which access groups. Not here: one secret
// for an identifier (KeychainAccessor.h).
#pragma once

#include <cstdint>

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

using OSStatus = std::int32_t;

inline constexpr OSStatus errSecSuccess = 0;
/// Writing failed; the store is as it was.
inline constexpr OSStatus errSecIO = -36;
/// An attribute that is unknown, missing, of a wrong kind or beyond the limits.
inline constexpr OSStatus errSecParam = -50;
inline constexpr OSStatus errSecAllocate = -108;
/// The key, the store or its file is not there, locked, damaged or silent.
inline constexpr OSStatus errSecNotAvailable = -25291;
inline constexpr OSStatus errSecDuplicateItem = -25299;
inline constexpr OSStatus errSecItemNotFound = -25300;
/// The item is there and does not open: its bytes were changed.
inline constexpr OSStatus errSecDecode = -26275;
/// An item was to be added to an access group that the program does not belong to.
inline constexpr OSStatus errSecMissingEntitlement = -34018;

// Keys. The class and, where items are added, the value must be there; everything else may be absent.
inline constexpr char16_t kSecClass[] = u"class";            // kSecClassGenericPassword
inline constexpr char16_t kSecAttrAccount[] = u"account";    // text; empty when an item is added without
inline constexpr char16_t kSecAttrService[] = u"service";    // text; empty when an item is added without
inline constexpr char16_t kSecAttrAccessGroup[] = u"group";  // text; the program's first when an item is added without
inline constexpr char16_t kSecAttrGeneric[] = u"generic";    // data; no part of the identity
inline constexpr char16_t kSecAttrAccessible[] = u"access";  // one of the accessibility classes below
inline constexpr char16_t kSecValueData[] = u"data";         // data; not to be searched for
inline constexpr char16_t kSecMatchLimit[] = u"limit";       // kSecMatchLimitOne (the default) or kSecMatchLimitAll
inline constexpr char16_t kSecReturnData[] = u"retData";     // a boolean
inline constexpr char16_t kSecReturnAttributes[] = u"retAttr";  // a boolean

inline constexpr char16_t kSecClassGenericPassword[] = u"generic";
inline constexpr char16_t kSecMatchLimitOne[] = u"one";
inline constexpr char16_t kSecMatchLimitAll[] = u"all";

// Accessibility classes: kept with the item and matched. This layer does not look at the screen's lock.
inline constexpr char16_t kSecAttrAccessibleWhenUnlocked[] = u"WhenUnlocked";  // of an item added without one
inline constexpr char16_t kSecAttrAccessibleAfterFirstUnlock[] = u"AfterFirstUnlock";
inline constexpr char16_t kSecAttrAccessibleAlways[] = u"Always";
inline constexpr char16_t kSecAttrAccessibleWhenPasscodeSetThisDeviceOnly[] = u"WhenPasscodeSetThisDeviceOnly";
inline constexpr char16_t kSecAttrAccessibleWhenUnlockedThisDeviceOnly[] = u"WhenUnlockedThisDeviceOnly";
inline constexpr char16_t kSecAttrAccessibleAfterFirstUnlockThisDeviceOnly[] = u"AfterFirstUnlockThisDeviceOnly";
inline constexpr char16_t kSecAttrAccessibleAlwaysThisDeviceOnly[] = u"AlwaysThisDeviceOnly";

/// `SecItemAdd`: stores a new item. Its identity is class, service, account and access group, compared unit by unit;
/// errSecDuplicateItem when there is one already. `result`, when given, receives what the kSecReturn keys ask for.
/// An item that was added outlives a loss of power.
[[nodiscard]] OSStatus SecItemAdd(const Dictionary& attributes, Value* result = nullptr);

/// `SecItemCopyMatching`: the items of the program's access groups whose attributes are those of the query.
/// kSecReturnData answers the value, kSecReturnAttributes a dictionary of the attributes (with kSecValueData when both
/// are asked for), neither nothing; a list of these under kSecMatchLimitAll. Answered data is overwritten when its last
/// owner lets go of it. The slot is left untouched unless the status is errSecSuccess.
[[nodiscard]] OSStatus SecItemCopyMatching(const Dictionary& query, Value* result);

/// `SecItemUpdate`: changes every item that matches, all or none of them. What `changes` does not name stays.
[[nodiscard]] OSStatus SecItemUpdate(const Dictionary& query, const Dictionary& changes);

/// `SecItemDelete`: deletes every item that matches, all or none of them.
[[nodiscard]] OSStatus SecItemDelete(const Dictionary& query);

}  // namespace quorvel
