#pragma once

#include <string>

#include "players/mpris/bus/BusCalls.h"
#include "players/mpris/bus/Introductions.h"
#include "players/mpris/bus/MprisBus.h"
#include "players/mpris/bus/MprisObserver.h"
#include "players/mpris/bus/SdBus.h"
#include "players/mpris/bus/SecondLooks.h"
#include "players/mpris/bus/WakeUp.h"

namespace Corvella {

/// A connection to the session bus that tells an observer which players there are, from the bus's
/// greeting to its end.
///
/// Owned by `BusWatch` and used on its thread alone. All functions throw std::system_error when the
/// connection has ended.
class WatchedConnection {
 public:
  /// Begins to connect. `observer` outlives this object.
  WatchedConnection(MprisObserver& observer, const MprisDeadlines& deadlines);
  WatchedConnection(const WatchedConnection&) = delete;
  WatchedConnection& operator=(const WatchedConnection&) = delete;

  /// Deals with one message that has come from the bus, and with what is due. False when there was
  /// no message.
  bool work();
  /// Sleeps until there is more work or `wakeUp` is signalled.
  void await(const WakeUp& wakeUp);

  /// See `MprisBus`.
  void probe(const std::string& owner) { introductions_.probe(owner); }
  void raise(const std::string& owner);
  void lookLater(const std::string& owner) { secondLooks_.lookLater(owner); }

 private:
  template <void (WatchedConnection::*Handle)(sd_bus_message*)>
  void subscribe(const char* rule);
  void begin();
  void lookAgain();

  void nameOwnerChanged(sd_bus_message* signal);
  void propertiesChanged(sd_bus_message* signal);
  void identityChanged(sd_bus_message* signal);
  void positionJumped(sd_bus_message* signal);

  MprisObserver& observer_;
  const MprisDeadlines deadlines_;
  BusConnection connection_ = openSessionBus();
  BusCalls calls_{connection_.get()};
  SecondLooks secondLooks_{observer_, calls_, deadlines_};
  Introductions introductions_{observer_, calls_, secondLooks_, deadlines_};
  bool hasBegun_ = false;
};

}  // namespace Corvella
