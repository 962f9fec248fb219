#pragma once

#include <atomic>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "players/mpris/bus/BusCalls.h"
#include "players/mpris/bus/Introductions.h"
#include "players/mpris/bus/MprisBus.h"
#include "players/mpris/bus/MprisObserver.h"
#include "players/mpris/bus/SdBus.h"
#include "players/mpris/bus/SecondLooks.h"
#include "players/mpris/bus/WakeUp.h"

namespace Corvella {

/// A connection to the session bus that tells an observer which players there are, and a thread
/// that sleeps until the bus has news. While that thread runs it alone uses the connection.
class BusWatch {
 public:
  /// Starts the thread. `observer` outlives this object. Throws std::system_error when the bus
  /// cannot be reached.
  BusWatch(MprisObserver& observer, const MprisDeadlines& deadlines);
  ~BusWatch();
  BusWatch(const BusWatch&) = delete;
  BusWatch& operator=(const BusWatch&) = delete;

  /// See `MprisBus::probe`. Any thread.
  void probe(const std::string& owner);
  /// See `MprisBus::raise`. Any thread.
  void raise(const std::string& owner);

 private:
  template <void (BusWatch::*Handle)(sd_bus_message*)>
  void subscribe(const char* rule);
  void run();
  void turn();
  void startProbes();
  void startRaises();
  void lookAgain();

  void nameOwnerChanged(sd_bus_message* signal);
  void propertiesChanged(sd_bus_message* signal);
  void identityChanged(sd_bus_message* signal);
  void positionJumped(sd_bus_message* signal);

  MprisObserver& observer_;
  const MprisDeadlines deadlines_;
  BusConnection connection_;
  BusCalls calls_{connection_.get()};
  SecondLooks secondLooks_{observer_, calls_, deadlines_};
  Introductions introductions_{observer_, calls_, secondLooks_, deadlines_};

  WakeUp wakeUp_;
  std::atomic<bool> stopping_{false};
  std::mutex mutex_;
  std::vector<std::string> toProbe_;
  std::vector<std::string> toRaise_;
  std::thread thread_;
};

}  // namespace Corvella
