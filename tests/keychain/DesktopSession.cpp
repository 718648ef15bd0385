#include <cstdio>
#include <thread>

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <tests/keychain/DesktopSession.h>
#include <unistd.h>

namespace quorvel::proof {
namespace {

constexpr std::chrono::seconds kComesUpWithin{10};

/// `input` is what the program reads; what it prints goes nowhere. 0 when it cannot be started.
pid_t spawn(std::vector<std::string> words, const std::string& input = {}) {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) return 0;
  (void)!::write(ends[1], input.data(), input.size());
  ::close(ends[1]);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, ends[0], 0);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
  std::vector<char*> arguments;
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  pid_t child = 0;
  if (::posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ) != 0) child = 0;
  posix_spawn_file_actions_destroy(&actions);
  ::close(ends[0]);
  return child;
}

bool succeeds(std::vector<std::string> words) {
  const pid_t child = spawn(std::move(words));
  return child > 0 && finish(child) == 0;
}

template <class Condition>
bool comes(Condition condition) {
  const auto giveUp = Clock::now() + kComesUpWithin;
  while (!condition()) {
    if (Clock::now() > giveUp) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return true;
}

void stop(pid_t& child) {
  if (child <= 0) return;
  ::kill(child, SIGKILL);
  (void)finish(child);
  child = 0;
}

}  // namespace

DesktopSession::~DesktopSession() {
  stopService();
  stopBus();
}

Outcome DesktopSession::missing() {
  std::printf("skipped: dbus-daemon, dbus-send or gnome-keyring-daemon is missing (packages-check.txt)\n");
  return std::getenv("QUORVEL_REQUIRE_SERVICE") ? kFails : kSkipped;
}

bool DesktopSession::start() { return startBus() && startService(); }

bool DesktopSession::startBus() {
  const fs::path socket = folder_ / "bus";
  const fs::path configuration = folder_ / "bus.conf";
  fs::remove(socket);
  // Without service files: nothing starts that the proof has not started.
  writeBytes(configuration, "<busconfig><type>session</type><listen>unix:path=" + socket.string() +
                                "</listen><auth>EXTERNAL</auth><policy context=\"default\">"
                                "<allow send_destination=\"*\"/><allow receive_sender=\"*\"/><allow own=\"*\"/>"
                                "</policy></busconfig>");
  const std::pair<const char*, fs::path> places[] = {
      {"HOME", home()}, {"XDG_DATA_HOME", home() / "data"}, {"XDG_RUNTIME_DIR", home() / "run"}};
  for (const auto& [name, path] : places) {
    fs::create_directories(path);
    fs::permissions(path, fs::perms::owner_all);
    ::setenv(name, path.c_str(), 1);
  }
  ::setenv("DBUS_SESSION_BUS_ADDRESS", ("unix:path=" + socket.string()).c_str(), 1);
  ::unsetenv("GNOME_KEYRING_CONTROL");
  bus_ = spawn({"dbus-daemon", "--config-file=" + configuration.string(), "--nofork", "--nopidfile"});
  return bus_ > 0 && comes([&] { return fs::exists(socket); });
}

bool DesktopSession::startService() {
  service_ = spawn({"gnome-keyring-daemon", "--foreground", "--unlock", "--components=secrets"}, "password\n");
  return service_ > 0 && comes([] {
           return succeeds({"dbus-send", "--session", "--dest=org.freedesktop.secrets", "--print-reply",
                            "/org/freedesktop/secrets/collection/login", "org.freedesktop.DBus.Properties.Get",
                            "string:org.freedesktop.Secret.Collection", "string:Locked"});
         });
}

void DesktopSession::restartService() {
  stopService();
  if (!startService()) std::printf("the service does not come up again\n");
}

void DesktopSession::signalService(int signal) const { ::kill(service_, signal); }
void DesktopSession::signalBus(int signal) const { ::kill(bus_, signal); }
void DesktopSession::stopService() { stop(service_); }
void DesktopSession::stopBus() { stop(bus_); }

bool DesktopSession::lockCollection() const {
  return succeeds({"dbus-send", "--session", "--dest=org.freedesktop.secrets", "--print-reply",
                   "/org/freedesktop/secrets", "org.freedesktop.Secret.Service.Lock",
                   "array:objpath:/org/freedesktop/secrets/collection/login"});
}

}  // namespace quorvel::proof
