#pragma once

#include <csignal>
#include <cstdlib>
#include <optional>
#include <string>

#include "tests/support/Process.h"
#include "tests/support/TemporaryFolder.h"

namespace Corvella {

/// A session bus of the test's own. It knows none of the machine's services: what is not running on
/// it can be started by nobody, but for names that a test adds.
class PrivateBus {
 public:
  /// Returns when the bus takes connections; throws when it never does.
  PrivateBus();

  const std::string& address() const { return address_; }

  /// From now on the bus runs `commandLine` when a message is sent to `name` and nobody owns it.
  void addActivatableName(const std::string& name, const std::string& commandLine);

  /// Kills the bus under its clients.
  void stop();

  /// Lets the bus hang: it takes connections and messages, and does nothing with them.
  void freeze() { daemon_->kill(SIGSTOP); }

 private:
  TemporaryFolder folder_;
  std::optional<Process> daemon_;
  std::string address_;
};

/// Makes a bus the session bus of this process for as long as the object lives; afterwards there is
/// none. Made and ended while no other thread runs.
class ScopedSessionBus {
 public:
  explicit ScopedSessionBus(const std::string& address) {
    ::setenv("DBUS_SESSION_BUS_ADDRESS", address.c_str(), 1);
  }
  ~ScopedSessionBus() { ::unsetenv("DBUS_SESSION_BUS_ADDRESS"); }
  ScopedSessionBus(const ScopedSessionBus&) = delete;
  ScopedSessionBus& operator=(const ScopedSessionBus&) = delete;
};

}  // namespace Corvella
