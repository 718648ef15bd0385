#include <algorithm>
#include <cstdlib>

#include <sys/stat.h>

#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/Security/KeychainSession.h>

namespace quorvel {
namespace {

constexpr std::chrono::seconds kLockPatience{2};

/// What a wrapped key is bound to: this purpose, the source and the master key's name.
std::vector<std::uint8_t> wrappingOf(KeySource source, const KeyName& name) {
  constexpr std::string_view kPurpose = "quorvel keychain data key 1";
  std::vector<std::uint8_t> bound(kPurpose.begin(), kPurpose.end());
  bound.push_back(static_cast<std::uint8_t>(source));
  bound.insert(bound.end(), name.begin(), name.end());
  return bound;
}

std::optional<ItemCipher> wrappingCipher(const SecretBytes& master, const KeyName& name) {
  SecretBytes key(kKeyBytes);
  if (!deriveKey(master.bytes(), name, "wrap", key.bytes())) return std::nullopt;
  return ItemCipher::withKey(key.bytes());
}

OSStatus wrap(KeySource source, const SecretBytes& master, const SecretBytes& dataKey, WrappedKey& wrapped) {
  auto cipher = wrappingCipher(master, wrapped.master);
  wrapped.sealed.resize(kKeyBytes + ItemCipher::kOverheadBytes);
  const bool sealed =
      cipher && cipher->seal(wrappingOf(source, wrapped.master), dataKey.bytes(), wrapped.sealed.data());
  return sealed ? errSecSuccess : errSecAllocate;
}

/// The data key; empty when the master key is another.
SecretBytes unwrap(KeySource source, const SecretBytes& master, const WrappedKey& wrapped) {
  SecretBytes dataKey(kKeyBytes);
  auto cipher = wrappingCipher(master, wrapped.master);
  const bool opened = cipher && wrapped.sealed.size() == kKeyBytes + ItemCipher::kOverheadBytes &&
                      cipher->open(wrappingOf(source, wrapped.master), wrapped.sealed, dataKey.bytes().data());
  return opened ? std::move(dataKey) : SecretBytes();
}

/// A new master key of the source: its own random bytes, or those that are handed in.
OSStatus makeMaster(KeySource source, const SecretBytes& handedIn, WrappedKey& wrapped, SecretBytes& master) {
  if (!fillRandom(wrapped.master)) return errSecNotAvailable;
  if (source == KeySource::HandedIn) {
    if (handedIn.bytes().size() < kLeastMasterKeyBytes) return errSecParam;
    master = SecretBytes(handedIn.bytes());
    return errSecSuccess;
  }
  master = SecretBytes(kKeyBytes);
  return fillRandom(master.bytes()) ? errSecSuccess : errSecNotAvailable;
}

constexpr std::size_t kSizeBytes = 4;
constexpr std::size_t kKeptBytes = 64 * 1024;

/// Memory that is kept from call to call is not kept when it was needed once.
void giveBackIfLarge(std::vector<std::uint8_t>& bytes) {
  if (bytes.capacity() > kKeptBytes) std::vector<std::uint8_t>().swap(bytes);
}

/// The use of a buffer for what is sealed or was opened; overwritten in the end, whichever way that comes.
class PlainText {
 public:
  PlainText(std::vector<std::uint8_t>& buffer, std::size_t size) : buffer_(buffer) {
    buffer_.clear();  // so that growing copies nothing
    buffer_.resize(size);
  }
  PlainText(const PlainText&) = delete;
  PlainText& operator=(const PlainText&) = delete;
  ~PlainText() {
    wipe(buffer_);
    giveBackIfLarge(buffer_);
  }

