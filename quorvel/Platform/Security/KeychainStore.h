// KeychainStore: the file of a keychain, sealed rows in SQLite. It sees neither names nor values.
// Not here: sealing and matching (KeychainSession.h), the statuses' meaning (SecItem.h).
#pragma once

#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include <quorvel/Platform/Security/ItemCipher.h>
#include <quorvel/Platform/Security/KeySource.h>
#include <quorvel/Platform/Security/SecItem.h>

namespace quorvel {

/// A callable that outlives the call it is passed to.
template <class Signature>
class FunctionView;
template <class Result, class... Arguments>
class FunctionView<Result(Arguments...)> {
 public:
  template <class Callable>
    requires(!std::is_same_v<std::remove_cvref_t<Callable>, FunctionView>)
  FunctionView(Callable&& callable)
      : object_(const_cast<void*>(static_cast<const void*>(&callable))),
        call_([](void* object, Arguments... arguments) -> Result {
          return (*static_cast<std::remove_reference_t<Callable>*>(object))(static_cast<Arguments>(arguments)...);
        }) {}
  Result operator()(Arguments... arguments) const { return call_(object_, static_cast<Arguments>(arguments)...); }

 private:
  void* object_;
  Result (*call_)(void*, Arguments...);
};

/// A data key, sealed under the master key of this name.
struct WrappedKey {
  KeyName master{};
  std::vector<std::uint8_t> sealed;
};

class KeychainStore {
 public:
  static constexpr const char* kFileName = "keychain.db";
  /// A keyed digest of what an item is called, which is the number of its row.
  using Identity = KeyedDigest::Bytes;
  struct Row {
    Identity identity;
    ConstBytes sealed;
  };
  using Visitor = FunctionView<OSStatus(const Row&)>;

  /// What stands where the store's files should be. `Refused` when one of them could be somebody else's.
  [[nodiscard]] static FileState stateIn(const FileDescriptor& folder);
  /// Makes the file whole under another name and puts it into place. The caller holds the folder's lock.
  [[nodiscard]] static OSStatus create(const FileDescriptor& folder, const std::string& path, KeySource source,
                                       const WrappedKey& key);
  /// `path` is that of the folder, free of links.
  [[nodiscard]] static OSStatus open(const FileDescriptor& folder, const std::string& path,
                                     std::unique_ptr<KeychainStore>& store);
  ~KeychainStore();
  KeychainStore(const KeychainStore&) = delete;
  KeychainStore& operator=(const KeychainStore&) = delete;

  /// Whether the file at the path is still the one that is open.
  [[nodiscard]] bool isCurrent() const;

  [[nodiscard]] OSStatus insert(const Row& row);
  /// Calls with the row of this identity; errSecItemNotFound when there is none.
  [[nodiscard]] OSStatus find(const Identity& identity, Visitor visit);
  /// Calls with one row after the other until one answers another status than errSecSuccess, which is the result.
  [[nodiscard]] OSStatus forEach(Visitor visit);
  /// Gives the row of `identity` the contents of `row`, whose identity may be another.
  [[nodiscard]] OSStatus replace(const Identity& identity, const Row& row);
  [[nodiscard]] OSStatus remove(const Identity& identity);

  /// Runs `work` in a transaction that is undone unless everything answers errSecSuccess.
  [[nodiscard]] OSStatus inTransaction(FunctionView<OSStatus()> work);

  [[nodiscard]] OSStatus wrappedKey(KeySource source, WrappedKey& key);
  [[nodiscard]] OSStatus setWrappedKey(KeySource source, const WrappedKey& key);
  [[nodiscard]] OSStatus removeWrappedKey(KeySource source);

  /// What SQLite finds wrong with the file; empty when nothing.
  [[nodiscard]] OSStatus check(std::vector<std::string>& faults);

 private:
  class Connection;
  explicit KeychainStore(std::unique_ptr<Connection> connection);
  std::unique_ptr<Connection> connection_;
};

}  // namespace quorvel
