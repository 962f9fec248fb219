#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <sdbus-c++/sdbus-c++.h>

#include "players/mpris/MprisObserver.h"
#include "players/mpris/WakeUp.h"

namespace Corvella {

/// A connection to the session bus that tells an observer which players there are, and a thread
/// that sleeps until the bus has news. All of the bus library's objects here live on that thread.
class BusWatch {
 public:
  /// Starts the thread. `observer` outlives this object. Throws `sdbus::Error` when the bus cannot
  /// be reached.
  explicit BusWatch(MprisObserver& observer);
  ~BusWatch();
  BusWatch(const BusWatch&) = delete;
  BusWatch& operator=(const BusWatch&) = delete;

  /// See `MprisBus::probe`. Any thread.
  void probe(const std::string& owner);

 private:
  using Proxies = std::list<std::unique_ptr<sdbus::IProxy>>;
  using ReplyHandler = std::function<void(sdbus::Message&, const sdbus::Error*)>;

  void run();
  void turn();
  void listPlayers();
  void findOwner(const std::string& name);
  void greet(const std::string& name, const std::string& owner);

  /// Without a deadline this is the probe of a silent player.
  void askStatus(const std::string& owner, std::uint64_t deadline);
  void statusReplied(const std::string& owner, sdbus::Message& reply, const sdbus::Error* error,
                     bool late);
  void startProbes();
  void nameOwnerChanged(sdbus::Message& message);
  void propertiesChanged(sdbus::Message& message);

  /// One of the calls that make up the first list has ended.
  void settleOne();

  /// Sends a call with texts as arguments; `handler` gets the reply later, on this thread.
  void callAsync(const std::string& destination, const std::string& path,
                 const std::string& interface, const std::string& method,
                 const std::vector<std::string>& arguments, std::uint64_t deadline,
                 ReplyHandler handler);

  MprisObserver& observer_;
  std::unique_ptr<sdbus::IConnection> connection_;
  Proxies calls_;
  Proxies finishedCalls_;
  bool listed_ = false;
  int outstanding_ = 0;  // Calls that make up the first list of players.

  WakeUp wakeUp_;
  std::atomic<bool> stopping_{false};
  std::mutex mutex_;
  std::vector<std::string> toProbe_;
  std::thread thread_;
};

}  // namespace Corvella
