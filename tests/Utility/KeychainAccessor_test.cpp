#include <tests/Platform/Security/KeychainFixture.h>

#include <quorvel/Utility/KeychainAccessor.h>

namespace quorvel::test {
namespace {

using Accessor = KeychainTest;
using Error = std::optional<KeychainAccessorError>;

std::string textOf(const std::optional<Data>& data) {
  return data ? std::string(data->bytes().begin(), data->bytes().end()) : "nil";
}

TEST_F(Accessor, SelectsInsertsUpdatesAndDeletes) {
  const KeychainAccessor accessor;
  Error error;
  EXPECT_EQ(textOf(accessor.selectKeychainCopyMatching(u"kim", kGroup, &error)), "nil") << "missing";
  EXPECT_FALSE(accessor.updateKeychainValue(dataOf("v"), u"kim", kGroup, &error)) << "nothing to update";
  EXPECT_FALSE(accessor.deleteKeychainValue(u"kim", kGroup, &error)) << "nothing to delete";
  EXPECT_EQ(textOf(accessor.selectKeychainCopyMatching(u"kim", kGroup)), "nil") << "update does not create";
  EXPECT_TRUE(accessor.insertKeychainValue(dataOf("first"), u"kim", kGroup, &error));
  EXPECT_FALSE(accessor.insertKeychainValue(dataOf("second"), u"kim", kGroup, &error)) << "there already";
  EXPECT_EQ(textOf(accessor.selectKeychainCopyMatching(u"kim", kGroup, &error)), "first");
  EXPECT_EQ(textOf(accessor.selectKeychainCopyMatching(u"kim", kOtherGroup, &error)), "nil") << "another group";
  EXPECT_TRUE(accessor.updateKeychainValue(dataOf(""), u"kim", kGroup, &error));
  EXPECT_EQ(textOf(accessor.selectKeychainCopyMatching(u"kim", kGroup, &error)), "") << "empty is not nil";
  EXPECT_TRUE(accessor.deleteKeychainValue(u"kim", kGroup, &error));
  EXPECT_EQ(textOf(accessor.selectKeychainCopyMatching(u"kim", kGroup, &error)), "nil");
  EXPECT_FALSE(error) << "none of these is an error";
}

TEST_F(Accessor, RefusesWhatIsAbsent) {
  const KeychainAccessor accessor;
  struct Row {
    StringView identifier;
    StringView group;
    bool found;
    const char* why;
  };
  const Row rows[] = {
      {nil, kGroup, false, "no identifier"},
      {u"kim", nil, false, "no group"},
      {u"\xD800", kGroup, false, "an identifier that has no UTF-8"},
      {u"", kGroup, true, "the empty identifier is one"},
      {u"\U0001F600 \u0000", kGroup, true, "a pair"},
  };
  for (const auto& [identifier, group, found, why] : rows) {
    Error error;
    EXPECT_EQ(KeychainAccessor::newSearchDictionary(identifier, group).has_value(), found) << why;
    EXPECT_EQ(accessor.insertKeychainValue(dataOf("v"), identifier, group, &error), found) << why;
    EXPECT_EQ(textOf(accessor.selectKeychainCopyMatching(identifier, group, &error)), found ? "v" : "nil") << why;
    EXPECT_EQ(accessor.updateKeychainValue(dataOf("w"), identifier, group, &error), found) << why;
    EXPECT_FALSE(accessor.updateKeychainValue(nil, identifier, group, &error)) << why << ", nil value";
    EXPECT_EQ(accessor.deleteKeychainValue(identifier, group, &error), found) << why;
    EXPECT_FALSE(accessor.insertKeychainValue(nil, identifier, group, &error)) << why << ", nil value";
    EXPECT_FALSE(error) << why;
  }
}

TEST_F(Accessor, SearchesByFiveAttributes) {
  const Dictionary expected{{kSecClass, kSecClassGenericPassword},
                            {kSecAttrGeneric, dataOf("\xED\x95\x9C")},
                            {kSecAttrAccount, u"한"},
                            {kSecAttrService, u"TKLogin"},
                            {kSecAttrAccessGroup, kGroup}};
  EXPECT_EQ(KeychainAccessor::newSearchDictionary(u"한", kGroup), expected);
}

/// The accessibility class of kim's item.
Value classOf() {
  Value found;
  const Dictionary query{
      {kSecClass, kSecClassGenericPassword}, {kSecAttrAccount, u"kim"}, {kSecReturnAttributes, true}};
  return SecItemCopyMatching(query, &found) == errSecSuccess ? (*found.asDictionary())[kSecAttrAccessible] : Value();
}

TEST_F(Accessor, ConfigurationsFilterAndWriteAccessibility) {
  const KeychainAccessor standard;
  const KeychainAccessor device = KeychainAccessor::deviceAccessor();
  ASSERT_TRUE(device.insertKeychainValue(dataOf("d"), u"kim", kGroup));
  EXPECT_EQ(textOf(standard.selectKeychainCopyMatching(u"kim", kGroup)), "d") << "the default asks for no class";
  EXPECT_TRUE(standard.updateKeychainValue(dataOf("s"), u"kim", kGroup)) << "update has no filter";
  EXPECT_EQ(classOf(), Value(kSecAttrAccessibleAfterFirstUnlock)) << "and writes its own class";
  EXPECT_EQ(textOf(device.selectKeychainCopyMatching(u"kim", kGroup)), "nil") << "read filter";
  EXPECT_FALSE(device.deleteKeychainValue(u"kim", kGroup)) << "delete filter";
  EXPECT_FALSE(device.insertKeychainValue(dataOf("x"), u"kim", kGroup)) << "the class is no part of the identity";
  EXPECT_TRUE(device.updateKeychainValue(dataOf("d2"), u"kim", kGroup));
  EXPECT_EQ(textOf(device.selectKeychainCopyMatching(u"kim", kGroup)), "d2");
  EXPECT_TRUE(device.deleteKeychainValue(u"kim", kGroup));

  KeychainAccessor bare;
  bare.setConfig({});
  ASSERT_TRUE(bare.insertKeychainValue(dataOf("b"), u"kim", kGroup));
  EXPECT_EQ(classOf(), Value(kSecAttrAccessibleWhenUnlocked)) << "no class written: the keychain's default";
  bare.setConfig({nil, nil, kSecAttrAccessibleAlways, kSecAttrAccessibleWhenUnlocked});
  EXPECT_TRUE(bare.updateKeychainValue(dataOf("b2"), u"kim", kGroup));
  EXPECT_EQ(classOf(), Value(kSecAttrAccessibleAlways));
  EXPECT_FALSE(bare.deleteKeychainValue(u"kim", kGroup));
}

TEST_F(Accessor, NeedsNoSlotForItsErrors) {
  const KeychainAccessor accessor;
  ASSERT_TRUE(accessor.insertKeychainValue(dataOf("v"), u"kim", kGroup));
  Keychain::close();
  std::filesystem::rename(masterFile(), root_ / "key");
  EXPECT_FALSE(accessor.selectKeychainCopyMatching(u"kim", kGroup));
  EXPECT_FALSE(accessor.insertKeychainValue(dataOf("w"), u"lee", kGroup));
  EXPECT_FALSE(accessor.updateKeychainValue(dataOf("w"), u"kim", kGroup));
  std::filesystem::rename(root_ / "key", folder() / "master-returned.key");
  EXPECT_FALSE(accessor.deleteKeychainValue(u"kim", kGroup)) << "a key of another name";
}

}  // namespace
}  // namespace quorvel::test
