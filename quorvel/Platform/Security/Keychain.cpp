#include <atomic>
#include <cstdlib>
#include <mutex>
#include <new>

#include <pthread.h>

#include <quorvel/Platform/Foundation/NSBundle.h>
#include <quorvel/Platform/Security/Keychain.h>
#include <quorvel/Platform/Security/ProgramKeychain.h>

namespace quorvel {
namespace {

constexpr std::size_t kOwnComponentsByDefault = 2;  // quorvel/keychain
constexpr std::chrono::milliseconds kLookEvery{50};

struct Program {
  std::mutex mutex;
  KeychainConfiguration configuration;
  SecretBytes handedIn;
  KeychainPlace place;  // as of the open session
  std::unique_ptr<KeychainSession> session;
  std::chrono::steady_clock::time_point lookAgain;  // whether the session's file is still at its path
  /// In a child of a process whose keychain was open: its locks are not the child's.
  std::atomic<bool> isLost{false};
};

Program& program();

/// The session stays as it is, since closing it would touch files that the parent goes on with.
void loseInChild() {
  Program& own = program();
  if (!own.mutex.try_lock()) {
    own.isLost = true;
    return;
  }
  if (own.session) {
    own.isLost = true;
    // NOLINTNEXTLINE(bugprone-unused-return-value): lost on purpose
    static_cast<void>(own.session.release());
  }
  own.mutex.unlock();
}

Program& program() {
  // Never destroyed: threads may use it until the process ends.
  static Program* const own = [] {
    ::pthread_atfork(nullptr, nullptr, &loseInChild);
    return new Program;
  }();
  return *own;
}

/// An absolute path from the environment; empty otherwise, as the base directory rules want it.
std::string pathFrom(const char* variable) {
  const char* const value = std::getenv(variable);
  return value && value[0] == '/' ? value : "";
}

std::string defaultFolder() {
  if (std::string base = pathFrom("XDG_DATA_HOME"); !base.empty()) return base + "/quorvel/keychain";
  if (std::string home = pathFrom("HOME"); !home.empty()) return home + "/.local/share/quorvel/keychain";
  return {};
}

void choosePlace(const KeychainConfiguration& configuration, KeychainPlace& place) {
  place.folder = configuration.folder.empty() ? pathFrom("QUORVEL_KEYCHAIN") : configuration.folder;
  place.ownComponents = 1;
  if (place.folder.empty()) {
    place.folder = defaultFolder();
    place.ownComponents = kOwnComponentsByDefault;
  }
  place.sourceOfNew = configuration.keySource;
  if (configuration.accessGroups) {
    place.groups = *configuration.accessGroups;
    return;
  }
  const Dictionary information = NSBundle::main().infoDictionary();
  const StringView group = information[u"KeyChain-AccessGroup"].text();
  place.groups.clear();
  if (!group.isNil()) place.groups.emplace_back(group);
}

bool isCurrent(Program& own, Purpose purpose) {
  if (!own.session) return false;
  const auto now = std::chrono::steady_clock::now();
  if (purpose == Purpose::Read && now < own.lookAgain) return true;
  own.lookAgain = now + kLookEvery;
  return own.session->isCurrent();
}

OSStatus opened(Program& own, Purpose purpose) {
  if (isCurrent(own, purpose)) return errSecSuccess;
  own.session.reset();
  choosePlace(own.configuration, own.place);
  own.place.handedIn = SecretBytes(own.handedIn.bytes());
  KeyState state = KeyState::Missing;
  return KeychainSession::open(own.place, files::Missing::Made, own.session, state);
}

/// A session of its own that sees all groups. The program's is closed first.
template <class Work>
OSStatus administer(KeyState& state, Work work) {
  Program& own = program();
  if (own.isLost) return errSecNotAvailable;
  const std::lock_guard lock(own.mutex);
  try {
    own.session.reset();
    choosePlace(own.configuration, own.place);
    own.place.handedIn = SecretBytes(own.handedIn.bytes());
    own.place.belongsToAllGroups = true;
    std::unique_ptr<KeychainSession> session;
    OSStatus status = KeychainSession::open(own.place, files::Missing::Refused, session, state);
    if (status == errSecSuccess) status = work(*session);
    session.reset();
    own.place.belongsToAllGroups = false;
    return status;
  } catch (const std::bad_alloc&) {
    own.place.belongsToAllGroups = false;
    return errSecAllocate;
  }
}

OSStatus changeMaster(std::optional<KeySource> to, const Data& masterKey) {
  KeyState state = KeyState::Missing;
  return administer(state, [&](KeychainSession& session) {
    SecretBytes handedIn(masterKey.bytes());
    const KeySource source = to.value_or(session.source());
    const OSStatus status = session.changeMaster(source, handedIn, state);
    if (status == errSecSuccess && source == KeySource::HandedIn) program().handedIn = std::move(handedIn);
    return status;
  });
}

void examine(KeychainReport& report) {
  report.folder = Keychain::folder();
  const FileDescriptor there = openOwnFolder(report.folder, 1, files::Missing::Refused);
  if (there.isOpen()) report.source = readKeySource(there);
  KeychainSession::Census census;
  report.status = administer(report.key, [&](KeychainSession& session) {
    const OSStatus status = session.check(census);
    report.roundTrip = session.testRoundTrip();
    return status;
  });
  report.items = census.items;
  report.unreadable = census.unreadable;
  report.faults = std::move(census.faults);
}

}  // namespace

OSStatus withKeychain(Purpose purpose, FunctionView<OSStatus(KeychainSession&)> work) {
  Program& own = program();
  if (own.isLost) return errSecNotAvailable;
  const std::lock_guard lock(own.mutex);
  OSStatus status = errSecAllocate;
  try {
    status = opened(own, purpose);
    if (status == errSecSuccess) status = work(*own.session);
  } catch (const std::bad_alloc&) {
    status = errSecAllocate;
  }
  // What has failed so is not trusted any further; the next operation opens it anew.
  if (status == errSecNotAvailable || status == errSecAllocate || status == errSecIO) own.session.reset();
  return status;
}

void Keychain::configure(const KeychainConfiguration& configuration) {
  Program& own = program();
  if (own.isLost) return;
  const std::lock_guard lock(own.mutex);
  own.session.reset();
  own.place.handedIn = SecretBytes();
  own.handedIn = SecretBytes(configuration.masterKey.bytes());
  own.configuration = configuration;
  own.configuration.masterKey = {};
}

void Keychain::close() {
  Program& own = program();
  if (own.isLost) return;
  const std::lock_guard lock(own.mutex);
  own.session.reset();
}

std::string Keychain::folder() {
  Program& own = program();
  if (own.isLost) return {};
  const std::lock_guard lock(own.mutex);
  KeychainPlace place;
  choosePlace(own.configuration, place);
  return place.folder;
}

KeychainReport Keychain::doctor() {
  KeychainReport report;
  try {
    examine(report);
  } catch (const std::bad_alloc&) {
    report.status = errSecAllocate;
  }
  return report;
}

OSStatus Keychain::list(std::vector<KeychainItem>& items) {
  KeyState state = KeyState::Missing;
  const OSStatus status = administer(state, [&](KeychainSession& session) {
    return session.visit({}, [&](const AttributesView& found, ConstBytes value) {
      items.push_back({found.group, found.service, found.account, textOf(found.accessible), value.size()});
      return errSecSuccess;
    });
  });
  return status == errSecItemNotFound ? errSecSuccess : status;
}

OSStatus Keychain::migrate(KeySource to, const Data& masterKey) { return changeMaster(to, masterKey); }
OSStatus Keychain::rotate(const Data& masterKey) { return changeMaster(std::nullopt, masterKey); }

}  // namespace quorvel
