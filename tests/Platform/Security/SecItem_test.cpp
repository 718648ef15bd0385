#include <atomic>

#include <tests/Platform/Security/KeychainFixture.h>
#include <tests/support/Crowd.h>

#include <quorvel/Platform/Foundation/Limits.h>

namespace quorvel::test {
namespace {

using SecItem = KeychainTest;

TEST_F(SecItem, IdentityIsServiceAccountAndGroupUnitByUnit) {
  struct Row {
    const char16_t* service;
    const char16_t* account;
    const char16_t* group;
    const char* why;
  };
  // Each differs from all others in one respect.
  const Row rows[] = {
      {u"mail", u"kim", kGroup, "the first"},
      {u"mail", u"Kim", kGroup, "case"},
      {u"mail", u"kim", kOtherGroup, "group"},
      {u"mai", u"lkim", kGroup, "the border between service and account"},
      {u"mail", u"", kGroup, "no account"},
      {u"", u"kim", kGroup, "no service"},
      {u"mail", u"caf\u00E9", kGroup, "composed"},
      {u"mail", u"cafe\u0301", kGroup, "decomposed"},
      {u"mail", u"\xD800", kGroup, "an unpaired surrogate"},
      {u"mail", u"\uFFFD", kGroup, "what a converter makes of it"},
      {u"mail", u"\U0001F600", kGroup, "a pair"},
  };
  const auto queryOf = [](const Row& row) {
    return Dictionary{{kSecClass, kSecClassGenericPassword},
                      {kSecAttrService, StringView(std::u16string_view(row.service))},
                      {kSecAttrAccount, StringView(std::u16string_view(row.account))},
                      {kSecAttrAccessGroup, StringView(std::u16string_view(row.group))}};
  };
  for (const Row& row : rows) {
    ASSERT_EQ(SecItemAdd(with(queryOf(row), kSecValueData, dataOf(row.why))), errSecSuccess) << row.why;
    EXPECT_EQ(SecItemAdd(with(queryOf(row), kSecValueData, dataOf("x"))), errSecDuplicateItem) << row.why;
  }
  for (const Row& row : rows) EXPECT_EQ(read(queryOf(row)), row.why);
  ASSERT_EQ(SecItemDelete(queryOf(rows[0])), errSecSuccess);
  for (const Row& row : rows) EXPECT_EQ(read(queryOf(row)), &row == rows ? "status -25300" : row.why);
}

TEST_F(SecItem, RefusesWhatItDoesNotUnderstand) {
  const Dictionary good = with(item(u"kim"), kSecValueData, dataOf("v"));
  const std::string large(limits::kKeychainValueBytes + 1, 'x');
  const String longName = String(std::u16string(limits::kKeychainAttributeBytes, u'n'));
  struct Row {
    Value key;
    Value value;
    const char* why;
  };
  const Row rows[] = {
      {kSecClass, nil, "no class"},
      {kSecClass, u"certificate", "another class"},
      {kSecValueData, nil, "no value"},
      {kSecValueData, u"v", "a text as value"},
      {kSecValueData, null, "the null marker as value"},
      {kSecAttrAccount, 7, "a number as account"},
      {kSecAttrGeneric, u"kim", "a text as generic bytes"},
      {kSecAttrAccessible, u"Sometimes", "an unknown class of accessibility"},
      {kSecMatchLimit, 2, "a number as limit"},
      {kSecReturnData, u"yes", "a text as flag"},
      {u"colour", u"red", "an unknown key"},
      {7, u"red", "a key that is no text"},
      {kSecValueData, dataOf(large), "a value beyond the limit"},
      {kSecAttrService, longName, "attributes beyond the limit"},
  };
  for (const auto& [key, value, why] : rows) {
    EXPECT_EQ(SecItemAdd(with(good, key, value)), errSecParam) << why;
    EXPECT_EQ(read(u"kim"), "status -25300") << why;
  }
  EXPECT_EQ(SecItemCopyMatching(good, nullptr), errSecParam) << "a value is nothing to search by";
  ASSERT_EQ(SecItemAdd(good), errSecSuccess);
  EXPECT_EQ(SecItemUpdate(item(u"kim"), {}), errSecParam) << "nothing to change";
  EXPECT_EQ(SecItemUpdate(item(u"kim"), {{kSecClass, kSecClassGenericPassword}}), errSecParam);
  EXPECT_EQ(SecItemUpdate(item(u"kim"), {{kSecValueData, dataOf(large)}}), errSecParam);
  EXPECT_EQ(SecItemUpdate(item(u"kim"), {{kSecAttrAccount, longName}}), errSecParam);
  EXPECT_EQ(read(u"kim"), "v");
}

TEST_F(SecItem, GroupsOfOthersAreNeitherFoundNorChanged) {
  ASSERT_EQ(add(u"kim", "shared", kGroup), errSecSuccess);
  ASSERT_EQ(add(u"kim", "private", kOtherGroup), errSecSuccess);
  open(KeySource::File, {}, {kGroup});
  const Dictionary anyGroup = with(item(u"kim"), kSecAttrAccessGroup, nil);
  EXPECT_EQ(read(u"kim", kGroup), "shared");
  EXPECT_EQ(read(anyGroup), "shared");
  EXPECT_EQ(read(u"kim", kOtherGroup), "status -25300");
  EXPECT_EQ(SecItemUpdate(item(u"kim", kOtherGroup), {{kSecValueData, dataOf("x")}}), errSecItemNotFound);
  EXPECT_EQ(SecItemDelete(item(u"kim", kOtherGroup)), errSecItemNotFound);
  EXPECT_EQ(add(u"lee", "x", kOtherGroup), errSecMissingEntitlement);
  EXPECT_EQ(SecItemUpdate(item(u"kim"), {{kSecAttrAccessGroup, kOtherGroup}}), errSecMissingEntitlement);
  EXPECT_EQ(SecItemDelete({{kSecClass, kSecClassGenericPassword}}), errSecSuccess) << "all of its own";
  open(KeySource::File, {}, {});
  EXPECT_EQ(read(anyGroup), "status -25300");
  EXPECT_EQ(SecItemAdd(with(anyGroup, kSecValueData, dataOf("x"))), errSecMissingEntitlement);
  open();
  EXPECT_EQ(read(u"kim", kOtherGroup), "private");
  EXPECT_EQ(read(u"kim", kGroup), "status -25300");
  ASSERT_EQ(SecItemAdd(with(with(anyGroup, kSecAttrAccount, u"lee"), kSecValueData, dataOf("first"))), errSecSuccess);
  EXPECT_EQ(read(u"lee", kGroup), "first") << "without a group: the program's first";
}

TEST_F(SecItem, MatchesAndChangesAttributes) {
  const Dictionary kim = with(item(u"kim"), kSecAttrGeneric, dataOf("g1"));
  ASSERT_EQ(SecItemAdd(with(with(kim, kSecAttrAccessible, kSecAttrAccessibleAlways), kSecValueData, dataOf("v"))), 0);
  ASSERT_EQ(add(u"lee", "w"), errSecSuccess);
  struct Row {
    Value key;
    Value value;
    const char* expected;
    const char* why;
  };
  const Row rows[] = {
      {kSecAttrGeneric, dataOf("g1"), "v", "equal bytes"},
      {kSecAttrGeneric, dataOf("g"), "status -25300", "a prefix"},
      {kSecAttrGeneric, Data(), "status -25300", "empty is not absent"},
      {kSecAttrGeneric, nil, "v", "not asked for"},
      {kSecAttrAccessible, kSecAttrAccessibleAlways, "v", "its class"},
      {kSecAttrAccessible, kSecAttrAccessibleAlwaysThisDeviceOnly, "status -25300", "another class"},
  };
  for (const auto& [key, value, expected, why] : rows) EXPECT_EQ(read(with(kim, key, value)), expected) << why;
  EXPECT_EQ(read(with(item(u"lee"), kSecAttrAccessible, kSecAttrAccessibleWhenUnlocked)), "w") << "the default class";

  // The value stays when only attributes change, and is found under the new ones alone.
  ASSERT_EQ(SecItemUpdate(kim, {{kSecAttrAccessible, kSecAttrAccessibleAfterFirstUnlock}, {kSecAttrAccount, u"kim2"}}),
            errSecSuccess);
  EXPECT_EQ(read(with(item(u"kim2"), kSecAttrAccessible, kSecAttrAccessibleAfterFirstUnlock)), "v");
  EXPECT_EQ(read(u"kim"), "status -25300");
  EXPECT_EQ(SecItemUpdate(item(u"kim2"), {{kSecAttrAccount, u"lee"}}), errSecDuplicateItem);
  EXPECT_EQ(read(u"lee"), "w") << "a refused change leaves both";
  EXPECT_EQ(read(u"kim2"), "v");
  // Changing both to one identity fails as a whole.
  EXPECT_EQ(SecItemUpdate({{kSecClass, kSecClassGenericPassword}}, {{kSecAttrAccount, u"one"}}), errSecDuplicateItem);
  EXPECT_EQ(read(u"lee"), "w");
  EXPECT_EQ(read(u"kim2"), "v");
}

TEST_F(SecItem, AnswersWhatIsAskedFor) {
  ASSERT_EQ(add(u"kim", "v"), errSecSuccess);
  ASSERT_EQ(add(u"lee", "w"), errSecSuccess);
  Value found = 1;
  EXPECT_EQ(SecItemCopyMatching(item(u"none"), &found), errSecItemNotFound);
  EXPECT_EQ(found, Value(1)) << "the slot stays";
  ASSERT_EQ(SecItemCopyMatching(item(u"kim"), &found), errSecSuccess);
  EXPECT_TRUE(found.isNil()) << "nothing asked for";
  const Dictionary both = with(with(item(u"kim"), kSecReturnData, true), kSecReturnAttributes, true);
  ASSERT_EQ(SecItemCopyMatching(both, &found), errSecSuccess);
  EXPECT_EQ(found, Value(with(with(item(u"kim"), kSecAttrAccessible, kSecAttrAccessibleWhenUnlocked), kSecValueData,
                              dataOf("v"))));
  const Dictionary all{
      {kSecClass, kSecClassGenericPassword}, {kSecMatchLimit, kSecMatchLimitAll}, {kSecReturnData, true}};
  ASSERT_EQ(SecItemCopyMatching(all, &found), errSecSuccess);
  ASSERT_TRUE(found.isList());
  EXPECT_EQ(found.asList()->size(), 2);
  ASSERT_EQ(SecItemAdd(with(both, kSecAttrAccount, u"new"), &found), errSecParam) << "no value";
  ASSERT_EQ(SecItemAdd(with(with(both, kSecAttrAccount, u"new"), kSecValueData, dataOf("n")), &found), errSecSuccess);
  EXPECT_EQ((*found.asDictionary())[kSecAttrAccount], Value(u"new"));
}

TEST_F(SecItem, ThreadsShareOneStore) {
  constexpr int kThreads = 4;
  constexpr int kEach = 50;
  std::atomic<int> failed{0};
  const auto nameOf = [](int thread, int i) { return String::fromASCII(std::to_string(thread * 1000 + i)); };
  onThreads(kThreads, [&](int thread) {
    for (int i = 0; i < kEach; ++i) {
      if (add(nameOf(thread, i), std::to_string(i)) != errSecSuccess) ++failed;
      if (read(nameOf(thread, i)) != std::to_string(i)) ++failed;
    }
  });
  EXPECT_EQ(failed, 0);
  std::vector<KeychainItem> items;
  ASSERT_EQ(Keychain::list(items), errSecSuccess);
  EXPECT_EQ(items.size(), kThreads * kEach);
}

TEST_F(SecItem, AChildOfAnOpenKeychainHasNone) {
  ASSERT_EQ(add(u"kim", "v"), errSecSuccess);
  EXPECT_EQ(inChild([] { return read(u"kim") == "status -25291" && add(u"lee", "w") == errSecNotAvailable ? 0 : 1; }),
            0);
  EXPECT_EQ(read(u"kim"), "v");
  EXPECT_EQ(read(u"lee"), "status -25300");
  Keychain::close();
  EXPECT_EQ(inChild([] { return read(u"kim") == "v" ? 0 : 1; }), 0) << "closed before";
}

}  // namespace
}  // namespace quorvel::test
