// The Secret Service is absent, locked, hanging or killed in mid-call: every operation says so in time, nothing is
// written in its place, and once it is back the same program goes on.
#include <algorithm>
#include <cstdio>
#include <thread>

#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <tests/keychain/DesktopSession.h>
#include <tests/keychain/Proofs.h>
#include <unistd.h>

namespace quorvel::proof {
namespace {

constexpr std::chrono::milliseconds kInTime{3500};

/// The names and contents of what lies below.
std::string contentsOf(const fs::path& folder) {
  std::vector<std::string> files;
  if (!fs::exists(folder)) return {};
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    files.push_back(entry.path().string() + '\n' + (entry.is_regular_file() ? bytesOf(entry.path()) : ""));
  }
  std::ranges::sort(files);
  std::string all;
  for (const std::string& file : files) all += file + '\n';
  return all;
}

bool holdsStoreOrKey(const fs::path& folder) {
  if (!fs::exists(folder)) return false;
  for (const auto& entry : fs::directory_iterator(folder)) {
    const std::string name = entry.path().filename().string();
    if (name.ends_with(".key") || name.starts_with("keychain.db")) return true;
  }
  return false;
}

class Stage {
 public:
  explicit Stage(const char* name) : name_(name), session_(scratch_.path()) {}

  [[nodiscard]] fs::path keychain() const { return scratch_.keychain(); }
  [[nodiscard]] DesktopSession& session() { return session_; }
  [[nodiscard]] Faults& faults() { return faults_; }
  void require(bool holds, const std::string& what) {
    if (!holds) faults_.add(std::string(name_) + ": " + what);
  }

  /// A keychain with one item, closed.
  void prepare() {
    require(session_.start(), "the session does not come up");
    use(keychain(), KeySource::SecretService);
    require(KeychainAccessor().insertKeychainValue(dataOf("v"), u"kim", kGroup), "the first insertion fails");
    Keychain::close();
  }

  /// Each operation answers -25291 in time, and the keychain's files and the home folder stay as they were.
  void refuse(const std::function<void()>& meanwhile = {}) {
    const KeychainAccessor accessor;
    const std::string before = contentsOf(keychain());
    std::thread beside([&] {
      if (meanwhile) meanwhile();
    });
    refuseOne("select",
              [&](ErrorSlot* error) { return accessor.selectKeychainCopyMatching(u"kim", kGroup, error).has_value(); });
    beside.join();
    refuseOne("insert",
              [&](ErrorSlot* error) { return accessor.insertKeychainValue(dataOf("w"), u"lee", kGroup, error); });
    refuseOne("update",
              [&](ErrorSlot* error) { return accessor.updateKeychainValue(dataOf("w"), u"kim", kGroup, error); });
    refuseOne("delete", [&](ErrorSlot* error) { return accessor.deleteKeychainValue(u"kim", kGroup, error); });
    if (before.empty()) {
      require(!holdsStoreOrKey(keychain()), "a store or a key was made");
    } else {
      require(contentsOf(keychain()) == before, "files changed");
    }
  }

  /// The same program finds its item again.
  void recover() {
    ErrorSlot error;
    const std::string value = select(u"kim", &error);
    require(value == "v", "the service is back, the item is not: " + value + (error ? ", -25291" : ""));
    require(Keychain::doctor().isSound(), "the service is back, doctor is not content");
  }

  int conclude() {
    std::printf("%s: slowest answer %lld ms\n", name_, static_cast<long long>(slowest_.count()));
    return faults_.count() == 0 ? kHolds : kFails;
  }

 private:
  void refuseOne(const char* operation, const std::function<bool(ErrorSlot*)>& work) {
    ErrorSlot error;
    const auto began = Clock::now();
    const bool done = work(&error);
    const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - began);
    slowest_ = std::max(slowest_, took);
    require(!done && error && isProper(error), std::string(operation) + " is not -25291");
    require(took <= kInTime, std::string(operation) + " takes " + std::to_string(took.count()) + " ms");
  }