 private:
  std::vector<std::uint8_t>& buffer_;
};

std::string realPath(const std::string& path) {
  char* const real = ::realpath(path.c_str(), nullptr);
  std::string result = real ? real : "";
  std::free(real);
  return result;
}

/// The one lock of a keychain's folder, for what is more than a row.
FileDescriptor lockFolder(const FileDescriptor& folder) { return files::lock(folder, "lock", nullptr, kLockPatience); }

/// The path of an open folder; where /proc is not mounted the one that it was opened by, if it still leads there.
std::string pathOf(const FileDescriptor& folder, const std::string& openedBy) {
  std::string path = realPath("/proc/self/fd/" + std::to_string(folder.number()));
  if (!path.empty()) return path;
  path = realPath(openedBy);
  struct stat open{};
  struct stat named{};
  const bool isSame = ::fstat(folder.number(), &open) == 0 && ::lstat(path.c_str(), &named) == 0 &&
                      open.st_dev == named.st_dev && open.st_ino == named.st_ino;
  return isSame ? path : std::string();
}

}  // namespace

/// What a change needs of an item after its row is no longer at hand.
struct KeychainSession::Match {
  KeyedDigest::Bytes identity{};
  EncodedAttributes attributes;
  Data value;
};

OSStatus KeychainSession::open(const KeychainPlace& place, files::Missing ifMissing,
                               std::unique_ptr<KeychainSession>& session, KeyState& state) {
  state = KeyState::Missing;
  FileDescriptor folder = openOwnFolder(place.folder, place.ownComponents, ifMissing);
  const std::string path = folder.isOpen() ? pathOf(folder, place.folder) : std::string();
  if (path.empty()) return errSecNotAvailable;
  std::unique_ptr<KeychainSession> opened(new KeychainSession(place, std::move(folder)));
  if (ifMissing == files::Missing::Made && KeychainStore::stateIn(opened->folder_) == FileState::Missing) {
    const OSStatus made = create(place, opened->folder_, path, state);
    if (made != errSecSuccess) return made;
  }
  OSStatus status = opened->openExisting(path, state);
  if (status == errSecNotAvailable && (state == KeyState::Missing || state == KeyState::Wrong)) {
    // Somebody may just be turning the store to a new master key.
    const FileDescriptor lock = lockFolder(opened->folder_);
    if (lock.isOpen()) status = opened->openExisting(path, state);
  }
  if (status == errSecSuccess) session = std::move(opened);
  return status;
}

/// A store without its key-source, or with a file that could be another's, is never made anew. A folder that names a
/// source and holds no file is one whose maker was interrupted, or whose items were taken away.
OSStatus KeychainSession::create(const KeychainPlace& place, const FileDescriptor& folder, const std::string& path,
                                 KeyState& state) {
  const FileDescriptor lock = lockFolder(folder);
  if (!lock.isOpen()) return errSecNotAvailable;
  if (KeychainStore::stateIn(folder) != FileState::Missing) return errSecSuccess;  // another process was first
  const FileState named = stateOf(folder, "key-source");
  const std::optional<KeySource> source = named == FileState::Missing ? place.sourceOfNew : readKeySource(folder);
  if (!source) return errSecNotAvailable;
  WrappedKey wrapped;
  SecretBytes master;
  OSStatus status = makeMaster(*source, place.handedIn, wrapped, master);
  if (status != errSecSuccess) return errSecNotAvailable;
  if (named == FileState::Missing && !writeKeySource(folder, *source)) return errSecIO;
  SecretBytes dataKey(kKeyBytes);
  if (!fillRandom(dataKey.bytes())) return errSecNotAvailable;
  status = wrap(*source, master, dataKey, wrapped);
  if (status != errSecSuccess) return status;
  const auto keys = MasterKeys::of(*source, folder, place.handedIn);
  state = keys->write(wrapped.master, master);
  if (state != KeyState::Ready) return errSecNotAvailable;
  status = KeychainStore::create(folder, path, *source, wrapped);
  // A file that is in place is a store, even when its folder could not be written out.
  if (KeychainStore::stateIn(folder) == FileState::Missing) keys->remove(wrapped.master);
  return status;
}

OSStatus KeychainSession::openExisting(const std::string& path, KeyState& state) {
  state = KeyState::Missing;
  const std::optional<KeySource> source = readKeySource(folder_);
  if (!source) return errSecNotAvailable;
  source_ = *source;
  OSStatus status = KeychainStore::open(folder_, path, store_);
  WrappedKey wrapped;
  if (status == errSecSuccess) status = store_->wrappedKey(source_, wrapped);
  if (status != errSecSuccess) return status == errSecAllocate ? status : errSecNotAvailable;
  SecretBytes master;
  state = MasterKeys::of(source_, folder_, place_.handedIn)->read(wrapped.master, master);
  if (state != KeyState::Ready) return errSecNotAvailable;
  const SecretBytes dataKey = unwrap(source_, master, wrapped);
  if (dataKey.isEmpty()) state = KeyState::Wrong;
  return dataKey.isEmpty() ? errSecNotAvailable : unlock(dataKey);
}

OSStatus KeychainSession::unlock(const SecretBytes& dataKey) {
  dataKey_ = SecretBytes(dataKey.bytes());
  SecretBytes key(kKeyBytes);
  if (deriveKey(dataKey.bytes(), {}, "identities", key.bytes())) identities_ = KeyedDigest::withKey(key.bytes());
  if (deriveKey(dataKey.bytes(), {}, "items", key.bytes())) cipher_ = ItemCipher::withKey(key.bytes());
  return identities_ && cipher_ ? errSecSuccess : errSecAllocate;
}

bool KeychainSession::belongsTo(StringView group) const {
  return place_.belongsToAllGroups ||
         std::ranges::any_of(place_.groups, [&](const String& own) { return StringView(own) == group; });
}

StringView KeychainSession::defaultGroup() const {
  return place_.groups.empty() ? StringView(nil) : StringView(place_.groups.front());
}

bool KeychainSession::namesOne(const ItemQuery& query) const {
  return !query.service.isNil() && !query.account.isNil() && !query.group.isNil();
}

bool KeychainSession::matches(const ItemQuery& query, const AttributesView& attributes) const {
  const auto agrees = [](StringView wanted, StringView is) { return wanted.isNil() || wanted == is; };
  if (!agrees(query.service, attributes.service) || !agrees(query.account, attributes.account) ||
      !agrees(query.group, attributes.group)) {
    return false;
  }
  if (query.accessible && *query.accessible != attributes.accessible) return false;
  if (query.generic && !(attributes.hasGeneric && std::ranges::equal(query.generic->bytes(), attributes.generic))) {
    return false;
  }
  return belongsTo(attributes.group);
}

/// Seals what is to be kept of an item, the size of its attributes, these and the value, bound to its identity. Into
/// `sealed_`.
bool KeychainSession::seal(const EncodedAttributes& attributes, ConstBytes value, KeyedDigest::Bytes& identity) {
  const PlainText plain(plain_, kSizeBytes + attributes.all().size() + value.size());
  for (std::size_t i = 0; i < kSizeBytes; ++i)
    plain_[i] = static_cast<std::uint8_t>(attributes.all().size() >> (8 * i));
  std::ranges::copy(attributes.all(), plain_.begin() + kSizeBytes);
  std::ranges::copy(value, plain_.end() - static_cast<std::ptrdiff_t>(value.size()));
  sealed_.resize(plain_.size() + ItemCipher::kOverheadBytes);
  return identities_->digest(attributes.identity(), identity) && cipher_->seal(identity, plain_, sealed_.data());
}

/// Opens a row into `found_` and hands its parts to the visitor; false when it does not open.
bool KeychainSession::open(const KeychainStore::Row& row, Visitor visitor, OSStatus& status) {
  if (row.sealed.size() < ItemCipher::kOverheadBytes + kSizeBytes) return false;
  const PlainText plain(plain_, row.sealed.size() - ItemCipher::kOverheadBytes);
  if (!cipher_->open(row.identity, row.sealed, plain_.data())) return false;
  std::size_t size = 0;
  for (std::size_t i = 0; i < kSizeBytes; ++i) size |= std::size_t{plain_[i]} << (8 * i);
  const ConstBytes rest = ConstBytes(plain_).subspan(kSizeBytes);
  const auto attributes = size <= rest.size() ? found_.decode(rest.first(size)) : std::nullopt;
  if (!attributes) return false;
  status = visitor(*attributes, rest.subspan(size));
  return true;
}

OSStatus KeychainSession::add(const AttributesView& attributes, ConstBytes value) {
  if (!belongsTo(attributes.group)) return errSecMissingEntitlement;
  query_.encode(attributes);
  if (query_.all().size() > limits::kKeychainAttributeBytes || value.size() > limits::kKeychainValueBytes) {
    return errSecParam;
  }
  KeyedDigest::Bytes identity;
  if (!seal(query_, value, identity)) return errSecNotAvailable;
  const OSStatus status = store_->insert({identity, sealed_});
  giveBackIfLarge(sealed_);
  return status;
}

OSStatus KeychainSession::visitRows(const ItemQuery& query, KeychainStore::Visitor visitor) {
  if (!namesOne(query)) return store_->forEach(visitor);
  query_.encodeIdentity(query.service, query.account, query.group);
  KeyedDigest::Bytes identity;
  if (!identities_->digest(query_.identity(), identity)) return errSecNotAvailable;
  return store_->find(identity, visitor);
}

OSStatus KeychainSession::visit(const ItemQuery& query, Visitor visitor) {
  if (!query.group.isNil() && !belongsTo(query.group)) return errSecItemNotFound;
  const bool one = namesOne(query);
  bool any = false;
  const auto visitIfMatching = [&](const AttributesView& attributes, ConstBytes value) -> OSStatus {
    if (!matches(query, attributes)) return errSecSuccess;
    any = true;
    return visitor(attributes, value);
  };
  const OSStatus status = visitRows(query, [&](const KeychainStore::Row& row) -> OSStatus {
    OSStatus visited = errSecSuccess;
    const bool opened = open(row, visitIfMatching, visited);
    return opened || !one ? visited : errSecDecode;
  });
  return status == errSecSuccess && !any ? errSecItemNotFound : status;
}

OSStatus KeychainSession::collect(const ItemQuery& query, bool withValues, std::vector<Match>& matches) {
  return visit(query, [&](const AttributesView& attributes, ConstBytes value) -> OSStatus {
    Match match;
    if (!identities_->digest(found_.identity(), match.identity)) return errSecNotAvailable;
    match.attributes.encode(attributes);
    if (withValues) match.value = Data::secret(value);
    matches.push_back(std::move(match));
    return errSecSuccess;
  });
}

OSStatus KeychainSession::apply(const Match& match, const ItemChanges& changes) {
  EncodedAttributes old = match.attributes;
  auto attributes = old.decode();
  if (!attributes) return errSecDecode;
  if (!changes.service.isNil()) attributes->service = changes.service;
  if (!changes.account.isNil()) attributes->account = changes.account;
  if (!changes.group.isNil()) attributes->group = changes.group;
  if (changes.accessible) attributes->accessible = *changes.accessible;
  if (changes.generic) {
    attributes->generic = changes.generic->bytes();
    attributes->hasGeneric = true;
  }
  const ConstBytes value = changes.value ? changes.value->bytes() : match.value.bytes();
  query_.encode(*attributes);
  if (query_.all().size() > limits::kKeychainAttributeBytes) return errSecParam;
  KeyedDigest::Bytes identity;
  if (!seal(query_, value, identity)) return errSecNotAvailable;
  const OSStatus status = store_->replace(match.identity, {identity, sealed_});
  giveBackIfLarge(sealed_);
  return status;
}

OSStatus KeychainSession::update(const ItemQuery& query, const ItemChanges& changes) {
  if (!query.group.isNil() && !belongsTo(query.group)) return errSecItemNotFound;
  if (!changes.group.isNil() && !belongsTo(changes.group)) return errSecMissingEntitlement;
  if (changes.value && changes.value->size() > limits::kKeychainValueBytes) return errSecParam;
  return store_->inTransaction([&]() -> OSStatus {
    std::vector<Match> matches;
    OSStatus status = collect(query, changes.value == nullptr, matches);
    for (const Match& match : matches) {
      if (status == errSecSuccess) status = apply(match, changes);
    }
    return status;
  });
}

OSStatus KeychainSession::remove(const ItemQuery& query) {
  if (!query.group.isNil() && !belongsTo(query.group)) return errSecItemNotFound;
  return store_->inTransaction([&]() -> OSStatus {
    std::vector<Match> matches;
    OSStatus status = collect(query, false, matches);
    for (const Match& match : matches) {
      if (status == errSecSuccess) status = store_->remove(match.identity);
    }
    return status;
  });
}

OSStatus KeychainSession::check(Census& census) {
  OSStatus status = store_->check(census.faults);
  if (status != errSecSuccess) return status;
  return store_->forEach([&](const KeychainStore::Row& row) -> OSStatus {
    ++census.items;
    OSStatus same = errSecDecode;
    const bool opened = open(
        row,
        [&](const AttributesView& /*attributes*/, ConstBytes /*value*/) -> OSStatus {
          KeyedDigest::Bytes identity;
          const bool digested = identities_->digest(found_.identity(), identity);
          return digested && identity == row.identity ? errSecSuccess : errSecDecode;
        },
        same);
    census.unreadable += opened && same == errSecSuccess ? 0 : 1;
    return errSecSuccess;
  });
}

OSStatus KeychainSession::testRoundTrip() {
  std::array<std::uint8_t, 32> value{};
  if (!fillRandom(value)) return errSecNotAvailable;
  const auto* units = reinterpret_cast<const char16_t*>(value.data());
  AttributesView attributes;
  attributes.service = u"quorvel.keychain.test";
  attributes.account = StringView(units, 8);  // no item of anyone has this name
  query_.encode(attributes);
  KeyedDigest::Bytes identity;
  if (!seal(query_, value, identity)) return errSecNotAvailable;
  return store_->inTransaction([&]() -> OSStatus {
    OSStatus status = store_->insert({identity, sealed_});
    if (status != errSecSuccess) return status;
    status = store_->find(identity, [&](const KeychainStore::Row& row) -> OSStatus {
      OSStatus same = errSecDecode;
      const bool opened = open(
          row,
          [&](const AttributesView& /*attributes*/, ConstBytes read) -> OSStatus {
            return std::ranges::equal(read, value) ? errSecSuccess : errSecDecode;
          },
          same);
      return opened ? same : errSecDecode;
    });
    return status == errSecSuccess ? store_->remove(identity) : status;
  });
}

OSStatus KeychainSession::changeMaster(KeySource source, const SecretBytes& handedIn, KeyState& state) {
  const FileDescriptor& folder = folder_;
  const FileDescriptor lock = lockFolder(folder);
  if (!lock.isOpen() || !isCurrent() || readKeySource(folder) != source_) return errSecNotAvailable;
  WrappedKey old;
  WrappedKey fresh;
  SecretBytes master;
  OSStatus status = store_->wrappedKey(source_, old);
  if (status == errSecSuccess) status = makeMaster(source, handedIn, fresh, master);
  if (status == errSecSuccess) status = wrap(source, master, dataKey_, fresh);
  if (status != errSecSuccess) return status;

  const auto keys = MasterKeys::of(source, folder, handedIn);
  state = keys->write(fresh.master, master);
  if (state != KeyState::Ready) return errSecNotAvailable;
  // Only what was read back counts as written.
  SecretBytes readBack;
  state = keys->read(fresh.master, readBack);
  if (state == KeyState::Ready) {
    const SecretBytes dataKey = unwrap(source, readBack, fresh);
    if (!std::ranges::equal(dataKey.bytes(), dataKey_.bytes())) state = KeyState::Wrong;
  }
  if (state != KeyState::Ready) {
    keys->remove(fresh.master);
    return errSecNotAvailable;
  }
  // From here on a failure says only that the change may not have reached the disk: both keys stay.
  status = store_->setWrappedKey(source, fresh);
  if (status == errSecSuccess && source != source_ && !writeKeySource(folder, source)) status = errSecIO;
  if (status != errSecSuccess) return status;
  MasterKeys::of(source_, folder, place_.handedIn)->remove(old.master);
  if (source != source_) (void)store_->removeWrappedKey(source_);
  source_ = source;
  return errSecSuccess;
}

}  // namespace quorvel
