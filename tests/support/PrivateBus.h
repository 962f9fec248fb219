#pragma once

#include <cstdlib>
#include <memory>
#include <optional>
#include <string>

#include <systemd/sd-bus.h>

#include "tests/support/Process.h"
#include "tests/support/TemporaryFolder.h"

namespace Corvella {

/// Throws std::system_error, which names `source`, when `result` is a failure of sd-bus.
void checkBus(int result, const char* source);

struct BusConnectionEnd {
  void operator()(sd_bus* bus) const { sd_bus_flush_close_unref(bus); }
};
using BusConnection = std::unique_ptr<sd_bus, BusConnectionEnd>;

struct BusMessageEnd {
  void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using BusMessage = std::unique_ptr<sd_bus_message, BusMessageEnd>;

/// A connection of its own to the bus at `address`. Throws std::system_error.
BusConnection connectToBus(const std::string& address);

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
