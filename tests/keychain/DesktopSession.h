// A message bus and a Secret Service of a proof's own, with a home folder of their own: nothing of the user's is
// touched.
#pragma once

#include <string>

#include <tests/keychain/Proof.h>

namespace quorvel::proof {

class DesktopSession {
 public:
  explicit DesktopSession(fs::path folder) : folder_(std::move(folder)) {}
  DesktopSession(const DesktopSession&) = delete;
  DesktopSession& operator=(const DesktopSession&) = delete;
  ~DesktopSession();

  /// Starts both and points the environment at them; false when one of them is not installed or does not come up.
  [[nodiscard]] bool start();
  /// Says that they are missing: skipped, or a failure where QUORVEL_REQUIRE_SERVICE is set.
  [[nodiscard]] static Outcome missing();

  [[nodiscard]] bool startBus();
  [[nodiscard]] bool startService();
  void restartService();
  /// Sends a signal to the service, or to the bus.
  void signalService(int signal) const;
  void signalBus(int signal) const;
  void stopService();
  void stopBus();
  /// Locks the collection that holds the keys.
  [[nodiscard]] bool lockCollection() const;
  [[nodiscard]] fs::path home() const { return folder_ / "home"; }

 private:
  fs::path folder_;
  pid_t bus_ = 0;
  pid_t service_ = 0;
};

}  // namespace quorvel::proof