  const char* name_;
  Scratch scratch_;
  DesktopSession session_;
  Faults faults_;
  std::chrono::milliseconds slowest_{0};
};

void withoutBus(Stage& stage) {
  ::setenv("DBUS_SESSION_BUS_ADDRESS", ("unix:path=" + stage.keychain().string() + ".nothing").c_str(), 1);
  use(stage.keychain(), KeySource::SecretService);
  stage.refuse();
}

/// A socket that takes connections and never says a word.
void withSilentBus(Stage& stage) {
  const std::string path = stage.keychain().string() + ".bus";
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  const int listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  stage.require(
      ::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 && ::listen(listener, 16) == 0,
      "no socket");
  ::setenv("DBUS_SESSION_BUS_ADDRESS", ("unix:path=" + path).c_str(), 1);
  use(stage.keychain(), KeySource::SecretService);
  stage.refuse();
  ::close(listener);
}

void withoutService(Stage& stage) {
  stage.require(stage.session().startBus(), "no bus");
  use(stage.keychain(), KeySource::SecretService);
  stage.refuse();
}

void withLockedCollection(Stage& stage) {
  stage.prepare();
  stage.require(stage.session().lockCollection(), "it does not lock");
  stage.refuse();
  stage.require(Keychain::doctor().key == KeyState::Locked, "doctor does not say that it is locked");
  stage.session().restartService();
  stage.recover();
}

void lockedBeforeTheFirst(Stage& stage) {
  stage.require(stage.session().start() && stage.session().lockCollection(), "the session does not come up");
  use(stage.keychain(), KeySource::SecretService);
  stage.refuse();
}

void withHangingService(Stage& stage) {
  stage.prepare();
  stage.session().signalService(SIGSTOP);
  stage.refuse();
  stage.require(Keychain::doctor().key == KeyState::Silent, "doctor does not say that it is silent");
  stage.session().signalService(SIGCONT);
  stage.recover();
}

void hangingBeforeTheFirst(Stage& stage) {
  stage.require(stage.session().start(), "the session does not come up");
  stage.session().signalService(SIGSTOP);
  use(stage.keychain(), KeySource::SecretService);
  stage.refuse();
  stage.session().signalService(SIGCONT);
}

void killedInMidCall(Stage& stage) {
  stage.prepare();
  stage.session().signalService(SIGSTOP);
  stage.refuse([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    stage.session().stopService();
  });
  stage.session().restartService();
  stage.recover();
}

void busKilledInMidCall(Stage& stage) {
  stage.prepare();
  stage.session().signalService(SIGSTOP);
  stage.refuse([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    stage.session().stopBus();
  });
  stage.session().stopService();
}

struct Case {
  const char* name;
  void (*play)(Stage&);
};
constexpr Case kCases[] = {
    {"no bus", &withoutBus},
    {"silent bus", &withSilentBus},
    {"no service", &withoutService},
    {"locked", &withLockedCollection},
    {"locked before the first", &lockedBeforeTheFirst},
    {"hanging", &withHangingService},
    {"hanging before the first", &hangingBeforeTheFirst},
    {"killed in mid-call", &killedInMidCall},
    {"bus killed in mid-call", &busKilledInMidCall},
};

}  // namespace

Outcome proveService() {
  {
    const Scratch scratch;
    DesktopSession session(scratch.path());
    if (!session.start()) return DesktopSession::missing();
  }
  Faults faults;
  for (const Case& one : kCases) {
    // A process each, since what speaks to the bus is kept in a process for good.
    const int code = finish(start([&]() -> int {
      Stage stage(one.name);
      one.play(stage);
      return stage.conclude();
    }));
    if (code != kHolds) faults.add(std::string(one.name) + ": the process answers " + std::to_string(code));
  }
  return faults.conclude(std::to_string(std::size(kCases)) + " ways not to answer: -25291 in time, nothing written");
}

}  // namespace quorvel::proof
