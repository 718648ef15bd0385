// KeychainSession: an open keychain, its keys and the rules by which items match. One thread at a time.
// Not here: attribute dictionaries (SecItem.h), the program's own keychain and what looks after it (Keychain.h).
#pragma once

#include <functional>

#include <quorvel/Platform/Security/ItemAttributes.h>
#include <quorvel/Platform/Security/KeychainStore.h>

namespace quorvel {

/// Where a keychain is and who asks for it.
struct KeychainPlace {
  std::string folder;
  std::size_t ownComponents = 1;  // names at the folder's end where no link is followed
  KeySource sourceOfNew = KeySource::File;
  SecretBytes handedIn;
  std::vector<String> groups;  // that the program belongs to
  bool belongsToAllGroups = false;
};

struct ItemQuery {
  StringView service{nil};  // nil: any
  StringView account{nil};
  StringView group{nil};
  const Data* generic = nullptr;
  std::optional<Accessibility> accessible;
};

/// nil or nullptr: stays.
struct ItemChanges {
  StringView service{nil};
  StringView account{nil};
  StringView group{nil};
  const Data* generic = nullptr;
  std::optional<Accessibility> accessible;
  const Data* value = nullptr;
};

class KeychainSession {
 public:
  /// `state` says what its source of keys answered. `place` must outlive the session.
  [[nodiscard]] static OSStatus open(const KeychainPlace& place, files::Missing ifMissing,
                                     std::unique_ptr<KeychainSession>& session, KeyState& state);

  [[nodiscard]] OSStatus add(const AttributesView& attributes, ConstBytes value);
  /// Answers errSecSuccess to go on to the next, and anything else, which becomes the result, to stop.
  using Visitor = FunctionView<OSStatus(const AttributesView& attributes, ConstBytes value)>;
  /// Visits what matches; errSecItemNotFound when nothing does. An item that does not open is passed over, unless the
  /// query names it in full: then the result is errSecDecode.
  [[nodiscard]] OSStatus visit(const ItemQuery& query, Visitor visitor);
  [[nodiscard]] OSStatus update(const ItemQuery& query, const ItemChanges& changes);
  [[nodiscard]] OSStatus remove(const ItemQuery& query);

  [[nodiscard]] bool isCurrent() const { return store_->isCurrent(); }
  [[nodiscard]] KeySource source() const { return source_; }
  /// The group of an item that is added without one; nil when the program belongs to none.
  [[nodiscard]] StringView defaultGroup() const;

  struct Census {
    std::size_t items = 0;
    std::size_t unreadable = 0;
    std::vector<std::string> faults;
  };
  /// Opens every item and lets SQLite check the file.
  [[nodiscard]] OSStatus check(Census& census);
  /// Seals, writes, reads, opens and deletes an item of its own in one transaction.
  [[nodiscard]] OSStatus testRoundTrip();

  /// Puts the data key under a new master key of `source`; `handedIn` is that key when the source has none of its own.
  /// The old stays until the new one was read back and opens the store.
  [[nodiscard]] OSStatus changeMaster(KeySource source, const SecretBytes& handedIn, KeyState& state);

 private:
  struct Match;
  KeychainSession(const KeychainPlace& place, FileDescriptor folder) : place_(place), folder_(std::move(folder)) {}
  [[nodiscard]] OSStatus openExisting(const std::string& path, KeyState& state);
  [[nodiscard]] static OSStatus create(const KeychainPlace& place, const FileDescriptor& folder,
                                       const std::string& path, KeyState& state);
  [[nodiscard]] OSStatus unlock(const SecretBytes& dataKey);
  [[nodiscard]] bool belongsTo(StringView group) const;
  [[nodiscard]] bool namesOne(const ItemQuery& query) const;
  [[nodiscard]] bool matches(const ItemQuery& query, const AttributesView& attributes) const;
  [[nodiscard]] bool seal(const EncodedAttributes& attributes, ConstBytes value, KeyedDigest::Bytes& identity);
  [[nodiscard]] bool open(const KeychainStore::Row& row, Visitor visitor, OSStatus& status);
  [[nodiscard]] OSStatus visitRows(const ItemQuery& query, KeychainStore::Visitor visitor);
  [[nodiscard]] OSStatus collect(const ItemQuery& query, bool withValues, std::vector<Match>& matches);
  [[nodiscard]] OSStatus apply(const Match& match, const ItemChanges& changes);

  const KeychainPlace& place_;
  FileDescriptor folder_;
  KeySource source_ = KeySource::File;
  std::unique_ptr<KeychainStore> store_;
  SecretBytes dataKey_;
  std::optional<KeyedDigest> identities_;
  std::optional<ItemCipher> cipher_;
  // Kept between calls, for their memory.
  EncodedAttributes query_;
  EncodedAttributes found_;
  std::vector<std::uint8_t> plain_;
  std::vector<std::uint8_t> sealed_;
};

}  // namespace quorvel
