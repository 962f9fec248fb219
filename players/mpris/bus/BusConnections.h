#pragma once

#include <chrono>
#include <functional>
#include <mutex>
#include <vector>

#include "players/PlayerAnswer.h"
#include "players/mpris/bus/MprisBus.h"
#include "players/mpris/bus/PropertyValue.h"
#include "players/mpris/bus/SdBus.h"

namespace Corvella {

/// Connections to the session bus for blocking calls, each used by one caller at a time and by no
/// event loop. Any thread.
class BusConnections {
 public:
  explicit BusConnections(const MprisDeadlines& deadlines) : deadline_(deadlines.call) {}

  using Compose = std::function<BusMessage(sd_bus*)>;
  using Read = std::function<PropertyValue(sd_bus_message*)>;

  /// Sends the call that `compose` makes for a connection, and returns what `read` makes of the
  /// reply. Blocks for at most the deadline of a call, and fails as `MprisBus` does.
  PlayerAnswer<PropertyValue> call(const Compose& compose, const Read& read);

  /// Closes the connections that no caller uses, because their bus has ended.
  void closeIdle();

 private:
  BusConnection take();
  void giveBack(BusConnection connection);

  const std::chrono::milliseconds deadline_;
  std::mutex mutex_;
  std::vector<BusConnection> idle_;
};

}  // namespace Corvella
