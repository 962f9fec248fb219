#pragma once

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "players/mpris/bus/SdBus.h"
#include "tests/support/Eventually.h"
#include "tests/support/Process.h"
#include "tests/support/TemporaryFolder.h"

namespace Corvella {

/// A connection of its own to the bus at `address`. Throws std::system_error.
inline BusConnection connectToBus(const std::string& address) {
  sd_bus* bus = nullptr;
  checkBus(sd_bus_new(&bus), "sd_bus_new");
  BusConnection connection(bus);
  checkBus(sd_bus_set_address(bus, address.c_str()), "sd_bus_set_address");
  checkBus(sd_bus_set_bus_client(bus, 1), "sd_bus_set_bus_client");
  checkBus(sd_bus_start(bus), "sd_bus_start");
  return connection;
}

/// A session bus of the test's own. It knows none of the machine's services: what is not running on
/// it can be started by nobody, but for names that a test adds.
class PrivateBus {
 public:
  /// Returns when the bus takes connections; throws when it never does.
  PrivateBus() {
    const auto folder = folder_.path().string();
    std::filesystem::create_directory(folder + "/services");
    // Stands in for --session, which would bring the machine's services.
    file_ = folder_.write("bus.conf",
                          "<busconfig><type>session</type><listen>unix:path=" + folder +
                              "/bus</listen><auth>EXTERNAL</auth><servicedir>" + folder +
                              "/services</servicedir><policy context=\"default\"><allow own=\"*\"/>"
                              "<allow send_destination=\"*\" eavesdrop=\"true\"/>"
                              "<allow eavesdrop=\"true\"/></policy></busconfig>");
    start();
  }

  /// Where the bus takes connections, by whatever daemon.
  std::string address() const { return "unix:path=" + folder_.path().string() + "/bus"; }

  /// From now on the bus runs `commandLine` when a message is sent to `name` and nobody owns it.
  void addActivatableName(const std::string& name, const std::string& commandLine) {
    // The bus looks into the folder again when it is asked for a name that it does not know.
    folder_.write("services/" + name + ".service",
                  "[D-BUS Service]\nName=" + name + "\nExec=" + commandLine + "\n");
  }

  /// Kills the bus under its clients.
  void stop() {
    daemon_->kill(SIGKILL);
    daemon_->wait();
  }
  /// Starts another bus at the same address, and returns when it takes connections.
  void start() {
    daemon_.emplace(std::vector<std::string>{"dbus-daemon", "--nofork", "--print-address",
                                             "--config-file=" + file_.string()});
    eventually([this] { return daemon_->output().ends_with('\n') || !daemon_->running(); });
    if (daemon_->output().empty()) throw std::runtime_error("no bus: " + daemon_->errors());
  }

  /// Lets the bus hang: it takes connections and messages, and does nothing with them.
  void freeze() { daemon_->kill(SIGSTOP); }
  void thaw() { daemon_->kill(SIGCONT); }

 private:
  TemporaryFolder folder_;
  std::filesystem::path file_;
  std::optional<Process> daemon_;
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
