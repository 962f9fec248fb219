#pragma once

#include <csignal>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/support/Eventually.h"
#include "tests/support/Process.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/XServer.h"

namespace Corvella {

/// A display with a window manager, and a session bus that lets through as much as those of
/// desktops do and can end and come back at the same address.
class FireDesktop {
 public:
  /// Throws `std::runtime_error` when something does not start.
  FireDesktop() { startBus(); }

  std::vector<std::string> environment() const {
    return {"DISPLAY=" + server_.display(),
            "WAYLAND_DISPLAY=",
            "QT_QPA_PLATFORM=xcb",
            "DBUS_SESSION_BUS_ADDRESS=" + busAddress(),
            "XDG_RUNTIME_DIR=" + folder_.path().string(),
            "http_proxy="};
  }
  std::string busAddress() const { return "unix:path=" + (folder_.path() / "bus").string(); }
  const std::filesystem::path& folder() const { return folder_.path(); }

  void startBus() {
    // The limits are those of the configuration that comes with the bus.
    const auto file = folder_.write(
        "bus.conf",
        "<busconfig><type>session</type><listen>" + busAddress() +
            "</listen><auth>EXTERNAL</auth><policy context=\"default\"><allow own=\"*\"/>"
            "<allow send_destination=\"*\" eavesdrop=\"true\"/><allow eavesdrop=\"true\"/></policy>"
            "<limit name=\"max_incoming_bytes\">1000000000</limit>"
            "<limit name=\"max_outgoing_bytes\">1000000000</limit>"
            "<limit name=\"max_message_size\">1000000000</limit>"
            "<limit name=\"max_replies_per_connection\">50000</limit></busconfig>");
    bus_.emplace(std::vector<std::string>{"dbus-daemon", "--nofork", "--print-address",
                                          "--config-file=" + file.string()});
    eventually([this] { return bus_->output().ends_with('\n') || !bus_->running(); });
    if (!bus_->running()) throw std::runtime_error("no bus: " + bus_->errors());
  }
  void endBus() {
    bus_.reset();
    std::filesystem::remove(folder_.path() / "bus");
  }

 private:
  TemporaryFolder folder_;
  XServer server_;
  Process manager_{{"openbox", "--sm-disable"}, {"DISPLAY=" + server_.display()}};
  std::optional<Process> bus_;
};

}  // namespace Corvella
