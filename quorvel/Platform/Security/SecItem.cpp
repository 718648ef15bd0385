#include <algorithm>
#include <new>

#include <quorvel/Platform/Security/ProgramKeychain.h>
#include <quorvel/Platform/Security/SecItem.h>

namespace quorvel {
namespace {

constexpr OSStatus kEnough = 1;  // ends a search that has found what it wanted

/// What a dictionary says. Views and pointers into it.
struct Request {
  ItemQuery query;
  const Data* value = nullptr;
  bool hasClass = false;
  bool wantsAll = false;
  bool wantsData = false;
  bool wantsAttributes = false;
};

bool takeText(const Value& value, StringView& text) {
  text = value.text();
  return !text.isNil();
}
bool takeData(const Value& value, const Data*& data) {
  data = value.asData();
  return data != nullptr;
}
bool takeBoolean(const Value& value, bool& flag) {
  const auto number = value.asNumber();
  flag = number && *number != Number(0);
  return number.has_value();
}

using Taker = bool (*)(const Value&, Request&);
struct Key {
  StringView name;
  Taker take;
};

constexpr Key kKeys[] = {
    {kSecClass,
     [](const Value& value, Request& request) {
       request.hasClass = value.text() == StringView(kSecClassGenericPassword);
       return request.hasClass;
     }},
    {kSecAttrGeneric, [](const Value& value, Request& request) { return takeData(value, request.query.generic); }},
    {kSecAttrAccount, [](const Value& value, Request& request) { return takeText(value, request.query.account); }},
    {kSecAttrService, [](const Value& value, Request& request) { return takeText(value, request.query.service); }},
    {kSecAttrAccessGroup, [](const Value& value, Request& request) { return takeText(value, request.query.group); }},
    {kSecAttrAccessible,
     [](const Value& value, Request& request) {
       request.query.accessible = accessibilityOf(value.text());
       return request.query.accessible.has_value();
     }},
    {kSecValueData, [](const Value& value, Request& request) { return takeData(value, request.value); }},
    {kSecMatchLimit,
     [](const Value& value, Request& request) {
       request.wantsAll = value.text() == StringView(kSecMatchLimitAll);
       return request.wantsAll || value.text() == StringView(kSecMatchLimitOne);
     }},
    {kSecReturnData, [](const Value& value, Request& request) { return takeBoolean(value, request.wantsData); }},
    {kSecReturnAttributes,
     [](const Value& value, Request& request) { return takeBoolean(value, request.wantsAttributes); }},
};

bool read(const Dictionary& dictionary, Request& request) {
  for (const auto& [key, value] : dictionary) {
    const auto* known = std::ranges::find(kKeys, key.text(), &Key::name);
    if (known == std::end(kKeys) || !known->take(value, request)) return false;
  }
  return true;
}

bool readQuery(const Dictionary& dictionary, Request& request) {
  return read(dictionary, request) && request.hasClass && !request.value;
}

Value answerFor(const Request& request, const AttributesView& item, Data&& value) {
  if (!request.wantsAttributes) return request.wantsData ? Value(std::move(value)) : Value();
  Dictionary answer{{kSecClass, kSecClassGenericPassword},
                    {kSecAttrAccount, item.account},
                    {kSecAttrService, item.service},
                    {kSecAttrAccessGroup, item.group},
                    {kSecAttrAccessible, textOf(item.accessible)}};
  if (item.hasGeneric) answer.set(kSecAttrGeneric, Data(item.generic));
  if (request.wantsData) answer.set(kSecValueData, std::move(value));
  return answer;
}

/// Whoever throws here runs out of memory, in this program's part or in the keychain's.
template <class Work>
OSStatus guarded(Work work) {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    return errSecAllocate;
  }
}

OSStatus copyMatching(KeychainSession& keychain, const Request& request, Value& answer) {
  List found;
  const OSStatus status = keychain.visit(request.query, [&](const AttributesView& item, ConstBytes value) -> OSStatus {
    answer = answerFor(request, item, request.wantsData ? Data::secret(value) : Data());
    if (!request.wantsAll) return kEnough;
    if (!answer.isNil()) found.append(std::move(answer));
    return errSecSuccess;
  });
  if (status == errSecSuccess && request.wantsAll && (request.wantsData || request.wantsAttributes)) answer = found;
  return status == kEnough ? errSecSuccess : status;
}

}  // namespace

OSStatus SecItemAdd(const Dictionary& attributes, Value* result) {
  return guarded([&]() -> OSStatus {
    Request request;
    if (!read(attributes, request) || !request.hasClass || !request.value) return errSecParam;
    return withKeychain(Purpose::Change, [&](KeychainSession& keychain) -> OSStatus {
      const ItemQuery& given = request.query;
      const StringView group = given.group.isNil() ? keychain.defaultGroup() : given.group;
      if (group.isNil()) return errSecMissingEntitlement;
      AttributesView item;
      if (!given.service.isNil()) item.service = given.service;
      if (!given.account.isNil()) item.account = given.account;
      item.group = group;
      if (given.generic) item.generic = given.generic->bytes();
      item.hasGeneric = given.generic != nullptr;
      item.accessible = given.accessible.value_or(Accessibility::WhenUnlocked);
      Value answer;
      if (result) answer = answerFor(request, item, Data(*request.value));
      const OSStatus status = keychain.add(item, request.value->bytes());
      if (status == errSecSuccess && result) *result = std::move(answer);
      return status;
    });
  });
}

OSStatus SecItemCopyMatching(const Dictionary& query, Value* result) {
  return guarded([&]() -> OSStatus {
    Request request;
    if (!readQuery(query, request)) return errSecParam;
    Value answer;
    const OSStatus status =
        withKeychain(Purpose::Read, [&](KeychainSession& keychain) { return copyMatching(keychain, request, answer); });
    if (status == errSecSuccess && result) *result = std::move(answer);
    return status;
  });
}

OSStatus SecItemUpdate(const Dictionary& query, const Dictionary& changes) {
  return guarded([&]() -> OSStatus {
    Request request;
    Request change;
    if (!readQuery(query, request) || !read(changes, change)) return errSecParam;
    if (change.hasClass || change.wantsAll || change.wantsData || change.wantsAttributes || changes.isEmpty()) {
      return errSecParam;
    }
    const ItemQuery& to = change.query;
    return withKeychain(Purpose::Change, [&](KeychainSession& keychain) {
      return keychain.update(request.query,
                             {to.service, to.account, to.group, to.generic, to.accessible, change.value});
    });
  });
}

OSStatus SecItemDelete(const Dictionary& query) {
  return guarded([&]() -> OSStatus {
    Request request;
    if (!readQuery(query, request)) return errSecParam;
    return withKeychain(Purpose::Change, [&](KeychainSession& keychain) { return keychain.remove(request.query); });
  });
}

}  // namespace quorvel
