#include "players/mpris/BusConnections.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace Corvella {

BusConnections::BusConnections() {
  constexpr int kAtFirst = 2;
  for (int i = 0; i < kAtFirst; ++i) idle_.push_back(sdbus::createSessionBusConnection());
}

PlayerFailure BusConnections::failureOf(const sdbus::Error& error, bool late) {
  const std::string_view name = error.getName();
  if (late) return PlayerFailure::TimedOut;
  // The first three come from the bus, the others from a connection to it that broke.
  constexpr std::array<std::string_view, 6> gone{"org.freedesktop.DBus.Error.NoReply",
                                                 "org.freedesktop.DBus.Error.ServiceUnknown",
                                                 "org.freedesktop.DBus.Error.NameHasNoOwner",
                                                 "org.freedesktop.DBus.Error.Disconnected",
                                                 "System.Error.ENOTCONN",
                                                 "System.Error.EPIPE"};
  const bool isGone = std::find(gone.begin(), gone.end(), name) != gone.end();
  return isGone ? PlayerFailure::NotRunning : PlayerFailure::NotUnderstood;
}

BusConnections::Connection BusConnections::take() {
  {
    const std::lock_guard lock(mutex_);
    if (!idle_.empty()) {
      auto connection = std::move(idle_.back());
      idle_.pop_back();
      return connection;
    }
  }
  return sdbus::createSessionBusConnection();
}

void BusConnections::giveBack(Connection connection) {
  constexpr std::size_t kMostIdle = 4;
  const std::lock_guard lock(mutex_);
  if (idle_.size() < kMostIdle) idle_.push_back(std::move(connection));
}

}  // namespace Corvella
