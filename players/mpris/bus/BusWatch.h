#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "players/mpris/bus/MprisBus.h"
#include "players/mpris/bus/MprisObserver.h"
#include "players/mpris/bus/WakeUp.h"
#include "players/mpris/bus/WatchedConnection.h"

namespace Corvella {

/// Keeps up a connection to the session bus that tells an observer which players there are, on a
/// thread that sleeps until the bus has news. While there is no bus, it is looked for at intervals.
class BusWatch {
 public:
  /// Starts the thread. `observer` and what `busLost` uses outlive this object; `busLost` is called
  /// on the thread, before the observer is told.
  BusWatch(MprisObserver& observer, const MprisDeadlines& deadlines, std::function<void()> busLost);
  ~BusWatch();
  BusWatch(const BusWatch&) = delete;
  BusWatch& operator=(const BusWatch&) = delete;

  /// See `MprisBus::probe`. Any thread.
  void probe(const std::string& owner);
  /// See `MprisBus::raise`. Any thread.
  void raise(const std::string& owner);
  /// See `MprisBus::lookLater`. Any thread.
  void lookLater(const std::string& owner);

 private:
  /// Owners of players to whom something is to be done on the thread.
  using Owners = std::vector<std::string>;

  void run();
  void follow();
  void add(Owners& owners, const std::string& owner);
  Owners take(Owners& owners);

  MprisObserver& observer_;
  const MprisDeadlines deadlines_;
  const std::function<void()> busLost_;
  WakeUp wakeUp_;
  std::atomic<bool> stopping_{false};
  std::mutex mutex_;
  Owners toProbe_;
  Owners toRaise_;
  Owners toLookAt_;
  std::thread thread_;
};

}  // namespace Corvella
